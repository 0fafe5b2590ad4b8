#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_unique_private.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <pthread.h>

using qv::Ref;
using namespace qv::test;

/* Families of the test: one that watches its end, and two of the same name --------------------------------------- */

typedef struct QV_WATCHED QV_WATCHED;

QV_FAMILY( Watched, QV_WATCHED )

struct QV_WATCHED : QV_OBJ
{
    QV_INT left; // what the free function leaves declared
};

namespace
{
int ended = 0;

void freeWatched( QV_OBJ *thisObj )
{
    qv___AtomicAdd32( &ended, 1 );
    EXPECT_EQ( 0, qv___RetainCountValue( &thisObj->retainCount ) );
    qv___ObjDbgSetAllocationSize( thisObj, qvWatchedFrom( thisObj )->left );
}

QV_INT compareWatched( QV_OBJ *, QV_OBJ * )
{
    ADD_FAILURE() << "asked to compare";
    return 1;
}

Ref< QV_WATCHED > watched()
{
    Ref< QV_WATCHED > object( qv::create< QV_WATCHED >( qvWatchedSort() ) );
    object->left = 0;

    return object;
}

QV_OBJ *any( QV_WATCHED *object )
{
    return qvWatchedObj( object );
}

QV_SORT twin( const char *name )
{
    return QV___STATIC_SORT( nullptr, name, nullptr, nullptr, nullptr, nullptr, nullptr );
}

// The live objects of a sort by its list. All lists have to be in order.
std::vector< QV_OBJ * > listed( QV_SORT *sort )
{
    std::vector< QV_OBJ * > result;
    qv___ObjCheckLists();

    for( QV_OBJ *object = sort->odbFirst; object; object = object->odbNext )
        result.push_back( object );

    return result;
}

// How often a sort is in the list of its module's sorts.
int timesListed( QV_SORT *wanted )
{
    int result = 0;

    for( QV_SORT *sort = qv___module.sortsFirst; sort; sort = sort->sortsNext )
        result += sort == wanted;

    return result;
}
} // namespace

QV___FAMILY( Watched, QV_WATCHED, freeWatched, compareWatched, nullptr )

/* Life ----------------------------------------------------------------------------------------------------------- */

TEST( Obj, SortsAndModulesNeverEnd )
{
    QV_OBJ *sort   = qvSortObj( qvWatchedSort() );
    QV_OBJ *module = &qv___module;

    for( QV_OBJ *object : { sort, module } )
    {
        int32_t before = references( object );

        for( int32_t i = 0; i < before; i++ )
            qvObjRelease( object );

        EXPECT_EQ( 0, references( object ) );
        EXPECT_EQ( -1, qv___ObjUnique( object ) );

        // Others reach what is static at any moment, also behind the back of a release that has found a count of 1.
        for( int32_t i = 0; i <= before; i++ )
            qvObjRetain( object );

        qv___ObjReleaseLast( object );
        EXPECT_EQ( before, references( object ) );
    }

    EXPECT_EQ( qvSortSort(), qvObjSort( sort ) );
    EXPECT_EQ( qvSortSort(), qvObjSort( qvSortObj( qvSortSort() ) ) );
    EXPECT_STREQ( "QV_MODULE", qvObjSort( module )->name );
    EXPECT_EQ( &qv___module, qvSortModule( qvWatchedSort() ) );
    EXPECT_TRUE( qvSortHasModule( qvSortSort() ) );
    EXPECT_EQ( "QV_WATCHED", textOf( sort ) );
    EXPECT_EQ( "QV_WATCHED", take( qvSortName( qvWatchedSort() ) ) );
}

// Runs one after the other, with the database and without, in which objects outlive their run.
TEST( Obj, TheListsFollowObjectsThroughRunsOfAllKinds )
{
    expectInOwnRun(
        []
        {
            auto expectListed = []( std::vector< QV_OBJ * > expected, int32_t live )
            {
                EXPECT_EQ( expected, listed( qvWatchedSort() ) );
                EXPECT_EQ( live, qvSortObjects( qvWatchedSort() ) );
            };

            Ref< QV_WATCHED > a = watched(), b = watched(), c = watched();

            restart( 0 );
            Ref< QV_WATCHED > plain = watched(), other = watched();
            expectListed( { a, b, c }, 5 );
            b.reset();
            expectListed( { a, c }, 4 );

            // A sort may have live objects and none that are listed, and then some again.
            restart( QV_RUNTIME_FLAG_OBJECT_DATABASE );
            plain.reset();
            a.reset();
            c.reset();
            expectListed( {}, 1 );
            EXPECT_EQ( 0, timesListed( qvWatchedSort() ) );
            Ref< QV_WATCHED > d = watched();
            expectListed( { d }, 2 );
            EXPECT_EQ( 1, timesListed( qvWatchedSort() ) );

            // A snapshot takes a reference to what is listed alone. The objects of a split text share memory.
            Ref< QV_VECTOR > parts( qvStringSplitChar( text( "a b c d e f g h i j k l" ), U' ', -1 ) );
            Ref< QV_VECTOR > snapshot( qvSortSnapshot( qvWatchedSort() ) );
            EXPECT_EQ( 1, qvVectorLength( snapshot ) );
            snapshot.reset();
            other.reset();
            restart( 0 );
            parts.reset();
            d.reset();
            expectListed( {}, 0 );

            // A number is that of a run: it is neither given back into the next one nor taken for one of that.
            Ref< QV_WATCHED > old = watched(), older = watched();
            EXPECT_NE( qv___ObjUnique( any( old ) ), qv___ObjUnique( any( older ) ) );
            restart( QV_RUNTIME_FLAG_OBJECT_DATABASE );
            Ref< QV_WATCHED > first = watched(), second = watched();
            QV_INT            drawn = qv___ObjUnique( any( first ) );
            older.reset();
            EXPECT_NE( drawn, qv___ObjUnique( any( second ) ) );
            EXPECT_NE( drawn, qv___ObjUnique( any( old ) ) );
            EXPECT_NE( 0, qvObjDefaultCompareFunc( any( old ), any( second ) ) );
            qvRuntimeShutdown();
            second.reset();
            qvRuntimeStartup( QV_RUNTIME_FLAG_OBJECT_DATABASE, nullptr, nullptr, nullptr, nullptr );
            old.reset();
            first.reset();
            EXPECT_EQ( 0, timesListed( qvWatchedSort() ) );
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

Ref< QV_VECTOR > vectorOf( std::initializer_list< QV_OBJ * > objects )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( QV_OBJ *object : objects )
        qvVectorAppendObj( vec.at(), object );

    return vec;
}

// The innermost object in that many containers, of the sorts in turn that `kinds` names.
Ref< QV_OBJ > nested( int levels, const char *kinds, QV_OBJ *innermost )
{
    Ref< QV_OBJ > object = Ref< QV_OBJ >::share( innermost );

    for( int i = 0; i < levels; i++ )
    {
        const char kind = kinds[static_cast< size_t >( i ) % strlen( kinds )];

        if( kind == 'V' )
            object.reset( qvVectorObj( vectorOf( { object } ).give() ) );
        else if( kind == 'D' )
        {
            QV_DICT *dict = qvDictCreate();
            qvDictSetIntKey( &dict, 1, object );
            object.reset( qvDictObj( dict ) );
        }
        else if( kind == 'R' )
        {
            QV_RANGE_MAP *map = qvRangeMapCreate();
            qvRangeMapSetRangeKey( &map, 1, 2, object );
            object.reset( qvRangeMapObj( map ) );
        }
        else
        {
            QV_STORE *store = qvStoreCreate();
            qvStoreSetStoreCstr( &store, "a", -1, qvStoreFrom( object ) );
            object.reset( qvStoreObj( store ) );
        }
    }

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
        ended = 0;

        for( const char *kinds : { "V", "D", "VDR" } )
        {
            Ref< QV_OBJ > object = nested( LEVELS, kinds, any( watched() ) );
            onASmallStack( [&] { object.reset(); } );
        }

        Ref< QV_OBJ > store = nested( LEVELS / 10, "S", qvStoreObj( Ref< QV_STORE >( qvStoreCreate() ) ) );
        onASmallStack( [&] { store.reset(); } );

        // When the release returns all is gone, what lies side by side at any depth too.
        Ref< QV_VECTOR > row( qvVectorCreate() );

        for( int i = 0; i < 100; i++ )
            qvVectorAppendObj( row.at(), nested( i % 50, "V", any( watched() ) ) );

        nested( 20, "V", qvVectorObj( std::exchange( row, {} ) ) ).reset();
        EXPECT_EQ( 103, ended );
        EXPECT_EQ( 0, qvSortObjects( qvWatchedSort() ) );
    };

    release();
    EXPECT_EQ( 0, timesListed( qvWatchedSort() ) );

    expectInOwnRun(
        [&]
        {
            restart( 0 );
            release();
        } );
}

TEST( Obj, NestedObjectsAreComparedAndWrittenOnASmallStack )
{
    Ref< QV_BOXED_INT > one( qvBoxedIntCreate( 1 ) ), same( qvBoxedIntCreate( 1 ) ), two( qvBoxedIntCreate( 2 ) );
    Ref< QV_OBJ >       a = nested( LEVELS, "VR", qvBoxedIntObj( one ) );
    Ref< QV_OBJ >       b = nested( LEVELS, "VR", qvBoxedIntObj( same ) ), deeper = nested( 2, "VR", b );
    Ref< QV_OBJ >       c = nested( LEVELS, "VR", qvBoxedIntObj( two ) );

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

            EXPECT_TRUE( front + "1" + back == textOf( a ) );
        } );
}

// What follows a nested part counts, and is looked at only if all before it is equal.
TEST( Obj, PartsAreComparedFromTheFirstOn )
{
    auto nestedTwice = []( QV_BOXED_UNIQUE *unique ) { return nested( 2, "V", qvBoxedUniqueObj( unique ) ); };
    Ref< QV_BOXED_UNIQUE > a( qvBoxedUniqueCreate() ), b( qvBoxedUniqueCreate() ), c( qvBoxedUniqueCreate() ),
        d( qvBoxedUniqueCreate() );
    QV_OBJ *uniqueA = qvBoxedUniqueObj( a );

    // <<<a>>, b> and <<<a>>, c>: b draws first. <<<c>>, d> and <<<b>>, a>: c and b decide, and d draws nothing.
    Ref< QV_VECTOR > withB = vectorOf( { nestedTwice( a ), qvBoxedUniqueObj( b ) } ),
                     withC = vectorOf( { nestedTwice( a ), qvBoxedUniqueObj( c ) } ),
                     withD = vectorOf( { nestedTwice( c ), qvBoxedUniqueObj( d ) } ),
                     withA = vectorOf( { nestedTwice( b ), uniqueA } );
    QV_INT order           = qvVectorCompare( withB, withC );
    EXPECT_EQ( order, qvBoxedUniqueCompare( b, c ) );
    EXPECT_EQ( -order, qvVectorCompare( withD, withA ) );
    EXPECT_EQ( -1, qv::obj( d.get() )->unique );
    EXPECT_EQ( -1, uniqueA->unique );
    EXPECT_EQ(
        -1,
        qvVectorCompare( vectorOf( { qvSortObj( qvStringSort() ) } ), vectorOf( { qvSortObj( qvVectorSort() ) } ) ) );
    EXPECT_EQ( "<<<" + textOf( uniqueA ) + ">>, " + textOf( qvBoxedUniqueObj( b ) ) + ">", textOf( withB.get() ) );
}

/* Order and text ------------------------------------------------------------------------------------------------- */

TEST( Obj, DifferentSortsOrderByTheirNames )
{
    Ref< QV_WATCHED >   object = watched();
    Ref< QV_BOXED_INT > number( qvBoxedIntCreate( 1000 ) );
    Ref< QV_STRING >    string = text( "" );

    EXPECT_EQ( 0, qvObjCompare( any( object ), any( object ) ) ); // its family is not asked
    EXPECT_EQ( -1, qvObjCompare( qvBoxedIntObj( number ), qvStringObj( string ) ) );
    EXPECT_EQ( 1, qvObjCompare( any( object ), qvStringObj( string ) ) );

    // Sorts are objects of a sort of their own, ordered by their names too.
    EXPECT_EQ( -1, qvSortCompare( qvBoxedIntSort(), qvStringSort() ) );
    EXPECT_EQ( -1, qvObjCompare( qvSortObj( qvStringSort() ), qvStringObj( string ) ) );

    static QV_SORT one = twin( "QV_TWIN" ), other = twin( "QV_TWIN" ), bad = twin( "QV__TWIN" );
    EXPECT_FALSE( qvSortHasModule( &one ) );
    EXPECT_DEATH( qvSortCompare( &one, &other ), testing::Not( testing::HasSubstr( "    Expression: " ) ) );
    EXPECT_BROKEN( qvSortName( &bad ), "qvNameUpperCaseOk( qvs, QV_TRUE )" );
}

TEST( Obj, UniqueNumbersAreDrawnOnFirstNeedAndGivenBack )
{
    Ref< QV_BOXED_UNIQUE > a( qvBoxedUniqueCreate() ), b( qvBoxedUniqueCreate() );
    EXPECT_EQ( -1, qv::obj( a.get() )->unique );

    // The numbers that will be drawn: the first argument draws first, and gets the greater one here.
    QV_INT low = qv___UniqueGet(), high = qv___UniqueGet();
    if( low > high )
        std::swap( low, high );
    qv___UniquePut( low );
    qv___UniquePut( high );

    EXPECT_EQ( 1, qvObjDefaultCompareFunc( qvBoxedUniqueObj( b ), qvBoxedUniqueObj( a ) ) );
    QV_INT number = qv___ObjUnique( qvBoxedUniqueObj( a ) );
    EXPECT_EQ( low, number );
    EXPECT_EQ( high, qv___ObjUnique( qvBoxedUniqueObj( b ) ) );
    EXPECT_EQ( number, qv___ObjUnique( qvBoxedUniqueObj( a ) ) );

    a.reset( qvBoxedUniqueCreate() );
    EXPECT_EQ( number, qv___ObjUnique( qvBoxedUniqueObj( a ) ) );
    EXPECT_EQ( take( qvObjDefaultToStringFunc( qvBoxedUniqueObj( a ) ) ), textOf( a.get() ) );
}

/* Broken contracts ----------------------------------------------------------------------------------------------- */

TEST( Obj, BrokenContractsAreReported )
{
    Ref< QV_WATCHED > object = watched();

    EXPECT_BROKEN( qv___ObjCreate( 100, nullptr ), "sort" );
    EXPECT_BROKEN(
        qv___ObjFree( any( object ) ),
        "thisObj->type != QV___OBJ_TYPE_OBJECT || QV___RETAIN_COUNT_VALUE( thisObj->retainCount ) == 0" );
    EXPECT_BROKEN(
        {
            object->sort = nullptr;
            object.reset();
        },
        "thisObj->type != QV___OBJ_TYPE_OBJECT || thisObj->sort" );
    EXPECT_BROKEN( qv___ObjDbgSetAllocationSizeN( object, QV_INT_MAX, 2 ), "QV_INT_MUL_OK( count, size )" );
    EXPECT_BROKEN_MESSAGE(
        {
            object->left = 8;
            object.reset();
        },
        "Allocation size failure", "!QV___ATOMIC_INT_COMPARE_EXCHANGE( &thisObj->dbgAllocationSize, 0, 0 )" );
}

/* Threads -------------------------------------------------------------------------------------------------------- */

// All threads see the same numbers, each object's its own.
TEST( Obj, ThreadsDrawOneNumberForAnObject )
{
    Ref< QV_BOXED_UNIQUE >     contested[500];
    std::vector< QV_INT >      seen[4];
    std::vector< std::thread > threads;
    std::atomic< int >         waiting{ 4 };

    for( Ref< QV_BOXED_UNIQUE > &object : contested )
        object.reset( qvBoxedUniqueCreate() );

    for( std::vector< QV_INT > &numbers : seen )
        threads.emplace_back(
            [&]
            {
                for( waiting--; waiting > 0; )
                    std::this_thread::yield();

                for( Ref< QV_BOXED_UNIQUE > &object : contested )
                    numbers.push_back( qv___ObjUnique( qvBoxedUniqueObj( object ) ) );
            } );

    for( std::thread &thread : threads )
        thread.join();

    for( const std::vector< QV_INT > &numbers : seen )
        EXPECT_EQ( seen[0], numbers );

    EXPECT_EQ( std::size( contested ), std::set< QV_INT >( seen[0].begin(), seen[0].end() ).size() );
}

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

TEST( Obj, WhoComesLateGivesTheNumberBack )
{
    Ref< QV_BOXED_UNIQUE > object( qvBoxedUniqueCreate() ), next( qvBoxedUniqueCreate() );

    // The numbers that will be drawn: `first` for the one who is faster, `second` for the one who is late.
    QV_INT first = qv___UniqueGet(), second = qv___UniqueGet();
    qv___UniquePut( second );
    qv___UniquePut( first );

    overtaken = qvBoxedUniqueObj( object );
    EXPECT_EQ( first, qv___ObjUnique( qvBoxedUniqueObj( object ) ) );
    EXPECT_EQ( second, qv___ObjUnique( qvBoxedUniqueObj( next ) ) );
}
