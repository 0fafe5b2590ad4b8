/** @file
    UnicodeNormalizer: a stream of characters into one of the four normal forms of Unicode.

        QV_UNICODE_NORMALIZER *norm = qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC );
        QV_STRING             *out  = qvStringCreate();
        qvUnicodeNormalizerWrite( norm, piece );             // as often as there are pieces
        qvUnicodeNormalizerRead( norm, &out, -1 );           // what is finished so far
        qvUnicodeNormalizerFlush( norm );                    // the text ends here
        qvUnicodeNormalizerRead( norm, &out, -1 );           // the rest

    For a text that is at hand as a whole there are qvStringNormalizeNFC() and its like.

    What is written in one piece or in many gives the same characters, and after every character the same number of
    them is readable. What the last characters become depends on those that follow, so they stay inside until it is
    known or the text is flushed: from the last character of class 0 on, and with composition from the one before it.

    Limits. At most 4096 characters wait for the end of a run of marks: those are then put in order and move on, and a
    character of class 0 with 4095 or more behind it takes up no further ones. So the memory does not grow with the
    length of such a run. Text in which no character has more than 4094 marks is normalised in full.

    Surrogates that are a pair become one character. Others, and values of 0x110000 and above, disappear.

    The time is linear in the length for every text; text that is normal already is copied. What is finished and not
    read yet stays in memory. One thread at a time uses an object. Null as an object ends the process. */

#ifndef QV_UNICODE_NORMALIZER_H
#define QV_UNICODE_NORMALIZER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( UnicodeNormalizer, QV_UNICODE_NORMALIZER )

/** The normal forms. C composes, D does not; the forms with K also replace what is only compatible. */
#define QV_UNICODE_NORMAL_FORM_NFC  0
#define QV_UNICODE_NORMAL_FORM_NFKC 1
#define QV_UNICODE_NORMAL_FORM_NFD  2
#define QV_UNICODE_NORMAL_FORM_NFKD 3

#define QV_UNICODE_NORMAL_FORM_OK( normalForm ) ( ( normalForm ) >= 0 && ( normalForm ) <= 3 )

/** A new normalizer, which has got nothing yet. Any other value than one of the four forms ends the process. */
QV_API QV_UNICODE_NORMALIZER *qvUnicodeNormalizerCreate( QV_INT normalForm );

/** @{ */
/** Continues the text: with one character; with an array, which may be null if the length is 0; with a String or a
    part of it. Inner is the part from `offset` on, Outer all but that, Leading and Trailing the part at either end.
    A negative length, offset or count, and a range that is not within the String, end the process. */
QV_API void qvUnicodeNormalizerWriteChar( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch );
QV_API void qvUnicodeNormalizerWriteChars( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvUnicodeNormalizerWrite( QV_UNICODE_NORMALIZER *norm, QV_STRING *src );
QV_API void qvUnicodeNormalizerWriteInner( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvUnicodeNormalizerWriteOuter( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvUnicodeNormalizerWriteLeading( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count );
QV_API void qvUnicodeNormalizerWriteTrailing( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count );
/** @} */

/** Ends the text, so that all of it is readable. What is written afterwards is a text of its own, which nothing in
    front of it joins. */
QV_API void qvUnicodeNormalizerFlush( QV_UNICODE_NORMALIZER *norm );

/** Forgets everything that was written, also what is readable. */
QV_API void qvUnicodeNormalizerClear( QV_UNICODE_NORMALIZER *norm );

/** How many characters can be read now. */
QV_API QV_INT qvUnicodeNormalizerReadable( QV_UNICODE_NORMALIZER *norm );

/** Takes the first readable characters, `maxLen` at most, all for -1, and appends them to `*string`. Gives how many
    these were. Any other negative limit ends the process. */
QV_API QV_INT qvUnicodeNormalizerRead( QV_UNICODE_NORMALIZER *norm, QV_STRING **string, QV_INT maxLen );

/** The same into an array of `destLen`, which may be null if the length is 0. A negative length ends the process. */
QV_API QV_INT qvUnicodeNormalizerReadChars( QV_UNICODE_NORMALIZER *norm, QV_CHAR *dest, QV_INT destLen );

#endif
