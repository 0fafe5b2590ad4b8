#include "qv_test_child.h"
#include "qv_test_program.h"
#include "qv_test_support.h"

#include "qv/qv.h"

#include <csignal>
#include <fcntl.h>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT ENDS = QV_NLF_FLAG_LF | QV_NLF_FLAG_CR | QV_NLF_FLAG_CRLF;

// Runs `body` in a process whose standard output is a file, and returns what that has in the end.
template< class Body >
std::string outputOf( Body body )
{
    std::string name   = path( "standard.output" );
    Ending      ending = inChild(
        [&]
        {
            EXPECT_TRUE( freopen( name.c_str(), "w", stdout ) );
            body();
        } );
    EXPECT_EQ( 0, ending.status ) << ending.errors;
    return contentOf( "standard.output" ) + ending.errors;
}

// Runs `body` in a process whose standard input and output are pipes; `talk` has their other ends.
template< class Body, class Talk >
Ending withPipes( Body body, Talk talk )
{
    int in[2], out[2];
    EXPECT_EQ( 0, pipe( in ) );
    EXPECT_EQ( 0, pipe( out ) );
    fflush( nullptr );
    pid_t talker = fork();

    if( talker == 0 )
    {
        close( in[0] );
        close( out[1] );
        talk( in[1], out[0] );
        _exit( 0 );
    }

    close( in[1] );
    close( out[0] );
    Ending ending = inChild(
        [&]
        {
            dup2( in[0], STDIN_FILENO );
            dup2( out[1], STDOUT_FILENO );
            close( in[0] );
            close( out[1] );
            body();
        } );
    close( in[0] );
    close( out[1] );
    waitpid( talker, nullptr, 0 );
    return ending;
}

void print( const char *utf8 )
{
    Ref< QV_STRING > qvs = text( utf8 );
    qvStandardOutputPrint( qvStringBacking( qvs ), qvStringLength( qvs ) );
}
} // namespace

TEST( Standard, OutputComesInOrder )
{
    EXPECT_EQ(
        "1 \u03a9 2 \xe9 3 4\r\n5 6\n",
        outputOf(
            []
            {
                Ref< QV_BYTE_SINK > bytes( qvStandardOutputByteSink() );
                Ref< QV_CHAR_SINK > chars( qvStandardOutputCharSink( QV_CHARSET_ISO_8859_1, 0 ) );
                Ref< QV_LINE_SINK > lines( qvStandardOutputLineSink( QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_CRLF ) );
                printf( "1 " );
                print( "\u03a9 " );
                qvByteSinkWriteBytes( bytes, "2 ", 2 );
                EXPECT_TRUE( qvCharSinkWriteCstr( chars, "\u00e9 3 ", -1 ) && qvCharSinkFlush( chars ) );
                EXPECT_TRUE( qvLineSinkWriteCstr( lines, "4", -1 ) && qvLineSinkFlush( lines ) );
                printf( "5 " );
                EXPECT_TRUE( qvCharSinkWriteCstr( chars, "6\n", -1 ) );
                chars.reset(); // flushes
            } ) );

    // Errors are written at once, and lines of them in one piece.
    std::string errors =
        inChild(
            []
            {
                Ref< QV_LINE_SINK > lines( qvStandardErrorLineSink( QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
                Ref< QV_CHAR_SINK > chars( qvStandardErrorCharSink( QV_CHARSET_UTF_8, 0 ) );
                qvLineSinkWriteCstr( lines, "a", -1 );
                qvCharSinkWriteCstr( chars, "b", -1 );
                _exit( 0 );
            } )
            .errors;
    EXPECT_EQ( "a\nb", errors );

    // A long text of a print hook, in which threads take turns, stays together.
    std::string all = outputOf(
        []
        {
            restart( QV_RUNTIME_FLAG_MINIMAL );
            auto work = []
            {
                std::u32string long_( 5000, U'\u00e9' );
                long_ += U'\n';

                for( int i = 0; i < 20; i++ )
                    qvStandardOutputPrint( long_.data(), static_cast< QV_INT >( long_.size() ) );
            };
            Ref< QV_THREAD > thread( qvThreadTrySpawnCstr( "t", -1, work, nullptr, QV_THREAD_PRIORITY_NORMAL ) );
            work();
            qvThreadJoin( thread );
        } );
    EXPECT_EQ( 40u * 10001, all.size() );

    for( size_t at = 10000; at < all.size(); at += 10001 )
        EXPECT_EQ( '\n', all[at] );
}

TEST( Standard, FailuresAreResults )
{
    // Nobody reads: no signal ends the process, and none is left.
    Ending broken = withPipes(
        []
        {
            signal( SIGPIPE, SIG_DFL );
            char byte;
            EXPECT_EQ( 0, read( STDIN_FILENO, &byte, 1 ) ); // the other process has gone

            // The write that has no room any more is guarded, whatever its size.
            for( int i = 0; i < 5000; i++ )
                print( i % 7 ? "0123456789" : "0" );

            Ref< QV_LINE_SINK > lines( qvStandardOutputLineSink( QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
            std::string         big( 1 << 20, 'x' );
            EXPECT_FALSE( qvLineSinkWriteCstr( lines, big.c_str(), -1 ) );
            EXPECT_TRUE( qvLineSinkError( lines ) );
            EXPECT_EQ( "the standard output cannot be written: Broken pipe", take( qvErrorLastText() ) );
            qvErrorClear();
            print( "more" );
            EXPECT_FALSE( qvStandardOutputFlush() );
            EXPECT_EQ( QV_ERROR_INPUT_OUTPUT, qvErrorLastCode() );
            sigset_t pending;
            sigpending( &pending );
            EXPECT_FALSE( sigismember( &pending, SIGPIPE ) );
            fputs( testing::Test::HasFailure() ? "failed" : "done", stderr );
            _exit( 0 );
        },
        []( int, int ) {} );
    EXPECT_EQ( "done", broken.errors ) << broken.signal;

    Ending closed = inChild(
        []
        {
            close( STDIN_FILENO );
            close( STDOUT_FILENO );
            Ref< QV_BYTE_SOURCE > bytes( qvStandardInputByteSource() );
            Ref< QV_LINE_SOURCE > lines( qvStandardInputLineSource( QV_CHARSET_UTF_8, 0, ENDS ) );
            Ref< QV_BYTE_SINK >   sink( qvStandardOutputByteSink() );
            char                  byte;
            EXPECT_EQ( 0, qvByteSourceReadBytes( bytes, &byte, 1 ) );
            EXPECT_TRUE( qvByteSourceError( bytes ) );
            EXPECT_FALSE( qvLineSourceRead( lines ) );
            EXPECT_TRUE( qvLineSourceError( lines ) );
            EXPECT_EQ( "line 1: the standard input cannot be read: Bad file descriptor", take( qvErrorLastText() ) );
            qvFileExists( text( "/absent" ) );
            EXPECT_TRUE( qvByteSourceError( bytes ) );
            EXPECT_EQ( "the standard input cannot be read: Bad file descriptor", take( qvErrorLastText() ) );

            // Only the program has written, and seen why that failed.
            setvbuf( stdout, nullptr, _IONBF, 0 );
            EXPECT_EQ( EOF, putchar( 'x' ) );
            EXPECT_FALSE( qvStandardOutputFlush() );
            EXPECT_EQ( "the standard output could not be written before", take( qvErrorLastText() ) );
            EXPECT_FALSE( qvByteSinkWriteBytes( sink, "x", 1 ) && qvByteSinkFlush( sink ) );
            EXPECT_EQ( "the standard output cannot be written: Bad file descriptor", take( qvErrorLastText() ) );
            EXPECT_EQ( -1, qvStandardOutputWidth() );
            fputs( testing::Test::HasFailure() ? "failed" : "done", stderr );
            _exit( 0 );
        } );
    EXPECT_EQ( "done", closed.errors ) << closed.signal;
}

TEST( Standard, InputComesAsItArrives )
{
    // The other process waits for the answer to each line before it writes the next one.
    Ending ending = withPipes(
        []
        {
            signal( SIGPIPE, SIG_IGN ); // nobody waits for the last answer
            Ref< QV_LINE_SOURCE > lines( qvStandardInputLineSource( QV_CHARSET_UTF_8, 0, ENDS ) );

            while( Ref< QV_STRING > line{ qvLineSourceRead( lines ) } )
            {
                qvStringAppendCstr( line.at(), "|", -1 );
                qvStandardErrorPrint( qvStringBacking( line ), qvStringLength( line ) );
                static_cast< void >( !write( STDOUT_FILENO, "!", 1 ) );
            }

            fputs( qvLineSourceError( lines ) ? "failed" : "end", stderr );
        },
        []( int to, int from )
        {
            alarm( 60 );

            for( const char *line : { "\xef\xbb\xbf\u03a9\r\n", "a\rb\n", "\xef\xbb\xbf\n", "\n", "last" } )
            {
                char    byte;
                ssize_t done = write( to, line, strlen( line ) );

                if( line[0] != 'l' )
                    done += read( from, &byte, 1 );
            }
        } );
    EXPECT_EQ( "\u03a9|a|b|\uFEFF||last|end", ending.errors );

    // A charset in which a byte 10 is no end of a line, flags that forbid what is invalid, and plain bytes.
    auto readLines = []( std::string_view data, QV_INT charset, QV_INT flags, QV_INT ends )
    {
        return withPipes(
                   [=]
                   {
                       Ref< QV_LINE_SOURCE > lines( qvStandardInputLineSource( charset, flags, ends ) );
                       Ref< QV_VECTOR >      all( qvLineSourceReadLines( lines, -1 ) );
                       Ref< QV_ERROR >       error( qvLineSourceError( lines ) ? qvErrorLast() : nullptr );
                       std::string           place;

                       if( error )
                           place =
                               std::to_string( qvErrorLine( error ) ) + "@" + std::to_string( qvErrorOffset( error ) );

                       fputs( ( take( qvVectorToString( all ) ) + place ).c_str(), stderr );
                   },
                   [=]( int to, int ) { (void)!write( to, data.data(), data.size() ); } )
            .errors;
    };
    EXPECT_EQ(
        "<\u010a, b>", readLines(
                           { "\x0a\x01\x0a\x00"
                             "b\x00",
                             6 },
                           QV_CHARSET_UTF_16_LE, 0, ENDS ) );
    EXPECT_EQ(
        "<a>2@3", readLines( "a\nb\xff\nc\n", QV_CHARSET_UTF_8, QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER, ENDS ) );
    EXPECT_EQ( "<\u00e9, , b>", readLines( "\xe9\r\nb", QV_CHARSET_ISO_8859_1, 0, QV_NLF_FLAG_LF | QV_NLF_FLAG_CR ) );
    EXPECT_EQ( "<a, \u00c3\u00a9>", readLines( "a\n\xc3\xa9\n", QV_CHARSET_ISO_8859_1, 0, ENDS ) );
    EXPECT_EQ( "<a\nb, c>", readLines( "a\nb\rc", QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_CR ) );
}
