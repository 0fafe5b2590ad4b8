#include "qv_test_support.h"

#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_range_map_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector_private.h"
#include "qv/qv.h"

#include <malloc.h>
#include <thread>

using qv::Ref;
using namespace qv::test;

// What String, Buffer, Vector and RangeMap have in common: each is a sequence with single elements at its ends.

namespace
{
// Each adds an element at the front or the back of a sequence, or deletes it.
void changeText( QV_STRING **all, bool adds, bool front )
{
    adds ? ( front ? qvStringPrependChar : qvStringAppendChar )( all, U'a' )
         : ( front ? qvStringDelLeading : qvStringDelTrailing )( all, 1 );
}

void changeBytes( QV_BUFFER **all, bool adds, bool front )
{
    adds ? ( front ? qvBufferPrependByte : qvBufferAppendByte )( all, 1 )
         : ( front ? qvBufferDelLeading : qvBufferDelTrailing )( all, 1 );
}

void changeObjects( QV_VECTOR **all, bool adds, bool front )
{
    adds    ? ( front ? qvVectorPrependInt : qvVectorAppendInt )( all, 1 )
    : front ? qvVectorDelLeading( all, 1 )
            : qv::release( qvVectorPop( all ) );
}

// The ranges are of one key each.
void changeRanges( QV_RANGE_MAP **all, bool adds, bool front )
{
    QV_INT length = qvRangeMapLength( *all );
    QV_INT key    = length ? qvRangeMapStartingKeyAt( *all, front ? 0 : length - 1 ) : 0;
    adds ? qvRangeMapSetIntKey( all, front ? key - 1 : key + 1, qvStringObj( text( "" ) ) )
            : qvRangeMapDelIntKey( all, key );
}

template< class T, T *( *CREATE )(), void ( *CHANGE )( T **all, bool adds, bool front ) >
struct Kind
{
    using Type = T;

    static constexpr auto create = CREATE;
    static constexpr auto change = CHANGE;
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
struct Block : public testing::Test
{
    Ref< typename Sequence::Type > all{ Sequence::create() };
    QV_INT                         steps = 0, moved = 0;

    // A letter is a change: of the front `<` to add and `(` to delete, of the back `>` and `)`.
    void run( const std::string &changes, size_t times )
    {
        for( ; times-- > 0; )
            for( char change : changes )
            {
                QV_INT middle = unitsOf( all.get() ) / 2;
                auto  *before = all->first + middle;
                Sequence::change( all.at(), change == '<' || change == '>', change == '<' || change == '(' );
                middle += change == '<' ? 1 : change == '(' ? -1 : 0;
                moved += middle >= 0 && before != all->first + middle ? unitsOf( all.get() ) : 0;
                steps++;
            }

        EXPECT_LE( all->size(), 2 * allocated( all.get() ) + 4 * all->home() );
    }
};

using Sequences = testing::Types<
    Kind< QV_STRING, qvStringCreate, changeText >, Kind< QV_BUFFER, qvBufferCreate, changeBytes >,
    Kind< QV_VECTOR, qvVectorCreate, changeObjects >, Kind< QV_RANGE_MAP, qvRangeMapCreate, changeRanges > >;
TYPED_TEST_SUITE( Block, Sequences );
} // namespace

// A change at an end moves a constant number of elements in the long run, however long the sequence is and whatever
// comes next: one end, both in turn, a queue, and to and fro over each border at which the declared size changes.
TYPED_TEST( Block, ChangesAtTheEndsMoveLittle )
{
    std::vector< std::string > turns = { "<", ">", "<>", "><(", ">>)<", ">(", "<)" };

    for( size_t count : { 31, 33, 40, 65, 70, 165, 330 } )
        for( const char *pair : { "<(", ">)", "<)", ">(" } )
            turns.push_back( std::string( count, pair[0] ) + std::string( count, pair[1] ) );

    for( const std::string &turn : turns )
        for( size_t length : { 1000, 10000 } )
        {
            this->all.reset( TypeParam::create() );
            this->run( ">", length );
            this->moved = this->steps = 0;
            this->run( turn, 3 * length / turn.size() + 1 );

            for( const char *down : { "(", ")", "()" } )
                this->run( down, length / 4 );

            EXPECT_LE( this->moved, 40 * this->steps ) << turn << ' ' << length;
        }
}

#ifndef NDEBUG
// What builds with assertions find: a block that claims more than there is, and code that writes where nothing is.
TYPED_TEST( Block, WatchesWhatIsFree )
{
    this->run( "<", 20 );
    auto *object = this->all.get();
    auto *free   = reinterpret_cast< unsigned char * >( object->first ) - 9;

    EXPECT_DEATH( ( object->bspace += 8, this->run( "(", 1 ) ), "length \\+ bspace" );
    EXPECT_DEATH( ( object->fspace += 32, object->bspace -= 32, this->run( "(", 1 ) ), "fspace" );
    EXPECT_DEATH( ( object->bspace -= 8, this->run( "(", 1 ) ), "dbgAllocationSize" );
    EXPECT_DEATH( ( *free = 7, this->run( "<", 100 ) ), "free memory is as it was left|use-after-poison" );
}
#endif

#if !defined( __SANITIZE_ADDRESS__ )
namespace
{
// Lets a Buffer end that has taken over a block.
void endWith( void *block, QV_INT bytes )
{
    qv::release( qvBufferCreateFromBytesUse( block, bytes ) );
}

// True if a block of `kept` bytes is handed out again for `asked`, before one that the C library has got back meanwhile.
bool comesBack( QV_INT kept, QV_INT asked )
{
    void *others[qv::MOST_LARGE], *was = qvMemAlloc( kept );

    for( void *&each : others )
        each = qvMemAlloc( 500000 );

    for( void *each : others )
        endWith( each, 500000 );

    endWith( was, kept );
    void *other = malloc( size_t( kept ) ), *next = qvMemAlloc( asked );
    bool  comes = was == next;
    free( other );
    qvMemFree( next );
    return comes;
}
} // namespace

TEST( LargeBlock, ComesBackForAboutItsSize )
{
    for( QV_INT size : { qv::LARGE, QV_INT( 80000 ), qv::LARGEST } )
    {
        EXPECT_TRUE( comesBack( size, size ) );
        EXPECT_FALSE( comesBack( size, size + 1 ) );
    }

    EXPECT_TRUE( comesBack( 90000, 80000 ) );
    EXPECT_FALSE( comesBack( 90001, 80000 ) );
}

// Each object gets the block of the one before, which was a little larger; the last one must not hold that of the first.
TEST( LargeBlock, DoesNotEndAsASmallOne )
{
    void *block = qvMemAlloc( qv::LARGEST );

    for( QV_INT size = qv::LARGEST, next; size >= qv::LARGE; size = next )
    {
        next = size - size / 10;
        endWith( block, size );
        block = qvMemAlloc( next );
        ASSERT_LE( malloc_usable_size( block ), size_t( next / 64 * 81 + 81 ) ) << next;
    }

    qvMemFree( block );
}

TEST( LargeBlock, IsOneThreadsAtATime )
{
    auto work = []( QV_CHAR own )
    {
        for( int round = 0; round < 300; round++ )
        {
            QV_INT           length = 20000 + round % 5 * 1000;
            Ref< QV_STRING > all =
                Ref( qvStringCreateFromUtf8( std::string( size_t( length ), 'x' ).c_str(), length ) );
            qvStringSetCharAt( all.at(), length - 1, own );
            std::this_thread::yield();
            EXPECT_EQ( own, qvStringCharAt( all, length - 1 ) );
        }
    };
    std::thread one( work, U'1' ), two( work, U'2' );
    one.join();
    two.join();
}

#ifndef NDEBUG
TEST( LargeBlock, IsWatchedWhileItIsKept )
{
    char *block = static_cast< char * >( qvMemAlloc( 50000 ) );
    endWith( block, 50000 );
    EXPECT_DEATH( ( block[40000] = 7, qvMemAlloc( 50000 ) ), "free memory is as it was left" );
}
#endif
#endif
