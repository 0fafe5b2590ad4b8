#include "qv/unicode/qv_unicode_properties.h"

#include "qv/sys/qv_abort.h"
#include "qv/unicode/qv_unicode_tables_private.h"

/* Properties ----------------------------------------------------------------------------------------------------- */

QV_INT qvUnicodeGenc( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::generalCategory( ch );
}

QV_INT qvUnicodeCccv( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::combiningClass( ch );
}

QV_INT qvUnicodeScript( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::scriptOf( ch );
}

QV_INT qvUnicodeDecimalDigitValue( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::decimalDigit( ch );
}

QV_INT qvUnicodeHexadecimalDigitValue( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::hexDigit( ch );
}

QV_INT qvUnicodeBaseNDigitValue( QV_CHAR ch, QV_INT base )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    QV_CHECK_AS( base >= 2 && base <= 36, "base >=2 && base <= 36" );

    if( base <= 10 )
        return qvUnicodeDecimalDigitValue( ch );

    if( base <= 16 )
        return qvUnicodeHexadecimalDigitValue( ch );

    if( ch >= U'0' && ch <= U'9' )
        return ch - U'0';

    QV_CHAR letter = ch | 0x20;
    QV_INT  value  = letter >= U'a' && letter <= U'z' ? (QV_INT)( letter - U'a' ) + 10 : -1;

    return value < base ? value : -1;
}

QV_BOOL qvUnicodeIsWhiteSpace( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::isWhiteSpace( ch ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvUnicodeIsNlf( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::isNlf( ch ) ? QV_TRUE : QV_FALSE;
}

/* Categories ----------------------------------------------------------------------------------------------------- */

namespace
{
QV_BOOL isCategoryWithin( QV_CHAR ch, QV_INT first, QV_INT last )
{
    QV_INT genc = qvUnicodeGenc( ch );
    return genc >= first && genc <= last;
}

QV_BOOL isClassWithin( QV_CHAR ch, QV_INT first, QV_INT last )
{
    QV_INT cccv = qvUnicodeCccv( ch );
    return cccv >= first && cccv <= last;
}
} // namespace

// A function for a group of categories, whose constants follow one another, or for one category.
#define GROUP( name, first, last )                                                                                     \
    QV_BOOL name( QV_CHAR ch )                                                                                         \
    {                                                                                                                  \
        return isCategoryWithin( ch, first, last );                                                                    \
    }
#define CATEGORY( name, genc ) GROUP( name, genc, genc )

GROUP( qvUnicodeIsLetter, QV_UNICODE_GENC_LETTER_UPPERCASE, QV_UNICODE_GENC_LETTER_OTHER )
CATEGORY( qvUnicodeIsLetterUppercase, QV_UNICODE_GENC_LETTER_UPPERCASE )
CATEGORY( qvUnicodeIsLetterLowercase, QV_UNICODE_GENC_LETTER_LOWERCASE )
CATEGORY( qvUnicodeIsLetterTitlecase, QV_UNICODE_GENC_LETTER_TITLECASE )
CATEGORY( qvUnicodeIsLetterModifier, QV_UNICODE_GENC_LETTER_MODIFIER )
CATEGORY( qvUnicodeIsLetterOther, QV_UNICODE_GENC_LETTER_OTHER )

GROUP( qvUnicodeIsMark, QV_UNICODE_GENC_MARK_NONSPACING, QV_UNICODE_GENC_MARK_ENCLOSING )
CATEGORY( qvUnicodeIsMarkNonspacing, QV_UNICODE_GENC_MARK_NONSPACING )
CATEGORY( qvUnicodeIsMarkSpacingCombining, QV_UNICODE_GENC_MARK_SPACING_COMBINING )
CATEGORY( qvUnicodeIsMarkEnclosing, QV_UNICODE_GENC_MARK_ENCLOSING )

GROUP( qvUnicodeIsNumber, QV_UNICODE_GENC_NUMBER_DECIMAL_DIGIT, QV_UNICODE_GENC_NUMBER_OTHER )
CATEGORY( qvUnicodeIsNumberDecimalDigit, QV_UNICODE_GENC_NUMBER_DECIMAL_DIGIT )
CATEGORY( qvUnicodeIsNumberLetter, QV_UNICODE_GENC_NUMBER_LETTER )
CATEGORY( qvUnicodeIsNumberOther, QV_UNICODE_GENC_NUMBER_OTHER )

GROUP( qvUnicodeIsPunctuation, QV_UNICODE_GENC_PUNCTUATION_CONNECTOR, QV_UNICODE_GENC_PUNCTUATION_OTHER )
CATEGORY( qvUnicodeIsPunctuationConnector, QV_UNICODE_GENC_PUNCTUATION_CONNECTOR )
CATEGORY( qvUnicodeIsPunctuationDash, QV_UNICODE_GENC_PUNCTUATION_DASH )
CATEGORY( qvUnicodeIsPunctuationOpen, QV_UNICODE_GENC_PUNCTUATION_OPEN )
CATEGORY( qvUnicodeIsPunctuationClose, QV_UNICODE_GENC_PUNCTUATION_CLOSE )
CATEGORY( qvUnicodeIsPunctuationInitialQuote, QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE )
CATEGORY( qvUnicodeIsPunctuationFinalQuote, QV_UNICODE_GENC_PUNCTUATION_FINAL_QUOTE )
CATEGORY( qvUnicodeIsPunctuationOther, QV_UNICODE_GENC_PUNCTUATION_OTHER )

GROUP( qvUnicodeIsSymbol, QV_UNICODE_GENC_SYMBOL_MATH, QV_UNICODE_GENC_SYMBOL_OTHER )
CATEGORY( qvUnicodeIsSymbolMath, QV_UNICODE_GENC_SYMBOL_MATH )
CATEGORY( qvUnicodeIsSymbolCurrency, QV_UNICODE_GENC_SYMBOL_CURRENCY )
CATEGORY( qvUnicodeIsSymbolModifier, QV_UNICODE_GENC_SYMBOL_MODIFIER )
CATEGORY( qvUnicodeIsSymbolOther, QV_UNICODE_GENC_SYMBOL_OTHER )

GROUP( qvUnicodeIsSeparator, QV_UNICODE_GENC_SEPARATOR_SPACE, QV_UNICODE_GENC_SEPARATOR_PARAGRAPH )
CATEGORY( qvUnicodeIsSeparatorSpace, QV_UNICODE_GENC_SEPARATOR_SPACE )
CATEGORY( qvUnicodeIsSeparatorLine, QV_UNICODE_GENC_SEPARATOR_LINE )
CATEGORY( qvUnicodeIsSeparatorParagraph, QV_UNICODE_GENC_SEPARATOR_PARAGRAPH )

// The only group whose constants do not follow one another: OTHER_NOT_ASSIGNED is the first of all.
QV_BOOL qvUnicodeIsOther( QV_CHAR ch )
{
    QV_INT genc = qvUnicodeGenc( ch );
    return genc == QV_UNICODE_GENC_OTHER_NOT_ASSIGNED || genc >= QV_UNICODE_GENC_OTHER_CONTROL;
}

CATEGORY( qvUnicodeIsOtherControl, QV_UNICODE_GENC_OTHER_CONTROL )
CATEGORY( qvUnicodeIsOtherFormat, QV_UNICODE_GENC_OTHER_FORMAT )
CATEGORY( qvUnicodeIsOtherSurrogate, QV_UNICODE_GENC_OTHER_SURROGATE )
CATEGORY( qvUnicodeIsOtherPrivateUse, QV_UNICODE_GENC_OTHER_PRIVATE_USE )
CATEGORY( qvUnicodeIsOtherNotAssigned, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED )

#undef CATEGORY
#undef GROUP

/* Combining classes ---------------------------------------------------------------------------------------------- */

// A function for a range of combining classes, or for one class.
#define CLASSES( name, first, last )                                                                                   \
    QV_BOOL name( QV_CHAR ch )                                                                                         \
    {                                                                                                                  \
        return isClassWithin( ch, first, last );                                                                       \
    }
#define CLASS( name, cccv ) CLASSES( name, cccv, cccv )

CLASS( qvUnicodeHasCccvSpacing, QV_UNICODE_CCCV_SPACING )
CLASS( qvUnicodeHasCccvOverlays, QV_UNICODE_CCCV_OVERLAYS )
CLASS( qvUnicodeHasCccvNuktas, QV_UNICODE_CCCV_NUKTAS )
CLASS( qvUnicodeHasCccvHiragana, QV_UNICODE_CCCV_HIRAGANA )
CLASS( qvUnicodeHasCccvViramas, QV_UNICODE_CCCV_VIRAMAS )
CLASS( qvUnicodeHasCccvFixedPosStart, QV_UNICODE_CCCV_FIXED_POS_START )
CLASS( qvUnicodeHasCccvFixedPosEnd, QV_UNICODE_CCCV_FIXED_POS_END )
CLASSES( qvUnicodeHasCccvFixedPos, QV_UNICODE_CCCV_FIXED_POS_START, QV_UNICODE_CCCV_FIXED_POS_END )
CLASS( qvUnicodeHasCccvBelowLeftAttached, QV_UNICODE_CCCV_BELOW_LEFT_ATTACHED )
CLASS( qvUnicodeHasCccvBelowAttached, QV_UNICODE_CCCV_BELOW_ATTACHED )
CLASS( qvUnicodeHasCccvBelowRightAttached, QV_UNICODE_CCCV_BELOW_RIGHT_ATTACHED )
CLASS( qvUnicodeHasCccvLeftAttached, QV_UNICODE_CCCV_LEFT_ATTACHED )
CLASS( qvUnicodeHasCccvRightAttached, QV_UNICODE_CCCV_RIGHT_ATTACHED )
CLASS( qvUnicodeHasCccvAboveLeftAttached, QV_UNICODE_CCCV_ABOVE_LEFT_ATTACHED )
CLASS( qvUnicodeHasCccvAboveAttached, QV_UNICODE_CCCV_ABOVE_ATTACHED )
CLASS( qvUnicodeHasCccvAboveRightAttached, QV_UNICODE_CCCV_ABOVE_RIGHT_ATTACHED )
CLASS( qvUnicodeHasCccvBelowLeft, QV_UNICODE_CCCV_BELOW_LEFT )
CLASS( qvUnicodeHasCccvBelow, QV_UNICODE_CCCV_BELOW )
CLASS( qvUnicodeHasCccvBelowRight, QV_UNICODE_CCCV_BELOW_RIGHT )
CLASS( qvUnicodeHasCccvLeft, QV_UNICODE_CCCV_LEFT )
CLASS( qvUnicodeHasCccvRight, QV_UNICODE_CCCV_RIGHT )
CLASS( qvUnicodeHasCccvAaboveLeft, QV_UNICODE_CCCV_ABOVE_LEFT )
CLASS( qvUnicodeHasCccvAbove, QV_UNICODE_CCCV_ABOVE )
CLASS( qvUnicodeHasCccvAboveRight, QV_UNICODE_CCCV_ABOVE_RIGHT )
CLASS( qvUnicodeHasCccvDoubleBelow, QV_UNICODE_CCCV_DOUBLE_BELOW )
CLASS( qvUnicodeHasCccvDoubleAbove, QV_UNICODE_CCCV_DOUBLE_ABOVE )
CLASS( qvUnicodeHasCccvBelowIota, QV_UNICODE_CCCV_BELOW_IOTA )

#undef CLASS
#undef CLASSES
