/** @file
    The names of the general categories, which qv_unicode_properties.h lists.

    Any thread. A value outside its range and null as a String end the process. */

#ifndef QV_UNICODE_GENC_H
#define QV_UNICODE_GENC_H

#include "qv/sys/qv_types.h"

/** @{ */
/** The abbreviation as in "Lu", the description as in "Letter, Uppercase" and the name of the constant as in
    "QV_UNICODE_GENC_LETTER_UPPERCASE". */
QV_API QV_STRING *qvUnicodeGencAbbreviation( QV_INT genc );
QV_API QV_STRING *qvUnicodeGencDescription( QV_INT genc );
QV_API QV_STRING *qvUnicodeGencSymName( QV_INT genc );
/** @} */

/** @{ */
/** The category with an abbreviation, or -1; the second one takes it in any case. */
QV_API QV_INT qvUnicodeGencFromAbbreviation( QV_STRING *abbrev );
QV_API QV_INT qvUnicodeGencFromAbbreviationCaseFold( QV_STRING *abbrev );
/** @} */

#endif
