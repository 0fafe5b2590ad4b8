#include "qv_test_call.h"
#include "qv_test_child.h"

#include "qv/base/qv_vector_private.h"
#include "qv/qv.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/sys/qv_unique_private.h"

#include <atomic>

#include <dlfcn.h>
#include <pthread.h>

using qv::Ref;
using namespace qv::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/* A family of the test, whose objects tell whether they are intact and are counted when they end ----------------- */

typedef struct QV_WATCHED QV_WATCHED;

QV_FAMILY( Watched, QV_WATCHED )

struct QV_WATCHED : QV_OBJ
{
    QV_INT left; // what the free function leaves declared; -1 after its call, which cannot be declared
};

namespace
{
std::atomic< int > ended    = 0;
QV_SORT           *looksAt  = nullptr; // of which an object that ends takes a snapshot, once
QV_VECTOR         *lastLook = nullptr;

void freeWatched( QV_OBJ *thisObj )
{
    ended++;
    EXPECT_EQ( 0, references( thisObj ) );
    qv___ObjDbgSetAllocationSize( thisObj, std::exchange( qvWatchedFrom( thisObj )->left, -1 ) );

    if( looksAt )
        lastLook = qvSortSnapshot( std::exchange( looksAt, nullptr ) );
}

QV_INT compareWatched( QV_OBJ *, QV_OBJ * )
{
    ADD_FAILURE() << "asked to compare";
    return 1;
}

QV_STRING *watchedToString( QV_OBJ *thisObj )
{
    qv___ObjLogAppend( thisObj, text( "asked" ) );
    return text( "watched" ).give();
}

Ref< QV_OBJ > watched( QV_INT left = 0 )
{
    QV_WATCHED *object = qv::create< QV_WATCHED >( qvWatchedSort() );
    object->left       = left;

    return Ref< QV_OBJ >( qvWatchedObj( object ) );
}

Ref< QV_OBJ > unique()
{
    return Ref< QV_OBJ >( qvBoxedUniqueObj( qvBoxedUniqueCreate() ) );
}

std::vector< QV_OBJ * > elements( QV_VECTOR *vec )
{
    return std::vector< QV_OBJ * >( qv::objs( vec ), qv::objs( vec ) + vec->length );
}
} // namespace

QV___FAMILY( Watched, QV_WATCHED, freeWatched, compareWatched, watchedToString )

/* Life ----------------------------------------------------------------------------------------------------------- */

TEST( Obj, SortsAndModulesNeverEnd )
{
    QV_OBJ *sort = qvSortObj( qvWatchedSort() ), *module = &qv___module;

    for( QV_OBJ *object : { sort, module } )
    {
        int32_t before = references( object );
        EXPECT_EQ( -1, qv___ObjUnique( object ) );

        for( int32_t i = 0; i < before; i++ )
            qvObjRelease( object );

        // Other threads reach what is static at any moment, also after a release has found a count of 1.
        for( int32_t i = 0; i <= before; i++ )
            qvObjRetain( object );

        qv___ObjReleaseLast( object );
        EXPECT_EQ( before, references( object ) );
    }

    EXPECT_EQ( qvSortSort(), qvObjSort( sort ) );
    EXPECT_STREQ( "QV_MODULE", qvObjSort( module )->name );
    EXPECT_EQ( &qv___module, qvSortModule( qvWatchedSort() ) );
    EXPECT_EQ( "QV_WATCHED", textOf( sort ) );
}

// Runs one after the other, with the database and without, in which objects outlive their run.
TEST( Obj, TheListsFollowObjectsThroughRunsOfAllKinds )
{
    expectInOwnRun(
        []
        {
            auto expectListed = []( const std::vector< QV_OBJ * > &expected, int32_t live )
            {
                std::vector< QV_OBJ * > listed;
                qv___ObjCheckLists();

                for( QV_OBJ *object = qvWatchedSort()->odbFirst; object; object = object->odbNext )
                    listed.push_back( object );

                EXPECT_EQ( expected, listed );
                EXPECT_EQ( live, qvSortObjects( qvWatchedSort() ) );
            };

            auto isListed = []
            {
                Ref< QV_VECTOR > sorts( qvModuleSnapshotSorts( qvModule() ) );
                return qvVectorHasObj( sorts, qvSortObj( qvWatchedSort() ), QV_FALSE );
            };

            Ref< QV_OBJ > a = watched(), b = watched(), c = watched();

            restart( 0 );
            Ref< QV_OBJ > plain = watched(), other = watched();
            expectListed( { a, b, c }, 5 );
            b.reset();
            expectListed( { a, c }, 4 );

            // A sort may have live objects and none that are listed, and then some again.
            restart( QV_RUNTIME_FLAG_OBJECT_DATABASE );
            plain.reset();
            a.reset();
            c.reset();
            expectListed( {}, 1 );
            EXPECT_FALSE( isListed() );
            Ref< QV_OBJ > d = watched();
            expectListed( { d }, 2 );
            EXPECT_TRUE( isListed() );

            // A snapshot takes a reference to what is listed alone. The objects of a split text share memory.
            Ref< QV_VECTOR > parts( qvStringSplitChar( text( "a b c d e f g h i j k l" ), U' ', -1 ) );
            EXPECT_EQ( 1, qvVectorLength( Ref< QV_VECTOR >( qvSortSnapshot( qvWatchedSort() ) ) ) );
            other.reset();
            restart( 0 );
            parts.reset();
            d.reset();
            expectListed( {}, 0 );

            QV_INT strings = qvSortObjects( qvStringSort() );

            for( std::string spaced = "a"; spaced.size() < 100; spaced += " a" )
                Ref< QV_VECTOR >( qvStringSplitChar( text( spaced ), U' ', -1 ) );

            EXPECT_EQ( strings, qvSortObjects( qvStringSort() ) );

            // A number is that of a run: it is neither given back into the next one nor taken for one of that.
            Ref< QV_OBJ > old = unique(), older = unique();
            EXPECT_NE( qv___ObjUnique( old ), qv___ObjUnique( older ) );
            restart( 0 );
            Ref< QV_OBJ > first = unique(), second = unique();
            QV_INT        drawn = qv___ObjUnique( first );
            older.reset();
            EXPECT_NE( drawn, qv___ObjUnique( second ) );
            EXPECT_NE( drawn, qv___ObjUnique( old ) );
            EXPECT_NE( 0, qvObjDefaultCompareFunc( old, second ) );
        } );
}

/* Nested objects ------------------------------------------------------------------------------------------------- */

namespace
{
#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
const int    LEVELS = 100000;
const size_t STACK  = 1 << 20;
#else
const int    LEVELS = 1000000;
const size_t STACK  = 128 << 10;
#endif

QV_OBJ *inVector( QV_OBJ *inner )
{
    return qvVectorObj( qvVectorCreateFromObj( inner ) );
}

QV_OBJ *inDict( QV_OBJ *inner )
{
    QV_DICT *dict = qvDictCreate();
    qvDictSetIntKey( &dict, 1, inner );
    return qvDictObj( dict );
}

QV_OBJ *inRangeMap( QV_OBJ *inner )
{
    QV_RANGE_MAP *map = qvRangeMapCreate();
    qvRangeMapSetRangeKey( &map, 1, 2, inner );
    return qvRangeMapObj( map );
}

// The innermost object in that many containers, of these kinds in turn.
Ref< QV_OBJ > nested( int levels, const std::vector< QV_OBJ *(*)( QV_OBJ * ) > &kinds, QV_OBJ *innermost )
{
    Ref< QV_OBJ > object = Ref< QV_OBJ >::share( innermost );

    for( int i = 0; i < levels; i++ )
        object.reset( kinds[static_cast< size_t >( i ) % kinds.size()]( object ) );

    return object;
}

// Runs in a thread with little stack.
void onASmallStack( std::function< void() > body )
{
    pthread_attr_t attributes;
    pthread_t      thread;
    auto           run = []( void *function ) -> void *
    {
        ( *static_cast< std::function< void() > * >( function ) )();
        return nullptr;
    };
    pthread_attr_init( &attributes );
    pthread_attr_setstacksize( &attributes, STACK );
    pthread_create( &thread, &attributes, run, &body );
    pthread_join( thread, nullptr );
    pthread_attr_destroy( &attributes );
}
} // namespace

TEST( Obj, NestedObjectsEndOnASmallStack )
{
    const auto release = []
    {
        ended                   = 0;
        Ref< QV_OBJ > objects[] = {
            nested( LEVELS, { inVector }, watched() ), nested( LEVELS, { inDict }, watched() ),
            nested( LEVELS, { inVector, inDict, inRangeMap }, watched() ) };

        for( Ref< QV_OBJ > &object : objects )
            onASmallStack( [&] { object.reset(); } );

        // When the release returns all is gone, what is beside each other at any depth too.
        Ref< QV_VECTOR > row( qvVectorCreate() );

        for( int i = 0; i < 100; i++ )
            qvVectorAppendObj( row.at(), nested( i % 50, { inVector }, watched() ) );

        nested( 20, { inVector }, qvVectorObj( std::exchange( row, {} ) ) ).reset();
        EXPECT_EQ( 103, ended );
        EXPECT_EQ( 0, qvSortObjects( qvWatchedSort() ) );
    };

    release();
    expectInOwnRun(
        [&]
        {
            restart( 0 );
            release();
        } );
}

TEST( Obj, NestedObjectsAreComparedAndWrittenOnASmallStack )
{
    auto number = []( QV_INT value ) { return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) ); };
    auto levels = [&]( QV_INT innermost ) { return nested( LEVELS, { inVector, inRangeMap }, number( innermost ) ); };
    Ref< QV_OBJ > a = levels( 1 ), b = levels( 1 ), c = levels( 2 ), deeper = nested( 2, { inVector, inRangeMap }, b );

    onASmallStack(
        [&]
        {
            EXPECT_EQ( 0, qvObjCompare( a, b ) );
            EXPECT_EQ( -1, qvObjCompare( a, c ) );
            EXPECT_EQ( 1, qvObjCompare( c, b ) );
            EXPECT_EQ( -1, qvObjCompare( a, deeper ) ); // the sorts of what is innermost differ

            std::string front, back;

            for( int i = 0; i < LEVELS / 2; i++ )
            {
                front += "{[1,2]=<";
                back += ">}";
            }

            EXPECT_TRUE( front + "1" + back == textOf( a.get() ) );
        } );
}

// What follows a nested part counts, and is looked at only if all before it is equal.
TEST( Obj, PartsAreComparedFromTheFirstOn )
{
    Ref< QV_OBJ > a = unique(), b = unique(), c = unique(), d = unique();
    auto          pair = []( QV_OBJ *deep, QV_OBJ *flat )
    {
        Ref< QV_VECTOR > vec( qvVectorCreateFromObj( nested( 2, { inVector }, deep ) ) );
        qvVectorAppendObj( vec.at(), flat );
        return vec;
    };

    // <<<a>>, b> and <<<a>>, c>: b draws first. <<<c>>, d> and <<<b>>, a>: c and b decide, and d draws nothing.
    QV_INT order = qvVectorCompare( pair( a, b ), pair( a, c ) );
    EXPECT_EQ( order, qvObjCompare( b, c ) );
    EXPECT_EQ( -order, qvVectorCompare( pair( c, d ), pair( b, a ) ) );
    EXPECT_EQ( -1, a->unique );
    EXPECT_EQ( -1, d->unique );
    EXPECT_EQ( "<<<" + textOf( a.get() ) + ">>, " + textOf( b.get() ) + ">", textOf( pair( a, b ).get() ) );
}

/* Order and broken contracts ------------------------------------------------------------------------------------- */

TEST( Obj, DifferentSortsOrderByTheirNames )
{
    Ref< QV_OBJ > object = watched(), string( qvStringObj( qvStringCreate() ) );

    EXPECT_EQ( 0, qvObjCompare( object, object ) ); // its family is not asked
    EXPECT_EQ( -1, qvObjCompare( unique(), string ) );
    EXPECT_EQ( 1, qvObjCompare( object, string ) );

    // Sorts are objects of a sort of their own, ordered by their names too.
    EXPECT_EQ( -1, qvSortCompare( qvBoxedIntSort(), qvStringSort() ) );
    EXPECT_EQ( -1, qvObjCompare( qvSortObj( qvStringSort() ), string ) );

    auto twin = []( const char *name ) -> QV_SORT
    { return QV___STATIC_SORT( nullptr, name, nullptr, nullptr, nullptr, nullptr, nullptr ); };
    static QV_SORT one = twin( "QV_TWIN" ), other = twin( "QV_TWIN" ), bad = twin( "QV__TWIN" );
    EXPECT_FALSE( qvSortHasModule( &one ) );
    EXPECT_DEATH( qvSortCompare( &one, &other ), Not( HasSubstr( "    Expression: " ) ) );
    EXPECT_BROKEN( qvSortName( &bad ), "qvNameUpperCaseOk( qvs, QV_TRUE )" );
}

TEST( Obj, BrokenContractsAreReported )
{
    expectReports( {
        { [] { qv___ObjCreate( 100, nullptr ); }, "sort" },
        { [] { qv___ObjFree( watched() ); },
          "thisObj->type != QV___OBJ_TYPE_OBJECT || QV___RETAIN_COUNT_VALUE( thisObj->retainCount ) == 0" },
        { [] { watched()->sort = nullptr; }, "thisObj->type != QV___OBJ_TYPE_OBJECT || thisObj->sort" },
        { [] { qv___ObjDbgSetAllocationSizeN( watched(), QV_INT_MAX, 2 ); }, "QV_INT_MUL_OK( count, size )" },
        { [] { qv___ObjLogAppendCallStack( watched(), QV_INT_MAX, 0 ); }, "QV_INT_ADD_OK( skip, 1 )" },
        { [] { qv___ObjLogAppend( watched(), nullptr ); }, "logMessage" },
        { [] { qv___ObjLogAppendVector( watched(), nullptr ); }, "vec" },
        { [] { qv___ObjLog( nullptr ); }, "thisObj" },
    } );
    EXPECT_BROKEN_MESSAGE(
        watched( 8 ), "Allocation size failure",
        "!QV___ATOMIC_INT_COMPARE_EXCHANGE( &thisObj->dbgAllocationSize, 0, 0 )" );
}

/* Unique numbers ------------------------------------------------------------------------------------------------- */

namespace
{
using LockFunc = int ( * )( pthread_mutex_t * );

const LockFunc       LOCK      = reinterpret_cast< LockFunc >( dlsym( RTLD_NEXT, "pthread_mutex_lock" ) );
thread_local QV_OBJ *overtaken = nullptr; // gets its number from somebody else while its own thread draws one
} // namespace

extern "C" int pthread_mutex_lock( pthread_mutex_t *mutex ) noexcept
{
    if( QV_OBJ *object = std::exchange( overtaken, nullptr ) )
        qv___ObjUnique( object );

    return LOCK ? LOCK( mutex ) : 0; // before main() there is one thread
}

TEST( Obj, UniqueNumbersAreDrawnOnFirstNeedAndGivenBack )
{
    Ref< QV_OBJ > a = unique(), b = unique();

    // The numbers that will be drawn: `first` by the thread that is faster, `second` by the one that is late and gives
    // it back.
    QV_INT first = qv___UniqueGet(), second = qv___UniqueGet();
    qv___UniquePut( second );
    qv___UniquePut( first );

    overtaken = a;
    EXPECT_EQ( first, qv___ObjUnique( a ) );
    EXPECT_EQ( first, qv___ObjUnique( a ) );
    EXPECT_EQ( second, qv___ObjUnique( b ) );
    EXPECT_EQ( first < second ? -1 : 1, qvObjDefaultCompareFunc( a, b ) );

    a.reset();
    a = unique();
    EXPECT_EQ( first, qv___ObjUnique( a ) );
    EXPECT_EQ( "QV_BOXED_UNIQUE(" + std::to_string( first ) + ")", textOf( a.get() ) );
}

/* Snapshots ------------------------------------------------------------------------------------------------------ */

TEST( Sort, ASnapshotHoldsTheLiveObjectsOldestFirst )
{
    Ref< QV_OBJ > a = watched(), b = watched(), c = watched();
    b.reset();

    Ref< QV_VECTOR > snapshot( qvSortSnapshot( qvWatchedSort() ) );
    EXPECT_THAT( elements( snapshot ), ElementsAre( a.get(), c.get() ) );
    EXPECT_EQ( 2, references( a.get() ) );
    snapshot.reset();
    EXPECT_EQ( 1, references( a.get() ) );

    // A snapshot of Vectors does not hold itself. It is the caller's alone, also if it is empty.
    Ref< QV_VECTOR > empty( qvSortSnapshot( qvSortSort() ) ), vectors( qvSortSnapshot( qvVectorSort() ) );
    EXPECT_EQ( 0, qvVectorLength( empty ) );
    EXPECT_EQ( 2, references( empty.get() ) ); // the other one's
    EXPECT_EQ( 1, references( vectors.get() ) );
    EXPECT_FALSE( qvVectorHasObj( vectors, qvVectorObj( vectors ), QV_FALSE ) );
    EXPECT_EQ( qvVectorLength( vectors ) + 1, qvSortObjects( qvVectorSort() ) );
}

// The two moments in which a release and a snapshot meet, one after the other.
TEST( Sort, ASnapshotAndTheLastReleaseAgreeWhoEndsAnObject )
{
    ended                = 0;
    Ref< QV_OBJ > object = watched();

    // The releasing thread has found a count of 1, and then the snapshot comes: the object is the snapshot's to end.
    Ref< QV_VECTOR > snapshot( qvSortSnapshot( qvWatchedSort() ) );
    qv___ObjReleaseLast( object.give() );
    EXPECT_EQ( 0, ended );
    EXPECT_EQ( 1, references( elements( snapshot )[0] ) );
    snapshot.reset();
    EXPECT_EQ( 1, ended );

    // It has made the count 0 and waits for the list: the snapshot passes the object over.
    object = watched();
    qv___RetainCountDecrement( &object->retainCount );
    snapshot.reset( qvSortSnapshot( qvWatchedSort() ) );
    EXPECT_EQ( 0, qvVectorLength( snapshot ) );
    EXPECT_EQ( 0, references( object.get() ) );
    qv___ObjFree( object.give() );
    EXPECT_EQ( 2, ended );
}

// A snapshot's reference makes a Vector or Buffer look shared to its owner at any moment, in the middle of a change too.
TEST( Sort, ValuesChangeDuringSnapshots )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );
    Ref< QV_BUFFER > buf( qvBufferCreate() );
    auto             fill = [&]
    {
        for( int i = 0; i < 10; i++ )
            qvVectorAppendObj( vec.at(), watched() );
    };

    // The first object that the deletion ends takes the snapshot.
    fill();
    looksAt = qvVectorSort();
    qvVectorDelLeading( vec.at(), 9 );
    EXPECT_EQ( 1, qvVectorLength( vec ) );
    EXPECT_EQ( 2, references( vec.get() ) );
    qv::release( lastLook );
    qvVectorClear( vec.at() );

    // Objects and values come, change and go while other threads take snapshots.
    std::atomic< int >  waiting = 5;
    std::atomic< bool > over    = false;
    auto                change  = [&]
    {
        fill();

        while( qvVectorLength( vec ) > 0 )
            qv::release( qvVectorPop( vec.at() ) );

        qvBufferAppendOne( buf.at(), 600 );
        qvBufferDelLeading( buf.at(), 600 );
    };
    const std::function< void() > LOOKS[] = {
        [] { Ref< QV_VECTOR > vectors( qvSortSnapshot( qvVectorSort() ) ); },
        [] { Ref< QV_VECTOR > buffers( qvSortSnapshot( qvBufferSort() ) ); },
        []
        {
            Ref< QV_VECTOR > objects( qvSortSnapshot( qvWatchedSort() ) );

            for( QV_OBJ *object : elements( objects ) )
                EXPECT_LT( 0, references( object ) );
        },
        [] { watched(); },
    };

    onThreads(
        5,
        [&]( int number )
        {
            for( waiting--; waiting > 0; )
                std::this_thread::yield();

            for( int i = 0; number == 0 ? i < 2000 : !over; i++ )
                number == 0 ? change() : LOOKS[number - 1]();

            over = true;
        } );

    EXPECT_EQ( 0, qvBufferLength( buf ) );
    EXPECT_EQ( 0, qvSortObjects( qvWatchedSort() ) );
    EXPECT_EQ( nullptr, qvWatchedSort()->odbFirst );
}

/* The log -------------------------------------------------------------------------------------------------------- */

namespace
{
std::vector< std::string > log( QV_OBJ *object )
{
    Ref< QV_VECTOR >           lines( qv___ObjLog( object ) );
    std::vector< std::string > result;

    for( QV_INT i = 0; lines && i < lines->length; i++ )
        result.push_back( textOf( elements( lines )[static_cast< size_t >( i )] ) );

    return result;
}

// The words of a text.
Ref< QV_VECTOR > words( const std::string &spaced )
{
    return Ref< QV_VECTOR >( qvStringSplitChar( text( spaced ), U' ', -1 ) );
}
} // namespace

TEST( ObjLog, LinesHaveTheOrderOfTheirCalls )
{
    Ref< QV_OBJ >    object = watched();
    Ref< QV_VECTOR > mixed  = words( " größer" );
    qvVectorAppendInt( mixed.at(), 12 );
    qvVectorAppendObj( mixed.at(), object ); // taking its text appends a line too

    qv___ObjLogAppendVector( object, Ref< QV_VECTOR >( qvVectorCreate() ) );
    EXPECT_EQ( nullptr, qv___ObjLog( object ) );
    qv___ObjLogAppend( object, text( "first" ) );
    qv___ObjLogAppendVector( object, mixed );
    qv___ObjLogAppend( object, text( "last" ) );
    EXPECT_THAT( log( object ), ElementsAre( "first", "asked", "", "größer", "12", "watched", "last" ) );
}

TEST( ObjLog, AStackStartsWithItsCallerAndEndsWithAnEmptyLine )
{
    // That of a creation leaves the frames of the recording itself out.
    expectInOwnRun(
        []
        {
            restart( QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN );
            EXPECT_THAT( log( watched() )[0], Not( HasSubstr( "libmorvane" ) ) );
        } );

    Ref< QV_OBJ > object = watched();
    qv___ObjLogAppendCallStack( object, 0, 2 );
    qv___ObjLogAppendCallStack( object, QV_INT_MAX - 1, -1 );
    EXPECT_THAT(
        log( object ),
        ElementsAre( HasSubstr( "AStackStartsWithItsCallerAndEndsWithAnEmptyLine" ), testing::Ne( "" ), "", "" ) );
}

TEST( ObjLog, ThreadsAppendWholeVectors )
{
    Ref< QV_OBJ > object = watched();

    onThreads(
        4,
        [&]( int number )
        {
            for( int i = 0; i < 100; i++ )
            {
                qv___ObjLogAppendVector(
                    object, words( std::to_string( number ) + " " + std::to_string( number + 4 ) ) );
                EXPECT_LE( size_t( 2 * i + 2 ), log( object ).size() );
            }
        } );

    std::vector< std::string > lines = log( object );
    ASSERT_EQ( size_t( 4 * 100 * 2 ), lines.size() );

    for( size_t i = 0; i < lines.size(); i += 2 )
        EXPECT_EQ( std::stoi( lines[i] ) + 4, std::stoi( lines[i + 1] ) );
}

// A Dict ends what only it holds without the steps that most ends do not need. Without the database: with it, none.
TEST( Obj, WhatADictReleasesEndsAsAnyObject )
{
    expectInOwnRun(
        []
        {
            restart( 0 );

            auto releaseInDict = []( auto prepare )
            {
                Ref< QV_OBJ >  object = unique();
                Ref< QV_DICT > dict( qvDictCreate() );
                prepare( object.get() );
                qvDictSetIntKey( dict.at(), 1, object );
                object.reset();
            };

            QV_INT number = 0;
            releaseInDict( [&]( QV_OBJ *object ) { number = qv___ObjUnique( object ); } );
            EXPECT_EQ( number, qv___ObjUnique( unique() ) );
            releaseInDict( []( QV_OBJ *object ) { qv___ObjLogAppend( object, text( "lost if it is not freed" ) ); } );

            Ending ending = inChild(
                [&] { releaseInDict( []( QV_OBJ *object ) { qv___ObjDbgSetAllocationSize( object, 8 ); } ); } );
            EXPECT_EQ( SIGABRT, ending.signal );
            EXPECT_THAT( ending.errors, HasSubstr( "Allocation size failure" ) );
        } );
}
