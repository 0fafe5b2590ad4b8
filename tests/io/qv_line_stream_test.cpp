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

#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
typedef std::vector< std::u32string > Lines;

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

TEST( NlfFlags, TheLowestChoosesTheTerminator )
{
    EXPECT_EQ( U"\r\n", chars( Ref< QV_STRING >( qvNlfFlagsNlfString( -QV_NLF_FLAG_CRLF ) ) ) );
    EXPECT_EQ( "", take( qvNlfFlagsNlfString( 0x100 ) ) );
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

TEST( NlfLineSource, ReadsOneCharacterAheadAndSharesIt )
{
    // The line ends with the first refill, whose last character can't be judged without the next one.
    SourceLog< Chars >        log{ .data = std::u32string( 1023, U'x' ) + U"\r\nab\ncd" };
    Ref< QV_CHAR_SOURCE >     charSource = log.source();
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, -1 ) );
    Ref< QV_LINE_SOURCE >     first( qvNlfLineSourceLineSource( nls ) ), second( qvNlfLineSourceLineSource( nls ) );

    EXPECT_EQ( 255, qvNlfLineSourceNlfFlags( nls ) );
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
        Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, -1 ) );
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
