#include "qv/io/qv_char_source.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_mem.h"

struct QV_CHAR_SOURCE : QV_OBJ
{
    QV___CHAR_SOURCE_READ_FUNC  readFunc;
    qv::CharSourceReadCharsFunc readCharsFunc; // or null
    QV_OBJ                     *closure;       // or null
    QV_BOOL                     end;
    QV_BOOL                     error;
};

namespace
{
void freeFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvCharSourceFrom( thisObj )->closure );
}

// Looks at how a callback went that had up to `maxCharCount` characters to give, and passes their number on.
QV_INT noted( QV_CHAR_SOURCE *source, QV_BOOL ok, QV_INT charsRead, QV_INT maxCharCount )
{
    QV_CHECK( charsRead >= 0 );
    QV_CHECK( charsRead <= maxCharCount );

    if( !ok || charsRead < maxCharCount )
        source->end = QV_TRUE;

    if( !ok )
        source->error = QV_TRUE;

    return charsRead;
}
} // namespace

QV___FAMILY( CharSource, QV_CHAR_SOURCE, freeFunc, nullptr, nullptr )

QV_CHAR_SOURCE *qv::createCharSource(
    QV___CHAR_SOURCE_READ_FUNC readFunc, CharSourceReadCharsFunc readCharsFunc, QV_OBJ *closure )
{
    QV_CHECK( readFunc );

    QV_CHAR_SOURCE *source = create< QV_CHAR_SOURCE >( qvCharSourceSort() );
    source->readFunc       = readFunc;
    source->readCharsFunc  = readCharsFunc;
    source->closure        = Ref< QV_OBJ >::share( closure ).give();
    source->end            = QV_FALSE;
    source->error          = QV_FALSE;

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
    return source->error;
}

QV_INT qvCharSourceRead( QV_CHAR_SOURCE *source, QV_STRING **qvs, QV_INT maxCharCount )
{
    QV_CHECK( source );
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( maxCharCount >= -1 );

    if( source->end || maxCharCount == 0 )
        return 0;

    if( maxCharCount == -1 )
        maxCharCount = QV_INT_MAX;

    QV_INT  charsRead = 0;
    QV_BOOL ok        = source->readFunc( source->closure, qvs, maxCharCount, &charsRead );

    return noted( source, ok, charsRead, maxCharCount );
}

QV_INT qvCharSourceReadChars( QV_CHAR_SOURCE *source, QV_CHAR *chars, QV_INT maxCharCount )
{
    QV_CHECK( source );
    QV_CHECK( maxCharCount >= -1 );
    QV_CHECK( chars || maxCharCount == 0 );

    if( source->end || maxCharCount == 0 )
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

    if( maxCharCount == -1 )
        maxCharCount = QV_INT_MAX;

    QV_INT  charsRead = 0;
    QV_BOOL ok        = source->readCharsFunc( source->closure, chars, maxCharCount, &charsRead );

    return noted( source, ok, charsRead, maxCharCount );
}
