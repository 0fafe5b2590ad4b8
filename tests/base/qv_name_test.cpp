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
    EXPECT_EQ( result[0] == 'U' || result[2] == 'c', qvNameOk( qvs, QV_FALSE ) );

    if( qvNameOk( qvs, QV_TRUE ) )
    {
        EXPECT_EQ( !qvNameOk( qvs, QV_FALSE ), qvNamePrivate( qvs ) );
    }

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
        { "QV_A", "UP--" },
        { "A_B_C_D9_8", "UP--" },
        { "QV___A", "-P--" },
        { "A_B___C", "-P--" },
        { "A___B___C", "-P--" },
        { "QV___", "----" }, // nothing behind it
        { "qvObjFree", "--cp" },
        { "qv2D", "--cp" },
        { "qv___ObjFree", "---p" },
        { "qvRuntime___Startup", "---p" },
        { "qvRuntimeOs___Startup", "----" }, // two upper-case letters before
        { "qv___Obj___Free", "----" },
        { "___Obj", "---p" },
    };

    for( const auto &each : CASES )
        EXPECT_EQ( each.accepted, accepted( each.name ) ) << each.name;
}
