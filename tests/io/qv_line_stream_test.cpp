// Streams of lines that fail, and what they read ahead; walks beside models try what they carry.

#include "qv_test_stream.h"

#include "qv/base/qv_vector.h"
#include "qv/io/qv_line_sink.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_sink.h"
#include "qv/io/qv_nlf_line_source.h"

using qv::Ref;
using namespace qv::test;

TEST( LineSink, StaysFailedOnceALineHasFailed )
{
    SinkLog< Chars >        log;
    Ref< QV_CHAR_SINK >     charSink = log.sink();
    Ref< QV_NLF_LINE_SINK > nls( qvNlfLineSinkCreate( charSink, QV_NLF_FLAG_LF ) );
    Ref< QV_LINE_SINK >     sink( qvNlfLineSinkLineSink( nls ) );
    Ref< QV_VECTOR >        lines( qvVectorCreate() ), none( qvVectorCreate() );

    for( const char *line : { "1", "2", "3" } )
        qvVectorAppendString( lines.at(), text( line ) );

    EXPECT_TRUE( qvLineSinkWriteCstr( sink, "0", -1 ) && qvLineSinkFlush( sink ) );
    EXPECT_EQ( "wwf", log.calls );

    // The char sink takes the second line and fails with its terminator.
    log.callsUntilFailure = 3;
    EXPECT_FALSE( qvLineSinkWriteLines( sink, lines ) );
    EXPECT_TRUE( qvLineSinkError( sink ) );
    EXPECT_EQ( 2, qvLineSinkLinesWritten( sink ) );
    EXPECT_EQ( U"0\n1\n2", log.written );
    EXPECT_FALSE(
        qvLineSinkWriteCstr( sink, "x", -1 ) || qvLineSinkWriteLines( sink, none ) || qvLineSinkFlush( sink ) );
    EXPECT_EQ( "wwfwwww", log.calls );

    qvVectorAppendNull( none.at() );
    sink.reset( qvNlfLineSinkLineSink( nls ) );
    EXPECT_BROKEN_MESSAGE(
        qvLineSinkWriteLines( sink, none ), "stdfunc from", "!obj || qvObjSort(obj)==&qv___sort_QV_STRING" );
}

TEST( LineSource, ReadsAsManyLinesAsItIsAskedFor )
{
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreateFromString( text( "a\nb\nc" ), QV_NLF_FLAG_LF ) );
    Ref< QV_LINE_SOURCE >     source( qvNlfLineSourceLineSource( nls ) );
    auto                      read = [&]( QV_INT most )
    { return qvVectorLength( Ref< QV_VECTOR >( qvLineSourceReadLines( source, most ) ) ); };

    EXPECT_EQ( 0, read( 0 ) );
    EXPECT_EQ( 1, read( 1 ) );
    EXPECT_FALSE( qvLineSourceEnd( source ) );
    EXPECT_EQ( 2, read( -1 ) );
    EXPECT_TRUE( qvLineSourceEnd( source ) && !qvLineSourceError( source ) );
    EXPECT_EQ( 3, qvLineSourceLinesRead( source ) );
    EXPECT_BROKEN( read( -2 ), "maxLineCount >= -1" );
}

TEST( NlfFlags, TheLowestChoosesTheTerminator )
{
    EXPECT_EQ( "\r\n", take( qvNlfFlagsNlfString( -QV_NLF_FLAG_CRLF ) ) );
    EXPECT_EQ( "", take( qvNlfFlagsNlfString( 0x100 ) ) );
}

TEST( NlfLineSource, ReadsOneCharacterAheadAndSharesIt )
{
    // The line ends with the first refill, whose last character cannot be judged without the next one.
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

TEST( NlfLineSource, DeliversWhatCameOfALineBeforeItFails )
{
    for( const std::u32string end : { U"", U"cd", U"cd\r" } )
    {
        SourceLog< Chars >        log{ .data = U"ab\n" + end, .fails = true };
        Ref< QV_CHAR_SOURCE >     charSource = log.source();
        Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, -1 ) );
        Ref< QV_LINE_SOURCE >     source( qvNlfLineSourceLineSource( nls ) );

        EXPECT_EQ( "ab", take( qvLineSourceRead( source ) ) );

        EXPECT_EQ( "cd", end.empty() ? "cd" : take( qvLineSourceRead( source ) ) );
        EXPECT_FALSE( qvLineSourceEnd( source ) );
        EXPECT_EQ( nullptr, qvLineSourceRead( source ) );
        EXPECT_TRUE( qvLineSourceEnd( source ) && qvLineSourceError( source ) );
    }
}
