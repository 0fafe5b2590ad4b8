/** @file
    Printing: text to the hook that the library was started with, see qvRuntimePrint().

        qvPrintFormatCstr( "%~s listens on %i\n", -1, name, port );

    Each call hands its text over in one piece, as it is: nothing adds an end of line. Without a hook nothing happens.
    The functions may be called from any thread, but not from the hook. Null as a text, format or Vector ends the
    process. A length of -1 means that a text ends at its terminator; qv_format.h tells the language of formats. */

#ifndef QV_PRINT_H
#define QV_PRINT_H

#include "qv/sys/qv_types.h"

/** @{ */
/** Prints a text. */
QV_API void qvPrint( QV_STRING *qvs );
QV_API void qvPrintCstr( const char *text, QV_INT length );
QV_API void qvPrintWcstr( const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Prints formatted text. */
QV_API void qvPrintFormat( QV_STRING *fmt, ... );
QV_API void qvPrintFormatArgList( QV_STRING *fmt, va_list *argList );
QV_API void qvPrintFormatCstr( const char *fmt, QV_INT fmtLength, ... );
QV_API void qvPrintFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API void qvPrintFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API void qvPrintFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList );
/** @} */

/** Prints the text of each element, one after the other, each in a call of its own. */
QV_API void qvPrintLines( QV_VECTOR *lines );

/** Prints the stack of the calling thread, from the caller on. */
QV_API void qvPrintStackTrace( void );

#endif
