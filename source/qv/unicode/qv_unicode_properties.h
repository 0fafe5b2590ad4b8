/** @file
    The properties of characters, of version 5.2 of the Unicode Character Database.

    Three short names stand for properties: genc is the general category, cccv the canonical combining class value, and
    nlf a newline function, a character that ends a line.

    All functions read constant data in constant time. Any thread may call them, also before the library is started.
    Every value below 0x110000 is a character, surrogates and unassigned ones included; other values end the process. A
    character that this version does not assign has category, class and script 0 and is no digit. */

#ifndef QV_UNICODE_PROPERTIES_H
#define QV_UNICODE_PROPERTIES_H

#include "qv/sys/qv_types.h"

/* Values --------------------------------------------------------------------------------------------------------- */

/* General categories, 0 to 29, with their abbreviation in the character database. */

#define QV_UNICODE_GENC_OTHER_NOT_ASSIGNED        0  /**< Cn: not assigned to a character */
#define QV_UNICODE_GENC_LETTER_UPPERCASE          1  /**< Lu: uppercase letters */
#define QV_UNICODE_GENC_LETTER_LOWERCASE          2  /**< Ll: lowercase letters */
#define QV_UNICODE_GENC_LETTER_TITLECASE          3  /**< Lt: titlecase letters, such as U+01C5 */
#define QV_UNICODE_GENC_LETTER_MODIFIER           4  /**< Lm: modifier letters */
#define QV_UNICODE_GENC_LETTER_OTHER              5  /**< Lo: other letters, such as those of scripts without case */
#define QV_UNICODE_GENC_MARK_NONSPACING           6  /**< Mn: marks that take no space of their own */
#define QV_UNICODE_GENC_MARK_SPACING_COMBINING    7  /**< Mc: marks that take space of their own */
#define QV_UNICODE_GENC_MARK_ENCLOSING            8  /**< Me: marks that enclose the character before them */
#define QV_UNICODE_GENC_NUMBER_DECIMAL_DIGIT      9  /**< Nd: decimal digits of all scripts */
#define QV_UNICODE_GENC_NUMBER_LETTER             10 /**< Nl: letters that are numbers, such as the Roman numerals */
#define QV_UNICODE_GENC_NUMBER_OTHER              11 /**< No: other numbers, such as fractions */
#define QV_UNICODE_GENC_PUNCTUATION_CONNECTOR     12 /**< Pc: punctuation that connects, such as the low line */
#define QV_UNICODE_GENC_PUNCTUATION_DASH          13 /**< Pd: hyphens and dashes */
#define QV_UNICODE_GENC_PUNCTUATION_OPEN          14 /**< Ps: opening brackets */
#define QV_UNICODE_GENC_PUNCTUATION_CLOSE         15 /**< Pe: closing brackets */
#define QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE 16 /**< Pi: opening quotation marks */
#define QV_UNICODE_GENC_PUNCTUATION_FINAL_QUOTE   17 /**< Pf: closing quotation marks */
#define QV_UNICODE_GENC_PUNCTUATION_OTHER         18 /**< Po: other punctuation */
#define QV_UNICODE_GENC_SYMBOL_MATH               19 /**< Sm: mathematical symbols */
#define QV_UNICODE_GENC_SYMBOL_CURRENCY           20 /**< Sc: currency symbols */
#define QV_UNICODE_GENC_SYMBOL_MODIFIER           21 /**< Sk: symbols that modify, such as the circumflex accent */
#define QV_UNICODE_GENC_SYMBOL_OTHER              22 /**< So: other symbols */
#define QV_UNICODE_GENC_SEPARATOR_SPACE           23 /**< Zs: spaces */
#define QV_UNICODE_GENC_SEPARATOR_LINE            24 /**< Zl: the line separator U+2028 */
#define QV_UNICODE_GENC_SEPARATOR_PARAGRAPH       25 /**< Zp: the paragraph separator U+2029 */
#define QV_UNICODE_GENC_OTHER_CONTROL             26 /**< Cc: control characters, such as the tabulation */
#define QV_UNICODE_GENC_OTHER_FORMAT              27 /**< Cf: format characters, such as the soft hyphen */
#define QV_UNICODE_GENC_OTHER_SURROGATE           28 /**< Cs: surrogates, U+D800 to U+DFFF */
#define QV_UNICODE_GENC_OTHER_PRIVATE_USE         29 /**< Co: private use */

/** True for the number of a general category. */
#define QV_UNICODE_GENC_OK( genc ) ( ( genc ) >= 0 && ( genc ) <= 29 )

/* Canonical combining classes, 0 to 255: where a mark stands, by which marks of one character are ordered. Classes that
   are not listed here have no name. */

#define QV_UNICODE_CCCV_SPACING              0   /**< no reordering: all that is no mark, and marks of this class */
#define QV_UNICODE_CCCV_OVERLAYS             1   /**< overlays */
#define QV_UNICODE_CCCV_NUKTAS               7   /**< nuktas of Indic scripts */
#define QV_UNICODE_CCCV_HIRAGANA             8   /**< voicing marks of Hiragana and Katakana */
#define QV_UNICODE_CCCV_VIRAMAS              9   /**< viramas */
#define QV_UNICODE_CCCV_FIXED_POS_START      10  /**< the first of the classes of single marks */
#define QV_UNICODE_CCCV_FIXED_POS_END        199 /**< the last of the classes of single marks */
#define QV_UNICODE_CCCV_BELOW_LEFT_ATTACHED  200 /**< attached below left */
#define QV_UNICODE_CCCV_BELOW_ATTACHED       202 /**< attached below */
#define QV_UNICODE_CCCV_BELOW_RIGHT_ATTACHED 204 /**< attached below right */
#define QV_UNICODE_CCCV_LEFT_ATTACHED        208 /**< attached to the left */
#define QV_UNICODE_CCCV_RIGHT_ATTACHED       210 /**< attached to the right */
#define QV_UNICODE_CCCV_ABOVE_LEFT_ATTACHED  212 /**< attached above left */
#define QV_UNICODE_CCCV_ABOVE_ATTACHED       214 /**< attached above */
#define QV_UNICODE_CCCV_ABOVE_RIGHT_ATTACHED 216 /**< attached above right */
#define QV_UNICODE_CCCV_BELOW_LEFT           218 /**< below left */
#define QV_UNICODE_CCCV_BELOW                220 /**< below */
#define QV_UNICODE_CCCV_BELOW_RIGHT          222 /**< below right */
#define QV_UNICODE_CCCV_LEFT                 224 /**< to the left */
#define QV_UNICODE_CCCV_RIGHT                226 /**< to the right */
#define QV_UNICODE_CCCV_ABOVE_LEFT           228 /**< above left */
#define QV_UNICODE_CCCV_ABOVE                230 /**< above */
#define QV_UNICODE_CCCV_ABOVE_RIGHT          232 /**< above right */
#define QV_UNICODE_CCCV_DOUBLE_BELOW         233 /**< below two characters */
#define QV_UNICODE_CCCV_DOUBLE_ABOVE         234 /**< above two characters */
#define QV_UNICODE_CCCV_BELOW_IOTA           240 /**< the iota subscript */

/** True for the number of a combining class. */
#define QV_UNICODE_CCCV_OK( cccv ) ( ( cccv ) >= 0 && ( cccv ) <= 255 )

/* Scripts, 0 to 92, with their code of ISO 15924. */

#define QV_UNICODE_SCRIPT_UNKNOWN                0  /**< Zzzz: no script: unassigned, private use, surrogates */
#define QV_UNICODE_SCRIPT_COMMON                 1  /**< Zyyy: used with several scripts */
#define QV_UNICODE_SCRIPT_LATIN                  2  /**< Latn: Latin */
#define QV_UNICODE_SCRIPT_GREEK                  3  /**< Grek: Greek */
#define QV_UNICODE_SCRIPT_CYRILLIC               4  /**< Cyrl: Cyrillic */
#define QV_UNICODE_SCRIPT_ARMENIAN               5  /**< Armn: Armenian */
#define QV_UNICODE_SCRIPT_HEBREW                 6  /**< Hebr: Hebrew */
#define QV_UNICODE_SCRIPT_ARABIC                 7  /**< Arab: Arabic */
#define QV_UNICODE_SCRIPT_SYRIAC                 8  /**< Syrc: Syriac */
#define QV_UNICODE_SCRIPT_THAANA                 9  /**< Thaa: Thaana */
#define QV_UNICODE_SCRIPT_DEVANAGARI             10 /**< Deva: Devanagari */
#define QV_UNICODE_SCRIPT_BENGALI                11 /**< Beng: Bengali */
#define QV_UNICODE_SCRIPT_GURMUKHI               12 /**< Guru: Gurmukhi */
#define QV_UNICODE_SCRIPT_GUJARATI               13 /**< Gujr: Gujarati */
#define QV_UNICODE_SCRIPT_ORIYA                  14 /**< Orya: Oriya */
#define QV_UNICODE_SCRIPT_TAMIL                  15 /**< Taml: Tamil */
#define QV_UNICODE_SCRIPT_TELUGU                 16 /**< Telu: Telugu */
#define QV_UNICODE_SCRIPT_KANNADA                17 /**< Knda: Kannada */
#define QV_UNICODE_SCRIPT_MALAYALAM              18 /**< Mlym: Malayalam */
#define QV_UNICODE_SCRIPT_SINHALA                19 /**< Sinh: Sinhala */
#define QV_UNICODE_SCRIPT_THAI                   20 /**< Thai: Thai */
#define QV_UNICODE_SCRIPT_LAO                    21 /**< Laoo: Lao */
#define QV_UNICODE_SCRIPT_TIBETAN                22 /**< Tibt: Tibetan */
#define QV_UNICODE_SCRIPT_MYANMAR                23 /**< Mymr: Myanmar */
#define QV_UNICODE_SCRIPT_GEORGIAN               24 /**< Geor: Georgian */
#define QV_UNICODE_SCRIPT_HANGUL                 25 /**< Hang: Hangul */
#define QV_UNICODE_SCRIPT_ETHIOPIC               26 /**< Ethi: Ethiopic */
#define QV_UNICODE_SCRIPT_CHEROKEE               27 /**< Cher: Cherokee */
#define QV_UNICODE_SCRIPT_CANADIAN_ABORIGINAL    28 /**< Cans: Canadian Aboriginal */
#define QV_UNICODE_SCRIPT_OGHAM                  29 /**< Ogam: Ogham */
#define QV_UNICODE_SCRIPT_RUNIC                  30 /**< Runr: Runic */
#define QV_UNICODE_SCRIPT_KHMER                  31 /**< Khmr: Khmer */
#define QV_UNICODE_SCRIPT_MONGOLIAN              32 /**< Mong: Mongolian */
#define QV_UNICODE_SCRIPT_HIRAGANA               33 /**< Hira: Hiragana */
#define QV_UNICODE_SCRIPT_KATAKANA               34 /**< Kana: Katakana */
#define QV_UNICODE_SCRIPT_BOPOMOFO               35 /**< Bopo: Bopomofo */
#define QV_UNICODE_SCRIPT_HAN                    36 /**< Hani: Han */
#define QV_UNICODE_SCRIPT_YI                     37 /**< Yiii: Yi */
#define QV_UNICODE_SCRIPT_OLD_ITALIC             38 /**< Ital: Old Italic */
#define QV_UNICODE_SCRIPT_GOTHIC                 39 /**< Goth: Gothic */
#define QV_UNICODE_SCRIPT_DESERET                40 /**< Dsrt: Deseret */
#define QV_UNICODE_SCRIPT_INHERITED              41 /**< Zinh: marks, with the script of the base character */
#define QV_UNICODE_SCRIPT_TAGALOG                42 /**< Tglg: Tagalog */
#define QV_UNICODE_SCRIPT_HANUNOO                43 /**< Hano: Hanunoo */
#define QV_UNICODE_SCRIPT_BUHID                  44 /**< Buhd: Buhid */
#define QV_UNICODE_SCRIPT_TAGBANWA               45 /**< Tagb: Tagbanwa */
#define QV_UNICODE_SCRIPT_LIMBU                  46 /**< Limb: Limbu */
#define QV_UNICODE_SCRIPT_TAI_LE                 47 /**< Tale: Tai Le */
#define QV_UNICODE_SCRIPT_LINEAR_B               48 /**< Linb: Linear B */
#define QV_UNICODE_SCRIPT_UGARITIC               49 /**< Ugar: Ugaritic */
#define QV_UNICODE_SCRIPT_SHAVIAN                50 /**< Shaw: Shavian */
#define QV_UNICODE_SCRIPT_OSMANYA                51 /**< Osma: Osmanya */
#define QV_UNICODE_SCRIPT_CYPRIOT                52 /**< Cprt: Cypriot */
#define QV_UNICODE_SCRIPT_BRAILLE                53 /**< Brai: Braille */
#define QV_UNICODE_SCRIPT_BUGINESE               54 /**< Bugi: Buginese */
#define QV_UNICODE_SCRIPT_COPTIC                 55 /**< Copt: Coptic */
#define QV_UNICODE_SCRIPT_NEW_TAI_LUE            56 /**< Talu: New Tai Lue */
#define QV_UNICODE_SCRIPT_GLAGOLITIC             57 /**< Glag: Glagolitic */
#define QV_UNICODE_SCRIPT_TIFINAGH               58 /**< Tfng: Tifinagh */
#define QV_UNICODE_SCRIPT_SYLOTI_NAGRI           59 /**< Sylo: Syloti Nagri */
#define QV_UNICODE_SCRIPT_OLD_PERSIAN            60 /**< Xpeo: Old Persian */
#define QV_UNICODE_SCRIPT_KHAROSHTHI             61 /**< Khar: Kharoshthi */
#define QV_UNICODE_SCRIPT_BALINESE               62 /**< Bali: Balinese */
#define QV_UNICODE_SCRIPT_CUNEIFORM              63 /**< Xsux: Cuneiform */
#define QV_UNICODE_SCRIPT_PHOENICIAN             64 /**< Phnx: Phoenician */
#define QV_UNICODE_SCRIPT_PHAGS_PA               65 /**< Phag: Phags Pa */
#define QV_UNICODE_SCRIPT_NKO                    66 /**< Nkoo: Nko */
#define QV_UNICODE_SCRIPT_SUNDANESE              67 /**< Sund: Sundanese */
#define QV_UNICODE_SCRIPT_LEPCHA                 68 /**< Lepc: Lepcha */
#define QV_UNICODE_SCRIPT_OL_CHIKI               69 /**< Olck: Ol Chiki */
#define QV_UNICODE_SCRIPT_VAI                    70 /**< Vaii: Vai */
#define QV_UNICODE_SCRIPT_SAURASHTRA             71 /**< Saur: Saurashtra */
#define QV_UNICODE_SCRIPT_KAYAH_LI               72 /**< Kali: Kayah Li */
#define QV_UNICODE_SCRIPT_REJANG                 73 /**< Rjng: Rejang */
#define QV_UNICODE_SCRIPT_LYCIAN                 74 /**< Lyci: Lycian */
#define QV_UNICODE_SCRIPT_CARIAN                 75 /**< Cari: Carian */
#define QV_UNICODE_SCRIPT_LYDIAN                 76 /**< Lydi: Lydian */
#define QV_UNICODE_SCRIPT_CHAM                   77 /**< Cham: Cham */
#define QV_UNICODE_SCRIPT_TAI_THAM               78 /**< Lana: Tai Tham */
#define QV_UNICODE_SCRIPT_TAI_VIET               79 /**< Tavt: Tai Viet */
#define QV_UNICODE_SCRIPT_AVESTAN                80 /**< Avst: Avestan */
#define QV_UNICODE_SCRIPT_EGYPTIAN_HIEROGLYPHS   81 /**< Egyp: Egyptian Hieroglyphs */
#define QV_UNICODE_SCRIPT_SAMARITAN              82 /**< Samr: Samaritan */
#define QV_UNICODE_SCRIPT_LISU                   83 /**< Lisu: Lisu */
#define QV_UNICODE_SCRIPT_BAMUM                  84 /**< Bamu: Bamum */
#define QV_UNICODE_SCRIPT_JAVANESE               85 /**< Java: Javanese */
#define QV_UNICODE_SCRIPT_MEETEI_MAYEK           86 /**< Mtei: Meetei Mayek */
#define QV_UNICODE_SCRIPT_IMPERIAL_ARAMAIC       87 /**< Armi: Imperial Aramaic */
#define QV_UNICODE_SCRIPT_OLD_SOUTH_ARABIAN      88 /**< Sarb: Old South Arabian */
#define QV_UNICODE_SCRIPT_INSCRIPTIONAL_PARTHIAN 89 /**< Prti: Inscriptional Parthian */
#define QV_UNICODE_SCRIPT_INSCRIPTIONAL_PAHLAVI  90 /**< Phli: Inscriptional Pahlavi */
#define QV_UNICODE_SCRIPT_OLD_TURKIC             91 /**< Orkh: Old Turkic */
#define QV_UNICODE_SCRIPT_KAITHI                 92 /**< Kthi: Kaithi */

/** True for the number of a script. */
#define QV_UNICODE_SCRIPT_OK( script ) ( ( script ) >= 0 && ( script ) <= 92 )

/* Properties ----------------------------------------------------------------------------------------------------- */

/** The general category, one of QV_UNICODE_GENC_... */
QV_API QV_INT qvUnicodeGenc( QV_CHAR ch );

/** The canonical combining class, 0 to 255. */
QV_API QV_INT qvUnicodeCccv( QV_CHAR ch );

/** The script, one of QV_UNICODE_SCRIPT_... */
QV_API QV_INT qvUnicodeScript( QV_CHAR ch );

/** @{ */
/** The value of a digit, or -1 for any other character. Decimal digits are those of all scripts, hexadecimal digits `0`
    to `9`, `A` to `F` and `a` to `f` of ASCII and their fullwidth forms. */
QV_API QV_INT qvUnicodeDecimalDigitValue( QV_CHAR ch );
QV_API QV_INT qvUnicodeHexadecimalDigitValue( QV_CHAR ch );
/** @} */

/** The value of a digit in a base from 2 to 36, or -1; any other base ends the process. Up to base 10 the digits are
    the decimal ones, up to 16 the hexadecimal ones, also those above the base: `9` is 9 in base 8. Above 16 they are
    the digits and letters of ASCII whose value is below the base. */
QV_API QV_INT qvUnicodeBaseNDigitValue( QV_CHAR ch, QV_INT base );

/** True for white space: the property White_Space of the character database. */
QV_API QV_BOOL qvUnicodeIsWhiteSpace( QV_CHAR ch );

/** True for the characters that end a line: U+000A to U+000D, U+0085, U+2028, U+2029. */
QV_API QV_BOOL qvUnicodeIsNlf( QV_CHAR ch );

/* Categories ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** True for a letter, and for a letter of the category in the name. */
QV_API QV_BOOL qvUnicodeIsLetter( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterUppercase( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterLowercase( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterTitlecase( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterModifier( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsLetterOther( QV_CHAR ch );
/** @} */

/** @{ */
/** True for a mark, and for a mark of the category in the name. */
QV_API QV_BOOL qvUnicodeIsMark( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsMarkNonspacing( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsMarkSpacingCombining( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsMarkEnclosing( QV_CHAR ch );
/** @} */

/** @{ */
/** True for a number, and for a number of the category in the name. */
QV_API QV_BOOL qvUnicodeIsNumber( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsNumberDecimalDigit( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsNumberLetter( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsNumberOther( QV_CHAR ch );
/** @} */

/** @{ */
/** True for punctuation, and for punctuation of the category in the name. */
QV_API QV_BOOL qvUnicodeIsPunctuation( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationConnector( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationDash( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationOpen( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationClose( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationInitialQuote( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationFinalQuote( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsPunctuationOther( QV_CHAR ch );
/** @} */

/** @{ */
/** True for a symbol, and for a symbol of the category in the name. */
QV_API QV_BOOL qvUnicodeIsSymbol( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolMath( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolCurrency( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolModifier( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSymbolOther( QV_CHAR ch );
/** @} */

/** @{ */
/** True for a separator, and for a separator of the category in the name. */
QV_API QV_BOOL qvUnicodeIsSeparator( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSeparatorSpace( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSeparatorLine( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsSeparatorParagraph( QV_CHAR ch );
/** @} */

/** @{ */
/** True for all other characters, unassigned ones included, and for those of the category in the name. */
QV_API QV_BOOL qvUnicodeIsOther( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherControl( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherFormat( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherSurrogate( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherPrivateUse( QV_CHAR ch );
QV_API QV_BOOL qvUnicodeIsOtherNotAssigned( QV_CHAR ch );
/** @} */

/* Combining classes ---------------------------------------------------------------------------------------------- */

/** @{ */
/** True if the combining class is the one in the name. FixedPos stands for all classes from FixedPosStart to
    FixedPosEnd. */
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
