#include "morvane_stream.h"
#include "morvane_text.h"

#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/sys/qv_int.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <string.h>

namespace morvane
{
using qv::Ref;

namespace
{
/* Names of character sets ---------------------------------------------------------------------------------------- */

const QV_INT NAME_MAX = 40; // letters that count; no name has as many
const QV_INT NEAREST  = 3;  // names that are proposed

// A name as names are compared: its letters and digits, in lower case.
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

// How many letters have to be put in, left out, changed or exchanged with the next one to make one name of the other.
QV_INT distance( const PlainName &a, const PlainName &b )
{
    QV_INT steps[NAME_MAX + 1][NAME_MAX + 1]; // between the beginnings

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

// "no such character set", and the names that are nearest to the one that is not known, each of another set.
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
        QV_INT           least = qvIntMin( wanted.length / 2, 4 ) + 1; // more have little to do with the name
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

/* Places in the input -------------------------------------------------------------------------------------------- */

bool isUtf16( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_16 && charset <= QV_CHARSET_UTF_16_LE;
}

bool isUtf32( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_32;
}

bool isUnicode( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_8;
}

const QV_INT PIECE = 8192; // characters that are in work at a time

// Tells where in the bytes of the input its characters stand, of which the codecs say nothing, as long as all input is
// valid. In UTF-8 the number of a character is all that counts, since a sequence may be longer than it has to be: the
// bytes that begin a sequence are counted as they are read, and counted back from there when a place is asked for.
class Places
{
public:
    Places( const Streams *streams, QV_INT charset ) : streams_( streams ), charset_( charset )
    {
    }

    // To be told of all characters that a read of up to PIECE of them has brought.
    void follow( const QV_CHAR *chars, QV_INT count )
    {
        if( followed_ == 0 )
            mark_ = markLength();

        read_ += count;

        if( isUtf16( charset_ ) )
            wide_ += wideOf( chars, count );

        while( followed_ < streams_->bytesRead() )
        {
            QV_INT         bytes;
            const uint8_t *run = streams_->bytesFrom( followed_, &bytes );

            if( charset_ == QV_CHARSET_UTF_8 )
                begun_ += begunIn( run, bytes );

            followed_ += bytes;
        }
    }

    // Where the last `count` characters begin, of those that have been read; with 0 of them, where they end.
    QV_INT offsetOf( const QV_CHAR *chars, QV_INT count ) const
    {
        QV_INT before = read_ - count;

        if( isUtf16( charset_ ) )
            return mark_ + 2 * ( before + wide_ - wideOf( chars, count ) );

        if( isUtf32( charset_ ) )
            return mark_ + 4 * before;

        return charset_ == QV_CHARSET_UTF_8 ? endOf( before + ( mark_ > 0 ) ) : before;
    }

private:
    static bool begins( uint8_t byte )
    {
        return ( byte & 0xC0 ) != 0x80;
    }

    static QV_INT begunIn( const uint8_t *bytes, QV_INT count )
    {
        const QV_INT BLOCK = 128; // what a byte can count, for vectors of them
        QV_INT       begun = 0;
        QV_INT       i     = 0;

        for( ; i + BLOCK <= count; i += BLOCK )
        {
            uint8_t inBlock = 0;

            for( QV_INT k = 0; k < BLOCK; k++ )
                inBlock += begins( bytes[i + k] );

            begun += inBlock;
        }

        for( ; i < count; i++ )
            begun += begins( bytes[i] );

        return begun;
    }

    static QV_INT wideOf( const QV_CHAR *chars, QV_INT count )
    {
        QV_INT wide = 0;

        for( QV_INT i = 0; i < count; i++ )
            wide += chars[i] > 0xFFFF;

        return wide;
    }

    // The bytes of the mark by which the source goes, if the input has one.
    QV_INT markLength() const
    {
        static const struct
        {
            QV_INT  charset;
            QV_INT  length;
            uint8_t bytes[4];
        } MARKS[] = {
            { QV_CHARSET_UTF_8, 3, { 0xEF, 0xBB, 0xBF } },        { QV_CHARSET_UTF_16, 2, { 0xFE, 0xFF } },
            { QV_CHARSET_UTF_16, 2, { 0xFF, 0xFE } },             { QV_CHARSET_UTF_32, 4, { 0xFF, 0xFE, 0, 0 } },
            { QV_CHARSET_UTF_32, 4, { 0, 0, 0xFE, 0xFF } },
        };

        QV_INT         count;
        const uint8_t *first = streams_->bytesFrom( 0, &count );

        for( const auto &mark : MARKS )
            if( mark.charset == charset_ && count >= mark.length &&
                memcmp( first, mark.bytes, static_cast< size_t >( mark.length ) ) == 0 )
                return mark.length;

        return 0;
    }

    // Where the first `count` sequences of UTF-8 end.
    QV_INT endOf( QV_INT count ) const
    {
        if( count == 0 )
            return 0;

        QV_INT  offset = followed_;
        uint8_t byte   = 0;

        for( QV_INT begun = begun_; begun >= count; begun -= begins( byte ) )
        {
            QV_INT run;
            byte = *streams_->bytesFrom( --offset, &run );
        }

        return offset + ( byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4 );
    }

    const Streams *streams_;
    QV_INT         charset_;
    QV_INT         read_     = 0; // characters
    QV_INT         wide_     = 0; // of those, the ones above U+FFFF
    QV_INT         mark_     = 0;
    QV_INT         followed_ = 0; // bytes
    QV_INT         begun_    = 0; // of those, the ones that begin a sequence of UTF-8
};

// A place lies in a piece, and what has been read behind it goes no farther than the source and the system look ahead.
static_assert( 4 * PIECE + 4096 <= Streams::HISTORY );

/* Conversion ----------------------------------------------------------------------------------------------------- */

const QV_CHAR BYTE_ORDER_MARK = 0xFEFF;

// How many of the characters are complete, for a set with one byte a character, so that no mark behind them can change
// what they become; 0 if that cannot be told. Other than marks, only characters that no such set has change one that
// stands before them.
QV_INT completeOf( const QV_CHAR *chars, QV_INT count )
{
    QV_INT complete = count - 1;

    while( complete > 0 && qvUnicodeCccv( chars[complete] ) != 0 )
        complete--;

    return complete;
}

// The first character that a character set lacks. A few of them may become one on their way; then it is the one with
// which they can no longer be written.
QV_INT firstLacking( QV_INT charset, const QV_CHAR *chars, QV_INT count )
{
    QV_INT good = 0;     // so many can be written
    QV_INT bad  = count; // so many cannot

    while( bad - good > 1 )
    {
        QV_INT                     half = ( good + bad ) / 2;
        Ref< QV_BUFFER_BYTE_SINK > bytes( qvBufferByteSinkCreate() );
        Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink(
            Ref< QV_BYTE_SINK >( qvBufferByteSinkByteSink( bytes ) ), charset,
            QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );

        bool written = qvCharSinkWriteChars( sink, chars, half ) && qvCharSinkFlush( sink );
        ( written ? good : bad ) = half;
    }

    return good;
}

struct Request
{
    QV_INT           from  = -1;
    QV_INT           to    = -1;
    QV_INT           flags = QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;
    Ref< QV_STRING > in, out;
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

bool complainOfChar( const Streams &streams, QV_INT offset, QV_INT charset, QV_CHAR ch )
{
    Ref< QV_STRING > reason( qvStringCreate() );
    QV_INT           value = ch;
    qvStringAppendFormatCstr( reason.at(), "%~s has no U+%^04X", -1, qvCharsetToIanaName( charset ), value );

    return complainOfPlace( streams, offset, reason );
}

bool convert( const Request &request )
{
    const bool fails   = request.flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;
    const bool mayLack = fails && !isUnicode( request.to );
    const bool hasMark = isUnicode( request.to ) && ( request.flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK );
    Streams    streams;

    if( !streams.open( TEXT_COMMAND, request.in, request.out ) )
        return false;

    Ref< QV_CHAR_SOURCE > source( qvCharsetCreateCharSource( streams.source(), request.from, request.flags ) );
    Ref< QV_CHAR_SINK >   sink( qvCharsetCreateCharSink( streams.sink(), request.to, request.flags ) );
    Places                places( &streams, request.from );
    QV_CHAR               piece[PIECE];
    QV_INT                count   = 0; // characters in the piece
    bool                  isFirst = true;
    bool                  end     = false;

    while( !end && !qvCharSinkError( sink ) )
    {
        QV_INT wanted = PIECE - count;
        QV_INT got    = qvCharSourceReadChars( source, piece + count, wanted );
        end           = got < wanted;

        if( fails )
            places.follow( piece + count, got );

        // A mark that is no more than text for the source is not to follow the one that the sink has written.
        QV_INT begin = isFirst && hasMark && got > 0 && piece[0] == BYTE_ORDER_MARK;
        isFirst      = false;
        count += got;

        QV_INT complete = mayLack && !end ? completeOf( piece, count ) : 0;
        QV_INT ready    = complete > 0 ? complete : count;

        qvCharSinkWriteChars( sink, piece + begin, ready - begin );

        // What cannot be written shows at once then, and not with the next piece.
        if( complete > 0 || end )
            qvCharSinkFlush( sink );

        if( qvCharSinkError( sink ) && !streams.failed() )
        {
            QV_INT lacking = firstLacking( request.to, piece, ready );

            return complainOfChar(
                streams, places.offsetOf( piece + lacking, count - lacking ), request.to, piece[lacking] );
        }

        count -= ready;
        memmove( piece, piece + ready, static_cast< size_t >( count ) * sizeof( QV_CHAR ) );
    }

    if( qvCharSourceError( source ) && !streams.failed() )
        return complainOfBytes( streams, places.offsetOf( piece, 0 ), request.from );

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

QV_BOOL convertText( QV_VECTOR *argv, void *context )
{
    enum { FROM, TO, INVALID, BOM, OPTION_COUNT };

    static const Option OPTIONS[OPTION_COUNT] = {
        { "from", true }, { "to", true }, { "invalid", true }, { "bom", false } };

    Arguments        arguments;
    Ref< QV_STRING > values[OPTION_COUNT];
    Request          request;

    if( !arguments.read( argv, OPTIONS, OPTION_COUNT ) || !readNames( arguments, &request.in, &request.out ) )
        return QV_FALSE;

    for( QV_INT i = 0; i < arguments.optionCount(); i++ )
        values[arguments.optionAt( i )] = arguments.argumentAt( i );

    if( !values[FROM] || !values[TO] )
        return QV_FALSE;

    if( values[INVALID] )
        request.flags = flagsOf( values[INVALID] );

    if( request.flags < 0 )
    {
        complain( TEXT_COMMAND, values[INVALID], "neither replace, skip nor fail" );
        return QV_FALSE;
    }

    if( values[BOM] )
        request.flags |= QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;

    contextOf( context )->status = FAILURE;

    if( !readCharset( values[FROM], &request.from ) || !readCharset( values[TO], &request.to ) || !convert( request ) )
        return QV_FALSE;

    contextOf( context )->status = SUCCESS;
    return QV_TRUE;
}
} // namespace morvane
