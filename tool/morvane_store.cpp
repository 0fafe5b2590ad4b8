#include "morvane_document.h"
#include "morvane_file.h"
#include "morvane_tool.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_store.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_print.h"
#include "qv/qv_tool_private.h"

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane store";

const QV_INT ALL_LINE_ENDS = QV_NLF_FLAG_LF | QV_NLF_FLAG_CR | QV_NLF_FLAG_CRLF | QV_NLF_FLAG_NEL | QV_NLF_FLAG_VT
                             | QV_NLF_FLAG_FF | QV_NLF_FLAG_LS | QV_NLF_FLAG_PS;

// Why data is not a document in binary form. Reads it in the order of the library's reader.
const char *binaryProblem( QV_DECODER *decoder, int depth )
{
    static const char BROKEN[] = "truncated, or no document in binary form";

    if( depth == QV_STORE_MAX_DEPTH )
        return "nested too deep";

    QV_INT count;

    if( !qvDecoderTryDecodeInt( decoder, &count ) )
        return BROKEN;

    for( QV_INT i = 0; i < count; i++ )
    {
        QV_BOOL present;

        if( !qvDecoderTryDecodeString( decoder, nullptr ) || !qvDecoderTryDecodeOptionalString( decoder, nullptr )
            || !qvDecoderTryDecodeBool( decoder, &present ) )
            return BROKEN;

        if( const char *problem = present ? binaryProblem( decoder, depth + 1 ) : nullptr )
            return problem;
    }

    return nullptr;
}

const char *binaryProblem( QV_BUFFER *bytes )
{
    Ref< QV_DECODER > decoder( qvDecoderCreate( bytes ) );

    if( const char *problem = binaryProblem( decoder, 0 ) )
        return problem;

    return qvDecoderRemaining( decoder ) > 0 ? "bytes behind the end of the document"
                                             : "truncated, or no document in binary form";
}

void complainOfFile( QV_STRING *fn, const char *standard, const char *reason )
{
    if( isStandardStream( fn ) )
        complain( COMMAND, Ref< QV_STRING >( qvStringCreateFromCstr( standard, -1 ) ), reason );
    else
        complain( COMMAND, fn, reason );
}

// The content of a file; nothing, with a line on the standard error stream, if it cannot be read.
Ref< QV_BUFFER > readBytes( QV_STRING *fn )
{
    Ref< QV_BUFFER > bytes( qvBufferCreate() );
    const char      *reason = readFile( fn, bytes.at() );

    if( !reason )
        return bytes;

    complainOfFile( fn, "standard input", reason );
    return {};
}

bool writeBytes( FileReplacement *replacement, QV_STRING *fn, QV_BUFFER *bytes )
{
    const char *reason = replaceFile( replacement, fn, bytes );

    if( reason )
        complainOfFile( fn, "standard output", reason );

    return !reason;
}

Ref< QV_STORE > readStore( QV_STRING *fn, bool binary )
{
    Ref< QV_BUFFER > bytes = readBytes( fn );

    if( !bytes )
        return {};

    Ref< QV_STORE > store( binary ? qvStoreTryDecodeFromBuffer( bytes ) : qvStoreTryDecodeFromTextBuffer( bytes ) );

    if( !store )
        complain( COMMAND, fn, binary ? binaryProblem( bytes ) : "no document in text form" );

    return store;
}

// A document that is read, changed and written back, locked against other processes that do the same.
class Change
{
public:
    explicit Change( QV_STRING *fn ) : fn_( Ref< QV_STRING >::share( fn ) )
    {
    }

    // False, with a line on the standard error stream, for a failure.
    bool read( Document *document )
    {
        if( const char *reason = file_.lock( fn_ ) )
        {
            complain( COMMAND, fn_, reason );
            return false;
        }

        Ref< QV_BUFFER > bytes = readBytes( fn_ );

        if( !bytes )
            return false;

        if( document->parse( bytes ) )
            return true;

        complainOfFile( fn_, "standard input", "not valid UTF-8; it could not be kept as it is" );
        return false;
    }

    bool write( const Document &document )
    {
        return writeBytes( &file_, fn_, document.bytes() );
    }

private:
    Ref< QV_STRING > fn_;
    FileReplacement  file_;
};

// The value at `a.b.c`, or nothing.
Ref< QV_STRING > valueAt( QV_STORE *store, QV_STRING *path )
{
    Ref< QV_VECTOR > steps( qvStringSplitChar( path, U'.', -1 ) );
    Ref< QV_STORE >  level = Ref< QV_STORE >::share( store );
    QV_INT           last  = qvVectorLength( steps ) - 1;

    for( QV_INT i = 0; i <= last && level; i++ )
    {
        Ref< QV_STRING > step = wordAt( steps, i );

        if( !qvStoreAddressOk( step ) )
            break;

        if( i == last )
            return Ref< QV_STRING >( qvStoreValue( level, step ) );

        level.reset( qvStoreStore( level, step ) );
    }

    return {};
}

// Reads words without options. False for fewer than `atLeast`, and for more than `atMost` unless that is negative.
bool readWords( QV_VECTOR *argv, QV_INT atLeast, QV_INT atMost, Ref< QV_VECTOR > *words )
{
    Arguments arguments;

    if( !arguments.read( argv, nullptr, 0 ) )
        return false;

    *words       = Ref< QV_VECTOR >::share( arguments.words() );
    QV_INT count = qvVectorLength( *words );

    return count >= atLeast && ( atMost < 0 || count <= atMost );
}

QV_BOOL show( QV_VECTOR *argv, void *context )
{
    static const Option BINARY = { "binary", false };
    Arguments           arguments;

    if( !arguments.read( argv, &BINARY, 1 ) || qvVectorLength( arguments.words() ) != 1 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_STORE > store        = readStore( wordAt( arguments.words(), 0 ), arguments.optionCount() > 0 );

    if( !store )
        return QV_FALSE;

    printDocument( store );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

QV_BOOL get( QV_VECTOR *argv, void *context )
{
    Ref< QV_VECTOR > words;

    if( !readWords( argv, 2, -1, &words ) )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_STORE > store        = readStore( wordAt( words, 0 ), false );

    if( !store )
        return QV_FALSE;

    contextOf( context )->status = SUCCESS;

    for( QV_INT i = 1; i < qvVectorLength( words ); i++ )
    {
        Ref< QV_STRING > path  = wordAt( words, i );
        Ref< QV_STRING > value = valueAt( store, path );

        if( value )
        {
            print( value );
        }
        else
        {
            complain( COMMAND, path, "no such value" );
            contextOf( context )->status = FAILURE;
        }
    }

    return QV_TRUE;
}

QV_BOOL set( QV_VECTOR *argv, void *context )
{
    Ref< QV_VECTOR > words;

    if( !readWords( argv, 2, -1, &words ) )
        return QV_FALSE;

    for( QV_INT i = 1; i < qvVectorLength( words ); i++ )
        if( qvStringFindChar( wordAt( words, i ), 0, U'=' ) < 0 )
            return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_VECTOR > paths( qvVectorCreate() );
    Ref< QV_VECTOR > values( qvVectorCreate() );
    Change           change( wordAt( words, 0 ) );
    Document         document;

    if( !change.read( &document ) )
        return QV_FALSE;

    for( QV_INT i = 1; i < qvVectorLength( words ); i++ )
    {
        Ref< QV_STRING > word   = wordAt( words, i );
        QV_INT           equals = qvStringFindChar( word, 0, U'=' );
        Ref< QV_STRING > path( qvStringCreateFromLeading( word, equals ) );
        Ref< QV_STRING > value( qvStringCreateFromTrailing( word, qvStringLength( word ) - equals - 1 ) );

        if( !Document::canHold( path, value ) )
        {
            complain( COMMAND, word, "no path and value that a document can hold" );
            return QV_FALSE;
        }

        qvVectorAppendString( paths.at(), path );
        qvVectorAppendString( values.at(), value );
    }

    document.set( paths, values );

    if( !change.write( document ) )
        return QV_FALSE;

    contextOf( context )->status = SUCCESS;
    return QV_TRUE;
}

QV_BOOL remove( QV_VECTOR *argv, void *context )
{
    Ref< QV_VECTOR > words;

    if( !readWords( argv, 2, -1, &words ) )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Change   change( wordAt( words, 0 ) );
    Document document;

    if( !change.read( &document ) )
        return QV_FALSE;

    Ref< QV_VECTOR > paths( qvVectorCreateFromTrailing( words, qvVectorLength( words ) - 1 ) );
    Ref< QV_VECTOR > missing = document.remove( paths );

    for( QV_INT i = 0; i < qvVectorLength( missing ); i++ )
        complain( COMMAND, wordAt( missing, i ), "no such entry" );

    if( qvVectorLength( missing ) > 0 || !change.write( document ) )
        return QV_FALSE;

    contextOf( context )->status = SUCCESS;
    return QV_TRUE;
}

QV_BOOL merge( QV_VECTOR *argv, void *context )
{
    Ref< QV_VECTOR > words;

    if( !readWords( argv, 2, -1, &words ) )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Change   change( wordAt( words, 0 ) );
    Document document;

    if( !change.read( &document ) )
        return QV_FALSE;

    Ref< QV_VECTOR > others( qvVectorCreate() );

    for( QV_INT i = 1; i < qvVectorLength( words ); i++ )
    {
        Ref< QV_STORE > other = readStore( wordAt( words, i ), false );

        if( !other )
            return QV_FALSE;

        qvVectorAppendObj( others.at(), qvStoreObj( other ) );
    }

    document.merge( others );

    if( !change.write( document ) )
        return QV_FALSE;

    contextOf( context )->status = SUCCESS;
    return QV_TRUE;
}

// Reads one form of a document and writes the other.
QV_BOOL convert( QV_VECTOR *argv, void *context, bool fromBinary )
{
    Ref< QV_VECTOR > words;

    if( !readWords( argv, 2, 2, &words ) )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_STORE > store        = readStore( wordAt( words, 0 ), fromBinary );

    if( !store )
        return QV_FALSE;

    Ref< QV_BUFFER > bytes( fromBinary ? qvStoreEncodeToTextBuffer( store ) : qvStoreEncodeToBuffer( store ) );

    FileReplacement replacement;

    if( !writeBytes( &replacement, wordAt( words, 1 ), bytes ) )
        return QV_FALSE;

    contextOf( context )->status = SUCCESS;
    return QV_TRUE;
}

QV_BOOL encode( QV_VECTOR *argv, void *context )
{
    return convert( argv, context, false );
}

QV_BOOL decode( QV_VECTOR *argv, void *context )
{
    return convert( argv, context, true );
}

// Why a reader skips a line, or null if it does not.
const char *skipReason( QV_INT code )
{
    switch( code )
    {
    case QV___STORE_LINE_EMPTY:
        return "the line is empty";
    case QV___STORE_LINE_NO_SEPARATOR:
        return "neither . nor = follows an address";
    case QV___STORE_LINE_BAD_ADDRESS:
        return "what stands before the separator is no address";
    case QV___STORE_LINE_TOO_DEEP:
        return "nested too deep";
    default:
        return nullptr;
    }
}

// The lines as the reader splits them.
Ref< QV_VECTOR > linesOf( QV_BUFFER *bytes )
{
    Ref< QV_BUFFER_BYTE_SOURCE > buffer( qvBufferByteSourceCreate( bytes ) );
    Ref< QV_BYTE_SOURCE >        source( qvBufferByteSourceByteSource( buffer ) );
    Ref< QV_CHAR_SOURCE >        chars( qvCharsetCreateCharSource( source, QV_CHARSET_UTF_8, 0 ) );
    Ref< QV_NLF_LINE_SOURCE >    lines( qvNlfLineSourceCreate( chars, ALL_LINE_ENDS ) );
    Ref< QV_LINE_SOURCE >        reader( qvNlfLineSourceLineSource( lines ) );

    return Ref< QV_VECTOR >( qvLineSourceReadLines( reader, QV_INT_MAX ) );
}

QV_BOOL check( QV_VECTOR *argv, void *context )
{
    Ref< QV_VECTOR > words;

    if( !readWords( argv, 1, 1, &words ) )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    Ref< QV_STRING > fn          = wordAt( words, 0 );
    Ref< QV_BUFFER > bytes       = readBytes( fn );

    if( !bytes )
        return QV_FALSE;

    Ref< QV_VECTOR > lines    = linesOf( bytes );
    bool             complete = true;

    for( QV_INT i = 0; i < qvVectorLength( lines ); i++ )
    {
        const char *reason = skipReason( qv___StoreParseLine( wordAt( lines, i ), nullptr, nullptr ) );

        if( !reason )
            continue;

        qvPrintFormatCstr( "%s:%i: %lc", -1, fn.get(), i + 1, reason );
        complete = false;
    }

    if( complete )
        contextOf( context )->status = SUCCESS;

    return complete ? QV_TRUE : QV_FALSE;
}

const Tool TOOLS[] = {
    { "show", "FILE [--binary]", "prints a document in its canonical text form", show },
    { "get", "FILE PATH...", "prints the values at paths like a.b.c, a line each", get },
    { "set", "FILE PATH=VALUE...", "changes or adds values; all other lines stay as they are", set },
    { "delete", "FILE PATH...", "deletes entries with everything below them", remove },
    { "merge", "FILE OTHER...", "adds to FILE what only the others have", merge },
    { "encode", "FILE OUT", "writes a document in binary form", encode },
    { "decode", "FILE OUT", "writes a document in binary form as text", decode },
    { "check", "FILE", "names every line that a reader skips, and why", check },
};
} // namespace

QV_BOOL storeTool( QV_VECTOR *argv, void *context )
{
    runTool( COMMAND, TOOLS, sizeof( TOOLS ) / sizeof( TOOLS[0] ), argv, contextOf( context ) );
    return contextOf( context )->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace morvane
