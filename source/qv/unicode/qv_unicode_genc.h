/** @file
    The names of the general categories (genc is for general category), which qv_unicode_properties.h lists.

    Results belong to the caller. Any thread may call these functions. A name costs a new String, and the category of a
    name a comparison with each. A category outside 0 to 29 and null as a String end the process. */

#ifndef QV_UNICODE_GENC_H
#define QV_UNICODE_GENC_H

#include "qv/sys/qv_types.h"

/** @{ */
/** The abbreviation of a category, like "Lu", its description, like "Letter, Uppercase", and the name of its constant,
    like "QV_UNICODE_GENC_LETTER_UPPERCASE", as new Strings. */
QV_API QV_STRING *qvUnicodeGencAbbreviation( QV_INT genc );
QV_API QV_STRING *qvUnicodeGencDescription( QV_INT genc );
QV_API QV_STRING *qvUnicodeGencSymName( QV_INT genc );
/** @} */

/** @{ */
/** The category with an abbreviation, or -1 if there is none. FromAbbreviationCaseFold ignores the case of letters. */
QV_API QV_INT qvUnicodeGencFromAbbreviation( QV_STRING *abbrev );
QV_API QV_INT qvUnicodeGencFromAbbreviationCaseFold( QV_STRING *abbrev );
/** @} */

#endif
