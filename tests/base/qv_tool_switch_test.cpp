#include "qv_test_support.h"

#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"

using qv::Ref;
using namespace qv::test;

namespace
{
std::string seen; // the arguments that a tool was called with

QV_BOOL succeed( QV_VECTOR *argv, void *context )
{
    seen = textOf( argv );
    ++*static_cast< int * >( context );

    return QV_TRUE;
}

QV_BOOL fail( QV_VECTOR *, void * )
{
    return QV_FALSE;
}

Ref< QV_VECTOR > arguments( std::initializer_list< const char * > words )
{
    Ref< QV_VECTOR > argv( qvVectorCreate() );

    for( const char *word : words )
        qvVectorAppendStringCstr( argv.at(), word, -1 );

    return argv;
}
} // namespace

TEST( ToolSwitch, RunsToolsByUniqueBeginning )
{
    Ref< QV_TOOL_SWITCH > ts( qvToolSwitchCreate() );
    qvToolSwitchSetToolCstr( ts.at(), "start", -1, succeed );
    qvToolSwitchSetToolWcstr( ts.at(), L"stop", -1, fail );
    qvToolSwitchSetTool( ts.at(), text( "runner" ), fail );
    qvToolSwitchSetTool( ts.at(), text( "run" ), succeed );
    qvToolSwitchSetTool( ts.at(), text( "idle" ), nullptr );

    int              calls = 0;
    Ref< QV_VECTOR > argv  = arguments( { "sta", "a", "b" } );
    EXPECT_TRUE( qvToolSwitchRunTool( ts, argv, &calls ) );
    EXPECT_EQ( "<a, b>", seen );
    EXPECT_EQ( 3, qvVectorLength( argv ) );
    EXPECT_TRUE( qvToolSwitchRunTool( ts, arguments( { "run" } ), &calls ) );
    EXPECT_EQ( 2, calls );
    EXPECT_FALSE( qvToolSwitchRunTool( ts, arguments( { "stop" } ), nullptr ) );
    EXPECT_TRUE( qvToolSwitchRunTool( ts, arguments( { "i" } ), nullptr ) );
    EXPECT_EQ( U"", takePrinted() );

    EXPECT_FALSE( qvToolSwitchRunTool( ts, arguments( { "st" } ), &calls ) );
    EXPECT_EQ( U"st: ambiguous<idle, run, runner, start, stop>", takePrinted() );
    EXPECT_FALSE( qvToolSwitchRunTool( ts, arguments( { "jump" } ), &calls ) );
    EXPECT_EQ( U"jump: invalid argument<idle, run, runner, start, stop>", takePrinted() );
    EXPECT_FALSE( qvToolSwitchRunTool( ts, arguments( {} ), &calls ) );
    EXPECT_EQ( U"missing argument<idle, run, runner, start, stop>", takePrinted() );
    EXPECT_EQ( 2, calls );
}

TEST( ToolSwitch, SwitchesAreValues )
{
    Ref< QV_TOOL_SWITCH > ts( qvToolSwitchCreate() );
    qvToolSwitchSetToolCstr( ts.at(), "a", -1, nullptr );
    Ref< QV_TOOL_SWITCH > other = Ref< QV_TOOL_SWITCH >::share( ts );

    qvToolSwitchDelToolCstr( ts.at(), "absent", -1 );
    EXPECT_EQ( other.get(), ts.get() );

    qvToolSwitchSetToolCstr( ts.at(), "b", -1, nullptr );
    qvToolSwitchDelToolWcstr( ts.at(), L"a", -1 );
    EXPECT_EQ( "<b>", textOf( Ref< QV_VECTOR >( qvToolSwitchToolsVector( ts ) ).get() ) );
    EXPECT_EQ( "<a>", textOf( Ref< QV_VECTOR >( qvToolSwitchToolsVector( other ) ).get() ) );
    EXPECT_TRUE( qvToolSwitchHasTool( other, text( "a" ) ) );
    EXPECT_FALSE( qvToolSwitchHasToolCstr( ts, "a", -1 ) );
    EXPECT_TRUE( qvToolSwitchHasToolWcstr( ts, L"b", -1 ) );
}
