#include "qv_test_support.h"

#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

namespace
{
QV_INT cells( const char *text, QV_INT flags = 0 )
{
    return qvStringDisplayWidth( Ref< QV_STRING >( qvStringCreateFromCstr( text, -1 ) ), flags );
}

using Change = void ( * )( QV_STRING **qvs, QV_INT width, QV_INT flags );

std::string changed( Change change, const char *text, QV_INT width, QV_INT flags = 0 )
{
    QV_STRING *qvs = qvStringCreateFromCstr( text, -1 );
    change( &qvs, width, flags );
    return take( qvs );
}

std::string wrapped( const char *text, QV_INT width )
{
    Ref< QV_STRING > qvs( qvStringCreateFromCstr( text, -1 ) );
    Ref< QV_VECTOR > lines( qvStringDisplayWrap( qvs, width, 0 ) );
    return take( qvVectorToString( lines ) );
}
} // namespace

TEST( UnicodeWidth, CountsCells )
{
    const struct
    {
        const char *text;
        QV_INT      cells, prefixOfOne; // and the characters that fit into one cell
    } ROWS[] = {
        { "", 0, 0 },
        { "abc", 3, 1 },
        { "e\u0301x", 2, 2 },
        { "\u0301", 0, 1 },                                     // a mark alone
        { "a\t\r\nb\x7f", 2, 4 },                               // controls
        { "\n\u0301a", 1, 3 },                                  // no mark goes onto a control
        { "\u4f60\u597d", 4, 0 },                               // ideographs
        { "\uff21\uff71\u3000", 5, 0 },                         // fullwidth, halfwidth
        { "\u1112\u1161\u11ab", 2, 0 },                         // Hangul as jamos
        { "\ud55c", 2, 0 },                                     // Hangul as a syllable
        { "\u0e01\u0e33", 2, 1 },                               // Thai
        { "\u0915\u093f", 2, 0 },                               // a spacing mark has a cell of its own
        { "\u200b\u2060\ufeffx", 1, 4 },                        // invisible
        { "\u00ad", 1, 1 },                                     // a soft hyphen
        { "\U0001f600", 2, 0 },                                 // an emoji
        { "\u2764", 1, 1 },                                     // a heart as text
        { "\u2764\ufe0f", 2, 0 },                               // and as an emoji
        { "1\ufe0f\u20e3", 2, 0 },                              // a keycap
        { "\U0001f44d\U0001f3fd", 2, 0 },                       // with a skin colour
        { "\u261d\U0001f3fd", 2, 0 },                           // which makes an emoji of a text
        { "a\U0001f3fd", 3, 1 },                                // a skin colour without a hand
        { "1\U0001f3fd", 3, 1 },                                // nor has a digit one
        { "\U0001f468\u200d\U0001f469\u200d\U0001f467", 2, 0 }, // a family
        { "\u2764\u200d\U0001f525", 2, 0 },                     // a heart on fire
        { "\U0001f468\u200d1", 3, 0 },                          // a joiner in vain
        { "\U0001f1e8\U0001f1ed\U0001f1e8", 3, 0 },             // a flag and half of one
        { "\U0001f3f4\U000e0067\U000e007f", 2, 0 },             // a flag with tags
        { "\u0378\uffff", 2, 1 },                               // no characters
        { "\U0003fffd\U0001faff", 4, 0 },                       // nor these, but places for wide ones
    };

    for( const auto &row : ROWS )
    {
        Ref< QV_STRING > qvs( qvStringCreateFromCstr( row.text, -1 ) );
        EXPECT_EQ( row.cells, qvStringDisplayWidth( qvs, 0 ) ) << row.text;
        EXPECT_EQ( row.prefixOfOne, qvStringDisplayPrefix( qvs, 1, 0 ) ) << row.text;
        EXPECT_EQ( qvStringLength( qvs ), qvStringDisplayPrefix( qvs, row.cells, 0 ) ) << row.text;
    }

    EXPECT_EQ( 3, cells( "\u03b1\u2026\u00e9" ) );
    EXPECT_EQ( 6, cells( "\u03b1\u2026\u00e9", QV_DISPLAY_FLAG_AMBIGUOUS_WIDE ) );

    // One character and the text of it agree.
    for( QV_CHAR ch = 0; ch < 0x110000; ch++ )
    {
        Ref< QV_STRING > qvs( qvStringCreateFromCharsCopy( &ch, 1 ) );
        ASSERT_EQ( qvUnicodeDisplayWidth( ch, 0 ), qvStringDisplayWidth( qvs, 0 ) ) << uint32_t( ch );
    }

    EXPECT_BROKEN( qvUnicodeDisplayWidth( 0x110000, 0 ), "QV_CHAR_OK( ch )" );
    EXPECT_BROKEN( qvStringDisplayPrefix( text( "a" ), -1, 0 ), "width >= 0" );
}

TEST( UnicodeWidth, CutsFillsAndWraps )
{
    const QV_INT ELLIPSIS = QV_DISPLAY_FLAG_ELLIPSIS, RIGHT = QV_DISPLAY_FLAG_RIGHT, CENTER = QV_DISPLAY_FLAG_CENTER;

    EXPECT_EQ( "\u4f60", changed( qvStringDisplayTruncate, "\u4f60\u597d", 3 ) );
    EXPECT_EQ( "\u4f60\u597d", changed( qvStringDisplayTruncate, "\u4f60\u597d", 4, ELLIPSIS ) );
    EXPECT_EQ( "\u4f60\u2026", changed( qvStringDisplayTruncate, "\u4f60\u597d", 3, ELLIPSIS ) );
    EXPECT_EQ( "", changed( qvStringDisplayTruncate, "ab", 0, ELLIPSIS ) );
    EXPECT_EQ( "a", changed( qvStringDisplayTruncate, "ab", 1, ELLIPSIS | QV_DISPLAY_FLAG_AMBIGUOUS_WIDE ) );
    EXPECT_EQ( "e\u0301\u2026", changed( qvStringDisplayTruncate, "e\u0301xyz", 2, ELLIPSIS ) );

    EXPECT_EQ( "\u4f60  ", changed( qvStringDisplayPad, "\u4f60", 4 ) );
    EXPECT_EQ( "  \u4f60", changed( qvStringDisplayPad, "\u4f60", 4, RIGHT ) );
    EXPECT_EQ( " \u4f60  ", changed( qvStringDisplayPad, "\u4f60", 5, CENTER ) );
    EXPECT_EQ( "abc", changed( qvStringDisplayPad, "abc", 2 ) );
    EXPECT_EQ( "\u4f60 ", changed( qvStringDisplayFit, "\u4f60\u597d", 3 ) ); // no half of a character

    EXPECT_EQ( "<one two, three>", wrapped( "one two  three ", 8 ) );
    EXPECT_EQ( "<\u4f60\u597d, \u597d>", wrapped( "\u4f60\u597d \u597d", 6 ) );
    EXPECT_EQ( "<  a, b, , c>", wrapped( "  a b\r\n\nc\n", 3 ) );
    EXPECT_EQ( "<unbreakable, a\u00a0b>", wrapped( "unbreakable a\u00a0b", 2 ) );
    EXPECT_EQ( "<>", wrapped( "", 0 ) );
}
