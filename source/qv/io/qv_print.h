/** @file
    Printing: text goes to the hook that the library was started with, see qvRuntimePrint().

        qvPrintFormatCstr( "%~s listens on %i\n", -1, name, port );

    Each call passes its text to the hook in one piece, unchanged: no end of line is added. Without a hook nothing is
    printed. The functions may be called from any thread, but not from the hook. Null as a text, format or Vector ends
    the process. Lengths count elements of the array; -1 means that the text ends at its terminator. qv_format.h
    describes the format. */

#ifndef QV_PRINT_H
#define QV_PRINT_H

#include "qv/sys/qv_types.h"

/** @{ */
/** Prints a text: a String, or an encoded one, decoded as qvStringCreateFromCstr() and qvStringCreateFromWcstr() do. */
QV_API void qvPrint( QV_STRING *qvs );
QV_API void qvPrintCstr( const char *text, QV_INT length );
QV_API void qvPrintWcstr( const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Prints formatted text. The arguments follow the format, or come as the list that `argList` points to, of which the
    call consumes those that it formats. */
QV_API void qvPrintFormat( QV_STRING *fmt, ... );
QV_API void qvPrintFormatArgList( QV_STRING *fmt, va_list *argList );
QV_API void qvPrintFormatCstr( const char *fmt, QV_INT fmtLength, ... );
QV_API void qvPrintFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API void qvPrintFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API void qvPrintFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList );
/** @} */

/** Prints the text of each element, as qvObjToString() returns it, with one call of the hook each. */
QV_API void qvPrintLines( QV_VECTOR *lines );

/** Prints the stack of the calling thread, from the caller outwards. */
QV_API void qvPrintStackTrace( void );

#endif
