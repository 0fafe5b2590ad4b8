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
struct Text
{
    Ref< QV_STRING > object{ qvStringCreate() };

    void append()
    {
        qvStringAppendChar( object.at(), U'a' );
    }
    void prepend()
    {
        qvStringPrependChar( object.at(), U'a' );
    }
    void dropFront()
    {
        qvStringDelLeading( object.at(), 1 );
    }
    void dropBack()
    {
        qvStringDelTrailing( object.at(), 1 );
    }
    void compact()
    {
        qv___StringCompact( object );
    }
    QV_INT length()
    {
        return object->length;
    }
};

struct Bytes
{
    Ref< QV_BUFFER > object{ qvBufferCreate() };

    void append()
    {
        qvBufferAppendByte( object.at(), 1 );
    }
    void prepend()
    {
        qvBufferPrependByte( object.at(), 1 );
    }
    void dropFront()
    {
        qvBufferDelLeading( object.at(), 1 );
    }
    void dropBack()
    {
        qvBufferDelTrailing( object.at(), 1 );
    }
    void compact()
    {
        qv___BufferCompact( object );
    }
    QV_INT length()
    {
        return qvBufferLength( object );
    }
};

struct Objects
{
    Ref< QV_VECTOR >    object{ qvVectorCreate() };
    Ref< QV_BOXED_INT > element{ qvBoxedIntCreate( 1 ) };

    void append()
    {
        qvVectorAppendObj( object.at(), qv::obj( element.get() ) );
    }
    void prepend()
    {
        qvVectorPrependObj( object.at(), qv::obj( element.get() ) );
    }
    void dropFront()
    {
        qvVectorDelLeading( object.at(), 1 );
    }
    void dropBack()
    {
        Ref< QV_OBJ > last( qvVectorPop( object.at() ) );
    }
    void compact()
    {
        qv___VectorCompact( object );
    }
    QV_INT length()
    {
        return object->length;
    }
};

struct Ranges
{
    Ref< QV_RANGE_MAP > object{ qvRangeMapCreate() };
    Ref< QV_BOXED_INT > value{ qvBoxedIntCreate( 1 ) };
    QV_INT              front = 0; // the keys are from here on, each a range
    QV_INT              back  = 0;

    void append()
    {
        qvRangeMapSetIntKey( object.at(), back++, qv::obj( value.get() ) );
    }
    void prepend()
    {
        qvRangeMapSetIntKey( object.at(), --front, qv::obj( value.get() ) );
    }
    void dropFront()
    {
        qvRangeMapDelIntKey( object.at(), front++ );
    }
    void dropBack()
    {
        qvRangeMapDelIntKey( object.at(), --back );
    }
    void compact()
    {
        qvRangeMapDelIntKey( object.at(), front++ );
    }
    QV_INT length()
    {
        return object->length;
    }
};

// Counts the elements that changes of a sequence move: all of them when one in the middle is somewhere else afterwards.
template< class Sequence >
struct Counted
{
    Sequence sequence;
    QV_INT   steps = 0;
    QV_INT   moved = 0;

    // A letter is a change: of the front `<` to add and `(` to delete, of the back `>` and `)`.
    void run( const char *changes, QV_INT times = 1 )
    {
        for( ; times-- > 0; )
            for( const char *change = changes; *change; change++ )
                step( *change );

        EXPECT_LE( sequence.object->size(), 2 * allocated( sequence.object.get() ) + 4 * sequence.object->home() );
    }

    void step( char change )
    {
        QV_INT middle = sequence.length() / 2;
        auto  *before = sequence.object->first + middle;

        switch( change )
        {
        case '<':
            sequence.prepend(), middle++;
            break;
        case '(':
            sequence.dropFront(), middle--;
            break;
        case '>':
            sequence.append();
            break;
        case ')':
            sequence.dropBack();
            break;
        }

        steps++;

        if( middle >= 0 && before != sequence.object->first + middle )
            moved += sequence.length();
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
                counted.run( down, counted.sequence.length() / 4 );

            EXPECT_LE( counted.moved, 40 * counted.steps ) << turn << ' ' << length;
        }
}

#ifndef NDEBUG
// What builds with assertions find: a block that claims more than there is, and code that writes where nothing is.
TYPED_TEST( Block, WatchesWhatIsFree )
{
    TypeParam sequence;

    for( int i = 0; i < 20; i++ )
        sequence.append();

    sequence.prepend();

    auto *object = sequence.object.get();
    auto *free   = reinterpret_cast< unsigned char * >( object->first ) - 9;

    EXPECT_DEATH( ( object->bspace += 8, sequence.compact() ), "length \\+ bspace" );
    EXPECT_DEATH( ( object->fspace += 32, object->bspace -= 32, sequence.compact() ), "fspace" );
    EXPECT_DEATH( ( object->bspace -= 8, sequence.compact() ), "dbgAllocationSize" );

    EXPECT_DEATH(
        {
            *free = 7;
            for( int i = 0; i < 100; i++ )
                sequence.prepend();
        },
        "free memory is as it was left|use-after-poison" );
}
#endif
