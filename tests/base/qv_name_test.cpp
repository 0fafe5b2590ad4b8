#include "qv_test_support.h"

#include "qv/base/qv_name.h"

using qv::test::text;

namespace
{
// Which of the checks accept a name: upper case, camel case, and both with private names.
std::string accepted( std::string_view name )
{
    qv::Ref< QV_STRING > qvs = text( name );
    std::string          result;
    result += qvNameUpperCaseOk( qvs, QV_FALSE ) ? 'U' : '-';
    result += qvNameUpperCaseOk( qvs, QV_TRUE ) ? 'P' : '-';
    result += qvNameCamelCaseOk( qvs, QV_FALSE ) ? 'c' : '-';
    result += qvNameCamelCaseOk( qvs, QV_TRUE ) ? 'p' : '-';

    return result;
}
} // namespace

TEST( Name, GrammarOfNames )
{
    const struct
    {
        const char *name;
        const char *accepted;
    } CASES[] = {
        { "", "----" },
        { "A", "UP--" },
        { "QV_A", "UP--" },
        { "A_B_C_D9_8", "UP--" },
        { "9A", "----" },
        { "_QV", "----" },
        { "QV_", "----" },
        { "QV__A", "----" },
        { "QV___A", "-P--" },
        { "QV___TIMER_CLOSURE", "-P--" },
        { "A_B___C", "-P--" },
        { "A_B_C___D", "----" },      // the first or second separator only
        { "A___B___C", "-P--" },
        { "A___B_C___D", "----" },
        { "QV____A", "----" },
        { "QV___", "----" },          // nothing behind it
        { "QV_Aa", "----" },
        { "QV_\xC3\x84", "----" },
        { "q", "--cp" },
        { "qvObjFree", "--cp" },
        { "qv2D", "--cp" },
        { "2qv", "----" },
        { "qv_ObjFree", "----" },
        { "qv__ObjFree", "----" },
        { "qv___ObjFree", "---p" },
        { "qvRuntime___Startup", "---p" },
        { "qvRuntimeOs___Startup", "----" },  // two upper-case letters before
        { "qv___objFree", "----" },
        { "qv___1", "----" },
        { "qv___Obj___Free", "----" },
        { "qv___", "----" },
        { "___Obj", "---p" },
        { "qv-Obj", "----" },
    };

    for( const auto &each : CASES )
        EXPECT_EQ( each.accepted, accepted( each.name ) ) << each.name;
}

TEST( Name, PrivateIsWhatNeedsPrivateNames )
{
    EXPECT_TRUE( qvNameOk( text( "QV___A" ), QV_TRUE ) );
    EXPECT_FALSE( qvNameOk( text( "QV___A" ), QV_FALSE ) );
    EXPECT_TRUE( qvNamePrivate( text( "QV___A" ) ) );
    EXPECT_TRUE( qvNamePrivate( text( "qv___ObjFree" ) ) );
    EXPECT_FALSE( qvNamePrivate( text( "qvObjFree" ) ) );
    EXPECT_BROKEN( qvNamePrivate( text( "qv_ObjFree" ) ), "qvNameOk( qvs, QV_TRUE )" );
    EXPECT_BROKEN( qvNameOk( nullptr, QV_TRUE ), "qvs" );
}
