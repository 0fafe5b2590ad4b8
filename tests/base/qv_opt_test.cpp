#include "qv_test_support.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_thread.h"
#include "qv/base/qv_vector.h"

#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
enum
{
    ALL,
    OUTPUT,
    WORD,
    ONCE,
    FULL,
    IGNORED,
    NUMBER
};

Ref< QV_OPT_DEF > definition()
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    qvOptDefSetShortOpt( def.at(), U'a', ALL );
    qvOptDefSetShortOpt( def.at(), U'o', OUTPUT );
    qvOptDefSetShortOpt( def.at(), U'1', ONCE );
    qvOptDefSetShortOpt( def.at(), U'i', IGNORED );
    qvOptDefSetShortOpt( def.at(), U'n', NUMBER );
    qvOptDefSetLongOptCstr( def.at(), "all", -1, ALL );
    qvOptDefSetLongOptCstr( def.at(), "output", -1, OUTPUT );
    qvOptDefSetLongOptWcstr( def.at(), L"output-format", -1, WORD );
    qvOptDefSetLongOpt( def.at(), text( "full-name" ), FULL );
    qvOptDefSetFlags( def.at(), OUTPUT, QV_OPT_FLAG_ARGUMENT );
    qvOptDefSetFlags( def.at(), NUMBER, QV_OPT_FLAG_ARGUMENT );
    qvOptDefSetFlags( def.at(), ONCE, QV_OPT_FLAG_ONCE );
    qvOptDefSetFlags( def.at(), FULL, QV_OPT_FLAG_NO_ABBREV );
    qvOptDefSetFlags( def.at(), IGNORED, QV_OPT_FLAG_IGNORE );

    return def;
}

// Words, and integers for those that begin with a hash.
Ref< QV_VECTOR > arguments( const std::vector< std::string > &words )
{
    Ref< QV_VECTOR > argv( qvVectorCreate() );

    for( const std::string &word : words )
        if( word.starts_with( "#" ) )
            qvVectorAppendInt( argv.at(), std::stoi( word.substr( 1 ) ) );
        else
            qvVectorAppendString( argv.at(), text( word ) );

    return argv;
}

std::string orNone( QV_STRING *owned )
{
    return owned ? take( owned ) : "none";
}

// Every step as "id opt arg error".
std::vector< std::string > walk( QV_OPT_DEF *def, QV_VECTOR *argv )
{
    std::vector< std::string > steps;
    Ref< QV_OPT_SEQ >          seq( qvOptSeqCreate( def, argv ) );

    while( qvOptSeqHasNext( seq ) )
    {
        QV_INT id = qvOptSeqNext( seq );
        EXPECT_EQ( id, qvOptSeqId( seq ) );
        EXPECT_EQ( id, qvOptSeqIdSecondary( seq ) );
        EXPECT_EQ( id < 0 && id != QV_OPT_SEQ_NOTHING, qvOptSeqHasError( seq ) != 0 );
        steps.push_back(
            std::to_string( id ) + " " + orNone( qvOptSeqOpt( seq ) ) + " " + orNone( qvOptSeqArgString( seq ) ) + " "
            + orNone( qvOptSeqError( seq ) ) );
    }

    return steps;
}
} // namespace

TEST( Opt, CommandLinesAreReadStepByStep )
{
    using Steps = std::vector< std::string >;

    struct Row
    {
        std::vector< std::string > words;
        Steps                      steps;
    };

    const Row rows[] = {
        { { "-aa" }, { "0 -a none none", "0 -a none none" } },
        { { "-ofile", "-o", "file", "--output=file", "--output", "file", "--output=" },
          { "1 -o file none", "1 -o file none", "1 --output file none", "1 --output file none", "1 --output  none" } },
        { { "-aofile" }, { "0 -a none none", "1 -o file none" } },
        { { "-z", "--zoo" }, { "-1 -z none -z: option undefined", "-1 --zoo none --zoo: option undefined" } },
        { { "--=x" }, { "-1 -- x --: option undefined" } },
        { { "--al", "--out", "--output-f" },
          { "0 --al none none", "-2 --out none --out: ambiguous", "2 --output-f none none" } },
        { { "-o" }, { "-3 -o none -o: argument missing" } },
        { { "--output" }, { "-3 --output none --output: argument missing" } },
        { { "--all=x" }, { "-4 --all x --all: argument disallowed" } },
        { { "-11" }, { "3 -1 none none", "-5 -1 none -1: multiple options disallowed" } },
        { { "--full", "--full-name" },
          { "-6 --full none --full: abbreviated option disallowed", "4 --full-name none none" } },
        { { "word", "-", "-a" },
          { "-7 none none non-option argument disallowed", "-7 none none non-option argument disallowed",
            "0 -a none none" } },
        { { "-a", "--" }, { "0 -a none none" } },
        { { "--" }, {} },
        { { "-o", "--", "-a" }, { "1 -o -- none", "0 -a none none" } },
        { { "--", "-a", "--" }, { "-7 none none non-option argument disallowed" } },
        { { "-i" }, { "-8 none none none" } },
        { { "-ia" }, { "-8 none none none", "0 -a none none" } },
        { { "-i", "-a" }, { "-8 none none none", "0 -a none none" } },
        { { "-i", "-z", "-a", "-11" },
          { "0 -a none none", "-1 -z none -z: option undefined", "3 -1 none none",
            "-5 -1 none -1: multiple options disallowed" } },
        { { "-a-al", "-a-" }, { "0 -a none none", "0 --al none none", "0 -a none none" } },
        { { "#5", "-a" }, { "-7 none none non-option argument disallowed", "0 -a none none" } },
    };

    Ref< QV_OPT_DEF > def = definition();

    for( const Row &row : rows )
        EXPECT_EQ( row.steps, walk( def, arguments( row.words ) ) ) << row.words[0];
}

TEST( Opt, PlainArgumentsAndObjectsAreReportedUnderTheirId )
{
    struct Row
    {
        bool                       reorder;
        std::vector< std::string > words, steps; // a step as the id and what comes with it
    };

    const Row rows[] = {
        { false, { "word", "-a", "--", "-a", "-" }, { "2 word", "0 -a", "2 -a", "2 -" } },
        { false, { "word", "--" }, { "2 word" } },
        { false, { "#1", "-a", "#-1" }, { "2 1", "0 -a", "2 -1" } },
        { true, { "#-1", "-a", "#2" }, { "0 -a", "2 -1", "2 2" } },
        { true, { "#1", "#2", "word", "-o", "#3", "#4" }, { "2 word", "1 -o 3", "2 1", "2 2", "2 4" } },
        { true, { "#1", "--", "#2", "-a" }, { "2 1", "2 2", "2 -a" } },

        // An ignored option ends no options, wherever it stands.
        { true, { "#1", "-i", "-a" }, { "-8", "0 -a", "2 1" } },
        { true, { "#1", "-i" }, { "-8", "2 1" } },
        { true, { "#1", "-i", "#2", "-a", "#3", "-i", "#4" }, { "0 -a", "-8", "2 1", "2 2", "2 3", "2 4" } },
        { true, { "#1", "-i", "-i", "-i", "#2", "-aa" }, { "0 -a", "0 -a", "2 1", "2 2" } },
        { true, { "-i", "word", "#1", "-a" }, { "0 -a", "2 word", "2 1" } },
    };

    for( const Row &row : rows )
    {
        SCOPED_TRACE( testing::PrintToString( row.words ) );
        Ref< QV_OPT_DEF > def = definition();
        qvOptDefSetArgOnly( def.at(), WORD );
        qvOptDefSetReorder( def.at(), row.reorder );
        std::vector< std::string > steps;

        for( std::string &step : walk( def, arguments( row.words ) ) )
        {
            for( size_t at; ( at = step.find( " none" ) ) != std::string::npos; )
                step.erase( at, 5 );

            steps.push_back( step );
        }

        EXPECT_EQ( row.steps, steps );
    }

    // As a text, -1 is an option.
    Ref< QV_OPT_DEF > def = definition();
    qvOptDefSetStringize( def.at(), QV_TRUE );
    EXPECT_EQ( "3 -1 none none", walk( def, arguments( { "#-1" } ) ).at( 0 ) );
    EXPECT_TRUE( qvOptDefStringize( def ) && !qvOptDefReorder( def ) );
}

TEST( Opt, WhatRemainsIsToldAtAnyTime )
{
    Ref< QV_OPT_DEF > def = definition();
    qvOptDefSetReorder( def.at(), QV_TRUE );

    Ref< QV_VECTOR >  argv = arguments( { "#1", "-aio", "#2", "-ab" } );
    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );
    auto              remaining = [&] { return textOf( Ref( qvOptSeqRemainingArgv( seq ) ).get() ); };

    std::string before = textOf( argv.get() );
    EXPECT_EQ( before, remaining() );
    EXPECT_EQ( ALL, qvOptSeqNext( seq ) );
    EXPECT_EQ( textOf( arguments( { "#1", "-io", "#2", "-ab" } ).get() ), remaining() );
    EXPECT_EQ( ALL, qvOptSeqNext( seq ) ); // the rest of the first text was left for the next step
    EXPECT_EQ( textOf( arguments( { "#1", "-o", "#2", "-b" } ).get() ), remaining() );
    EXPECT_EQ( OUTPUT, qvOptSeqNext( seq ) );
    EXPECT_EQ( textOf( arguments( { "#1", "-b" } ).get() ), remaining() );
    EXPECT_EQ( before, textOf( argv.get() ) );
}

// Were a step to cost what is left or passed over, this would take hours.
TEST( Opt, AStepCostsTheSameHoweverManyAreLeft )
{
    const int         COUNT = 400000;
    Ref< QV_OPT_DEF > def   = definition();
    qvOptDefSetReorder( def.at(), QV_TRUE );
    qvOptDefSetArgOnly( def.at(), WORD );

    Ref< QV_VECTOR >  argv = arguments( { "-" + std::string( COUNT, 'a' ), "-" + std::string( COUNT, 'i' ) } );
    Ref< QV_STRING >  option = text( "-a" ), ignored = text( "-i" );
    Ref< QV_OBJ >     object( qvBoxedIntObj( qvBoxedIntCreate( 1 ) ) );
    Ref< QV_OPT_SEQ > seq;
    QV_INT            steps = 0;

    for( int i = 0; i < COUNT; i++ )
    {
        qvVectorAppendObj( argv.at(), object );
        qvVectorAppendString( argv.at(), i % 10 ? option : ignored );
    }

    for( seq.reset( qvOptSeqCreate( def, argv ) ); qvOptSeqHasNext( seq ); steps++ )
        qvOptSeqNext( seq );

    EXPECT_GT( steps, 2 * COUNT );
}

TEST( Opt, ArgumentsHaveTypedForms )
{
    Ref< QV_OPT_DEF > def = definition();
    qvOptDefSetArgOnly( def.at(), WORD );

    Ref< QV_VECTOR > argv( qvVectorCreate() );
    qvVectorAppendInt( argv.at(), 7 );
    qvVectorAppendReal( argv.at(), 2.5 );
    qvVectorAppendBool( argv.at(), QV_TRUE );

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
        { 1, 7.0, 1, 7, 0, 0, 1, 1 },    { 1, 2.5, 1, 2, 0, 0, 1, 1 },  { 0, 0.0, 0, 0, 1, 1, 1, 1 },
        { 1, 16.0, 1, 16, 0, 0, 1, 1 },  { 1, 1.25, 0, 0, 0, 0, 1, 1 }, { 0, 0.0, 0, 0, 1, 1, 1, 1 },
        { 1, 0.0, 1, 0, 0, 0, 1, 0 },    { 0, 0.0, 0, 0, 0, 0, 0, 0 },  { 0, 0.0, 0, 0, 0, 0, 0, 0 },
        { 0, 0.0, 0, 0, 0, 0, 0, 0 },    { 0, 0.0, 0, 0, 0, 0, 0, 0 },
    };

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

TEST( Opt, DefinitionsAreValues )
{
    Ref< QV_OPT_DEF > def   = definition();
    Ref< QV_OPT_DEF > other = Ref< QV_OPT_DEF >::share( def );
    qvOptDefSetShortOpt( def.at(), U'x', 9 );
    qvOptDefSetFlags( def.at(), 9, QV_OPT_FLAG_ONCE );

    EXPECT_EQ( 9, qvOptDefShortOpt( def, U'x' ) );
    EXPECT_EQ( -1, qvOptDefShortOpt( other, U'x' ) );
    EXPECT_EQ( 0, qvOptDefFlags( other, 9 ) );

    QV_BOOL abbreviated = QV_TRUE;
    EXPECT_EQ( ALL, qvOptDefLongOpt( def, text( "all" ), QV_TRUE, &abbreviated ) );
    EXPECT_FALSE( abbreviated );
    EXPECT_EQ( -1, qvOptDefLongOpt( def, text( "al" ), QV_FALSE, nullptr ) );

    EXPECT_EQ( "ARGUMENT|IGNORE|ONCE|NO_ABBREV", take( qvOptFlagsToString( 15 ) ) );
    EXPECT_EQ( "IGNORE|NO_ABBREV", take( qvOptFlagsToString( 10 ) ) );
    EXPECT_EQ( "", take( qvOptFlagsToString( 16 ) ) );
}

TEST( Opt, BrokenContractsAreReported )
{
    Ref< QV_OPT_DEF > def = definition();
    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, arguments( {} ) ) );

    EXPECT_BROKEN( qvOptSeqNext( seq ), "length" );
    EXPECT_BROKEN( qvOptDefFlags( def, -1 ), "optId >= 0" );
    EXPECT_BROKEN( qvOptDefShortOpt( def, 0x110000 ), "QV_CHAR_OK( optChar )" );
    EXPECT_BROKEN( qvOptDefLongOpt( def, text( "" ), QV_TRUE, nullptr ), "qvStringLength( optString ) > 0" );
}
