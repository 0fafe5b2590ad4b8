#include "morvane_tool.h"

#include "qv/charset/qv_charset.h"
#include "qv/io/qv_print.h"
#include "qv/qv_tool_private.h"
#include "qv/unicode/qv_unicode_cccv.h"
#include "qv/unicode/qv_unicode_cdmt.h"
#include "qv/unicode/qv_unicode_genc.h"
#include "qv/unicode/qv_unicode_properties.h"
#include "qv/unicode/qv_unicode_script.h"

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane unicode";

// The value of a word of the form `U+00E9`, however large; -1 for any other word.
QV_INT codePointOf( QV_STRING *word )
{
    QV_INT length = qvStringLength( word );
    QV_INT value  = 0;

    if( length < 3 || qvStringCharAt( word, 0 ) != U'U' || qvStringCharAt( word, 1 ) != U'+' )
        return -1;

    for( QV_INT i = 2; i < length; i++ )
    {
        QV_INT digit = qvUnicodeHexadecimalDigitValue( qvStringCharAt( word, i ) );

        if( digit < 0 )
            return -1;

        // A value that is too large stays too large.
        if( value < 0x110000 )
            value = value * 16 + digit;
    }

    return value;
}

void appendCodePoints( QV_STRING **line, const QV_CHAR *chars, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
        qvStringAppendFormatCstr( line, i == 0 ? "U+%^04X" : " U+%^04X", -1, static_cast< QV_INT >( chars[i] ) );
}

void appendMapping( QV_STRING **line, const char *name, const QV_CHAR *chars, QV_INT count )
{
    if( count == 0 )
        return;

    qvStringAppendFormatCstr( line, "; %lc ", -1, name );
    appendCodePoints( line, chars, count );
}

// The character itself, for terminals: no controls and no surrogates; a mark is put on a blank.
void appendGlyph( QV_STRING **line, QV_CHAR ch )
{
    if( qvUnicodeIsOther( ch ) || qvUnicodeIsSeparatorLine( ch ) || qvUnicodeIsSeparatorParagraph( ch ) )
        return;

    qvStringAppendCstr( line, qvUnicodeIsMark( ch ) ? "  " : " ", -1 );
    qvStringAppendChar( line, ch );
}

void showCharacter( QV_CHAR ch )
{
    Ref< QV_STRING > line( qvStringCreate() );
    QV_INT           genc = qvUnicodeGenc( ch );
    QV_INT           cccv = qvUnicodeCccv( ch );
    QV_INT           length, type;

    appendCodePoints( line.at(), &ch, 1 );
    appendGlyph( line.at(), ch );
    qvStringAppendFormatCstr(
        line.at(), "; %~s (%~s); class %i", -1, qvUnicodeGencAbbreviation( genc ), qvUnicodeGencDescription( genc ),
        cccv );

    // The description of class 0 is as long as it is empty.
    if( cccv != 0 )
        qvStringAppendFormatCstr( line.at(), " (%~s)", -1, qvUnicodeCccvDescription( cccv ) );

    qvStringAppendFormatCstr( line.at(), "; %~s", -1, qvUnicodeScriptName( qvUnicodeScript( ch ) ) );

    const QV_CHAR *mapping = qv___UnicodeCdmDbLookup( ch, &length, &type );

    if( mapping )
    {
        Ref< QV_STRING > tag( qvUnicodeCdmtTag( type ) );
        qvStringAppendFormatCstr( line.at(), "; decomposition %#s%lc", -1, tag.get(), tag ? " " : "" );
        appendCodePoints( line.at(), mapping, length );
    }
    else
    {
        // Hangul decomposes by rule.
        Ref< QV_STRING > full( qvStringCreateFromCharsCopy( &ch, 1 ) );

        if( !qvUnicodeIsOtherSurrogate( ch ) )
            qvStringNormalizeNFD( full.at() );

        if( qvStringLength( full ) > 1 )
            appendMapping( line.at(), "decomposition", qvStringBacking( full ), qvStringLength( full ) );
    }

    mapping = qv___UnicodeUpperCaseDbLookup( ch, &length );
    appendMapping( line.at(), "upper", mapping, length );
    mapping = qv___UnicodeLowerCaseDbLookup( ch, &length );
    appendMapping( line.at(), "lower", mapping, length );
    mapping = qv___UnicodeCaseFoldDbLookup( ch, &length );
    appendMapping( line.at(), "fold", mapping, length );

    print( line );
}
} // namespace

int showCharacters( const Arguments &arguments )
{
    int status = SUCCESS;

    for( QV_INT i = 0; i < arguments.wordCount(); i++ )
    {
        Ref< QV_STRING > word = arguments.wordAt( i );
        QV_INT           ch   = codePointOf( word );

        if( ch >= 0x110000 )
        {
            complain( COMMAND, word, "there is no such code point" );
            status = FAILURE;
        }
        else if( ch >= 0 )
        {
            showCharacter( static_cast< QV_CHAR >( ch ) );
        }
        else
        {
            for( QV_INT k = 0; k < qvStringLength( word ); k++ )
                showCharacter( qvStringCharAt( word, k ) );
        }
    }

    return status;
}

int listCharsets( const Arguments &arguments )
{
    Ref< QV_STRING > what = arguments.wordAt( 0 );

    if( !qvStringEqualsCstr( what, "charsets", -1 ) )
    {
        complain( COMMAND, what, "no such list" );
        return MISUSE;
    }

    for( QV_INT charset = 0; QV_CHARSET_OK( charset ); charset++ )
    {
        QV_INT codePage = qvCharsetToWindowsCodePage( charset );

        if( codePage < 0 )
            qvPrintFormatCstr( "%~s", -1, qvCharsetToIanaName( charset ) );
        else
            qvPrintFormatCstr( "%~-16s %i", -1, qvCharsetToIanaName( charset ), codePage );
    }

    return SUCCESS;
}
} // namespace morvane
