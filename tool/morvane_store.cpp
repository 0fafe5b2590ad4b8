#include "morvane_document.h"
#include "morvane_file.h"
#include "morvane_progress.h"
#include "morvane_tool.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_error.h"
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
#include "qv/unicode/qv_unicode_properties.h"

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane store";

const QV_INT ALL_LINE_ENDS = QV_NLF_FLAG_LF | QV_NLF_FLAG_CR | QV_NLF_FLAG_CRLF | QV_NLF_FLAG_NEL | QV_NLF_FLAG_VT
                             | QV_NLF_FLAG_FF | QV_NLF_FLAG_LS | QV_NLF_FLAG_PS;

// True for documents in binary form, cut ones too: they begin with an integer and that with its length, from 0 to 8.
bool isBinary( QV_BUFFER *bytes )
{
    return qvBufferLength( bytes ) > 0 && qvBufferReadBits( bytes, 0, 8 ) <= 8;
}

template< class Reason >
void complainOfFile( QV_STRING *fn, const char *standard, Reason reason )
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
        complainOfFile(
            fn, "standard input", Ref< QV_STRING >( qvErrorReason( Ref< QV_ERROR >( qvErrorLast() ) ) ).get() );

    return store;
}

// A document that is read, changed and written back, locked against other processes that do the same.
class Change
{
public:
    explicit Change( QV_STRING *fn ) : fn_( Ref< QV_STRING >::share( fn ) )
    {
    }

    // Makes an empty file if there is none.
    bool create()
    {
        const char *reason = createFile( fn_ );

        if( reason )
            complain( COMMAND, fn_, reason );

        return !reason;
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

        if( isBinary( bytes ) )
        {
            complainOfFile( fn_, "standard input", "a document in binary form; only text can be changed" );
            return false;
        }

        beginProgress( fn_, qvBufferLength( bytes ) );
        bool isText = document->parse( bytes );
        endProgress();

        if( isText )
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

// Finds the value at `a.b.c`, and the sub-store at `a.b.c` or `a.b.c.`. What is not there stays null.
void find( QV_STORE *store, QV_STRING *path, Ref< QV_STRING > *value, Ref< QV_STORE > *below )
{
    Ref< QV_VECTOR > steps( qvStringSplitChar( path, U'.', -1 ) );
    Ref< QV_STORE >  level = Ref< QV_STORE >::share( store );
    QV_INT           last  = qvVectorLength( steps ) - 1;
    bool             isSub = last > 0 && qvStringLength( wordAt( steps, last ) ) == 0;

    last -= isSub;

    for( QV_INT i = 0; i <= last && level; i++ )
    {
        Ref< QV_STRING > step = wordAt( steps, i );

        if( !qvStoreAddressOk( step ) )
            return;

        if( i == last && !isSub )
            value->reset( qvStoreValue( level, step ) );

        level.reset( qvStoreStore( level, step ) );
    }

    *below = std::move( level );
}
} // namespace

int showStore( const Arguments &arguments )
{
    int status = SUCCESS;

    for( QV_INT i = 0; i < arguments.wordCount(); i++ )
    {
        if( Ref< QV_STORE > store = readStore( arguments.wordAt( i ), arguments.has( "binary" ) ) )
            printDocument( store );
        else
            status = FAILURE;
    }

    return status;
}

int getValues( const Arguments &arguments )
{
    Ref< QV_STORE >  store    = readStore( arguments.wordAt( 0 ), false );
    Ref< QV_STRING > fallback = arguments.valueOf( "default" );
    int              status   = SUCCESS;

    if( !store )
        return FAILURE;

    for( QV_INT i = 1; i < arguments.wordCount(); i++ )
    {
        Ref< QV_STRING > path = arguments.wordAt( i );
        Ref< QV_STRING > value;
        Ref< QV_STORE >  below;

        find( store, path, &value, &below );

        if( value )
        {
            print( value );
        }
        else if( below )
        {
            printDocument( below );
        }
        else if( fallback )
        {
            print( fallback );
        }
        else
        {
            complain( COMMAND, path, "no such value" );
            status = FAILURE;
        }
    }

    return status;
}

int setValues( const Arguments &arguments )
{
    Ref< QV_VECTOR > paths( qvVectorCreate() );
    Ref< QV_VECTOR > values( qvVectorCreate() );

    for( QV_INT i = 1; i < arguments.wordCount(); i++ )
    {
        Ref< QV_STRING > word   = arguments.wordAt( i );
        QV_INT           equals = qvStringFindChar( word, 0, U'=' );

        if( equals < 0 )
        {
            complain( COMMAND, word, "no = between path and value" );
            return MISUSE;
        }

        qvVectorAppendString( paths.at(), Ref< QV_STRING >( qvStringCreateFromLeading( word, equals ) ) );
        qvVectorAppendString(
            values.at(), Ref< QV_STRING >( qvStringCreateFromTrailing( word, qvStringLength( word ) - equals - 1 ) ) );
    }

    for( QV_INT i = 1; i < arguments.wordCount(); i++ )
    {
        if( Document::canHold( wordAt( paths, i - 1 ), wordAt( values, i - 1 ) ) )
            continue;

        complain( COMMAND, arguments.wordAt( i ), "no path and value that a document can hold" );
        return FAILURE;
    }

    Change   change( arguments.wordAt( 0 ) );
    Document document;

    if( ( arguments.has( "create" ) && !change.create() ) || !change.read( &document ) )
        return FAILURE;

    document.set( paths, values );
    return change.write( document ) ? SUCCESS : FAILURE;
}

int deleteEntries( const Arguments &arguments )
{
    Change   change( arguments.wordAt( 0 ) );
    Document document;

    if( !change.read( &document ) )
        return FAILURE;

    Ref< QV_VECTOR > paths( qvVectorCreateFromTrailing( arguments.words(), arguments.wordCount() - 1 ) );
    Ref< QV_VECTOR > missing = document.remove( paths );

    for( QV_INT i = 0; i < qvVectorLength( missing ); i++ )
        complain( COMMAND, wordAt( missing, i ), "no such entry" );

    return qvVectorLength( missing ) == 0 && change.write( document ) ? SUCCESS : FAILURE;
}

int mergeStores( const Arguments &arguments )
{
    Change   change( arguments.wordAt( 0 ) );
    Document document;

    if( !change.read( &document ) )
        return FAILURE;

    Ref< QV_VECTOR > others( qvVectorCreate() );

    for( QV_INT i = 1; i < arguments.wordCount(); i++ )
    {
        Ref< QV_STORE > other = readStore( arguments.wordAt( i ), false );

        if( !other )
            return FAILURE;

        qvVectorAppendObj( others.at(), qvStoreObj( other ) );
    }

    document.merge( others );
    return change.write( document ) ? SUCCESS : FAILURE;
}

namespace
{
// Reads one form of a document and writes the other.
int convert( const Arguments &arguments, bool fromBinary )
{
    Ref< QV_STORE > store = readStore( arguments.wordAt( 0 ), fromBinary );

    if( !store )
        return FAILURE;

    Ref< QV_BUFFER > bytes( fromBinary ? qvStoreEncodeToTextBuffer( store ) : qvStoreEncodeToBuffer( store ) );
    FileReplacement  replacement;

    return writeBytes( &replacement, arguments.wordAt( 1 ), bytes ) ? SUCCESS : FAILURE;
}
} // namespace

int encodeStore( const Arguments &arguments )
{
    return convert( arguments, false );
}

int decodeStore( const Arguments &arguments )
{
    return convert( arguments, true );
}

namespace
{
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
} // namespace

namespace
{
// True for a line that is there for people: an empty one, or a comment.
bool isForPeople( QV_STRING *line )
{
    for( QV_INT i = 0; i < qvStringLength( line ); i++ )
        if( !qvUnicodeIsWhiteSpace( qvStringCharAt( line, i ) ) )
            return qvStringCharAt( line, i ) == U'#';

    return true;
}

bool isComplete( QV_STRING *fn )
{
    Ref< QV_BUFFER > bytes = readBytes( fn );

    if( !bytes )
        return false;

    Ref< QV_VECTOR > lines    = linesOf( bytes );
    bool             complete = true;

    for( QV_INT i = 0; i < qvVectorLength( lines ); i++ )
    {
        Ref< QV_STRING > line   = wordAt( lines, i );
        const char      *reason = skipReason( qv___StoreParseLine( line, nullptr, nullptr ) );

        if( !reason || isForPeople( line ) )
            continue;

        qvPrintFormatCstr( "%s:%i: %lc", -1, fn, i + 1, reason );
        complete = false;
    }

    return complete;
}
} // namespace

int checkStore( const Arguments &arguments )
{
    bool complete = true;

    for( QV_INT i = 0; i < arguments.wordCount(); i++ )
        complete = isComplete( arguments.wordAt( i ) ) && complete;

    return complete ? SUCCESS : FAILURE;
}
} // namespace morvane
