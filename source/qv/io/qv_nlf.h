/** @file
    The newline flags (nlf is for newline function, any character or pair that ends a line in Unicode text). A set of
    flags tells which terminators a line source recognises, and which one a line sink writes.

    Results belong to the caller. Any thread may call these functions. */

#ifndef QV_NLF_H
#define QV_NLF_H

#include "qv/sys/qv_types.h"

#define QV_NLF_FLAG_LF   1   /**< line feed, U+000A */
#define QV_NLF_FLAG_CR   2   /**< carriage return, U+000D */
#define QV_NLF_FLAG_CRLF 4   /**< carriage return and line feed */
#define QV_NLF_FLAG_NEL  8   /**< next line, U+0085 */
#define QV_NLF_FLAG_VT   16  /**< vertical tabulation, U+000B */
#define QV_NLF_FLAG_FF   32  /**< form feed, U+000C */
#define QV_NLF_FLAG_LS   64  /**< line separator, U+2028 */
#define QV_NLF_FLAG_PS   128 /**< paragraph separator, U+2029 */

/** The flags without the bits that are not defined above. */
QV_API QV_INT qvNlfFlagsNormalize( QV_INT flags );

/** The flags of a text with their names, `QV_NLF_FLAG_LF|QV_NLF_FLAG_CRLF`, or with their number, normalised. Parts
    that are neither are ignored. Null ends the process. */
QV_API QV_INT qvNlfFlagsFromString( QV_STRING *qvs );

/** The names of the flags as a new String, in the form that qvNlfFlagsFromString() reads. */
QV_API QV_STRING *qvNlfFlagsToString( QV_INT flags );

/** The terminator of the lowest flag that is set, which is what a line sink with these flags writes, as a new String.
    It is empty if no flag is set. */
QV_API QV_STRING *qvNlfFlagsNlfString( QV_INT flags );

#endif
