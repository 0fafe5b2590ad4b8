/** @file
    The names of the scripts, which qv_unicode_properties.h lists.

    Results belong to the caller. Any thread may call these functions. A name costs a new String, and the script of a
    name a comparison with each. A script outside 0 to 92 and null as a String end the process. */

#ifndef QV_UNICODE_SCRIPT_H
#define QV_UNICODE_SCRIPT_H

#include "qv/sys/qv_types.h"

/** @{ */
/** The name of a script, like "Old_Turkic", and the name of its constant, like "QV_UNICODE_SCRIPT_OLD_TURKIC", as new
    Strings. */
QV_API QV_STRING *qvUnicodeScriptName( QV_INT script );
QV_API QV_STRING *qvUnicodeScriptSymName( QV_INT script );
/** @} */

/** @{ */
/** The script with a name, or -1 if there is none. FromNameCaseFold ignores the case of letters. */
QV_API QV_INT qvUnicodeScriptFromName( QV_STRING *name );
QV_API QV_INT qvUnicodeScriptFromNameCaseFold( QV_STRING *name );
/** @} */

#endif
