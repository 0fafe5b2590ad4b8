#include "qv_test_stream.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_line_sink.h"
#include "qv/io/qv_line_sink_private.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_line_source_private.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_sink.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_string_char_sink.h"

#include <random>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
typedef std::vector< std::u32string > Lines;

const struct
{
    QV_INT         flag;
    const char    *name;
    std::u32string terminator;
} FORMS[] = {
    { QV_NLF_FLAG_LF, "QV_NLF_FLAG_LF", U"\n" },   { QV_NLF_FLAG_CR, "QV_NLF_FLAG_CR", U"\r" },
    { QV_NLF_FLAG_CRLF, "QV_NLF_FLAG_CRLF", U"\r\n" }, { QV_NLF_FLAG_NEL, "QV_NLF_FLAG_NEL", U"\x85" },
    { QV_NLF_FLAG_VT, "QV_NLF_FLAG_VT", U"\v" },   { QV_NLF_FLAG_FF, "QV_NLF_FLAG_FF", U"\f" },
    { QV_NLF_FLAG_LS, "QV_NLF_FLAG_LS", U"\u2028" }, { QV_NLF_FLAG_PS, "QV_NLF_FLAG_PS", U"\u2029" },
};

const QV_INT ALL_FORMS = 255;

Ref< QV_VECTOR > vector( const Lines &lines )
{
    Ref< QV_VECTOR > result( qvVectorCreate() );

    for( const std::u32string &line : lines )
        qvVectorAppendString( result.at(), text( line ) );

    return result;
}

Lines linesOf( QV_VECTOR *owned )
{
    Ref< QV_VECTOR > vec( owned );
    Lines            result;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
        result.push_back( chars( qvStringFrom( qvVectorBacking( vec )[i] ) ) );

    return result;
}

// What a text consists of, one character after the other.
Lines split( const std::u32string &data, QV_INT flags )
{
    Lines result;
    bool  open = false;

    for( size_t i = 0; i < data.size(); i++ )
    {
        if( !open )
            result.emplace_back();

        open = false;

        if( data[i] == U'\r' && ( flags & QV_NLF_FLAG_CRLF ) && data.compare( i, 2, U"\r\n" ) == 0 )
        {
            i++;
            continue;
        }

        bool ends = false;

        for( const auto &form : FORMS )
            ends = ends || ( ( flags & form.flag ) && form.terminator == data.substr( i, 1 ) );

        if( !ends )
        {
            result.back() += data[i];
            open = true;
        }
    }

    return result;
}

Ref< QV_LINE_SOURCE > lineSource( const std::u32string &data, QV_INT flags )
{
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreateFromString( text( data ), flags ) );
    return Ref< QV_LINE_SOURCE >( qvNlfLineSourceLineSource( nls ) );
}

// Callbacks of lines that keep or give them and fail where they are told to.
struct LineLog
{
    std::string calls             = {}; // the lines in brackets, f: flush, e: end of the closure
    int         callsUntilFailure = -1;
    bool        givesWhenFailing  = false;

    Ref< QV___BOXED_POINTER > closure()
    {
        return closureOf( this, []( void *log ) { static_cast< LineLog * >( log )->calls += 'e'; } );
    }

    Ref< QV_LINE_SINK > sink()
    {
        return Ref< QV_LINE_SINK >( qv___LineSinkCreate( write, flush, qv::obj( closure().get() ) ) );
    }

    Ref< QV_LINE_SOURCE > source()
    {
        return Ref< QV_LINE_SOURCE >( qv___LineSourceCreate( read, qv::obj( closure().get() ) ) );
    }

private:
    static QV_BOOL write( QV_OBJ *closure, QV_STRING *line )
    {
        logOf< LineLog >( closure )->calls.append( "[" ).append( utf8( line ) ).append( "]" );
        return logOf< LineLog >( closure )->callsUntilFailure-- != 0;
    }

    static QV_BOOL flush( QV_OBJ *closure )
    {
        logOf< LineLog >( closure )->calls += 'f';
        return QV_TRUE;
    }

    static QV_BOOL read( QV_OBJ *closure, QV_STRING **line )
    {
        EXPECT_EQ( nullptr, *line );

        LineLog *log = logOf< LineLog >( closure );
        bool     ok  = log->callsUntilFailure-- != 0;
        log->calls += 'r';

        if( ok || log->givesWhenFailing )
            *line = text( "line" ).give();

        return ok;
    }
};
} // namespace

TEST( NlfFlags, HaveNamesAndTerminators )
{
    for( const auto &form : FORMS )
    {
        EXPECT_EQ( form.name, take( qvNlfFlagsToString( form.flag ) ) );
        EXPECT_EQ( form.flag, qvNlfFlagsFromString( text( form.name ) ) );

        // The lowest flag chooses.
        Ref< QV_STRING > terminator( qvNlfFlagsNlfString( -form.flag ) );
        EXPECT_EQ( form.terminator, chars( terminator ) );
    }

    EXPECT_EQ( "QV_NLF_FLAG_LF|QV_NLF_FLAG_CRLF", take( qvNlfFlagsToString( 0xF05 ) ) );
    EXPECT_EQ( 0x82, qvNlfFlagsFromString( text( " QV_NLF_FLAG_PS | 0xF02 | x" ) ) );
    EXPECT_EQ( 0xFF, qvNlfFlagsNormalize( -1 ) );
    EXPECT_EQ( "", take( qvNlfFlagsNlfString( 0x100 ) ) );
}

TEST( LineSink, WritesLinesInAllForms )
{
    LineLog             log;
    Ref< QV_LINE_SINK > sink   = log.sink();
    Ref< QV_STRING >    abcdef = text( "abcdef" ), format = text( "<%i>" );
    Ref< QV_VECTOR >    lines  = vector( { U"1", U"2", U"", U"4" } );

    EXPECT_EQ( QV_TRUE, qvLineSinkWrite( sink, abcdef ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLeading( sink, abcdef, 0 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteTrailing( sink, abcdef, 2 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteInner( sink, abcdef, 1, 2 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteOuter( sink, abcdef, 1, 2 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteCstr( sink, "ä-", 2 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteWcstr( sink, L"ä", -1 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteFormat( sink, format, QV_INT( 1 ) ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteFormatCstr( sink, "%i", -1, QV_INT( 2 ) ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteFormatWcstr( sink, L"%i.", 3, QV_INT( 3 ) ) );
    EXPECT_EQ( "[abcdef][][ef][bc][adef][ä][ä][<1>][2][3.]", std::exchange( log.calls, "" ) );
    EXPECT_EQ( 10, qvLineSinkLinesWritten( sink ) );

    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLines( sink, lines ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLinesLeading( sink, lines, 1 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLinesTrailing( sink, lines, 1 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLinesInner( sink, lines, 1, 2 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLinesOuter( sink, lines, 1, 2 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkWriteLinesInner( sink, lines, 4, 0 ) );
    EXPECT_EQ( "[1][2][][4]" "[1]" "[4]" "[2][]" "[1][4]", std::exchange( log.calls, "" ) );
    EXPECT_EQ( 20, qvLineSinkLinesWritten( sink ) );

    EXPECT_EQ( QV_TRUE, qvLineSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "ffe", log.calls );
}

TEST( LineSink, StaysFailedOnceALineHasFailed )
{
    LineLog             log;
    Ref< QV_LINE_SINK > sink  = log.sink();
    Ref< QV_VECTOR >    lines = vector( { U"1", U"2", U"3" } ), none( qvVectorCreate() );

    log.callsUntilFailure = 1;
    EXPECT_EQ( QV_FALSE, qvLineSinkWriteLines( sink, lines ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkError( sink ) );
    EXPECT_EQ( 1, qvLineSinkLinesWritten( sink ) );

    EXPECT_EQ( QV_FALSE, qvLineSinkWriteCstr( sink, "x", -1 ) );
    EXPECT_EQ( QV_FALSE, qvLineSinkWriteLines( sink, none ) );
    EXPECT_EQ( QV_FALSE, qvLineSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "[1][2]e", log.calls );

    Ref< QV_BOXED_INT > number( qvBoxedIntCreate( 1 ) );
    qvVectorAppendObj( none.at(), qv::obj( number.get() ) );
    sink = log.sink();
    EXPECT_BROKEN_MESSAGE(
        qvLineSinkWriteLines( sink, none ), "stdfunc from", "!obj || qvObjSort(obj)==&qv___sort_QV_STRING" );
}

TEST( LineSource, DeliversALineThatCameWithAFailure )
{
    for( bool gives : { false, true } )
    {
        LineLog               log{ .callsUntilFailure = 2, .givesWhenFailing = gives };
        Ref< QV_LINE_SOURCE > source = log.source();

        EXPECT_TRUE( linesOf( qvLineSourceReadLines( source, 0 ) ).empty() );
        EXPECT_EQ( "", log.calls );
        EXPECT_EQ( 1u, linesOf( qvLineSourceReadLines( source, 1 ) ).size() );
        EXPECT_EQ( QV_FALSE, qvLineSourceEnd( source ) );

        EXPECT_EQ( gives ? 2u : 1u, linesOf( qvLineSourceReadLines( source, -1 ) ).size() );
        EXPECT_EQ( gives ? 3 : 2, qvLineSourceLinesRead( source ) );
        EXPECT_EQ( QV_TRUE, qvLineSourceEnd( source ) );
        EXPECT_EQ( QV_TRUE, qvLineSourceError( source ) );

        EXPECT_EQ( nullptr, qvLineSourceRead( source ) );
        EXPECT_EQ( "rrr", log.calls );
        EXPECT_BROKEN( qvLineSourceReadLines( source, -2 ), "maxLineCount >= -1" );
    }
}

TEST( NlfLineSink, EndsEveryLineWithTheChosenTerminator )
{
    for( const auto &form : FORMS )
    {
        Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
        Ref< QV_CHAR_SINK >        charSink( qvStringCharSinkCharSink( scs ) );
        Ref< QV_NLF_LINE_SINK >    nls( qvNlfLineSinkCreate( charSink, form.flag | 0x100 ) );
        Ref< QV_LINE_SINK >        sink( qvNlfLineSinkLineSink( nls ) );

        EXPECT_EQ( form.flag, qvNlfLineSinkNlfFlags( nls ) );
        EXPECT_TRUE( qvLineSinkWriteLines( sink, vector( { U"a", U"", U"b" } ) ) );

        Ref< QV_STRING > written( qvStringCharSinkString( scs ) );
        EXPECT_EQ( U"a" + form.terminator + form.terminator + U"b" + form.terminator, chars( written ) );

        // What one flag writes, all flags read.
        EXPECT_EQ( ( Lines{ U"a", U"", U"b" } ),
                   linesOf( qvLineSourceReadLines( lineSource( chars( written ), ALL_FORMS ), -1 ) ) );
    }

    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        charSink( qvStringCharSinkCharSink( scs ) );
    Ref< QV_NLF_LINE_SINK >    nls( qvNlfLineSinkCreate( charSink, 0 ) );
    Ref< QV_LINE_SINK >        sink( qvNlfLineSinkLineSink( nls ) );
    EXPECT_TRUE( qvLineSinkWriteLines( sink, vector( { U"a", U"", U"b" } ) ) );
    EXPECT_EQ( 3, qvLineSinkLinesWritten( sink ) );
    EXPECT_EQ( "ab", take( qvStringCharSinkString( scs ) ) );
}

TEST( NlfLineSink, FailsWithItsCharSink )
{
    SinkLog< Chars >        log;
    Ref< QV_CHAR_SINK >     charSink = log.sink();
    Ref< QV_NLF_LINE_SINK > nls( qvNlfLineSinkCreate( charSink, QV_NLF_FLAG_LF ) );
    Ref< QV_LINE_SINK >     sink( qvNlfLineSinkLineSink( nls ) );

    EXPECT_EQ( QV_TRUE, qvLineSinkWriteCstr( sink, "a", -1 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkFlush( sink ) );
    EXPECT_EQ( "wwf", log.calls );

    // The char sink takes the line and fails with its terminator.
    log.callsUntilFailure = 1;
    EXPECT_EQ( QV_FALSE, qvLineSinkWriteCstr( sink, "b", -1 ) );
    EXPECT_EQ( QV_TRUE, qvLineSinkError( sink ) );
    EXPECT_EQ( 1, qvLineSinkLinesWritten( sink ) );
    EXPECT_EQ( U"a\nb", log.written );
}

TEST( NlfLineSource, EndsLinesAtTheChosenTerminators )
{
    const struct
    {
        QV_INT         flags;
        std::u32string data;
        Lines          lines;
    } CASES[] = {
        { ALL_FORMS, U"", {} },
        { ALL_FORMS, U"a\n", { U"a" } },
        { ALL_FORMS, U"a\n\n", { U"a", U"" } },
        { ALL_FORMS, U"a\r\nb\nc", { U"a", U"b", U"c" } },
        { ALL_FORMS, U"a\x85" U"b\vc\fd\u2028e\u2029f\rg", { U"a", U"b", U"c", U"d", U"e", U"f", U"g" } },
        { ALL_FORMS, U"\r\r\n\n\r", { U"", U"", U"", U"" } },
        { ALL_FORMS, U"\t\x0E\x84\x86\u2027\u202A", { U"\t\x0E\x84\x86\u2027\u202A" } },
        { QV_NLF_FLAG_CRLF, U"a\rb\r\nc\nd\r", { U"a\rb", U"c\nd\r" } },
        { QV_NLF_FLAG_CRLF, U"\r\r\n", { U"\r" } },
        { QV_NLF_FLAG_CRLF | QV_NLF_FLAG_CR, U"\r\r\n\n\r", { U"", U"", U"\n" } },
        { QV_NLF_FLAG_LF | QV_NLF_FLAG_CR, U"a\r\nb", { U"a", U"", U"b" } },
        { QV_NLF_FLAG_LF, U"a\r\nb\r", { U"a\r", U"b\r" } },
        { QV_NLF_FLAG_LS, U"a\u2029b\u2028c", { U"a\u2029b", U"c" } },
        { 0, U"a\r\n\x85\v\f\u2028\u2029b\n", { U"a\r\n\x85\v\f\u2028\u2029b\n" } },
    };

    for( const auto &c : CASES )
    {
        SCOPED_TRACE( &c - CASES );

        Ref< QV_LINE_SOURCE > source = lineSource( c.data, c.flags );
        EXPECT_EQ( c.lines, linesOf( qvLineSourceReadLines( source, -1 ) ) );
        EXPECT_EQ( QV_TRUE, qvLineSourceEnd( source ) );
        EXPECT_EQ( QV_FALSE, qvLineSourceError( source ) );
        EXPECT_EQ( static_cast< QV_INT >( c.lines.size() ), qvLineSourceLinesRead( source ) );
        EXPECT_EQ( c.lines, split( c.data, c.flags ) );
    }
}

TEST( NlfLineSource, GivesTheSameLinesWhereverRefillsFall )
{
    const std::u32string TERMINATORS = U"\n\r\r\n\x85\v\f\u2028\u2029";
    const unsigned       DENSITIES[] = { 2, 10, 100, 2000 };
    std::mt19937         random( 73 );

    for( int round = 0; round < 500; round++ )
    {
        QV_INT         flags   = round % 2 ? random() % 256 : ALL_FORMS;
        unsigned       density = DENSITIES[random() % std::size( DENSITIES )];
        std::u32string data;

        // Now and then a text that ends beside a refill, or one that has a two-character terminator across it.
        for( size_t length = random() % 4 ? random() % 5000 : 1022 + random() % 5; data.size() < length; )
            data += random() % density ? QV_CHAR( U'a' + random() % 26 ) : TERMINATORS[random() % TERMINATORS.size()];

        if( data.size() > 1025 && random() % 2 )
            data.replace( 1022 + random() % 3, 2, U"\r\n" );

        SourceLog< Chars >        log{ .data = data };
        Ref< QV_CHAR_SOURCE >     charSource = log.source();
        Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, flags ) );
        Ref< QV_LINE_SOURCE >     custom( qvNlfLineSourceLineSource( nls ) );
        Lines                     expected = split( data, flags );

        ASSERT_EQ( expected, linesOf( qvLineSourceReadLines( lineSource( data, flags ), -1 ) ) ) << "round " << round;
        ASSERT_EQ( expected, linesOf( qvLineSourceReadLines( custom, -1 ) ) ) << "round " << round;
    }
}

TEST( NlfLineSource, ReadsOneCharacterAheadAndSharesIt )
{
    // The line ends with the first refill, whose last character can't be judged without the next one.
    SourceLog< Chars >        log{ .data = std::u32string( 1023, U'x' ) + U"\r\nab\ncd" };
    Ref< QV_CHAR_SOURCE >     charSource = log.source();
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, -1 ) );
    Ref< QV_LINE_SOURCE >     first( qvNlfLineSourceLineSource( nls ) ), second( qvNlfLineSourceLineSource( nls ) );

    EXPECT_EQ( ALL_FORMS, qvNlfLineSourceNlfFlags( nls ) );
    EXPECT_EQ( 0u, log.limits.size() );
    EXPECT_EQ( std::string( 1023, 'x' ), take( qvLineSourceRead( first ) ) );
    EXPECT_EQ( 2u, log.limits.size() );
    EXPECT_EQ( "ab", take( qvLineSourceRead( second ) ) );
    EXPECT_EQ( "cd", take( qvLineSourceRead( first ) ) );
    EXPECT_EQ( nullptr, qvLineSourceRead( second ) );
    EXPECT_EQ( 2, qvLineSourceLinesRead( first ) );
    EXPECT_EQ( 2u, log.limits.size() );
}

TEST( NlfLineSource, GivesWhatCameOfALineBeforeItFails )
{
    for( const std::u32string end : { U"", U"cd", U"cd\r" } )
    {
        SourceLog< Chars >        log{ .data = U"ab\n" + end, .fails = true };
        Ref< QV_CHAR_SOURCE >     charSource = log.source();
        Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, ALL_FORMS ) );
        Ref< QV_LINE_SOURCE >     source( qvNlfLineSourceLineSource( nls ) );

        EXPECT_EQ( "ab", take( qvLineSourceRead( source ) ) );

        if( !end.empty() )
        {
            EXPECT_EQ( "cd", take( qvLineSourceRead( source ) ) );
        }

        EXPECT_FALSE( qvLineSourceEnd( source ) );
        EXPECT_EQ( nullptr, qvLineSourceRead( source ) );
        EXPECT_EQ( QV_TRUE, qvLineSourceEnd( source ) );
        EXPECT_EQ( QV_TRUE, qvLineSourceError( source ) );
    }
}
