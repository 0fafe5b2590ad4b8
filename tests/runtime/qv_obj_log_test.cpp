#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj_private.h"

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

/* A family of the test, whose text appends to a log -------------------------------------------------------------- */

typedef struct QV_DIARY QV_DIARY;

QV_FAMILY( Diary, QV_DIARY )

struct QV_DIARY : QV_OBJ
{
};

namespace
{
QV_STRING *diaryToString( QV_OBJ *thisObj )
{
    qv___ObjLogAppend( thisObj, text( "asked" ) );
    return text( "diary" ).give();
}

Ref< QV_DIARY > diary()
{
    return Ref< QV_DIARY >( qv::create< QV_DIARY >( qvDiarySort() ) );
}

using Lines = std::vector< std::string >;

Lines log( QV_OBJ *object )
{
    Ref< QV_VECTOR > lines( qv___ObjLog( object ) );
    Lines            result;

    for( QV_INT i = 0; lines && i < lines->length; i++ )
        result.push_back( textOf( qv::objs( lines.get() )[i] ) );

    return result;
}

Ref< QV_VECTOR > vectorOf( const Lines &lines )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( const std::string &line : lines )
        qvVectorAppendStringCstr( vec.at(), line.data(), static_cast< QV_INT >( line.size() ) );

    return vec;
}
} // namespace

QV___FAMILY( Diary, QV_DIARY, nullptr, nullptr, diaryToString )

/* The log -------------------------------------------------------------------------------------------------------- */

TEST( ObjLog, LinesStandInTheOrderOfTheirCalls )
{
    Ref< QV_DIARY >     object = diary();
    Ref< QV_BOXED_INT > number( qvBoxedIntCreate( 12 ) );
    Ref< QV_VECTOR >    mixed = vectorOf( { "", "größer" } );

    EXPECT_EQ( nullptr, qv___ObjLog( object ) );
    qv___ObjLogAppendVector( object, vectorOf( {} ) );
    EXPECT_EQ( nullptr, qv___ObjLog( object ) );

    qv___ObjLogAppend( object, text( "first" ) );
    qvVectorAppendObj( mixed.at(), qvBoxedIntObj( number ) );
    qv___ObjLogAppendVector( object, mixed );
    qv___ObjLogAppend( object, text( "last" ) );
    EXPECT_EQ( ( Lines{ "first", "", "größer", "12", "last" } ), log( object ) );

    // Taking the text of an element may log itself.
    Ref< QV_VECTOR > self( qvVectorCreate() );
    qvVectorAppendObj( self.at(), qvDiaryObj( object ) );
    qv___ObjLogAppendVector( object, self );
    EXPECT_EQ( ( Lines{ "first", "", "größer", "12", "last", "asked", "diary" } ), log( object ) );
}

TEST( ObjLog, AStackEndsWithAnEmptyLine )
{
    Ref< QV_DIARY > object = diary();

    qv___ObjLogAppendCallStack( object, 0, 2 );
    qv___ObjLogAppendCallStack( object, QV_INT_MAX - 1, -1 );
    Lines lines = log( object );
    ASSERT_EQ( 4u, lines.size() );
    EXPECT_THAT( lines[0], testing::HasSubstr( "AStackEndsWithAnEmptyLine" ) ); // the caller's own frame
    EXPECT_NE( "", lines[1] );
    EXPECT_EQ( "", lines[2] );
    EXPECT_EQ( "", lines[3] );

    EXPECT_BROKEN( qv___ObjLogAppendCallStack( object, -1, 0 ), "skip >= 0" );
    EXPECT_BROKEN( qv___ObjLogAppendCallStack( object, QV_INT_MAX, 0 ), "QV_INT_ADD_OK( skip, 1 )" );
    EXPECT_BROKEN( qv___ObjLogAppend( object, nullptr ), "logMessage" );
    EXPECT_BROKEN( qv___ObjLogAppendVector( object, nullptr ), "vec" );
    EXPECT_BROKEN( qv___ObjLog( nullptr ), "thisObj" );
}

TEST( ObjLog, ThreadsAppendWholeVectors )
{
    const int                  THREADS = 3, ROUNDS = 200;
    Ref< QV_DIARY >            object = diary();
    std::vector< std::thread > threads;

    for( int t = 0; t < THREADS; t++ )
        threads.emplace_back(
            [&, t]
            {
                std::string name = std::to_string( t );

                for( int i = 0; i < ROUNDS; i++ )
                    qv___ObjLogAppendVector( object, vectorOf( { name, name + name } ) );
            } );

    // What is read meanwhile is what stands at the front later.
    Lines early = log( object );

    for( std::thread &thread : threads )
        thread.join();

    Lines lines = log( object );
    ASSERT_EQ( size_t( THREADS * ROUNDS * 2 ), lines.size() );
    EXPECT_TRUE( std::equal( early.begin(), early.end(), lines.begin() ) );

    for( size_t i = 0; i < lines.size(); i += 2 )
        EXPECT_EQ( lines[i] + lines[i], lines[i + 1] );
}

/* The origin of objects ------------------------------------------------------------------------------------------ */

// Visible to the linker, for the stack to name it.
extern "C" __attribute__( ( noinline ) ) QV_STORE *testOriginOfStore()
{
    QV_STORE *store = qvStoreCreate();
    __asm__ volatile( "" : : "r"( store ) : "memory" ); // so that the call above is no jump
    return store;
}

TEST( ObjLog, ObjectsRecordTheStackOfTheirCreation )
{
    expectInOwnRun(
        []
        {
            restart( QV_RUNTIME_FLAG_OBJECT_DATABASE | QV_RUNTIME_FLAG_OBJECT_ORIGIN );

            // What recording creates does not record.
            Ref< QV_STRING > string = text( "text" );
            Ref< QV_VECTOR > vec    = vectorOf( { "element" } );
            Ref< QV_DICT >   dict( qvDictCreate() );
            Ref< QV_BUFFER > buf( qvBufferCreate() );
            qvDictSetStringKey( dict.at(), string, qvVectorObj( vec ) );
            qvBufferAppendByte( buf.at(), 1 );
            EXPECT_EQ( nullptr, qv___ObjLog( qvStringObj( string ) ) );
            EXPECT_EQ( nullptr, qv___ObjLog( qvVectorObj( vec ) ) );
            EXPECT_EQ( nullptr, qv___ObjLog( qvDictObj( dict ) ) );
            EXPECT_EQ( nullptr, qv___ObjLog( qvBufferObj( buf ) ) );

            // One stack and an empty line.
            Ref< QV_STORE > store( testOriginOfStore() );
            Lines           lines = log( qvStoreObj( store ) );
            auto            call  = std::find_if(
                lines.begin(), lines.end(), []( auto &line ) { return line.find( "(qvStoreCreate+" ) != line.npos; } );
            ASSERT_LT( 2, lines.end() - call );
            EXPECT_THAT( call[1], testing::HasSubstr( "(testOriginOfStore+" ) );
            EXPECT_EQ( 1, std::count( lines.begin(), lines.end(), "" ) );
            EXPECT_EQ( "", lines.back() );

            // The frames of the recording itself are left out.
            EXPECT_THAT( log( diary() )[0], testing::Not( testing::HasSubstr( "libmorvane" ) ) );
        } );
}
