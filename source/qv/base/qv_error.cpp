#include "qv/base/qv_error.h"

#include "qv/base/qv_error_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"

#include <stdio.h>

// The texts stand after it, each with a terminator: the reason, and the path and the subject where the length is not
// NONE.
struct qv::Failure
{
    QV_INT code, systemCode, line, offset;
    QV_INT reasonLength, pathLength, subjectLength;
};

struct QV_ERROR : QV_OBJ
{
    qv::Failure *failure;
};

namespace
{
using qv::ErrorDetails;
using qv::Failure;
using qv::Utf8;

const QV_INT NONE      = -1; // a length
const QV_INT LAST_LINE = -2; // in place of a line, until addErrorLineAfter() tells which one that was

QV_INT lengthOf( Utf8 text )
{
    return text.bytes ? text.length : NONE;
}

// Appends a text with a terminator to a block.
void put( char *&to, Utf8 text )
{
    if( !text.bytes )
        return;

    memcpy( to, text.bytes, static_cast< size_t >( text.length ) );
    to[text.length] = '\0';
    to += text.length + 1;
}

// A new block. The texts may lie in another one.
Failure *createFailure( const ErrorDetails &details )
{
    QV_ASSERT( details.reason.bytes );

    QV_INT lengths = details.reason.length + details.path.length + details.subject.length;
    QV_INT size    = static_cast< QV_INT >( sizeof( Failure ) ) + lengths + 3;

    Failure *failure = static_cast< Failure * >( qvMemAlloc( size ) );
    *failure         = {
        details.code,
        details.systemCode,
        details.line,
        details.offset,
        lengthOf( details.reason ),
        lengthOf( details.path ),
        lengthOf( details.subject ) };

    char *to = reinterpret_cast< char * >( failure + 1 );
    put( to, details.reason );
    put( to, details.path );
    put( to, details.subject );

    return failure;
}

// Takes the text at `from`, which moves on.
Utf8 take( const char *&from, QV_INT length )
{
    if( length == NONE )
        return {};

    Utf8 text = { from, length };
    from += length + 1;

    return text;
}

// What a block tells; the texts lie in it.
ErrorDetails detailsOf( const Failure *failure )
{
    const char  *from = reinterpret_cast< const char * >( failure + 1 );
    ErrorDetails details;

    details.code       = failure->code;
    details.systemCode = failure->systemCode;
    details.line       = failure->line;
    details.offset     = failure->offset;
    details.reason     = take( from, failure->reasonLength );
    details.path       = take( from, failure->pathLength );
    details.subject    = take( from, failure->subjectLength );

    return details;
}

QV_STRING *stringOf( Utf8 text )
{
    return text.bytes ? qvStringCreateFromUtf8( text.bytes, text.length ) : nullptr;
}

// `path:line: reason`, or what of it is known.
QV_STRING *textOf( const Failure *failure )
{
    ErrorDetails         details = detailsOf( failure );
    qv::Ref< QV_STRING > text( details.path.bytes ? stringOf( details.path ) : qvStringCreate() );

    if( details.line >= 0 )
        qvStringAppendFormatCstr( text.at(), details.path.bytes ? ":%i" : "line %i", -1, details.line );
    else if( details.offset >= 0 )
        qvStringAppendFormatCstr( text.at(), details.path.bytes ? "@%i" : "byte %i", -1, details.offset );

    if( qvStringLength( text ) > 0 )
        qvStringAppendCstr( text.at(), ": ", -1 );

    qvStringAppend( text.at(), qv::Ref< QV_STRING >( stringOf( details.reason ) ) );
    return text.give();
}

QV_ERROR *wrap( Failure *owned )
{
    QV_ERROR *error = qv::create< QV_ERROR >( qvErrorSort() );
    error->failure  = owned;

    return error;
}

void freeError( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qvMemFree( qvErrorFrom( thisObj )->failure );
}

QV_STRING *errorToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return textOf( qvErrorFrom( thisObj )->failure );
}
} // namespace

QV___FAMILY( Error, QV_ERROR, freeError, nullptr, errorToString )

/* Telling failures ----------------------------------------------------------------------------------------------- */

void qv::setError( const ErrorDetails &details )
{
    QV_ASSERT( details.code != QV_ERROR_NONE );
    setLastFailure( createFailure( details ) );
}

QV_BOOL qv::setSystemError( const char *what, int error, Utf8 path )
{
    const char  *words = wordsOfSystem( error );
    char         reason[256];
    ErrorDetails details;

    if( path.bytes && memchr( path.bytes, 0, static_cast< size_t >( path.length ) ) )
    {
        error        = 0;
        details.code = QV_ERROR_BAD_NAME;
        words        = "the name contains U+0000";
    }
    else
    {
        details.code = codeOfSystem( error );
    }

    snprintf( reason, sizeof( reason ), "%s: %s", what, words );
    details.systemCode = error;
    details.reason     = reason;
    details.path       = path;
    setError( details );

    return QV_FALSE;
}

QV_BOOL qv::setSystemError( const char *what, int error, QV_STRING *path )
{
    return setSystemError( what, error, OwnUtf8( path ) );
}

void qv::moveErrorOffset( QV_INT bytesBefore )
{
    Failure *last = lastFailure();

    if( last && last->offset >= 0 )
        last->offset += bytesBefore;
}

void qv::addErrorLineAfter( QV_INT linesRead )
{
    Failure *last = lastFailure();

    if( last && last->line < 0 )
        last->line = last->line == LAST_LINE && linesRead > 0 ? linesRead : linesRead + 1;
}

void qv::setErrorInLastLine()
{
    Failure *last = lastFailure();

    if( last && last->line < 0 )
        last->line = LAST_LINE;
}

namespace
{
void addPath( Utf8 path )
{
    Failure *last = qv::lastFailure();

    if( !last || last->pathLength != NONE )
        return;

    ErrorDetails details = detailsOf( last );
    details.path         = path;
    qv::setError( details );
}
} // namespace

void qv::addErrorPath( QV_STRING *path )
{
    addPath( OwnUtf8( path ) );
}

qv::KeptError::KeptError() : kept_( nullptr )
{
    if( const Failure *last = lastFailure() )
        kept_ = createFailure( detailsOf( last ) );
}

qv::KeptError::~KeptError()
{
    setLastFailure( kept_ );
}

/* Streams -------------------------------------------------------------------------------------------------------- */

void qv::nameStream( StreamFailure *kept, QV_STRING *path )
{
    OwnUtf8      text( path );
    ErrorDetails details;

    details.path = text;
    qvMemFree( *kept );
    *kept = createFailure( details );
}

void qv::keepFailure( StreamFailure *kept )
{
    if( *kept && ( *kept )->code == QV_ERROR_NONE )
        addPath( detailsOf( *kept ).path );

    const Failure *last = lastFailure();

    if( !last )
        return;

    qvMemFree( *kept );
    *kept = createFailure( detailsOf( last ) );
}

void qv::tellFailure( StreamFailure kept )
{
    if( kept && kept->code != QV_ERROR_NONE )
        setError( detailsOf( kept ) );
}

/* The last failure ----------------------------------------------------------------------------------------------- */

QV_INT qvErrorLastCode( void )
{
    const Failure *last = qv::lastFailure();
    return last ? last->code : QV_ERROR_NONE;
}

QV_STRING *qvErrorLastText( void )
{
    const Failure *last = qv::lastFailure();
    return last ? textOf( last ) : qvStringCreate();
}

QV_ERROR *qvErrorLast( void )
{
    const Failure *last = qv::lastFailure();
    return last ? wrap( createFailure( detailsOf( last ) ) ) : nullptr;
}

void qvErrorSetLast( QV_ERROR *error )
{
    QV_CHECK( error );
    qv::setError( detailsOf( error->failure ) );
}

void qvErrorClear( void )
{
    qv::setLastFailure( nullptr );
}

/* Errors --------------------------------------------------------------------------------------------------------- */

QV_ERROR *qv::createError( const ErrorDetails &details )
{
    QV_ASSERT( details.code != QV_ERROR_NONE );
    return wrap( createFailure( details ) );
}

QV_ERROR *qvErrorCreate( QV_INT code, QV_STRING *reason, QV_STRING *path, QV_INT line, QV_INT offset )
{
    QV_CHECK( reason );
    QV_CHECK( code > QV_ERROR_NONE );
    QV_CHECK( code <= QV_ERROR_OTHER );
    QV_CHECK( line >= -1 );
    QV_CHECK( offset >= -1 );

    qv::OwnUtf8  reasonText( reason ), pathText( path );
    ErrorDetails details;
    details.code   = code;
    details.line   = line;
    details.offset = offset;
    details.reason = reasonText;
    details.path   = pathText;

    return qv::createError( details );
}

QV_INT qvErrorCode( QV_ERROR *error )
{
    QV_CHECK( error );
    return error->failure->code;
}

QV_INT qvErrorSystemCode( QV_ERROR *error )
{
    QV_CHECK( error );
    return error->failure->systemCode;
}

QV_STRING *qvErrorReason( QV_ERROR *error )
{
    QV_CHECK( error );
    return stringOf( detailsOf( error->failure ).reason );
}

QV_STRING *qvErrorPath( QV_ERROR *error )
{
    QV_CHECK( error );
    return stringOf( detailsOf( error->failure ).path );
}

QV_INT qvErrorLine( QV_ERROR *error )
{
    QV_CHECK( error );
    return error->failure->line;
}

QV_INT qvErrorOffset( QV_ERROR *error )
{
    QV_CHECK( error );
    return error->failure->offset;
}

QV_STRING *qvErrorSubject( QV_ERROR *error )
{
    QV_CHECK( error );
    return stringOf( detailsOf( error->failure ).subject );
}
