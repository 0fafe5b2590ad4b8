#include "morvane_decoder.h"
#include "morvane_text.h"

#include "qv/charset/qv_charset.h"
#include "qv/sys/qv_int.h"
#include "qv/unicode/qv_unicode_properties.h"

namespace morvane
{
using qv::Ref;

namespace
{
/* Names of character sets ---------------------------------------------------------------------------------------- */

const QV_INT NAME_MAX = 40; // letters that count; no name has as many
const QV_INT NEAREST  = 3;  // names that are proposed

// The form in which names are compared: letters and digits, in lower case.
struct PlainName
{
    QV_CHAR chars[NAME_MAX];
    QV_INT  length = 0;

    explicit PlainName( QV_STRING *name )
    {
        for( QV_INT i = 0; i < qvStringLength( name ) && length < NAME_MAX; i++ )
        {
            QV_CHAR ch = qvStringCharAt( name, i );

            if( ch >= U'A' && ch <= U'Z' )
                ch += U'a' - U'A';

            if( ( ch >= U'a' && ch <= U'z' ) || ( ch >= U'0' && ch <= U'9' ) )
                chars[length++] = ch;
        }
    }
};

// The least number of letters to insert, delete, change or exchange with the next one to make one name of the other.
QV_INT distance( const PlainName &a, const PlainName &b )
{
    QV_INT steps[NAME_MAX + 1][NAME_MAX + 1]; // [i][j]: for the first i and j letters

    for( QV_INT i = 0; i <= a.length; i++ )
        for( QV_INT k = 0; k <= b.length; k++ )
        {
            if( i == 0 || k == 0 )
            {
                steps[i][k] = i + k;
                continue;
            }

            QV_INT change = a.chars[i - 1] != b.chars[k - 1];
            steps[i][k]   = qvIntMin( qvIntMin( steps[i - 1][k], steps[i][k - 1] ) + 1, steps[i - 1][k - 1] + change );

            if( i > 1 && k > 1 && a.chars[i - 1] == b.chars[k - 2] && a.chars[i - 2] == b.chars[k - 1] )
                steps[i][k] = qvIntMin( steps[i][k], steps[i - 2][k - 2] + 1 );
        }

    return steps[a.length][b.length];
}

// "no such character set", and the known names that are nearest to the name, each of another set.
Ref< QV_STRING > unknownReason( QV_STRING *unknown )
{
    struct
    {
        QV_INT           steps;
        Ref< QV_STRING > name;
    } nearest[NEAREST + 1];

    PlainName wanted( unknown );
    QV_INT    count = 0;

    for( QV_INT charset = 0; QV_CHARSET_OK( charset ); charset++ )
    {
        Ref< QV_VECTOR > names( qvCharsetIanaNames( charset ) );
        QV_INT           least = qvIntMin( wanted.length / 2, 4 ) + 1; // names that are further away are not similar
        Ref< QV_STRING > best;

        for( QV_INT i = 0; i < qvVectorLength( names ); i++ )
        {
            Ref< QV_STRING > name  = wordAt( names, i );
            QV_INT           steps = distance( wanted, PlainName( name ) );

            if( steps < least )
            {
                least = steps;
                best  = std::move( name );
            }
        }

        if( !best )
            continue;

        QV_INT at = count;

        for( ; at > 0 && nearest[at - 1].steps > least; at-- )
            nearest[at] = std::move( nearest[at - 1] );

        nearest[at] = { least, std::move( best ) };
        count       = qvIntMin( count + 1, NEAREST );
    }

    Ref< QV_STRING > reason( qvStringCreateFromCstr( "no such character set", -1 ) );

    for( QV_INT i = 0; i < count; i++ )
        qvStringAppendFormatCstr( reason.at(), i == 0 ? "; near are %s" : ", %s", -1, nearest[i].name.get() );

    return reason;
}

// Stores the character set of a name. False, with a line on the standard error stream, if there is none.
bool readCharset( QV_STRING *name, QV_INT *charset )
{
    *charset = qvCharsetFromIanaName( name );

    if( *charset < 0 )
        complain( TEXT_COMMAND, name, unknownReason( name ) );

    return *charset >= 0;
}

/* Conversion ----------------------------------------------------------------------------------------------------- */

const QV_CHAR BYTE_ORDER_MARK = 0xFEFF;
const QV_INT  LONGEST         = 8192; // most characters that are kept for the next piece

bool isUnicode( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_8;
}

// How many of the characters are complete, for a set with one byte a character: no mark that follows can change their
// bytes. Apart from marks, only characters that no such set has change the one before them, and nothing changes the end
// of a line.
QV_INT completeOf( QV_STRING *text )
{
    const QV_CHAR *chars = qvStringBacking( text );
    QV_INT         count = qvStringLength( text );

    if( count == 0 || chars[count - 1] == U'\n' )
        return count;

    QV_INT complete = count - 1;

    while( complete > 0 && count - complete < LONGEST && qvUnicodeCccv( chars[complete] ) != 0 )
        complete--;

    return complete == 0 && count >= LONGEST ? count : complete;
}

// The bytes of the first characters of a text; nothing if the character set lacks one and the flags ask for a failure.
Ref< QV_BUFFER > encode( QV_STRING *text, QV_INT count, QV_INT charset, QV_INT flags )
{
    Ref< QV_STRING > part = count == qvStringLength( text )
                                ? Ref< QV_STRING >::share( text )
                                : Ref< QV_STRING >( qvStringCreateFromLeading( text, count ) );

    return Ref< QV_BUFFER >( qvCharsetStringToBufferWithFlags( charset, part, flags ) );
}

// The index of the first of `count` characters at the start of a text that a character set lacks. If some of them
// compose to one character, it is the one from which on they can no longer be written.
QV_INT firstLacking( QV_STRING *text, QV_INT count, QV_INT charset )
{
    QV_INT good = 0;     // this many can be written
    QV_INT bad  = count; // this many cannot

    while( bad - good > 1 )
    {
        QV_INT half = ( good + bad ) / 2;

        if( encode( text, half, charset, QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) )
            good = half;
        else
            bad = half;
    }

    return good;
}

struct Request
{
    QV_INT           from  = -1;
    QV_INT           to    = -1;
    QV_INT           flags = QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;
    Ref< QV_STRING > in, out;
    TextChange       change  = nullptr;
    void            *context = nullptr;
};

// Says what is wrong at a place of the input. Always false.
bool complainOfPlace( const Streams &streams, QV_INT offset, QV_STRING *reason )
{
    Ref< QV_STRING > place( qvStringCreate() );
    qvStringAppendFormatCstr( place.at(), "%s: offset %i", -1, streams.inName(), offset );
    complain( TEXT_COMMAND, place, reason );

    return false;
}

bool complainOfBytes( const Streams &streams, QV_INT offset, QV_INT charset )
{
    Ref< QV_STRING > reason( qvStringCreate() );
    qvStringAppendFormatCstr( reason.at(), "not valid %~s", -1, qvCharsetToIanaName( charset ) );

    return complainOfPlace( streams, offset, reason );
}

Ref< QV_STRING > lackReason( QV_INT charset, QV_CHAR ch )
{
    Ref< QV_STRING > reason( qvStringCreate() );
    QV_INT           value = ch;
    qvStringAppendFormatCstr( reason.at(), "%~s has no U+%^04X", -1, qvCharsetToIanaName( charset ), value );

    return reason;
}

bool convert( const Request &request )
{
    Streams streams;

    if( !streams.open( TEXT_COMMAND, request.in, request.out ) )
        return false;

    Decoder          decoder( request.from, request.flags );
    Ref< QV_STRING > text( qvStringCreate() ); // not written yet
    QV_INT           flags = request.flags;

    while( !decoder.end() && !streams.failed() )
    {
        Ref< QV_STRING > piece = decoder.read( &streams );

        if( request.change )
            request.change( request.context, piece.at(), decoder.end() );

        // As a rule few characters wait, before a long piece.
        if( qvStringLength( text ) < qvStringLength( piece ) )
        {
            qvStringPrepend( piece.at(), text );
            text = std::move( piece );
        }
        else
        {
            qvStringAppend( text.at(), piece );
        }

        QV_INT ready = decoder.end() || isUnicode( request.to ) ? qvStringLength( text ) : completeOf( text );

        if( streams.failed() || ( ready == 0 && !decoder.end() ) )
            continue;

        // If a mark is text in the source, it must not follow the one that is written.
        if( ( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK ) && isUnicode( request.to )
            && qvStringBeginsWithChar( text, BYTE_ORDER_MARK ) )
        {
            qvStringDelLeading( text.at(), 1 );
            ready--;
        }

        QV_INT           waiting = qvStringLength( text ) - ready;
        Ref< QV_STRING > rest( qvStringCreateFromTrailing( text, waiting ) );
        qvStringDelTrailing( text.at(), waiting );

        Ref< QV_BUFFER > bytes = encode( text, ready, request.to, flags );

        if( !bytes )
        {
            qvStringAppend( text.at(), rest );

            const QV_CHAR *chars   = qvStringBacking( text );
            QV_INT         lacking = firstLacking( text, ready, request.to );

            // Changed text has no places in the input.
            if( request.change )
            {
                complain( TEXT_COMMAND, streams.inName(), lackReason( request.to, chars[lacking] ) );
                return false;
            }

            QV_INT offset = decoder.offset();

            for( QV_INT i = lacking; i < qvStringLength( text ); i++ )
                offset -= decoder.lengthOf( chars[i] );

            return complainOfPlace( streams, offset, lackReason( request.to, chars[lacking] ) );
        }

        streams.write( bytes );
        text = std::move( rest );
        flags &= ~QV_INT( QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK );
    }

    if( decoder.invalidOffset() >= 0 && !streams.failed() )
        return complainOfBytes( streams, decoder.invalidOffset(), request.from );

    return streams.finish();
}

QV_INT flagsOf( QV_STRING *invalid )
{
    static const char *const WORDS[] = { "replace", "fail", "skip" };
    static const QV_INT      FLAGS[] = {
        0, QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER, QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS };

    QV_INT place = placeOf( invalid, WORDS, 3 );
    return place < 0 ? -1 : FLAGS[place];
}
} // namespace

int passText( const Arguments &arguments, TextChange change, void *context )
{
    bool    inPlace = arguments.has( "in-place" );
    QV_INT  count   = arguments.wordCount();
    Request request;
    request.change  = change;
    request.context = context;

    if( inPlace ? count == 0 : count > 2 )
    {
        if( inPlace )
            complain(
                TEXT_COMMAND, Ref< QV_STRING >( qvStringCreateFromCstr( "--in-place", -1 ) ), "no file is named" );
        else
            complain( TEXT_COMMAND, arguments.wordAt( 2 ), "one argument too many" );

        return MISUSE;
    }

    if( Ref< QV_STRING > invalid = arguments.valueOf( "invalid" ) )
        request.flags = flagsOf( invalid );

    if( request.flags < 0 )
    {
        complain( TEXT_COMMAND, arguments.valueOf( "invalid" ), "neither replace, skip nor fail" );
        return MISUSE;
    }

    if( arguments.has( "replace" ) )
        request.flags = 0;

    if( arguments.has( "bom" ) )
        request.flags |= QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;

    if( !readCharset( arguments.valueOf( "from" ), &request.from )
        || !readCharset( arguments.valueOf( "to" ), &request.to ) )
        return FAILURE;

    // UTF-8 that is only changed keeps its mark.
    if( change && request.from == QV_CHARSET_UTF_8 && request.to == QV_CHARSET_UTF_8 )
        request.flags |= QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;

    if( inPlace )
    {
        bool done = true;

        for( QV_INT i = 0; i < count; i++ )
        {
            request.in  = arguments.wordAt( i );
            request.out = arguments.wordAt( i );
            done        = convert( request ) && done;
        }

        return done ? SUCCESS : FAILURE;
    }

    if( count > 0 )
        request.in = arguments.wordAt( 0 );

    if( count > 1 )
        request.out = arguments.wordAt( 1 );

    return convert( request ) ? SUCCESS : FAILURE;
}

int convertText( const Arguments &arguments )
{
    return passText( arguments, nullptr, nullptr );
}
} // namespace morvane
