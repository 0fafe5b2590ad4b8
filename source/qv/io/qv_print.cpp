#include "qv/io/qv_print.h"

#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

namespace
{
void printOwned( QV_STRING *owned )
{
    qv::Ref< QV_STRING > qvs( owned );
    qvPrint( qvs );
}
} // namespace

void qvPrint( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    qvRuntimePrint( qvStringBacking( qvs ), qvStringLength( qvs ) );
}

void qvPrintCstr( const char *text, QV_INT length )
{
    printOwned( qvStringCreateFromCstr( text, length ) );
}

void qvPrintWcstr( const wchar_t *text, QV_INT length )
{
    printOwned( qvStringCreateFromWcstr( text, length ) );
}

void qvPrintFormat( QV_STRING *fmt, ... )
{
    va_list argList;
    va_start( argList, fmt );
    qvPrintFormatArgList( fmt, &argList );
    va_end( argList );
}

void qvPrintFormatArgList( QV_STRING *fmt, va_list *argList )
{
    printOwned( qvStringCreateFromFormatArgList( fmt, argList ) );
}

void qvPrintFormatCstr( const char *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    qvPrintFormatCstrArgList( fmt, fmtLength, &argList );
    va_end( argList );
}

void qvPrintFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList )
{
    printOwned( qvStringCreateFromFormatCstrArgList( fmt, fmtLength, argList ) );
}

void qvPrintFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    qvPrintFormatWcstrArgList( fmt, fmtLength, &argList );
    va_end( argList );
}

void qvPrintFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList )
{
    printOwned( qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, argList ) );
}

void qvPrintLines( QV_VECTOR *lines )
{
    QV_CHECK( lines );

    QV_INT length = qvVectorLength( lines );

    for( QV_INT i = 0; i < length; i++ )
        qvPrintFormatCstr( "%~o", -1, qvVectorObjAt( lines, i ) );
}

void qvPrintStackTrace( void )
{
    qv::Ref< QV_STACK_TRACE > trace( qvStackTraceCreate( 1, -1 ) );
    qvStackTracePrint( trace );
}
