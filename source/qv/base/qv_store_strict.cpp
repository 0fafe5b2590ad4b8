// What of a text is no document, and the readers that tell it; and the readers of files.

#include "qv/base/qv_store.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_store_line_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_file.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_utf8_private.h"

#include <string.h>

namespace
{
using Bytes = qv::Span< uint8_t >;

/* Lines ---------------------------------------------------------------------------------------------------------- */

// How many bytes of a newline are at `pos`: one of the eight of qv_nlf.h, or 0.
QV_INT newlineAt( const uint8_t *pos, const uint8_t *end )
{
    if( *pos == '\r' && end - pos > 1 && pos[1] == '\n' )
        return 2;

    if( *pos >= '\n' && *pos <= '\r' )
        return 1;

    if( *pos < 0x80 )
        return 0;

    QV_CHAR ch;
    QV_INT  length = qv::utf8::take( pos, end, &ch );

    return length > 0 && qv::unicode::isNlf( ch ) ? length : 0;
}

// The first byte of what is no UTF-8, or null. Overlong forms and surrogates are none.
const uint8_t *findInvalid( Bytes text )
{
    for( const uint8_t *pos = text.begin; pos < text.end; )
    {
        QV_CHAR ch;
        QV_INT  length = qv::utf8::take( pos, text.end, &ch );

        if( length == 0 || length != qv::utf8::length( ch ) || ( ch >= 0xD800 && ch < 0xE000 ) )
            return pos;

        pos += length;
    }

    return nullptr;
}

// True for a line that is there for people: one of white space, or a comment.
template< class Unit >
bool isForPeople( qv::Span< Unit > line )
{
    while( line.begin < line.end && qv::unicode::isWhiteSpace( *line.begin ) )
        line.begin++;

    return line.begin == line.end || *line.begin == '#';
}

// The problem of a line, or QV_ERROR_NONE.
template< class Unit >
QV_INT problemOf( qv::Span< Unit > text, const char **reason )
{
    qv::Line< Unit > line;
    qv::parseLine( text, 0, line );

    switch( line.kind )
    {
    case QV___STORE_LINE_NO_SEPARATOR:
        *reason = "neither . nor = follows an address";
        break;
    case QV___STORE_LINE_BAD_ADDRESS:
        *reason = "what stands before the separator is no address";
        break;
    case QV___STORE_LINE_TOO_DEEP:
        *reason = "nested too deep";
        return QV_ERROR_TOO_DEEP;
    default:
        return QV_ERROR_NONE;
    }

    return isForPeople( text ) ? QV_ERROR_NONE : QV_ERROR_BAD_DOCUMENT;
}

// Sets the code to QV_ERROR_NONE if there is no problem, else what is known of it but for the number of the line.
void checkLine( Bytes text, const uint8_t *start, bool isAscii, qv::ErrorDetails *details )
{
    const uint8_t *at     = text.begin;
    const char    *reason = nullptr;

    if( isAscii )
    {
        details->code = problemOf( text, &reason );
    }
    else if( const uint8_t *invalid = findInvalid( text ) )
    {
        at            = invalid;
        details->code = QV_ERROR_BAD_TEXT;
        reason        = "no valid UTF-8";
    }
    else
    {
        qv::Ref< QV_STRING > line(
            qvStringCreateFromUtf8( reinterpret_cast< const char * >( text.begin ), text.length() ) );
        const QV_CHAR *chars = qv::chars( line );
        details->code        = problemOf( qv::Span< QV_CHAR >{ chars, chars + line->length }, &reason );
    }

    details->reason  = reason;
    details->offset  = at - start;
    details->subject = { reinterpret_cast< const char * >( text.begin ), text.length() };
}

// Calls `take` with the details of each line that is not understood, until it returns false.
template< class Take >
void findProblems( QV_BUFFER *buffer, qv::Utf8 path, const Take &take )
{
    const uint8_t   *start = static_cast< const uint8_t * >( qvBufferBacking( buffer ) );
    const uint8_t   *end   = start + qvBufferLength( buffer );
    const uint8_t   *pos   = start;
    const uint8_t   *feed  = nullptr; // the next line feed, or the end
    const uint8_t   *next  = nullptr; // up to it, where another newline may come first
    qv::ErrorDetails details;

    details.path = path;

    if( end - pos >= 3 && memcmp( pos, "\xEF\xBB\xBF", 3 ) == 0 )
        pos += 3;

    for( details.line = 1; pos < end; details.line++ )
    {
        bool   isAscii = true;
        QV_INT newline = 0;

        // A line feed is looked for once, however many lines end in something else before it.
        if( !feed || pos > feed )
        {
            qv::LineOfBytes found = qv::findLine( pos, end );
            feed                  = found.end;
            next                  = found.special ? found.special : feed;
        }

        for( ; next < feed && !( newline = newlineAt( next, end ) ); next++ )
            isAscii = isAscii && *next < 0x80;

        checkLine( { pos, next }, start, isAscii, &details );

        if( details.code != QV_ERROR_NONE && !take( details ) )
            return;

        pos = next = next + ( next == feed && feed < end ? 1 : newline );
    }
}

/* Readers -------------------------------------------------------------------------------------------------------- */

QV_STORE *readStrict( QV_BUFFER *buffer, qv::Utf8 path )
{
    bool isUnderstood = true;

    findProblems(
        buffer, path,
        [&]( const qv::ErrorDetails &details )
        {
            qv::setError( details );
            return isUnderstood = false;
        } );

    return isUnderstood ? qvStoreTryDecodeFromTextBuffer( buffer ) : nullptr;
}

QV_STORE *readWithErrors( QV_BUFFER *buffer, qv::Utf8 path, QV_VECTOR **errors )
{
    findProblems(
        buffer, path,
        [&]( const qv::ErrorDetails &details )
        {
            qv::Ref< QV_ERROR > error( qv::createError( details ) );
            qvVectorAppendObj( errors, qvErrorObj( error ) );
            return true;
        } );

    return qvStoreTryDecodeFromTextBuffer( buffer );
}
} // namespace

QV_STORE *qvStoreTryDecodeFromTextBufferStrict( QV_BUFFER *buffer )
{
    QV_CHECK( buffer );
    return readStrict( buffer, {} );
}

QV_STORE *qvStoreTryDecodeFromTextBufferWithErrors( QV_BUFFER *buffer, QV_VECTOR **errors )
{
    QV_CHECK( buffer );
    QV_CHECK( errors );
    QV_CHECK( *errors );

    return readWithErrors( buffer, {}, errors );
}

/* Files ---------------------------------------------------------------------------------------------------------- */

QV_STORE *qvStoreTryReadTextFile( QV_STRING *fn )
{
    QV_CHECK( fn );

    qv::Ref< QV_BUFFER > bytes( qvFileReadBuffer( fn, -1 ) );
    return bytes ? qvStoreTryDecodeFromTextBuffer( bytes ) : nullptr;
}

QV_STORE *qvStoreTryReadTextFileStrict( QV_STRING *fn )
{
    QV_CHECK( fn );

    qv::Ref< QV_BUFFER > bytes( qvFileReadBuffer( fn, -1 ) );
    return bytes ? readStrict( bytes, qv::OwnUtf8( fn ) ) : nullptr;
}

QV_STORE *qvStoreTryReadTextFileWithErrors( QV_STRING *fn, QV_VECTOR **errors )
{
    QV_CHECK( fn );
    QV_CHECK( errors );
    QV_CHECK( *errors );

    qv::Ref< QV_BUFFER > bytes( qvFileReadBuffer( fn, -1 ) );
    return bytes ? readWithErrors( bytes, qv::OwnUtf8( fn ), errors ) : nullptr;
}

QV_STORE *qvStoreTryReadBinaryFile( QV_STRING *fn )
{
    QV_CHECK( fn );

    qv::Ref< QV_BUFFER > bytes( qvFileReadBuffer( fn, -1 ) );

    if( !bytes )
        return nullptr;

    QV_STORE *store = qvStoreTryDecodeFromBuffer( bytes );

    if( !store )
        qv::addErrorPath( fn );

    return store;
}
