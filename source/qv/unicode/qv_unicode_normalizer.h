/** @file
    UnicodeNormalizer: converts a stream of characters to one of the four normal forms of Unicode.

        QV_UNICODE_NORMALIZER *norm = qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC );
        QV_STRING             *out  = qvStringCreate();
        qvUnicodeNormalizerWrite( norm, piece );             // as often as there are pieces
        qvUnicodeNormalizerRead( norm, &out, -1 );           // what is finished so far
        qvUnicodeNormalizerFlush( norm );                    // the text ends here
        qvUnicodeNormalizerRead( norm, &out, -1 );           // the rest

    For a whole String there are qvStringNormalizeNFC() and the functions beside it.

    How the text is cut into pieces makes no difference: not to the result, and not to the number of characters that are
    readable after each character that was written. The last characters may still change with those that follow, so they
    are kept until that is decided or the text is flushed: all from the last character of class 0 on, and if the form
    composes, from the one before that.

    Limits. At most 4096 characters wait for the end of a run of marks. At that number they are put in order and wait no
    longer, and a character of class 0 with 4095 or more marks after it composes with no further ones. So the memory
    does not grow with the length of a run. A text without a run of more than 4094 marks is normalised in full.

    Two surrogates that form a pair become one character. Other surrogates, and values of 0x110000 and above, are left
    out.

    The time is linear in the length of the text. Text that is in the form already is only copied. Characters that are
    finished stay in memory until they are read. One thread at a time may use an object. Null as an object ends the
    process. */

#ifndef QV_UNICODE_NORMALIZER_H
#define QV_UNICODE_NORMALIZER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( UnicodeNormalizer, QV_UNICODE_NORMALIZER )

/* The normal forms. */

#define QV_UNICODE_NORMAL_FORM_NFC  0 /**< canonical decomposition, then composition */
#define QV_UNICODE_NORMAL_FORM_NFKC 1 /**< compatibility decomposition, then composition */
#define QV_UNICODE_NORMAL_FORM_NFD  2 /**< canonical decomposition */
#define QV_UNICODE_NORMAL_FORM_NFKD 3 /**< compatibility decomposition */

/** True for the number of a normal form. */
#define QV_UNICODE_NORMAL_FORM_OK( normalForm ) ( ( normalForm ) >= 0 && ( normalForm ) <= 3 )

/** A new normalizer at the start of a text, owned by the caller. `normalForm` is one of QV_UNICODE_NORMAL_FORM_...; any
    other value ends the process. */
QV_API QV_UNICODE_NORMALIZER *qvUnicodeNormalizerCreate( QV_INT normalForm );

/** @{ */
/** Continues the text: with one character; with an array, which may be null if its length is 0; with a String or a part
    of it: Leading the first `count` characters, Trailing the last, Inner those from `offset` on, Outer all but those. A
    negative number and a range outside the String end the process. */
QV_API void qvUnicodeNormalizerWriteChar( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch );
QV_API void qvUnicodeNormalizerWriteChars( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvUnicodeNormalizerWrite( QV_UNICODE_NORMALIZER *norm, QV_STRING *src );
QV_API void qvUnicodeNormalizerWriteInner( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvUnicodeNormalizerWriteOuter( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvUnicodeNormalizerWriteLeading( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count );
QV_API void qvUnicodeNormalizerWriteTrailing( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count );
/** @} */

/** Ends the text, so that all of it is readable. What is written afterwards is a text of its own, which does not join
    the one before. */
QV_API void qvUnicodeNormalizerFlush( QV_UNICODE_NORMALIZER *norm );

/** Discards everything that was written and not read, and frees the memory. A new text begins. */
QV_API void qvUnicodeNormalizerClear( QV_UNICODE_NORMALIZER *norm );

/** The number of characters that can be read now. */
QV_API QV_INT qvUnicodeNormalizerReadable( QV_UNICODE_NORMALIZER *norm );

/** Appends up to `maxLen` readable characters, or all for -1, to the String in `*string`, which the call may replace,
    and removes them from the normalizer. Returns their number. A limit below -1 and null as `string` or `*string` end
    the process. */
QV_API QV_INT qvUnicodeNormalizerRead( QV_UNICODE_NORMALIZER *norm, QV_STRING **string, QV_INT maxLen );

/** The same with an array of `destLen` characters, which may be null if the length is 0. A negative length ends the
    process. */
QV_API QV_INT qvUnicodeNormalizerReadChars( QV_UNICODE_NORMALIZER *norm, QV_CHAR *dest, QV_INT destLen );

#endif
