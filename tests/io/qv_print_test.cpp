#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_vector.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_runtime.h"

using qv::Ref;
using namespace qv::test;

TEST( Print, LinesAndTextsComeOneCallEach )
{
    Ending ending = inOwnRun(
        []
        {
            qvRuntimeShutdown();
            qvRuntimeStartup(
                0, []( const QV_CHAR *, QV_INT length ) { fprintf( stderr, "%d;", int( length ) ); }, nullptr, nullptr,
                nullptr );

            Ref< QV_VECTOR > lines( qvVectorCreate() );
            qvVectorAppendString( lines.at(), text( "one" ) );
            qvVectorAppendString( lines.at(), text( "" ) );
            qvPrintLines( lines );
            qvPrintFormatCstr( "%i%i", -1, QV_INT( 11 ), QV_INT( 22 ) );
        } );
    EXPECT_EQ( "3;0;4;", ending.errors );
}

TEST( Print, StacksStartWithTheCaller )
{
    takePrinted();
    qvPrintStackTrace();
    std::u32string stack = takePrinted();

    EXPECT_NE( std::u32string::npos, stack.find( U"test_io" ) );
#ifndef __SANITIZE_ADDRESS__ // whose own frame comes on top
    EXPECT_EQ( std::u32string::npos, stack.find( U"qvPrintStackTrace" ) );
#endif
    EXPECT_EQ( std::u32string::npos, stack.find( U"qvStackTraceCreate" ) );
}

TEST( Print, WithoutAHookNothingHappens )
{
    Ending ending = inOwnRun(
        []
        {
            restart( 0 );
            qvPrintCstr( "lost", -1 );
            qvRuntimePrint( nullptr, 0 );
        } );
    EXPECT_EQ( 0, ending.status );
    EXPECT_BROKEN( qvRuntimePrint( nullptr, 1 ), "chs || chsLength == 0" );
    EXPECT_BROKEN( qvRuntimePrint( U"x", -1 ), "chsLength >= 0" );
}
