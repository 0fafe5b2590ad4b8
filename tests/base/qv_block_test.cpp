#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_range_map_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"

#include <cstring>

using qv::Ref;
using namespace qv::test;

// What String, Buffer, Vector and RangeMap have in common: each is a sequence with single elements at its ends.

namespace
{
Ref< QV_OBJ > element()
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( 1 ) ) );
}

struct Text
{
    using Type = QV_STRING;

    static constexpr auto create    = qvStringCreate;
    static constexpr auto append    = []( Ref< Type > &all ) { qvStringAppendChar( all.at(), U'a' ); };
    static constexpr auto prepend   = []( Ref< Type > &all ) { qvStringPrependChar( all.at(), U'a' ); };
    static constexpr auto dropFront = []( Ref< Type > &all ) { qvStringDelLeading( all.at(), 1 ); };
    static constexpr auto dropBack  = []( Ref< Type > &all ) { qvStringDelTrailing( all.at(), 1 ); };
    static constexpr auto compact   = []( Ref< Type > &all ) { qv___StringCompact( all ); };
};

struct Bytes
{
    using Type = QV_BUFFER;

    static constexpr auto create    = qvBufferCreate;
    static constexpr auto append    = []( Ref< Type > &all ) { qvBufferAppendByte( all.at(), 1 ); };
    static constexpr auto prepend   = []( Ref< Type > &all ) { qvBufferPrependByte( all.at(), 1 ); };
    static constexpr auto dropFront = []( Ref< Type > &all ) { qvBufferDelLeading( all.at(), 1 ); };
    static constexpr auto dropBack  = []( Ref< Type > &all ) { qvBufferDelTrailing( all.at(), 1 ); };
    static constexpr auto compact   = []( Ref< Type > &all ) { qv___BufferCompact( all ); };
};

struct Objects
{
    using Type = QV_VECTOR;

    static constexpr auto create    = qvVectorCreate;
    static constexpr auto append    = []( Ref< Type > &all ) { qvVectorAppendObj( all.at(), element() ); };
    static constexpr auto prepend   = []( Ref< Type > &all ) { qvVectorPrependObj( all.at(), element() ); };
    static constexpr auto dropFront = []( Ref< Type > &all ) { qvVectorDelLeading( all.at(), 1 ); };
    static constexpr auto dropBack  = []( Ref< Type > &all ) { qv::release( qvVectorPop( all.at() ) ); };
    static constexpr auto compact   = []( Ref< Type > &all ) { qv___VectorCompact( all ); };
};

// The keys are ranges of their own.
QV_INT lastKey( QV_RANGE_MAP *map )
{
    return map->length ? qvRangeMapStartingKeyAt( map, map->length - 1 ) : 0;
}

QV_INT firstKey( QV_RANGE_MAP *map )
{
    return map->length ? qvRangeMapStartingKeyAt( map, 0 ) : 1;
}

struct Ranges
{
    using Type = QV_RANGE_MAP;

    static constexpr auto create = qvRangeMapCreate;
    static constexpr auto append = []( Ref< Type > &all )
    { qvRangeMapSetIntKey( all.at(), lastKey( all ) + 1, element() ); };
    static constexpr auto prepend = []( Ref< Type > &all )
    { qvRangeMapSetIntKey( all.at(), firstKey( all ) - 1, element() ); };
    static constexpr auto dropFront = []( Ref< Type > &all ) { qvRangeMapDelIntKey( all.at(), firstKey( all ) ); };
    static constexpr auto dropBack  = []( Ref< Type > &all ) { qvRangeMapDelIntKey( all.at(), lastKey( all ) ); };
    static constexpr auto compact   = []( Ref< Type > &all ) { qvRangeMapDelIntKey( all.at(), firstKey( all ) ); };
};

QV_INT unitsOf( QV_BUFFER *buf )
{
    return qvBufferLength( buf );
}

template< class T >
QV_INT unitsOf( T *all )
{
    return all->length;
}

// Counts the elements that changes of a sequence move: all of them when one in the middle is somewhere else afterwards.
template< class Sequence >
struct Counted
{
    Ref< typename Sequence::Type > object{ Sequence::create() };
    QV_INT                         steps = 0, moved = 0;

    // A letter is a change: of the front `<` to add and `(` to delete, of the back `>` and `)`.
    void run( const char *changes, QV_INT times = 1 )
    {
        for( ; times-- > 0; )
            for( const char *change = changes; *change; change++ )
                step( *change );

        EXPECT_LE( object->size(), 2 * allocated( object.get() ) + 4 * object->home() );
    }

    void step( char change )
    {
        QV_INT middle = unitsOf( object.get() ) / 2;
        auto  *before = object->first + middle;

        change == '<'   ? Sequence::prepend( object )
        : change == '(' ? Sequence::dropFront( object )
        : change == '>' ? Sequence::append( object )
                        : Sequence::dropBack( object );
        middle += change == '<' ? 1 : change == '(' ? -1 : 0;
        steps++;

        if( middle >= 0 && before != object->first + middle )
            moved += unitsOf( object.get() );
    }
};

template< class Sequence >
class Block : public testing::Test
{
};

using Sequences = testing::Types< Text, Bytes, Objects, Ranges >;
TYPED_TEST_SUITE( Block, Sequences );
} // namespace

// A change at an end moves a constant number of elements in the long run, however long the sequence is and whatever
// comes next: one end, both in turn, a queue, and to and fro over each border at which the declared size changes.
TYPED_TEST( Block, ChangesAtTheEndsMoveLittle )
{
    std::string turns[] = { "<", ">", "<>", "><(", ">>)<", ">(", "<)" };

    for( int count : { 31, 33, 40, 65, 70, 165, 330 } )
        for( const char *pair : { "<(", ">)", "<)", ">(" } )
            for( QV_INT length : { 1000, 10000 } )
            {
                Counted< TypeParam > counted;
                counted.run( ">", length );
                counted.moved = counted.steps = 0;

                std::string there( size_t( count ), pair[0] ), back( size_t( count ), pair[1] );
                counted.run( ( there + back ).c_str(), 3 * length / count );
                EXPECT_LE( counted.moved, 40 * counted.steps ) << pair << ' ' << count << ' ' << length;
            }

    for( const std::string &turn : turns )
        for( QV_INT length : { 4000, 40000 } )
        {
            Counted< TypeParam > counted;
            counted.run( ">", length / 4 );
            counted.run( turn.c_str(), length );
            EXPECT_LE( counted.moved, 40 * counted.steps ) << turn << ' ' << length;

            // And down again, at either end and at both.
            for( const char *down : { "(", ")", "()" } )
                counted.run( down, unitsOf( counted.object.get() ) / 4 );

            EXPECT_LE( counted.moved, 40 * counted.steps ) << turn << ' ' << length;
        }
}

#ifndef NDEBUG
// What builds with assertions find: a block that claims more than there is, and code that writes where nothing is.
TYPED_TEST( Block, WatchesWhatIsFree )
{
    Ref< typename TypeParam::Type > all( TypeParam::create() );

    for( int i = 0; i < 20; i++ )
        TypeParam::append( all );

    TypeParam::prepend( all );

    auto *object = all.get();
    auto *free   = reinterpret_cast< unsigned char * >( object->first ) - 9;

    EXPECT_DEATH( ( object->bspace += 8, TypeParam::compact( all ) ), "length \\+ bspace" );
    EXPECT_DEATH( ( object->fspace += 32, object->bspace -= 32, TypeParam::compact( all ) ), "fspace" );
    EXPECT_DEATH( ( object->bspace -= 8, TypeParam::compact( all ) ), "dbgAllocationSize" );

    EXPECT_DEATH(
        {
            *free = 7;
            for( int i = 0; i < 100; i++ )
                TypeParam::prepend( all );
        },
        "free memory is as it was left|use-after-poison" );
}
#endif
