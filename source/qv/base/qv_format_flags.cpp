#include "qv/base/qv_format.h"

#include "qv/base/qv_flagset_private.h"
#include "qv/base/qv_format_private.h"
#include "qv/runtime/qv_component_private.h"

namespace
{
const qv::NamedFlag FLAGS[] = {
    QV___NAMED_FLAG( QV_FORMAT_FLAG_LEFTALIGN ),   QV___NAMED_FLAG( QV_FORMAT_FLAG_ZEROPAD ),
    QV___NAMED_FLAG( QV_FORMAT_FLAG_PLUSPOS ),     QV___NAMED_FLAG( QV_FORMAT_FLAG_BLANKPOS ),
    QV___NAMED_FLAG( QV_FORMAT_FLAG_UPPERCASE ),   QV___NAMED_FLAG( QV_FORMAT_FLAG_BASEMNEMONIC ),
    QV___NAMED_FLAG( QV_FORMAT_FLAG_BASENUMERIC ), QV___NAMED_FLAG( QV_FORMAT_FLAG_BASEDECIMAL ),
};
} // namespace

void qv___FormatFlagsStartup( void )
{
}

void qv___FormatFlagsShutdown( void )
{
}

QV_INT qvFormatFlagsNormalize( QV_INT flags )
{
    QV_INT result = flags & 0xFF;

    if( result & QV_FORMAT_FLAG_LEFTALIGN )
        result &= ~QV_FORMAT_FLAG_ZEROPAD;

    if( result & QV_FORMAT_FLAG_PLUSPOS )
        result &= ~QV_FORMAT_FLAG_BLANKPOS;

    if( result & QV_FORMAT_FLAG_BASEMNEMONIC )
        result &= ~QV_FORMAT_FLAG_BASENUMERIC;

    return result;
}

QV_INT qvFormatFlagsFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvFormatFlagsNormalize( qv::parseFlags( FLAGS, qvs ) );
}

QV_STRING *qvFormatFlagsToString( QV_INT flags )
{
    return qv::generateFlags( FLAGS, qvFormatFlagsNormalize( flags ) );
}
