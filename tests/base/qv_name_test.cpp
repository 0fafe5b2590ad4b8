#include "qv_test_support.h"

#include "qv/base/qv_name.h"

using namespace qv::test;

TEST( Name, GrammarOfNames )
{
    // By the checks that accept them: upper case and camel case, and both with private names.
    const std::pair< const char *, std::vector< const char * > > ROWS[] = {
        { "----", { "", "QV___", "A_B_C___D", "qvRuntimeOs___Startup", "qv___Obj___Free" } },
        { "UP--", { "QV_A", "A_B_C_D9_8" } },
        { "-P--", { "QV___A", "A_B___C", "A___B___C" } },
        { "--cp", { "qvObjFree", "qv2D" } },
        { "---p", { "qv___ObjFree", "qvRuntime___Startup", "___Obj" } },
    };

    for( const auto &[expected, names] : ROWS )
        for( const char *name : names )
        {
            qv::Ref< QV_STRING > qvs = text( name );
            std::string          accepted;
            accepted += qvNameUpperCaseOk( qvs, QV_FALSE ) ? 'U' : '-';
            accepted += qvNameUpperCaseOk( qvs, QV_TRUE ) ? 'P' : '-';
            accepted += qvNameCamelCaseOk( qvs, QV_FALSE ) ? 'c' : '-';
            accepted += qvNameCamelCaseOk( qvs, QV_TRUE ) ? 'p' : '-';
            EXPECT_EQ( expected, accepted ) << name;

            bool isPublic = accepted[0] == 'U' || accepted[2] == 'c';
            EXPECT_EQ( isPublic, qvNameOk( qvs, QV_FALSE ) );
            EXPECT_EQ( accepted != "----", qvNameOk( qvs, QV_TRUE ) );
            EXPECT_TRUE( accepted == "----" || isPublic != qvNamePrivate( qvs ) );
        }
}
