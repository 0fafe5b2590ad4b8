/** @file
    Arrays of characters: between outside text and the library's own characters.

    Every function works on the caller's arrays, allocates nothing, has no state and may be called from any thread,
    before start-up too. Content never fails: what cannot be read or written is replaced. Each conversion gives the
    number of units or characters that the whole output needs, whatever `destLength` is, and writes what fits; `dest`
    may be null where `destLength` is 0, so a caller measures first and fills then. A negative length, and null with a
    length other than 0, end the process. Costs are linear in the length of the input. */

#ifndef QV_CHARS_H
#define QV_CHARS_H

#include "qv/sys/qv_types.h"

/** True when every character is below 0x110000. Surrogates pass. */
QV_API QV_BOOL qvCharsAllOk( const QV_CHAR *src, QV_INT srcLength );

/** Copies with repairs: pairs of surrogates are combined, single ones and values of 0x110000 and above left out.
    `dest` and `src` may be the same array. */
QV_API QV_INT qvCharsSanitize( QV_CHAR *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength );

/** @{ */
/** To outside text. With `addNull` a terminator is counted, and written if it still fits. Ascii has a question mark
    for every other character, UTF-8 U+FFFD for values of 0x110000 and above; Cstr is UTF-8. In Wcstr 0 becomes U+FFFD
    too. A sequence that does not fit at the end is written as far as it fits. */
QV_API QV_INT qvCharsConvertToAscii(
    char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull );
QV_API QV_INT qvCharsConvertToUtf8(
    char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull );
QV_API QV_INT qvCharsConvertToCstr(
    char *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull );
QV_API QV_INT qvCharsConvertToWcstr(
    wchar_t *dest, QV_INT destLength, const QV_CHAR *src, QV_INT srcLength, QV_BOOL addNull );
/** @} */

/** @{ */
/** From outside text. A `srcLength` of -1 means that it ends at its terminator. U+FFFD stands for what cannot be read.
    In UTF-8 that is each broken sequence, without the byte that breaks it, and each run of bytes that follow nothing; a
    sequence that the end of the text cuts and a value of 0x110000 and above give nothing. Overlong forms and surrogates
    are read. */
QV_API QV_INT qvCharsConvertFromAscii( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength );
QV_API QV_INT qvCharsConvertFromUtf8( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength );
QV_API QV_INT qvCharsConvertFromCstr( QV_CHAR *dest, QV_INT destLength, const char *src, QV_INT srcLength );
QV_API QV_INT qvCharsConvertFromWcstr( QV_CHAR *dest, QV_INT destLength, const wchar_t *src, QV_INT srcLength );
/** @} */

#endif
