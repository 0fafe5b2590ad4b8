#include "qv_test_call.h"
#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj_private.h"

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

std::vector< std::string > log( QV_OBJ *object )
{
    Ref< QV_VECTOR >           lines( qv___ObjLog( object ) );
    std::vector< std::string > result;

    for( QV_INT i = 0; lines && i < lines->length; i++ )
        result.push_back( textOf( qv::objs( lines.get() )[i] ) );

    return result;
}

// The words of a text.
Ref< QV_VECTOR > words( const std::string &spaced )
{
    return Ref< QV_VECTOR >( qvStringSplitChar( text( spaced ), U' ', -1 ) );
}
} // namespace

QV___FAMILY( Diary, QV_DIARY, nullptr, nullptr, diaryToString )

/* The log -------------------------------------------------------------------------------------------------------- */

TEST( ObjLog, LinesHaveTheOrderOfTheirCalls )
{
    Ref< QV_DIARY >  object = diary();
    Ref< QV_VECTOR > mixed  = words( " größer" );
    qvVectorAppendInt( mixed.at(), 12 );
    qvVectorAppendObj( mixed.at(), qvDiaryObj( object ) ); // taking its text appends a line too

    qv___ObjLogAppendVector( object, Ref< QV_VECTOR >( qvVectorCreate() ) );
    EXPECT_EQ( nullptr, qv___ObjLog( object ) );
    qv___ObjLogAppend( object, text( "first" ) );
    qv___ObjLogAppendVector( object, mixed );
    qv___ObjLogAppend( object, text( "last" ) );
    EXPECT_THAT( log( object ), testing::ElementsAre( "first", "asked", "", "größer", "12", "diary", "last" ) );
}

TEST( ObjLog, AStackEndsWithAnEmptyLine )
{
    Ref< QV_DIARY > object = diary();

    qv___ObjLogAppendCallStack( object, 0, 2 );
    qv___ObjLogAppendCallStack( object, QV_INT_MAX - 1, -1 );
    std::vector< std::string > lines = log( object );
    EXPECT_THAT( lines, testing::ElementsAre( testing::_, testing::Ne( "" ), "", "" ) );
    EXPECT_THAT( lines[0], testing::HasSubstr( "AStackEndsWithAnEmptyLine" ) ); // the caller's own frame

    expectReports( {
        { [] { qv___ObjLogAppendCallStack( diary(), QV_INT_MAX, 0 ); }, "QV_INT_ADD_OK( skip, 1 )" },
        { [] { qv___ObjLogAppend( diary(), nullptr ); }, "logMessage" },
        { [] { qv___ObjLogAppendVector( diary(), nullptr ); }, "vec" },
        { [] { qv___ObjLog( nullptr ); }, "thisObj" },
    } );
}

TEST( ObjLog, ThreadsAppendWholeVectors )
{
    const int                  THREADS = 3, ROUNDS = 200;
    Ref< QV_DIARY >            object = diary();
    std::vector< std::string > early;

    onThreads(
        THREADS + 1,
        [&]( int number )
        {
            for( int i = 0; i < ROUNDS && number < THREADS; i++ )
                qv___ObjLogAppendVector(
                    object, words( std::to_string( number ) + " " + std::to_string( number + THREADS ) ) );

            if( number == THREADS )
                early = log( object );
        } );

    // What is read meanwhile is what stands at the front later.
    std::vector< std::string > lines = log( object );
    ASSERT_EQ( size_t( THREADS * ROUNDS * 2 ), lines.size() );
    EXPECT_TRUE( std::equal( early.begin(), early.end(), lines.begin() ) );

    for( size_t i = 0; i < lines.size(); i += 2 )
        EXPECT_EQ( std::stoi( lines[i] ) + THREADS, std::stoi( lines[i + 1] ) );
}
