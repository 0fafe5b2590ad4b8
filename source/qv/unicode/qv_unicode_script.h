/** @file
    The names of the scripts, which qv_unicode_properties.h lists.

    Any thread. A value outside its range and null as a String end the process. */

#ifndef QV_UNICODE_SCRIPT_H
#define QV_UNICODE_SCRIPT_H

#include "qv/sys/qv_types.h"

/** @{ */
/** The name as in "Old_Turkic" and the name of the constant as in "QV_UNICODE_SCRIPT_OLD_TURKIC". */
QV_API QV_STRING *qvUnicodeScriptName( QV_INT script );
QV_API QV_STRING *qvUnicodeScriptSymName( QV_INT script );
/** @} */

/** @{ */
/** The script with a name, or -1; the second one takes it in any case. */
QV_API QV_INT qvUnicodeScriptFromName( QV_STRING *name );
QV_API QV_INT qvUnicodeScriptFromNameCaseFold( QV_STRING *name );
/** @} */

#endif
