/** @file
    Numbers and truth values as text, both ways, and the language of format strings.

        QV_INT     value = 42, consumed;
        QV_STRING *qvs   = qvStringCreateFromFormatCstr( "%lc: %i (%06!16i) %.3r", -1, "answer", value, value, 0.5 );
                                                                        // answer: 42 (00002a) 0.500
        qvFormatTryDecodeInt( qvs, 8, 9, 10, &value, &consumed );       // true: value 42, consumed 3
        qvStringRelease( qvs );

    Formats. A format is text with conversions, each of which takes arguments and becomes text. It looks like printf
    and is another language: arguments are QV_INT, QV_CHAR, QV_REAL and objects, and an integer constant needs its cast,
    since it is read as 64 bits. A conversion is

        % flags width .precision !base conversion

    and everything but the percent sign and the conversion may be left out. Width, precision and base are decimal
    numbers, or an asterisk each, which takes a QV_INT from the arguments; these come in the order of the asterisks
    and before the conversion's own. White space after a number belongs to it.

        flag    meaning                                 flag    meaning
        -       pad at the end, not at the start        #       the base as a mnemonic prefix (0xff); a null object
        0       pad numbers with zeros                          or pointer is empty text and not the word null
        +       a plus sign for what is not negative    ##      the base as a number (16:ff)
        blank   a blank for what is not negative        '       with # or ##: in base 10 too
        ^       digits, prefixes and words upper case   ~       take the argument over: release it, or
                                                        qvMemFree() it

        conversion  arguments                   text
        %           none                        a percent sign; with # nothing
        b           a truth value               true or false
        c           a QV_CHAR                   the character
        i           a QV_INT                    the integer, in base 10 unless a base is given
        X           a QV_INT                    the same, in base 16 unless a base is given
        A           a QV_INT, at least 0        the same, with zeros up to the width of the largest value: that of the
                                                precision, which it may not exceed, else QV_INT_MAX
        r           a QV_REAL                   the real with `precision` places, else six
        o, s        an object, a String         its text; of the text not more than `precision` characters
        lc, lC      Cstr; with a length         the decoded text, as above; a Cstr is UTF-8
        lw, lW      Wcstr; with a length        the same for wide text
        m           none                        `width` characters of the code `precision`, else tabs

    A format has at least one conversion other than `%%`, so that no text from outside is taken for one by mistake. The
    conversion `%#%`, which writes nothing, makes a format of a text that has no other. A format that breaks the grammar
    ends the process, and so do arguments out of the ranges of the encoders. Formatting costs the text it makes and one
    new String.

    Threads. Every function may be called from any thread. Nothing here asks the locale. */

#ifndef QV_FORMAT_H
#define QV_FORMAT_H

#include "qv/sys/qv_types.h"

#define QV_FORMAT_FLAG_LEFTALIGN    1   /**< pad at the end, not at the start */
#define QV_FORMAT_FLAG_ZEROPAD      2   /**< pad numbers with zeros */
#define QV_FORMAT_FLAG_PLUSPOS      4   /**< a plus sign where there is no minus sign */
#define QV_FORMAT_FLAG_BLANKPOS     8   /**< a blank where there is no sign */
#define QV_FORMAT_FLAG_UPPERCASE    16  /**< digits, prefixes and words in upper case */
#define QV_FORMAT_FLAG_BASEMNEMONIC 32  /**< the prefix of the base, as `0x` */
#define QV_FORMAT_FLAG_BASENUMERIC  64  /**< the base as a number, as `16:` */
#define QV_FORMAT_FLAG_BASEDECIMAL  128 /**< a prefix for base 10 too */

/** The flags without unknown bits and without conflicts: LEFTALIGN clears ZEROPAD, PLUSPOS clears BLANKPOS and
    BASEMNEMONIC clears BASENUMERIC. */
QV_API QV_INT qvFormatFlagsNormalize( QV_INT flags );

/** The flags of names or numbers with `|` between them, normalised. Unknown ones have no effect. Null ends the
    process. */
QV_API QV_INT qvFormatFlagsFromString( QV_STRING *qvs );

/** The names of the flags, which are normalised first, with `|` between them: a new text, owned by the caller. */
QV_API QV_STRING *qvFormatFlagsToString( QV_INT flags );

/* Encoding ------------------------------------------------------------------------------------------------------- */

/** `true` or `false`, with UPPERCASE in upper case, padded with blanks. The result of each encoder is a new text, owned
    by the caller. A negative width ends the process. */
QV_API QV_STRING *qvFormatEncodeBool( QV_BOOL value, QV_INT minWidth, QV_INT flags );

/** An integer in a base of 2 to 36; other bases end the process. Before the digits come, in this order: blanks up to
    the width, the sign, the prefix of the base and, with ZEROPAD, zeros up to the width instead of the blanks. With
    LEFTALIGN the blanks come after the digits, and ZEROPAD has no effect. */
QV_API QV_STRING *qvFormatEncodeInt( QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags );

/** A real, with base, sign, prefix and padding as in qvFormatEncodeInt() and with `precision` places after a point: -1
    means six, and with 0 there is no point. A precision below -1 ends the process. Places are cut off, not rounded:
    0.999 with two of them is 0.99. A real has about 16 decimal digits; those beyond are of no meaning. NaN is `NAN` and
    both infinities are `INF`, padded with blanks. */
QV_API QV_STRING *qvFormatEncodeReal( QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags );

/** The characters, padded with blanks. A character of 0x110000 or above and a negative length end the process; `src`
    may be null if there are none. */
QV_API QV_STRING *qvFormatEncodeChars( const QV_CHAR *src, QV_INT srcLength, QV_INT minWidth, QV_INT flags );

/* Decoding ------------------------------------------------------------------------------------------------------- */

/*  A decoder reads the number or word at the start of the characters and the white space before and after it. It
    returns true if there was one. `*value` becomes the value, 0 if there was none, and `*consumed` the number of
    characters that were read, in both cases; `value` and `consumed` may be null. A caller that accepts nothing else in
    the text compares `consumed` with its length. No proper text ends the process; a negative length, a range outside
    the String, a bad base and characters of 0x110000 and above do. `src` is borrowed; characters may be null if there
    are none. */

/** @{ */
/** Reads an integer: a sign, which white space may follow, and digits. The base is 2 to 36, or -1 for that of the
    prefix: `0b`, `0o`, `0d`, `0x` or their upper case, or a number as `36:`, else 10; the sign may then come after the
    prefix too. Digits of all scripts count up to base 10 and full-width ones up to base 16, letters in either case; up
    to base 16 a digit is not compared with the base itself. The number ends before a digit that would take it out of
    the range of QV_INT. */
QV_API QV_BOOL qvFormatTryDecodeIntChars(
    const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeInt(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed );
/** @} */

/** @{ */
/** Reads a real: the same with one point or comma before, among or after its digits; the separator alone is 0. There is
    no exponent, NaN or infinity. A plus sign is read with base -1 only. */
QV_API QV_BOOL qvFormatTryDecodeRealChars(
    const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_REAL *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeReal(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_INT base, QV_REAL *value, QV_INT *consumed );
/** @} */

/** @{ */
/** Reads a truth value: the word `true` or `false` in either case, whatever follows it. With `allowNumeric` it may be a
    real too, with the base of its prefix; 0 is false. */
QV_API QV_BOOL qvFormatTryDecodeBoolChars(
    const QV_CHAR *src, QV_INT srcLength, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeBool(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed );
/** @} */

#endif
