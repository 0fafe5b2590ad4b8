#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_sort.h"

#include <algorithm>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

using qv::Ref;
using namespace qv::test;

/* A family of the test, whose objects tell whether they are intact and are counted when they end ----------------- */

typedef struct QV_COUNTED QV_COUNTED;

QV_FAMILY( Counted, QV_COUNTED )

struct QV_COUNTED : QV_OBJ
{
    QV_INT mark;
};

namespace
{
const QV_INT INTACT = 0x5A5A;

int        ended    = 0;
QV_SORT   *looksAt  = nullptr; // of which an object that ends takes a snapshot, once
QV_VECTOR *lastLook = nullptr;

void freeCounted( QV_OBJ *thisObj )
{
    EXPECT_EQ( INTACT, std::exchange( qvCountedFrom( thisObj )->mark, 0 ) ) << "ended twice";
    qv___AtomicAdd32( &ended, 1 );

    if( looksAt )
        lastLook = qvSortSnapshot( std::exchange( looksAt, nullptr ) );
}

Ref< QV_COUNTED > counted()
{
    Ref< QV_COUNTED > object( qv::create< QV_COUNTED >( qvCountedSort() ) );
    object->mark = INTACT;

    return object;
}

// The objects of a snapshot, which is given up.
std::vector< QV_OBJ * > elements( QV_VECTOR *owned )
{
    Ref< QV_VECTOR > vec( owned );
    return std::vector< QV_OBJ * >( qv::objs( owned ), qv::objs( owned ) + owned->length );
}

// Runs each function again and again in a thread of its own until the first one has done its rounds.
void race( int rounds, std::vector< std::function< void() > > functions )
{
    std::vector< std::thread > threads;
    int32_t                    waiting = static_cast< int32_t >( functions.size() );
    int32_t                    over    = 0;

    for( size_t t = 0; t < functions.size(); t++ )
        threads.emplace_back(
            [&, t]
            {
                qv___AtomicAdd32( &waiting, -1 );

                while( qv___AtomicLoad32( &waiting ) > 0 )
                    std::this_thread::yield();

                for( int i = 0; t == 0 ? i < rounds : !qv___AtomicLoad32( &over ); i++ )
                    functions[t]();

                qv___AtomicStore32( &over, 1 );
            } );

    for( std::thread &thread : threads )
        thread.join();
}
} // namespace

QV___FAMILY( Counted, QV_COUNTED, freeCounted, nullptr, nullptr )

/* Snapshots ------------------------------------------------------------------------------------------------------ */

TEST( Sort, ASnapshotHoldsTheLiveObjectsOldestFirst )
{
    Ref< QV_COUNTED > a = counted(), b = counted(), c = counted();
    b.reset();

    Ref< QV_VECTOR > snapshot( qvSortSnapshot( qvCountedSort() ) );
    ASSERT_EQ( 2, qvVectorLength( snapshot ) );
    EXPECT_EQ( a.get(), qv::objs( snapshot.get() )[0] );
    EXPECT_EQ( c.get(), qv::objs( snapshot.get() )[1] );
    EXPECT_EQ( 2, references( a.get() ) );
    EXPECT_EQ( 1, references( snapshot.get() ) );

    // What nobody else holds any more ends with the snapshot.
    ended = 0;
    a.reset();
    EXPECT_EQ( 0, ended );
    snapshot.reset();
    EXPECT_EQ( 1, ended );
    EXPECT_EQ( 1, references( c.get() ) );

    // A snapshot of Vectors does not hold itself. It is the caller's alone, also if it is empty.
    Ref< QV_VECTOR >        empty( qvSortSnapshot( qvSortSort() ) );
    std::vector< QV_OBJ * > vectors = elements( qvSortSnapshot( qvVectorSort() ) );
    EXPECT_EQ( 0, qvVectorLength( empty ) );
    EXPECT_EQ( 1, references( empty.get() ) );
    EXPECT_EQ( 1, std::count( vectors.begin(), vectors.end(), empty.get() ) );
    EXPECT_EQ( vectors.size(), size_t( qvSortObjects( qvVectorSort() ) ) );
}

/* Snapshots beside the work of other threads --------------------------------------------------------------------- */

// The two moments in which a release and a snapshot meet, one after the other.
TEST( Sort, ASnapshotAndTheLastReleaseAgreeWhoEndsAnObject )
{
    ended                    = 0;
    Ref< QV_COUNTED > object = counted();

    // The releasing thread has found a count of 1, and then the snapshot comes: the object is the snapshot's to end.
    Ref< QV_VECTOR > snapshot( qvSortSnapshot( qvCountedSort() ) );
    qv::retainCreated( object.get(), 1 );
    EXPECT_EQ( 3, references( object.get() ) );
    qv::release( object.get() );
    qv___ObjReleaseLast( object.give() );
    EXPECT_EQ( 0, ended );
    EXPECT_EQ( 1, references( qv::objs( snapshot.get() )[0] ) );
    snapshot.reset();
    EXPECT_EQ( 1, ended );

    // It has made the count 0 and waits for the list: the snapshot passes the object over.
    object = counted();
    qv___RetainCountDecrement( &object->retainCount );
    EXPECT_EQ( std::vector< QV_OBJ * >{}, elements( qvSortSnapshot( qvCountedSort() ) ) );
    EXPECT_EQ( 0, references( object.get() ) );
    qv___ObjFree( object.give() );
    EXPECT_EQ( 2, ended );
}

TEST( Sort, ObjectsComeAndGoDuringSnapshots )
{
    int32_t made = 0;
    ended        = 0;

    // As every release does it, with time for others between its two steps.
    auto comeAndGo = [&]
    {
        QV_OBJ *objects[16];
        bool    alone[16];

        for( QV_OBJ *&object : objects )
            object = qvCountedObj( counted().give() );

        qv___AtomicAdd32( &made, 16 );

        for( int i = 0; i < 16; i++ )
            alone[i] = qv___AtomicLoad32( &objects[i]->retainCount ) == 1;

        std::this_thread::yield();

        for( int i = 0; i < 16; i++ )
            ( alone[i] ? qv___ObjReleaseLast : qvObjRelease )( objects[i] );
    };

    auto look = []
    {
        Ref< QV_VECTOR > snapshot( qvSortSnapshot( qvCountedSort() ) );

        for( QV_INT i = 0; i < snapshot->length; i++ )
            EXPECT_LT( 0, references( qv::objs( snapshot.get() )[i] ) );
    };

    race( 1500, { comeAndGo, comeAndGo, look, look } );

    EXPECT_EQ( made, ended );
    EXPECT_EQ( 0, qvSortObjects( qvCountedSort() ) );
    EXPECT_EQ( nullptr, qvCountedSort()->odbFirst );
}

// A snapshot's reference makes a Vector or Buffer look shared to its owner at any moment, in the middle of a change too.
TEST( Sort, ValuesChangeDuringSnapshots )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );
    Ref< QV_BUFFER > buf( qvBufferCreate() );

    for( int i = 0; i < 100; i++ )
        qvVectorAppendObj( vec.at(), qvCountedObj( counted() ) );

    // The first object that the deletion ends takes the snapshot.
    looksAt = qvVectorSort();
    qvVectorDelLeading( vec.at(), 90 );
    EXPECT_EQ( 10, qvVectorLength( vec ) );
    EXPECT_EQ( 2, references( vec.get() ) );
    qv::release( lastLook );
    qvVectorClear( vec.at() );

    auto change = [&]
    {
        for( int i = 0; i < 10; i++ )
            qvVectorAppendObj( vec.at(), qvCountedObj( counted() ) );

        while( qvVectorLength( vec ) > 0 )
            qv::release( qvVectorPop( vec.at() ) );

        qvBufferAppendOne( buf.at(), 600 );
        qvBufferDelLeading( buf.at(), 600 );
    };

    auto lookAtVectors = [] { qv::release( qvSortSnapshot( qvVectorSort() ) ); };
    auto lookAtBuffers = [] { qv::release( qvSortSnapshot( qvBufferSort() ) ); };

    race( 1000, { change, lookAtVectors, lookAtVectors, lookAtBuffers } );

    EXPECT_EQ( 0, qvVectorLength( vec ) );
    EXPECT_EQ( 0, qvBufferLength( buf ) );
    EXPECT_EQ( 0, qvSortObjects( qvCountedSort() ) );
}
