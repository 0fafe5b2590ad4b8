/** @file
    The newline forms of Unicode text: which terminator ends a line on writing, which ones are recognised on reading.
    Any thread may call what stands here. */

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

/** The flags without the bits that have no name. */
QV_API QV_INT qvNlfFlagsNormalize( QV_INT flags );

/** Flags from their names, `QV_NLF_FLAG_LF|QV_NLF_FLAG_CRLF`, or from a number; what is neither is skipped. Null ends
    the process. */
QV_API QV_INT qvNlfFlagsFromString( QV_STRING *qvs );

/** The names of the flags as a new String. */
QV_API QV_STRING *qvNlfFlagsToString( QV_INT flags );

/** A new String with the terminator of the lowest flag that is set: what a line sink with these flags writes. Empty
    where no flag is set. */
QV_API QV_STRING *qvNlfFlagsNlfString( QV_INT flags );

#endif
