#include "qv/unicode/qv_unicode_genc.h"

#include "qv/unicode/qv_unicode_names_private.h"
#include "qv/unicode/qv_unicode_properties.h"

namespace
{
struct Row
{
    char abbrev[3];
    char descr[24];
    char symName[26]; // after the prefix
};

// In the order of the values.
const Row ROWS[] = {
    { "Cn", "Other, Not Assigned", "OTHER_NOT_ASSIGNED" },
    { "Lu", "Letter, Uppercase", "LETTER_UPPERCASE" },
    { "Ll", "Letter, Lowercase", "LETTER_LOWERCASE" },
    { "Lt", "Letter, Titlecase", "LETTER_TITLECASE" },
    { "Lm", "Letter, Modifier", "LETTER_MODIFIER" },
    { "Lo", "Letter, Other", "LETTER_OTHER" },
    { "Mn", "Mark, Nonspacing", "MARK_NONSPACING" },
    { "Mc", "Mark, Spacing Combining", "MARK_SPACING_COMBINING" },
    { "Me", "Mark, Enclosing", "MARK_ENCLOSING" },
    { "Nd", "Number, Decimal Digit", "NUMBER_DECIMAL_DIGIT" },
    { "Nl", "Number, Letter", "NUMBER_LETTER" },
    { "No", "Number, Other", "NUMBER_OTHER" },
    { "Pc", "Punctuation, Connector", "PUNCTUATION_CONNECTOR" },
    { "Pd", "Punctuation, Dash", "PUNCTUATION_DASH" },
    { "Ps", "Punctuation, Open", "PUNCTUATION_OPEN" },
    { "Pe", "Punctuation, Close", "PUNCTUATION_CLOSE" },
    { "Pi", "Punctuation, Initial", "PUNCTUATION_INITIAL_QUOTE" },
    { "Pf", "Punctuation, Final", "PUNCTUATION_FINAL_QUOTE" },
    { "Po", "Punctuation, Other", "PUNCTUATION_OTHER" },
    { "Sm", "Symbol, Math", "SYMBOL_MATH" },
    { "Sc", "Symbol, Currency", "SYMBOL_CURRENCY" },
    { "Sk", "Symbol, Modifier", "SYMBOL_MODIFIER" },
    { "So", "Symbol, Other", "SYMBOL_OTHER" },
    { "Zs", "Separator, Space", "SEPARATOR_SPACE" },
    { "Zl", "Separator, Line", "SEPARATOR_LINE" },
    { "Zp", "Separator, Paragraph", "SEPARATOR_PARAGRAPH" },
    { "Cc", "Other, Control", "OTHER_CONTROL" },
    { "Cf", "Other, Format", "OTHER_FORMAT" },
    { "Cs", "Other, Surrogate", "OTHER_SURROGATE" },
    { "Co", "Other, Private Use", "OTHER_PRIVATE_USE" },
};
} // namespace

QV_STRING *qvUnicodeGencAbbreviation( QV_INT genc )
{
    QV_CHECK( QV_UNICODE_GENC_OK( genc ) );
    return qv::unicode::createName( ROWS[genc].abbrev );
}

QV_STRING *qvUnicodeGencDescription( QV_INT genc )
{
    QV_CHECK( QV_UNICODE_GENC_OK( genc ) );
    return qv::unicode::createName( ROWS[genc].descr );
}

QV_STRING *qvUnicodeGencSymName( QV_INT genc )
{
    QV_CHECK( QV_UNICODE_GENC_OK( genc ) );
    return qv::unicode::createSymName( "QV_UNICODE_GENC_", ROWS[genc].symName );
}

QV_INT qvUnicodeGencFromAbbreviation( QV_STRING *abbrev )
{
    QV_CHECK( abbrev );
    return qv::unicode::findName( ROWS, &Row::abbrev, abbrev, false );
}

QV_INT qvUnicodeGencFromAbbreviationCaseFold( QV_STRING *abbrev )
{
    QV_CHECK( abbrev );
    return qv::unicode::findNameCaseFold( ROWS, &Row::abbrev, abbrev );
}
