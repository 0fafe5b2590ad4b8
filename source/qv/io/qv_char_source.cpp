#include "qv/io/qv_char_source.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_mem.h"

struct QV_CHAR_SOURCE : qv::AnySource
{
    QV___CHAR_SOURCE_READ_FUNC  readFunc;
    qv::CharSourceReadCharsFunc readCharsFunc; // or null
};

namespace
{
void freeCharSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::endStream( qvCharSourceFrom( thisObj ) );
}

// Checks what a callback delivered, and sets the flags. Returns the number of characters.
QV_INT noteChars( QV_CHAR_SOURCE *source, QV_BOOL ok, QV_INT charsRead, QV_INT maxCharCount )
{
    QV_CHECK( charsRead >= 0 );
    QV_CHECK( charsRead <= maxCharCount );

    return qv::noteCount( source, ok, charsRead, maxCharCount );
}
} // namespace

QV___FAMILY( CharSource, QV_CHAR_SOURCE, freeCharSource, nullptr, nullptr )

QV_CHAR_SOURCE *qv::createCharSource(
    QV___CHAR_SOURCE_READ_FUNC readFunc, CharSourceReadCharsFunc readCharsFunc, QV_OBJ *closure )
{
    QV_CHECK( readFunc );

    QV_CHAR_SOURCE *source = createSource< QV_CHAR_SOURCE >( qvCharSourceSort(), closure );
    source->readFunc       = readFunc;
    source->readCharsFunc  = readCharsFunc;

    return source;
}

QV_CHAR_SOURCE *qv___CharSourceCreate( QV___CHAR_SOURCE_READ_FUNC readFunc, QV_OBJ *closure )
{
    return qv::createCharSource( readFunc, nullptr, closure );
}

QV_BOOL qvCharSourceEnd( QV_CHAR_SOURCE *source )
{
    QV_CHECK( source );
    return source->end;
}

QV_BOOL qvCharSourceError( QV_CHAR_SOURCE *source )
{
    QV_CHECK( source );
    return !qv::stillGood( source );
}

QV_INT qvCharSourceRead( QV_CHAR_SOURCE *source, QV_STRING **qvs, QV_INT maxCharCount )
{
    QV_CHECK( source );
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( maxCharCount >= -1 );

    if( qv::isIdle( source, maxCharCount ) )
        return 0;

    maxCharCount = qv::limitOf( maxCharCount );

    QV_INT  charsRead = 0;
    QV_BOOL ok        = source->readFunc( source->closure, qvs, maxCharCount, &charsRead );

    return noteChars( source, ok, charsRead, maxCharCount );
}

QV_INT qvCharSourceReadChars( QV_CHAR_SOURCE *source, QV_CHAR *chars, QV_INT maxCharCount )
{
    QV_CHECK( source );
    QV_CHECK( maxCharCount >= -1 );
    QV_CHECK( chars || maxCharCount == 0 );

    if( qv::isIdle( source, maxCharCount ) )
        return 0;

    if( !source->readCharsFunc )
    {
        qv::Ref< QV_STRING > qvs( qvStringCreate() );
        QV_INT               count = qvCharSourceRead( source, qvs.at(), maxCharCount );

        QV_CHECK_AS( count <= qvs->length, "charsRead <= qvStringLength( *qvs )" );

        if( count > 0 )
            qvMemCopyN( chars, qv::chars( qvs ), count, sizeof( QV_CHAR ) );

        return count;
    }

    maxCharCount = qv::limitOf( maxCharCount );

    QV_INT  charsRead = 0;
    QV_BOOL ok        = source->readCharsFunc( source->closure, chars, maxCharCount, &charsRead );

    return noteChars( source, ok, charsRead, maxCharCount );
}
