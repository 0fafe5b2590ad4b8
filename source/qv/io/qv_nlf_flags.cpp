#include "qv/io/qv_nlf.h"

#include "qv/base/qv_flagset.h"
#include "qv/base/qv_string.h"
#include "qv/io/qv_nlf_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"

QV_FLAGSET *qv___NlfFlagsFlagset = nullptr;

namespace
{
// All flags in the order of their values, which is also the order in which a terminator is chosen.
#define NLF_FLAGS( FLAG )                                                                                              \
    FLAG( QV_NLF_FLAG_LF, U"\n" )                                                                                      \
    FLAG( QV_NLF_FLAG_CR, U"\r" )                                                                                      \
    FLAG( QV_NLF_FLAG_CRLF, U"\r\n" )                                                                                  \
    FLAG( QV_NLF_FLAG_NEL, U"\x85" )                                                                                   \
    FLAG( QV_NLF_FLAG_VT, U"\v" )                                                                                      \
    FLAG( QV_NLF_FLAG_FF, U"\f" )                                                                                      \
    FLAG( QV_NLF_FLAG_LS, U"\u2028" )                                                                                  \
    FLAG( QV_NLF_FLAG_PS, U"\u2029" )

const QV_INT ALL_FLAGS = 255;
} // namespace

void qv___NlfFlagsStartup( void )
{
    qv___NlfFlagsFlagset = nullptr;
    qv___NlfFlagsFlagset = qvFlagsetCreate();

#define SET_FLAG( NAME, TERMINATOR )                                                                                   \
    QV_CHECK_AS(                                                                                                       \
        !qvFlagsetHasFlagCstr( qv___NlfFlagsFlagset, #NAME, -1 ),                                                      \
        "!qvFlagsetHasFlagCstr( *(&qv___NlfFlagsFlagset), \"" #NAME "\", -1 )" );                                      \
    qvFlagsetSetFlagCstr( &qv___NlfFlagsFlagset, #NAME, -1, NAME );

    NLF_FLAGS( SET_FLAG )
#undef SET_FLAG
}

void qv___NlfFlagsShutdown( void )
{
    qv::drop( qv___NlfFlagsFlagset );
}

QV_INT qvNlfFlagsNormalize( QV_INT flags )
{
    return flags & ALL_FLAGS;
}

QV_INT qvNlfFlagsFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvNlfFlagsNormalize( qvFlagsetParse( qv___NlfFlagsFlagset, qvs ) );
}

QV_STRING *qvNlfFlagsToString( QV_INT flags )
{
    return qvFlagsetGenerate( qv___NlfFlagsFlagset, qvNlfFlagsNormalize( flags ) );
}

QV_STRING *qvNlfFlagsNlfString( QV_INT flags )
{
#define TERMINATOR_OF( NAME, TERMINATOR )                                                                              \
    if( flags & NAME )                                                                                                 \
        return qvStringCreateFromCharsCopy( TERMINATOR, sizeof( TERMINATOR ) / sizeof( QV_CHAR ) - 1 );

    NLF_FLAGS( TERMINATOR_OF )
#undef TERMINATOR_OF

    return qvStringCreate();
}
