#include "qv_test_support.h"

#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"

#include <array>

using qv::Ref;
using namespace qv::test;

TEST( ToolSwitch, RunsToolsByUniqueBeginning )
{
    auto fail    = []( QV_VECTOR *, void * ) -> QV_BOOL { return QV_FALSE; };
    auto succeed = []( QV_VECTOR *argv, void *seen ) -> QV_BOOL
    {
        *static_cast< std::string * >( seen ) = textOf( argv );
        return QV_TRUE;
    };

    Ref ts( qvToolSwitchCreate() );
    qvToolSwitchSetTool( ts.at(), text( "start" ), succeed );
    qvToolSwitchSetTool( ts.at(), text( "stop" ), fail );
    qvToolSwitchSetTool( ts.at(), text( "runner" ), fail );
    qvToolSwitchSetTool( ts.at(), text( "run" ), succeed );
    qvToolSwitchSetTool( ts.at(), text( "idle" ), nullptr );

    const std::array< const char *, 4 > ROWS[] = {
        { "sta a b", "true", "<a, b>", "" },
        { "run", "true", "<>", "" },
        { "stop", "false", "", "" },
        { "i", "true", "", "" },
        { "st", "false", "", "st: ambiguous<idle, run, runner, start, stop>" },
        { "jump", "false", "", "jump: invalid argument<idle, run, runner, start, stop>" },
    };

    for( auto [words, result, arguments, printed] : ROWS )
    {
        std::string seen;
        Ref         argv( qvStringSplitWhitespace( text( words ), -1 ) );
        EXPECT_STREQ( result, qvToolSwitchRunTool( ts, argv, &seen ) ? "true" : "false" ) << words;
        EXPECT_EQ( arguments, seen );
        EXPECT_EQ( printed, utf8( text( takePrinted() ) ) );
    }

    EXPECT_FALSE( qvToolSwitchRunTool( ts, Ref( qvVectorCreate() ), nullptr ) );
    EXPECT_EQ( U"missing argument<idle, run, runner, start, stop>", takePrinted() );

    // Switches are values.
    Ref< QV_TOOL_SWITCH > other = Ref< QV_TOOL_SWITCH >::share( ts );
    qvToolSwitchDelTool( ts.at(), text( "absent" ) );
    EXPECT_EQ( other.get(), ts.get() );
    qvToolSwitchDelTool( ts.at(), text( "idle" ) );
    qvToolSwitchSetTool( other.at(), text( "jump" ), nullptr );
    EXPECT_FALSE( qvToolSwitchHasTool( ts, text( "idle" ) ) || qvToolSwitchHasTool( ts, text( "jump" ) ) );
    EXPECT_TRUE( qvToolSwitchHasTool( other, text( "idle" ) ) && qvToolSwitchHasTool( other, text( "jump" ) ) );
}
