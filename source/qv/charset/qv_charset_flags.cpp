#include "qv/base/qv_flagset_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/runtime/qv_component_private.h"

namespace
{
const qv::NamedFlag FLAGS[] = {
    QV___NAMED_FLAG( QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ),
    QV___NAMED_FLAG( QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS ),
    QV___NAMED_FLAG( QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ),
    QV___NAMED_FLAG( QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK ),
};

const QV_INT ALL_FLAGS = QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER | QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS
                         | QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK | QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;
} // namespace

void qv___CharsetFlagsStartup( void )
{
}

void qv___CharsetFlagsShutdown( void )
{
}

QV_INT qvCharsetFlagsNormalize( QV_INT flags )
{
    flags &= ALL_FLAGS;

    if( flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS )
        flags &= ~(QV_INT)QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;

    return flags;
}

QV_INT qvCharsetFlagsFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvCharsetFlagsNormalize( qv::parseFlags( FLAGS, qvs ) );
}

QV_STRING *qvCharsetFlagsToString( QV_INT flags )
{
    return qv::generateFlags( FLAGS, qvCharsetFlagsNormalize( flags ) );
}
