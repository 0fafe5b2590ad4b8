#include "qv_test_child.h"

#include "qv/base/qv_vector.h"
#include "qv/io/qv_print.h"

using qv::Ref;
using namespace qv::test;

TEST( Print, LinesAndTextsComeOneCallEach )
{
    auto print = []
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

        // Without a hook nothing happens.
        restart( 0 );
        qvPrintCstr( "lost", -1 );
        qvRuntimePrint( nullptr, 0 );
    };
    EXPECT_EQ( "3;0;4;", inOwnRun( print ).errors );
    EXPECT_BROKEN( qvRuntimePrint( nullptr, 1 ), "chs || chsLength == 0" );
    EXPECT_BROKEN( qvRuntimePrint( U"x", -1 ), "chsLength >= 0" );
}

TEST( Print, StacksStartWithTheCaller )
{
    takePrinted();
    qvPrintStackTrace();
    const std::string stack = utf8( text( takePrinted() ) );

    EXPECT_THAT( stack, testing::HasSubstr( "test_io" ) );
    EXPECT_THAT( stack, testing::Not( testing::HasSubstr( "qvStackTraceCreate" ) ) );
#ifndef __SANITIZE_ADDRESS__ // whose own frame comes on top
    EXPECT_THAT( stack, testing::Not( testing::HasSubstr( "qvPrintStackTrace" ) ) );
#endif
}
