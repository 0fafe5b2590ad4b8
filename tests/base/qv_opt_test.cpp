#include "qv_test_support.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_vector.h"
#include "qv/sys/qv_real.h"

#include <math.h>

using qv::Ref;
using namespace qv::test;

namespace
{
enum
{
    ALL,
    IGNORED,
    WORD
};

Ref< QV_OPT_DEF > definition()
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    qvOptDefSetShortOpt( def.at(), U'a', ALL );
    qvOptDefSetShortOpt( def.at(), U'i', IGNORED );
    qvOptDefSetLongOptCstr( def.at(), "all", -1, ALL );
    qvOptDefSetLongOptWcstr( def.at(), L"ignored", -1, IGNORED );
    qvOptDefSetFlags( def.at(), IGNORED, QV_OPT_FLAG_IGNORE );
    qvOptDefSetReorder( def.at(), QV_TRUE );
    qvOptDefSetArgOnly( def.at(), WORD );

    return def;
}
} // namespace

TEST( Opt, AnIgnoredOptionBehindAnObjectEndsNoOptions )
{
    Ref< QV_VECTOR > argv( qvVectorCreate() );
    qvVectorAppendInt( argv.at(), 1 );

    for( const char *word : { "-i", "-a" } )
        qvVectorAppendStringCstr( argv.at(), word, -1 );

    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( definition(), argv ) );
    EXPECT_EQ( QV_OPT_SEQ_NOTHING, qvOptSeqNext( seq ) );
    EXPECT_EQ( ALL, qvOptSeqNext( seq ) );
    EXPECT_EQ( WORD, qvOptSeqNext( seq ) );
    EXPECT_FALSE( qvOptSeqHasNext( seq ) );
    EXPECT_EQ( -1, qvOptDefLongOpt( definition(), text( "al" ), QV_FALSE, nullptr ) );
    EXPECT_EQ( "IGNORE|NO_ABBREV", take( qvOptFlagsToString( 10 | 16 ) ) );
}

// Were a step to cost what is left or passed over, this would take hours.
TEST( Opt, AStepCostsTheSameHoweverManyAreLeft )
{
    const int         COUNT = 400000;
    Ref< QV_VECTOR >  argv( qvVectorCreate() );
    Ref< QV_STRING >  option = text( "-a" ), ignored = text( "-i" );
    Ref< QV_OBJ >     object( qvBoxedIntObj( qvBoxedIntCreate( 1 ) ) );
    Ref< QV_OPT_SEQ > seq;
    QV_INT            steps = 0;

    for( char letter : { 'a', 'i' } )
        qvVectorAppendString( argv.at(), text( "-" + std::string( COUNT, letter ) ) );

    for( int i = 0; i < COUNT; i++ )
    {
        qvVectorAppendObj( argv.at(), object );
        qvVectorAppendString( argv.at(), i % 10 ? option : ignored );
    }

    for( seq.reset( qvOptSeqCreate( definition(), argv ) ); qvOptSeqHasNext( seq ); steps++ )
        qvOptSeqNext( seq );

    EXPECT_GT( steps, 2 * COUNT );
}

TEST( Opt, ArgumentsHaveTypedForms )
{
    Ref< QV_VECTOR > argv( qvVectorCreate() );
    qvVectorAppendInt( argv.at(), 7 );
    qvVectorAppendReal( argv.at(), 2.5 );
    qvVectorAppendBool( argv.at(), QV_TRUE );
    qvVectorAppendReal( argv.at(), INFINITY );

    for( const char *word : { "0x10", "1.25", "TRUE", "0", "12 apples", "truely" } )
        qvVectorAppendStringCstr( argv.at(), word, -1 );

    // The text of a thread is its name.
    for( const char *word : { "7", "true" } )
    {
        Ref< QV_THREAD > thread( qvThreadTrySpawnCstr( word, -1, [] {}, nullptr, QV_THREAD_PRIORITY_NORMAL ) );
        qvVectorAppendObj( argv.at(), qvThreadObj( thread ) );
    }

    struct Row
    {
        QV_BOOL isReal;
        QV_REAL real;
        QV_BOOL isInt;
        QV_INT  integer;
        QV_BOOL isBool, truth, isNumericBool, numericTruth;
    };

    const Row rows[] = {
        { 1, 7.0, 1, 7, 0, 0, 1, 1 },   { 1, 2.5, 1, 2, 0, 0, 1, 1 },
        { 0, 0.0, 0, 0, 1, 1, 1, 1 },   { 1, INFINITY, 1, qvRealToInt( INFINITY ), 0, 0, 1, 0 },
        { 1, 16.0, 1, 16, 0, 0, 1, 1 }, { 1, 1.25, 0, 0, 0, 0, 1, 1 },
        { 0, 0.0, 0, 0, 1, 1, 1, 1 },   { 1, 0.0, 1, 0, 0, 0, 1, 0 },
        { 0, 0.0, 0, 0, 0, 0, 0, 0 },   { 0, 0.0, 0, 0, 0, 0, 0, 0 },
        { 0, 0.0, 0, 0, 0, 0, 0, 0 },   { 0, 0.0, 0, 0, 0, 0, 0, 0 },
    };

    Ref< QV_OPT_DEF > def = definition();
    qvOptDefSetReorder( def.at(), QV_FALSE );
    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

    for( const Row &row : rows )
    {
        ASSERT_TRUE( qvOptSeqHasNext( seq ) );
        qvOptSeqNext( seq );
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
}
