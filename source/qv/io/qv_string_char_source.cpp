#include "qv/io/qv_string_char_source.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <utility>

struct QV_STRING_CHAR_SOURCE : QV_OBJ
{
    QV_STRING *source;
    QV_INT     offset; // characters read
};

namespace
{
void freeStringCharSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvStringCharSourceFrom( thisObj )->source );
}

// Moves on by up to `maxCharCount` characters: stores their number and returns the offset of the first.
QV_INT takeChars( QV_STRING_CHAR_SOURCE *scs, QV_INT maxCharCount, QV_INT *count )
{
    QV_INT sourceLength = scs->source->length;

    QV_CHECK( scs->offset >= 0 );
    QV_CHECK( scs->offset <= sourceLength );

    *count = std::min( maxCharCount, sourceLength - scs->offset );

    return std::exchange( scs->offset, scs->offset + *count );
}

QV_BOOL readString( QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead )
{
    QV_STRING_CHAR_SOURCE *scs    = qvStringCharSourceFrom( closure );
    QV_INT                 offset = takeChars( scs, maxCharCount, charsRead );

    qvStringAppendInner( qvs, scs->source, offset, *charsRead );

    return QV_TRUE;
}

QV_BOOL readStringChars( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
{
    QV_STRING_CHAR_SOURCE *scs    = qvStringCharSourceFrom( closure );
    QV_INT                 offset = takeChars( scs, maxCharCount, charsRead );

    if( *charsRead > 0 )
        qvMemCopyN( chars, qv::chars( scs->source ) + offset, *charsRead, sizeof( QV_CHAR ) );

    return QV_TRUE;
}
} // namespace

QV___FAMILY( StringCharSource, QV_STRING_CHAR_SOURCE, freeStringCharSource, nullptr, nullptr )

QV_STRING_CHAR_SOURCE *qvStringCharSourceCreate( QV_STRING *src )
{
    QV_CHECK( src );

    QV_STRING_CHAR_SOURCE *scs = qv::create< QV_STRING_CHAR_SOURCE >( qvStringCharSourceSort() );
    scs->source                = qv::retain( src );
    scs->offset                = 0;

    return scs;
}

QV_CHAR_SOURCE *qvStringCharSourceCharSource( QV_STRING_CHAR_SOURCE *scs )
{
    QV_CHECK( scs );
    return qv::createCharSource( readString, readStringChars, scs );
}

QV_STRING *qvStringCharSourceString( QV_STRING_CHAR_SOURCE *scs )
{
    QV_CHECK( scs );
    return qv::retain( scs->source );
}
