#ifndef QV_FORMAT_PRIVATE_H
#define QV_FORMAT_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The names of the format flags. */
QV_API QV_FLAGSET *qv___FormatFlagsFlagset;

/** The engine: a new text of the format and its arguments. Advances the list at `argList`. */
QV_API QV_STRING *qv___FormatArgList( QV_STRING *fmt, va_list *argList );

/** The length of the prefix that the flags give a number of this base, 0 to 3. Writes it to `dest` unless that is
    null. */
QV_API QV_INT qv___FormatEncodeBase( QV_CHAR *dest, QV_INT base, QV_INT flags );

#endif
