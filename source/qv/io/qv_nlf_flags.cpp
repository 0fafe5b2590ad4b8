#include "qv/io/qv_nlf.h"

#include "qv/base/qv_flagset_private.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_nlf_private.h"
#include "qv/runtime/qv_component_private.h"

namespace
{
const qv::NamedFlag FLAGS[] = {
    QV___NAMED_FLAG( QV_NLF_FLAG_LF ),  QV___NAMED_FLAG( QV_NLF_FLAG_CR ), QV___NAMED_FLAG( QV_NLF_FLAG_CRLF ),
    QV___NAMED_FLAG( QV_NLF_FLAG_NEL ), QV___NAMED_FLAG( QV_NLF_FLAG_VT ), QV___NAMED_FLAG( QV_NLF_FLAG_FF ),
    QV___NAMED_FLAG( QV_NLF_FLAG_LS ),  QV___NAMED_FLAG( QV_NLF_FLAG_PS ),
};

const QV_INT ALL_FLAGS = 255;
} // namespace

void qv___NlfFlagsStartup( void )
{
}

void qv___NlfFlagsShutdown( void )
{
}

QV_INT qvNlfFlagsNormalize( QV_INT flags )
{
    return flags & ALL_FLAGS;
}

QV_INT qvNlfFlagsFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvNlfFlagsNormalize( qv::parseFlags( FLAGS, qvs ) );
}

QV_STRING *qvNlfFlagsToString( QV_INT flags )
{
    return qv::generateFlags( FLAGS, qvNlfFlagsNormalize( flags ) );
}

QV_STRING *qvNlfFlagsNlfString( QV_INT flags )
{
    for( const qv::NlfTerminator &terminator : qv::NLF_TERMINATORS )
        if( flags & terminator.flag )
            return qvStringCreateFromCharsCopy( terminator.chars, terminator.length );

    return qvStringCreate();
}
