/** @file
    The properties of characters, of version 5.2 of the Unicode Character Database.

    Everything here is a pure function on constant data: any thread, also before start-up, in constant time. Every
    value below 0x110000 is a character, surrogates and unassigned ones included; values above end the process. What
    the version does not assign has category, class and script 0 and is no digit. */

#ifndef QV_UNICODE_PROPERTIES_H
#define QV_UNICODE_PROPERTIES_H

#include "qv/sys/qv_types.h"

/* Values --------------------------------------------------------------------------------------------------------- */

/** General categories, 0 to 29. */
#define QV_UNICODE_GENC_OTHER_NOT_ASSIGNED        0
#define QV_UNICODE_GENC_LETTER_UPPERCASE          1
#define QV_UNICODE_GENC_LETTER_LOWERCASE          2
#define QV_UNICODE_GENC_LETTER_TITLECASE          3
#define QV_UNICODE_GENC_LETTER_MODIFIER           4
#define QV_UNICODE_GENC_LETTER_OTHER              5
#define QV_UNICODE_GENC_MARK_NONSPACING           6
#define QV_UNICODE_GENC_MARK_SPACING_COMBINING    7
#define QV_UNICODE_GENC_MARK_ENCLOSING            8
#define QV_UNICODE_GENC_NUMBER_DECIMAL_DIGIT      9
#define QV_UNICODE_GENC_NUMBER_LETTER             10
#define QV_UNICODE_GENC_NUMBER_OTHER              11
#define QV_UNICODE_GENC_PUNCTUATION_CONNECTOR     12
#define QV_UNICODE_GENC_PUNCTUATION_DASH          13
#define QV_UNICODE_GENC_PUNCTUATION_OPEN          14
#define QV_UNICODE_GENC_PUNCTUATION_CLOSE         15
#define QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE 16
#define QV_UNICODE_GENC_PUNCTUATION_FINAL_QUOTE   17
#define QV_UNICODE_GENC_PUNCTUATION_OTHER         18
#define QV_UNICODE_GENC_SYMBOL_MATH               19
#define QV_UNICODE_GENC_SYMBOL_CURRENCY           20
#define QV_UNICODE_GENC_SYMBOL_MODIFIER           21
#define QV_UNICODE_GENC_SYMBOL_OTHER              22
#define QV_UNICODE_GENC_SEPARATOR_SPACE           23
#define QV_UNICODE_GENC_SEPARATOR_LINE            24
#define QV_UNICODE_GENC_SEPARATOR_PARAGRAPH       25
#define QV_UNICODE_GENC_OTHER_CONTROL             26
#define QV_UNICODE_GENC_OTHER_FORMAT              27
#define QV_UNICODE_GENC_OTHER_SURROGATE           28
#define QV_UNICODE_GENC_OTHER_PRIVATE_USE         29

#define QV_UNICODE_GENC_OK( genc ) ( ( genc ) >= 0 && ( genc ) <= 29 )

/** Canonical combining classes, 0 to 255. The classes that are not listed here have no name. */
#define QV_UNICODE_CCCV_SPACING              0
#define QV_UNICODE_CCCV_OVERLAYS             1
#define QV_UNICODE_CCCV_NUKTAS               7
#define QV_UNICODE_CCCV_HIRAGANA             8
#define QV_UNICODE_CCCV_VIRAMAS              9
#define QV_UNICODE_CCCV_FIXED_POS_START      10
#define QV_UNICODE_CCCV_FIXED_POS_END        199
#define QV_UNICODE_CCCV_BELOW_LEFT_ATTACHED  200
#define QV_UNICODE_CCCV_BELOW_ATTACHED       202
#define QV_UNICODE_CCCV_BELOW_RIGHT_ATTACHED 204
#define QV_UNICODE_CCCV_LEFT_ATTACHED        208
#define QV_UNICODE_CCCV_RIGHT_ATTACHED       210
#define QV_UNICODE_CCCV_ABOVE_LEFT_ATTACHED  212
#define QV_UNICODE_CCCV_ABOVE_ATTACHED       214
#define QV_UNICODE_CCCV_ABOVE_RIGHT_ATTACHED 216
#define QV_UNICODE_CCCV_BELOW_LEFT           218
#define QV_UNICODE_CCCV_BELOW                220
#define QV_UNICODE_CCCV_BELOW_RIGHT          222
#define QV_UNICODE_CCCV_LEFT                 224
#define QV_UNICODE_CCCV_RIGHT                226
#define QV_UNICODE_CCCV_ABOVE_LEFT           228
#define QV_UNICODE_CCCV_ABOVE                230
#define QV_UNICODE_CCCV_ABOVE_RIGHT          232
#define QV_UNICODE_CCCV_DOUBLE_BELOW         233
#define QV_UNICODE_CCCV_DOUBLE_ABOVE         234
#define QV_UNICODE_CCCV_BELOW_IOTA           240

#define QV_UNICODE_CCCV_OK( cccv ) ( ( cccv ) >= 0 && ( cccv ) <= 255 )

/** Scripts, 0 to 92. */
#define QV_UNICODE_SCRIPT_UNKNOWN                0
#define QV_UNICODE_SCRIPT_COMMON                 1
#define QV_UNICODE_SCRIPT_LATIN                  2
#define QV_UNICODE_SCRIPT_GREEK                  3
#define QV_UNICODE_SCRIPT_CYRILLIC               4
#define QV_UNICODE_SCRIPT_ARMENIAN               5
#define QV_UNICODE_SCRIPT_HEBREW                 6
#define QV_UNICODE_SCRIPT_ARABIC                 7
#define QV_UNICODE_SCRIPT_SYRIAC                 8
#define QV_UNICODE_SCRIPT_THAANA                 9
#define QV_UNICODE_SCRIPT_DEVANAGARI             10
#define QV_UNICODE_SCRIPT_BENGALI                11
#define QV_UNICODE_SCRIPT_GURMUKHI               12
#define QV_UNICODE_SCRIPT_GUJARATI               13
#define QV_UNICODE_SCRIPT_ORIYA                  14
#define QV_UNICODE_SCRIPT_TAMIL                  15
#define QV_UNICODE_SCRIPT_TELUGU                 16
#define QV_UNICODE_SCRIPT_KANNADA                17
#define QV_UNICODE_SCRIPT_MALAYALAM              18
#define QV_UNICODE_SCRIPT_SINHALA                19
#define QV_UNICODE_SCRIPT_THAI                   20
#define QV_UNICODE_SCRIPT_LAO                    21
#define QV_UNICODE_SCRIPT_TIBETAN                22
#define QV_UNICODE_SCRIPT_MYANMAR                23
#define QV_UNICODE_SCRIPT_GEORGIAN               24
#define QV_UNICODE_SCRIPT_HANGUL                 25
#define QV_UNICODE_SCRIPT_ETHIOPIC               26
#define QV_UNICODE_SCRIPT_CHEROKEE               27
#define QV_UNICODE_SCRIPT_CANADIAN_ABORIGINAL    28
#define QV_UNICODE_SCRIPT_OGHAM                  29
#define QV_UNICODE_SCRIPT_RUNIC                  30
#define QV_UNICODE_SCRIPT_KHMER                  31
#define QV_UNICODE_SCRIPT_MONGOLIAN              32
#define QV_UNICODE_SCRIPT_HIRAGANA               33
#define QV_UNICODE_SCRIPT_KATAKANA               34
#define QV_UNICODE_SCRIPT_BOPOMOFO               35
#define QV_UNICODE_SCRIPT_HAN                    36
#define QV_UNICODE_SCRIPT_YI                     37
#define QV_UNICODE_SCRIPT_OLD_ITALIC             38
#define QV_UNICODE_SCRIPT_GOTHIC                 39
#define QV_UNICODE_SCRIPT_DESERET                40
#define QV_UNICODE_SCRIPT_INHERITED              41
#define QV_UNICODE_SCRIPT_TAGALOG                42
#define QV_UNICODE_SCRIPT_HANUNOO                43
#define QV_UNICODE_SCRIPT_BUHID                  44
#define QV_UNICODE_SCRIPT_TAGBANWA               45
#define QV_UNICODE_SCRIPT_LIMBU                  46
#define QV_UNICODE_SCRIPT_TAI_LE                 47
#define QV_UNICODE_SCRIPT_LINEAR_B               48
#define QV_UNICODE_SCRIPT_UGARITIC               49
#define QV_UNICODE_SCRIPT_SHAVIAN                50
#define QV_UNICODE_SCRIPT_OSMANYA                51
#define QV_UNICODE_SCRIPT_CYPRIOT                52
#define QV_UNICODE_SCRIPT_BRAILLE                53
#define QV_UNICODE_SCRIPT_BUGINESE               54
#define QV_UNICODE_SCRIPT_COPTIC                 55
#define QV_UNICODE_SCRIPT_NEW_TAI_LUE            56
#define QV_UNICODE_SCRIPT_GLAGOLITIC             57
#define QV_UNICODE_SCRIPT_TIFINAGH               58
#define QV_UNICODE_SCRIPT_SYLOTI_NAGRI           59
#define QV_UNICODE_SCRIPT_OLD_PERSIAN            60
#define QV_UNICODE_SCRIPT_KHAROSHTHI             61
#define QV_UNICODE_SCRIPT_BALINESE               62
#define QV_UNICODE_SCRIPT_CUNEIFORM              63
#define QV_UNICODE_SCRIPT_PHOENICIAN             64
#define QV_UNICODE_SCRIPT_PHAGS_PA               65
#define QV_UNICODE_SCRIPT_NKO                    66
#define QV_UNICODE_SCRIPT_SUNDANESE              67
#define QV_UNICODE_SCRIPT_LEPCHA                 68
#define QV_UNICODE_SCRIPT_OL_CHIKI               69
#define QV_UNICODE_SCRIPT_VAI                    70
#define QV_UNICODE_SCRIPT_SAURASHTRA             71
#define QV_UNICODE_SCRIPT_KAYAH_LI               72
#define QV_UNICODE_SCRIPT_REJANG                 73
#define QV_UNICODE_SCRIPT_LYCIAN                 74
#define QV_UNICODE_SCRIPT_CARIAN                 75
#define QV_UNICODE_SCRIPT_LYDIAN                 76
#define QV_UNICODE_SCRIPT_CHAM                   77
#define QV_UNICODE_SCRIPT_TAI_THAM               78
#define QV_UNICODE_SCRIPT_TAI_VIET               79
#define QV_UNICODE_SCRIPT_AVESTAN                80
#define QV_UNICODE_SCRIPT_EGYPTIAN_HIEROGLYPHS   81
#define QV_UNICODE_SCRIPT_SAMARITAN              82
#define QV_UNICODE_SCRIPT_LISU                   83
#define QV_UNICODE_SCRIPT_BAMUM                  84
#define QV_UNICODE_SCRIPT_JAVANESE               85
#define QV_UNICODE_SCRIPT_MEETEI_MAYEK           86
#define QV_UNICODE_SCRIPT_IMPERIAL_ARAMAIC       87
#define QV_UNICODE_SCRIPT_OLD_SOUTH_ARABIAN      88
#define QV_UNICODE_SCRIPT_INSCRIPTIONAL_PARTHIAN 89
#define QV_UNICODE_SCRIPT_INSCRIPTIONAL_PAHLAVI  90
#define QV_UNICODE_SCRIPT_OLD_TURKIC             91
#define QV_UNICODE_SCRIPT_KAITHI                 92

#define QV_UNICODE_SCRIPT_OK( script ) ( ( script ) >= 0 && ( script ) <= 92 )

/* Properties ----------------------------------------------------------------------------------------------------- */

/** The general category, one of QV_UNICODE_GENC_... */
QV_API QV_INT qvUnicodeGenc( QV_CHAR ch );

/** The canonical combining class, 0 to 255. */
QV_API QV_INT qvUnicodeCccv( QV_CHAR ch );

/** The script, one of QV_UNICODE_SCRIPT_... */
QV_API QV_INT qvUnicodeScript( QV_CHAR ch );

/** @{ */
/** What the character counts as a digit, or -1. Decimal digits are those of every script. Hexadecimal digits are
    `0` to `9`, `A` to `F` and `a` to `f`, of ASCII and in their fullwidth forms. */
QV_API QV_INT qvUnicodeDecimalDigitValue( QV_CHAR ch );
QV_API QV_INT qvUnicodeHexadecimalDigitValue( QV_CHAR ch );
/** @} */

/** The same for a base from 2 to 36; any other ends the process. Up to 10 these are the decimal digits, up to 16 the
    hexadecimal ones, and neither is compared with the base: `9` counts 9 in base 8. Above 16 they are the digits and
    letters of ASCII that lie below the base. */
QV_API QV_INT qvUnicodeBaseNDigitValue( QV_CHAR ch, QV_INT base );

/** The property White_Space. */
QV_API QV_BOOL qvUnicodeIsWhiteSpace( QV_CHAR ch );

/** True for what ends a line: U+000A to U+000D, U+0085, U+2028, U+2029. */
QV_API QV_BOOL qvUnicodeIsNlf( QV_CHAR ch );

/* Categories ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** Whether the category is the one in the name, or belongs to the group in the name. The group Other has the
    unassigned characters too. */
QV_API QV_BOOL qvUnicodeIsLetter( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterUppercase( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterLowercase( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterTitlecase( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterModifier( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterOther( QV_CHAR ch );
/** @} */

QV_API QV_BOOL qvUnicodeIsMark( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsMarkNonspacing( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsMarkSpacingCombining( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsMarkEnclosing( QV_CHAR ch );

QV_API QV_BOOL qvUnicodeIsNumber( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsNumberDecimalDigit( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsNumberLetter( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsNumberOther( QV_CHAR ch );

QV_API QV_BOOL qvUnicodeIsPunctuation( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationConnector( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationDash( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationOpen( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationClose( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationInitialQuote( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationFinalQuote( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationOther( QV_CHAR ch );

QV_API QV_BOOL qvUnicodeIsSymbol( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolMath( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolCurrency( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolModifier( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolOther( QV_CHAR ch );

QV_API QV_BOOL qvUnicodeIsSeparator( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSeparatorSpace( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSeparatorLine( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSeparatorParagraph( QV_CHAR ch );

QV_API QV_BOOL qvUnicodeIsOther( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherControl( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherFormat( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherSurrogate( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherPrivateUse( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherNotAssigned( QV_CHAR ch );

/* Combining classes ---------------------------------------------------------------------------------------------- */

/** @{ */
/** Whether the combining class is the one in the name. FixedPos is everything from FixedPosStart to FixedPosEnd. */
QV_API QV_BOOL qvUnicodeHasCccvSpacing( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvOverlays( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvNuktas( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvHiragana( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvViramas( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvFixedPosStart( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvFixedPosEnd( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvFixedPos( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelowLeftAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelowAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelowRightAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvLeftAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvRightAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvAboveLeftAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvAboveAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvAboveRightAttached( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelowLeft( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelow( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelowRight( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvLeft( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvRight( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvAaboveLeft( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvAbove( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvAboveRight( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvDoubleBelow( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvDoubleAbove( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeHasCccvBelowIota( QV_CHAR ch );
/** @} */

#endif
