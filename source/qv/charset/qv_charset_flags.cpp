#include "qv/base/qv_flagset_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/charset/qv_charset_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"

QV_FLAGSET *qv___CharsetFlagsFlagset = nullptr;

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
    qv___CharsetFlagsFlagset = qv::createFlagset( FLAGS );
}

void qv___CharsetFlagsShutdown( void )
{
    qv::drop( qv___CharsetFlagsFlagset );
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
    return qvCharsetFlagsNormalize( qvFlagsetParse( qv___CharsetFlagsFlagset, qvs ) );
}

QV_STRING *qvCharsetFlagsToString( QV_INT flags )
{
    return qvFlagsetGenerate( qv___CharsetFlagsFlagset, qvCharsetFlagsNormalize( flags ) );
}
