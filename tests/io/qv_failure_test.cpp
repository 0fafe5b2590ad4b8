/* What the last error tells when files and streams fail. */

#include "qv_test_program.h"
#include "qv_test_stream.h"

#include "qv/base/qv_error.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_file.h"
#include "qv/io/qv_line_sink.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_source.h"

#include <errno.h>
#include <filesystem>
#include <thread>

using qv::Ref;
using namespace qv::test;
namespace fs = std::filesystem;

namespace
{
const QV_INT STRICT = QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;

// The code and the text of the last error, which is forgotten.
std::string told()
{
    std::string result = std::to_string( qvErrorLastCode() ) + " " + take( qvErrorLastText() );
    qvErrorClear();
    return result;
}

std::string expected( QV_INT code, const std::string &text )
{
    return std::to_string( code ) + " " + text;
}
} // namespace

TEST( Failure, OfAFileHasItsNameAndTheReasonOfTheSystem )
{
    fs::create_directories( path( "full/sub" ) );
    write( "file", "12345" );

    const std::string absent = path( "absent" ), file = path( "file" ), full = path( "full" ), below = path( "file/x" );
    const std::string zero( "a\0b", 3 ), opened = ": cannot be opened: ", deleted = ": cannot be deleted: ";

    struct
    {
        std::function< bool() > call; // true for success
        QV_INT                  code;
        std::string             text;
    } const cases[] = {
        { [&] { return Ref< QV_BUFFER >( qvFileReadBuffer( text( absent ), -1 ) ).get(); }, QV_ERROR_NOT_FOUND,
          absent + opened + "No such file or directory" },
        { [&] { return Ref< QV_BUFFER >( qvFileReadBuffer( text( full ), -1 ) ).get(); }, QV_ERROR_IS_DIRECTORY,
          full + ": cannot be read: Is a directory" },
        { [&] { return Ref< QV_BUFFER >( qvFileReadBuffer( text( file ), 4 ) ).get(); }, QV_ERROR_TOO_LONG,
          file + ": longer than allowed" },
        { [&] { return qvFileWriteBuffer( text( full ), buffer( "x" ) ); }, QV_ERROR_IS_DIRECTORY,
          full + opened + "Is a directory" },
        { [&] { return qvFileWriteBuffer( text( "/dev/full" ), buffer( "x" ) ); }, QV_ERROR_NO_SPACE,
          "/dev/full: cannot be written: No space left on device" },
        { [&] { return qvFileExists( text( below ) ); }, QV_ERROR_NOT_DIRECTORY,
          below + ": cannot be looked up: Not a directory" },
        { [&] { return qvFileSize( text( absent ) ) != -1; }, QV_ERROR_NOT_FOUND,
          absent + ": cannot be looked up: No such file or directory" },
        { [&] { return qvFileIsDirectory( text( file ) ); }, QV_ERROR_NOT_DIRECTORY,
          file + ": cannot be used as a directory: Not a directory" },
        { [&] { return qvFileDelete( text( zero ) ); }, QV_ERROR_BAD_NAME,
          zero + ": cannot be deleted: the name contains U+0000" },
        { [&] { return qvFileRename( text( file ), text( full + "/" + zero ) ); }, QV_ERROR_BAD_NAME,
          full + "/" + zero + ": cannot be renamed: the name contains U+0000" },
        { [&] { return qvFileRename( text( absent ), text( file ) ); }, QV_ERROR_NOT_FOUND,
          absent + ": cannot be renamed: No such file or directory" },
        { [&] { return qvFileCreateDirectory( text( full ) ); }, QV_ERROR_EXISTS,
          full + ": cannot be made: File exists" },
        { [&] { return qvFileDeleteDirectory( text( full ) ); }, QV_ERROR_NOT_EMPTY,
          full + deleted + "Directory not empty" },
        { [&] { return qvFileDeleteDirectoryRecursive( text( file ) ); }, QV_ERROR_NOT_DIRECTORY,
          file + deleted + "Not a directory" },
        { [&] { return qvFileDeleteDirectoryRecursive( text( full + "/." ) ); }, QV_ERROR_BAD_NAME,
          full + "/." + deleted + "not the name of a directory that could be deleted as a whole" },
        { [&] { return qvVectorLength( Ref< QV_VECTOR >( qvDirectoryContent( text( file ), QV_FALSE, nullptr ) ) ); },
          QV_ERROR_NOT_DIRECTORY, file + ": cannot be read: Not a directory" },
        { [&] { return Ref< QV_LINE_SINK >( qvFileOpenLineSink( text( below ), QV_CHARSET_UTF_8, 0, 1 ) ).get(); },
          QV_ERROR_NOT_DIRECTORY, below + opened + "Not a directory" },
    };

    for( const auto &row : cases )
    {
        EXPECT_FALSE( row.call() ) << row.text;
        EXPECT_EQ( expected( row.code, row.text ), told() );
    }

    // A directory that was read and is empty is no failure.
    EXPECT_FALSE( qvFileExists( text( absent ) ) );
    EXPECT_EQ( 0, qvVectorLength( Ref< QV_VECTOR >( qvDirectoryContent( text( full + "/sub" ), 0, nullptr ) ) ) );
    EXPECT_EQ( expected( QV_ERROR_NONE, "" ), told() );

    // Of a tree that stays the first entry is named that could not be deleted.
    EXPECT_FALSE( qvFileDeleteDirectoryRecursive( text( "/proc/self/task" ) ) );
    Ref< QV_ERROR >   error( qvErrorLast() );
    const std::string left = take( qvErrorPath( error ) );
    EXPECT_EQ( 0, left.find( "/proc/self/task/" ) ) << left;
    EXPECT_TRUE( fs::is_regular_file( left ) || fs::is_symlink( left ) ) << left;
    EXPECT_EQ( EPERM, qvErrorSystemCode( error ) );
    told();
}

TEST( Failure, OfAStreamIsToldByEachCallThatItMakesFail )
{
    // Two good lines and the start of a third, after more than a refill.
    const std::string start( 3000, 'x' );
    write( "lines", start + "\nsecond\nthi\xFFrd\n" );

    const std::string     file = path( "lines" ), expectedText = file + ":3: bytes that are no text in the charset";
    Ref< QV_LINE_SOURCE > lines( qvFileOpenLineSource( text( file ), QV_CHARSET_UTF_8, STRICT, QV_NLF_FLAG_LF ) );

    for( const std::string &line : { start, std::string( "second" ), std::string( "thi" ) } )
        EXPECT_EQ( line, take( qvLineSourceRead( lines ) ) );

    // Something else fails before the failure shows; and another thread is told it too.
    for( int round = 0; round < 3; round++ )
    {
        EXPECT_FALSE( qvFileExists( text( "/absent" ) ) );

        if( round < 2 )
            EXPECT_EQ( nullptr, qvLineSourceRead( lines ) );
        else
            EXPECT_TRUE( qvLineSourceError( lines ) );

        Ref< QV_ERROR > error( qvErrorLast() );
        EXPECT_EQ( expectedText, textOf( error.get() ) );
        EXPECT_EQ( QV_ERROR_BAD_TEXT, qvErrorCode( error ) );
        EXPECT_EQ( 3011, qvErrorOffset( error ) );
    }

    std::thread(
        [&]
        {
            EXPECT_EQ( 0, qvVectorLength( Ref< QV_VECTOR >( qvLineSourceReadLines( lines, -1 ) ) ) );
            EXPECT_TRUE( qvLineSourceError( lines ) );
            EXPECT_EQ( expectedText, take( qvErrorLastText() ) );
        } )
        .join();

    // A sink as well, once its data gets to the file.
    Ref< QV_LINE_SINK > sink( qvFileOpenLineSink( text( "/dev/full" ), QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF ) );
    EXPECT_FALSE( qvLineSinkWrite( sink, text( std::string( 100000, 'x' ) ) ) );
    EXPECT_EQ( expected( QV_ERROR_NO_SPACE, "/dev/full: cannot be written: No space left on device" ), told() );
    EXPECT_FALSE( qvLineSinkFlush( sink ) );
    EXPECT_EQ( expected( QV_ERROR_NO_SPACE, "/dev/full: cannot be written: No space left on device" ), told() );
}

TEST( Failure, OfACodecTellsThePlace )
{
    const std::string start( 2000, '\0' );

    struct
    {
        QV_INT      charset;
        std::string bytes;
        QV_INT      code;
        std::string place;
    } const cases[] = {
        { QV_CHARSET_UTF_8, start + "\xC3\xA4\xC3(", QV_ERROR_BAD_TEXT, "byte 2003" },
        { QV_CHARSET_UTF_8, "\x80", QV_ERROR_BAD_TEXT, "byte 0" },
        { QV_CHARSET_UTF_8, start + "\xE2\x82", QV_ERROR_CUT_OFF, "byte 2002" },
        { QV_CHARSET_UTF_32_BE, start + std::string( "\0\x11\0\0", 4 ), QV_ERROR_BAD_TEXT, "byte 2000" },
        { QV_CHARSET_UTF_16_LE, start + "x", QV_ERROR_CUT_OFF, "byte 2001" },
        { QV_CHARSET_ISO_8859_7, start + "a\xFF", QV_ERROR_BAD_TEXT, "byte 2001" },
    };

    for( const auto &row : cases )
        for( QV_INT piece : { QV_INT( 1 ), QV_INT( -1 ) } ) // where the characters are read one by one, and all
        {
            Ref< QV_BUFFER_BYTE_SOURCE > holder( qvBufferByteSourceCreate( buffer( row.bytes ) ) );
            Ref< QV_BYTE_SOURCE >        bytes( qvBufferByteSourceByteSource( holder ) );
            Ref< QV_CHAR_SOURCE >        source( qvCharsetCreateCharSource( bytes, row.charset, STRICT ) );
            Ref< QV_STRING >             read( qvStringCreate() );

            while( !qvCharSourceEnd( source ) )
                qvCharSourceRead( source, read.at(), piece );

            EXPECT_TRUE( qvCharSourceError( source ) );

            bool isCut = row.code == QV_ERROR_CUT_OFF;
            EXPECT_EQ(
                expected(
                    row.code, row.place
                                  + ( isCut ? ": the data ends inside of a character"
                                            : ": bytes that are no text in the charset" ) ),
                told() );
        }

    // Where a read fails inside of a character, that is the reason.
    Ref< QV_BYTE_SOURCE > failing( qv___ByteSourceCreate(
        []( QV_OBJ *, QV_BUFFER **buf, QV_INT, QV_INT *bytesRead )
        {
            qvBufferAppendBytes( buf, "\xE2", 1 );
            *bytesRead = 1;
            qvErrorSetLast( Ref< QV_ERROR >( qvErrorCreate( QV_ERROR_OTHER, text( "torn" ), nullptr, -1, -1 ) ) );
            return QV_FALSE;
        },
        nullptr, nullptr ) );
    Ref< QV_CHAR_SOURCE > torn( qvCharsetCreateCharSource( failing, QV_CHARSET_UTF_8, STRICT ) );
    Ref< QV_STRING >      read( qvStringCreate() );
    EXPECT_EQ( 0, qvCharSourceRead( torn, read.at(), -1 ) );
    EXPECT_EQ( expected( QV_ERROR_OTHER, "torn" ), told() );

    Ref< QV_BUFFER_BYTE_SINK > holder( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        bytes( qvBufferByteSinkByteSink( holder ) );
    Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( bytes, QV_CHARSET_ISO_8859_1, STRICT ) );
    EXPECT_FALSE( qvCharSinkWrite( sink, text( "a\u20ACb" ) ) && qvCharSinkFlush( sink ) );
    EXPECT_EQ( expected( QV_ERROR_BAD_TEXT, "the character U+20AC is not in the charset" ), told() );
}
