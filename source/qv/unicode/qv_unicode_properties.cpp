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

#define CATEGORY( Name, NAME )                                                                                         \
    QV_BOOL qvUnicodeIs##Name( QV_CHAR ch )                                                                            \
    {                                                                                                                  \
        return qvUnicodeGenc( ch ) == QV_UNICODE_GENC_##NAME;                                                          \
    }

#define CATEGORY_GROUP( Name, FIRST, LAST )                                                                            \
    QV_BOOL qvUnicodeIs##Name( QV_CHAR ch )                                                                            \
    {                                                                                                                  \
        QV_INT genc = qvUnicodeGenc( ch );                                                                             \
        return genc >= QV_UNICODE_GENC_##FIRST && genc <= QV_UNICODE_GENC_##LAST;                                      \
    }

CATEGORY_GROUP( Letter, LETTER_UPPERCASE, LETTER_OTHER )
CATEGORY( LetterUppercase, LETTER_UPPERCASE )
CATEGORY( LetterLowercase, LETTER_LOWERCASE )
CATEGORY( LetterTitlecase, LETTER_TITLECASE )
CATEGORY( LetterModifier, LETTER_MODIFIER )
CATEGORY( LetterOther, LETTER_OTHER )

CATEGORY_GROUP( Mark, MARK_NONSPACING, MARK_ENCLOSING )
CATEGORY( MarkNonspacing, MARK_NONSPACING )
CATEGORY( MarkSpacingCombining, MARK_SPACING_COMBINING )
CATEGORY( MarkEnclosing, MARK_ENCLOSING )

CATEGORY_GROUP( Number, NUMBER_DECIMAL_DIGIT, NUMBER_OTHER )
CATEGORY( NumberDecimalDigit, NUMBER_DECIMAL_DIGIT )
CATEGORY( NumberLetter, NUMBER_LETTER )
CATEGORY( NumberOther, NUMBER_OTHER )

CATEGORY_GROUP( Punctuation, PUNCTUATION_CONNECTOR, PUNCTUATION_OTHER )
CATEGORY( PunctuationConnector, PUNCTUATION_CONNECTOR )
CATEGORY( PunctuationDash, PUNCTUATION_DASH )
CATEGORY( PunctuationOpen, PUNCTUATION_OPEN )
CATEGORY( PunctuationClose, PUNCTUATION_CLOSE )
CATEGORY( PunctuationInitialQuote, PUNCTUATION_INITIAL_QUOTE )
CATEGORY( PunctuationFinalQuote, PUNCTUATION_FINAL_QUOTE )
CATEGORY( PunctuationOther, PUNCTUATION_OTHER )

CATEGORY_GROUP( Symbol, SYMBOL_MATH, SYMBOL_OTHER )
CATEGORY( SymbolMath, SYMBOL_MATH )
CATEGORY( SymbolCurrency, SYMBOL_CURRENCY )
CATEGORY( SymbolModifier, SYMBOL_MODIFIER )
CATEGORY( SymbolOther, SYMBOL_OTHER )

CATEGORY_GROUP( Separator, SEPARATOR_SPACE, SEPARATOR_PARAGRAPH )
CATEGORY( SeparatorSpace, SEPARATOR_SPACE )
CATEGORY( SeparatorLine, SEPARATOR_LINE )
CATEGORY( SeparatorParagraph, SEPARATOR_PARAGRAPH )

// The only group that is no range: what is not assigned stands in front of all others.
QV_BOOL qvUnicodeIsOther( QV_CHAR ch )
{
    QV_INT genc = qvUnicodeGenc( ch );
    return genc == QV_UNICODE_GENC_OTHER_NOT_ASSIGNED || genc >= QV_UNICODE_GENC_OTHER_CONTROL;
}

CATEGORY( OtherControl, OTHER_CONTROL )
CATEGORY( OtherFormat, OTHER_FORMAT )
CATEGORY( OtherSurrogate, OTHER_SURROGATE )
CATEGORY( OtherPrivateUse, OTHER_PRIVATE_USE )
CATEGORY( OtherNotAssigned, OTHER_NOT_ASSIGNED )

/* Combining classes ---------------------------------------------------------------------------------------------- */

#define COMBINING_CLASS( Name, NAME )                                                                                  \
    QV_BOOL qvUnicodeHasCccv##Name( QV_CHAR ch )                                                                       \
    {                                                                                                                  \
        return qvUnicodeCccv( ch ) == QV_UNICODE_CCCV_##NAME;                                                          \
    }

COMBINING_CLASS( Spacing, SPACING )
COMBINING_CLASS( Overlays, OVERLAYS )
COMBINING_CLASS( Nuktas, NUKTAS )
COMBINING_CLASS( Hiragana, HIRAGANA )
COMBINING_CLASS( Viramas, VIRAMAS )
COMBINING_CLASS( FixedPosStart, FIXED_POS_START )
COMBINING_CLASS( FixedPosEnd, FIXED_POS_END )
COMBINING_CLASS( BelowLeftAttached, BELOW_LEFT_ATTACHED )
COMBINING_CLASS( BelowAttached, BELOW_ATTACHED )
COMBINING_CLASS( BelowRightAttached, BELOW_RIGHT_ATTACHED )
COMBINING_CLASS( LeftAttached, LEFT_ATTACHED )
COMBINING_CLASS( RightAttached, RIGHT_ATTACHED )
COMBINING_CLASS( AboveLeftAttached, ABOVE_LEFT_ATTACHED )
COMBINING_CLASS( AboveAttached, ABOVE_ATTACHED )
COMBINING_CLASS( AboveRightAttached, ABOVE_RIGHT_ATTACHED )
COMBINING_CLASS( BelowLeft, BELOW_LEFT )
COMBINING_CLASS( Below, BELOW )
COMBINING_CLASS( BelowRight, BELOW_RIGHT )
COMBINING_CLASS( Left, LEFT )
COMBINING_CLASS( Right, RIGHT )
COMBINING_CLASS( AaboveLeft, ABOVE_LEFT )
COMBINING_CLASS( Above, ABOVE )
COMBINING_CLASS( AboveRight, ABOVE_RIGHT )
COMBINING_CLASS( DoubleBelow, DOUBLE_BELOW )
COMBINING_CLASS( DoubleAbove, DOUBLE_ABOVE )
COMBINING_CLASS( BelowIota, BELOW_IOTA )

QV_BOOL qvUnicodeHasCccvFixedPos( QV_CHAR ch )
{
    QV_INT cccv = qvUnicodeCccv( ch );
    return cccv >= QV_UNICODE_CCCV_FIXED_POS_START && cccv <= QV_UNICODE_CCCV_FIXED_POS_END;
}
