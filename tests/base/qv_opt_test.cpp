#include "qv_test_support.h"

#include "qv/qv.h"

#include <cmath>

using qv::Ref;
using namespace qv::test;

TEST( Opt, ArgumentsHaveTypedForms )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    Ref< QV_VECTOR >  argv( qvVectorCreate() );
    qvOptDefSetArgOnly( def.at(), 1 );
    qvVectorAppendInt( argv.at(), 7 );
    qvVectorAppendReal( argv.at(), 2.5 );
    qvVectorAppendBool( argv.at(), QV_TRUE );
    qvVectorAppendReal( argv.at(), INFINITY );

    for( const char *word : { "0x10", "1.25", "TRUE", "0", "12 apples", "truely" } )
        qvVectorAppendStringCstr( argv.at(), word, -1 );

    // The text of a thread is its name, which is not looked at.
    Ref< QV_THREAD > thread( qvThreadTrySpawnCstr( "7", -1, [] {}, nullptr, QV_THREAD_PRIORITY_NORMAL ) );
    qvVectorAppendObj( argv.at(), qvThreadObj( thread ) );

    const struct
    {
        QV_BOOL isReal;
        QV_REAL real;
        QV_BOOL isInt;
        QV_INT  integer;
        QV_BOOL isBool, truth, isNumericBool, numericTruth;
    } ROWS[] = {
        { 1, 7.0, 1, 7, 0, 0, 1, 1 },   { 1, 2.5, 1, 2, 0, 0, 1, 1 },
        { 0, 0.0, 0, 0, 1, 1, 1, 1 },   { 1, INFINITY, 1, qvRealToInt( INFINITY ), 0, 0, 1, 0 },
        { 1, 16.0, 1, 16, 0, 0, 1, 1 }, { 1, 1.25, 0, 0, 0, 0, 1, 1 },
        { 0, 0.0, 0, 0, 1, 1, 1, 1 },   { 1, 0.0, 1, 0, 0, 0, 1, 0 },
        { 0, 0.0, 0, 0, 0, 0, 0, 0 },   { 0, 0.0, 0, 0, 0, 0, 0, 0 },
        { 0, 0.0, 0, 0, 0, 0, 0, 0 },
    };

    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

    for( const auto &row : ROWS )
    {
        ASSERT_EQ( 1, qvOptSeqNext( seq ) );
        SCOPED_TRACE( take( qvOptSeqArgString( seq ) ) );
        EXPECT_EQ( row.isReal, qvOptSeqArgIsReal( seq ) );
        EXPECT_EQ( row.real, qvOptSeqArgReal( seq ) );
        EXPECT_EQ( row.isInt, qvOptSeqArgIsInt( seq ) );
        EXPECT_EQ( row.integer, qvOptSeqArgInt( seq ) );
        EXPECT_EQ( row.isBool, qvOptSeqArgIsBool( seq, QV_FALSE ) );
        EXPECT_EQ( row.truth, qvOptSeqArgBool( seq, QV_FALSE ) );
        EXPECT_EQ( row.isNumericBool, qvOptSeqArgIsBool( seq, QV_TRUE ) );
        EXPECT_EQ( row.numericTruth, qvOptSeqArgBool( seq, QV_TRUE ) );
    }

    EXPECT_EQ( "IGNORE|NO_ABBREV", take( qvOptFlagsToString( 10 | 16 ) ) );
}

TEST( Opt, ErrorsHaveTexts )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    Ref< QV_VECTOR >  argv( qvVectorCreate() );
    qvOptDefSetShortOpt( def.at(), U'x', 1 );
    qvOptDefSetFlags( def.at(), 1, QV_OPT_FLAG_ONCE );
    qvOptDefSetLongOptCstr( def.at(), "out", -1, 2 );
    qvOptDefSetFlags( def.at(), 2, QV_OPT_FLAG_ARGUMENT | QV_OPT_FLAG_NO_ABBREV );
    qvOptDefSetLongOptCstr( def.at(), "odd", -1, -9 );
    qvOptDefSetLongOptCstr( def.at(), "plain", -1, 3 );

    for( const char *word : { "-z", "--o=1", "--plain=", "-xx", "--ou=1", "word", "--odd", "--out" } )
        qvVectorAppendStringCstr( argv.at(), word, -1 );

    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

    for( auto &[id, error] : std::initializer_list< std::pair< QV_INT, const char * > >{
             { -1, "-z: option undefined" },
             { -2, "--o: ambiguous" },
             { -4, "--plain: argument disallowed" },
             { 1, "" },
             { -5, "-x: multiple options disallowed" },
             { -6, "--ou: abbreviated option disallowed" },
             { -7, "non-option argument disallowed" },
             { -9, "--odd: error" },
             { -3, "--out: argument missing" } } )
    {
        EXPECT_EQ( id, qvOptSeqNext( seq ) ) << error;
        EXPECT_EQ( error, qvOptSeqHasError( seq ) ? take( qvOptSeqError( seq ) ) : "" );
    }
}
