#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <algorithm>
#include <random>
#include <vector>

using namespace qv::test;
using qv::Ref;

namespace
{
const QV_INT FORMS[] = { QV_UNICODE_NORMAL_FORM_NFC, QV_UNICODE_NORMAL_FORM_NFKC, QV_UNICODE_NORMAL_FORM_NFD,
                         QV_UNICODE_NORMAL_FORM_NFKD };

const size_t LIMIT = 4096;

bool composes( QV_INT form )
{
    return form == QV_UNICODE_NORMAL_FORM_NFC || form == QV_UNICODE_NORMAL_FORM_NFKC;
}

// One step of composition, tables and Hangul, or 0.
QV_CHAR composite( QV_CHAR a, QV_CHAR b )
{
    QV_CHAR result = 0;

    if( a >= 0x1100 && a <= 0x1112 && b >= 0x1161 && b <= 0x1175 )
        return 0xAC00 + ( ( a - 0x1100 ) * 21 + b - 0x1161 ) * 28;

    if( a >= 0xAC00 && a <= 0xD7A3 && ( a - 0xAC00 ) % 28 == 0 && b >= 0x11A8 && b <= 0x11C2 )
        return a + b - 0x11A7;

    qv___UnicodeCompDbLookup( a, b, &result );
    return result;
}

void decompose( std::u32string *to, QV_CHAR ch, QV_INT form )
{
    QV_INT         length, type;
    const QV_CHAR *mapping = qv___UnicodeCdmDbLookup( ch, &length, &type );
    bool           all     = form == QV_UNICODE_NORMAL_FORM_NFKC || form == QV_UNICODE_NORMAL_FORM_NFKD;

    if( ch >= 0xAC00 && ch <= 0xD7A3 )
    {
        *to += 0x1100 + ( ch - 0xAC00 ) / 588;
        *to += 0x1161 + ( ch - 0xAC00 ) % 588 / 28;

        if( ( ch - 0xAC00 ) % 28 )
            *to += 0x11A7 + ( ch - 0xAC00 ) % 28;
    }
    else if( mapping && ( all || type == QV_UNICODE_CDMT_CANONICAL ) )
    {
        for( QV_INT i = 0; i < length; i++ )
            decompose( to, mapping[i], form );
    }
    else
    {
        *to += ch;
    }
}

void order( std::u32string *text )
{
    for( auto at = text->begin(); at != text->end(); )
    {
        auto end = std::find_if( at, text->end(), []( QV_CHAR ch ) { return qvUnicodeCccv( ch ) == 0; } );
        std::stable_sort( at, end, []( QV_CHAR a, QV_CHAR b ) { return qvUnicodeCccv( a ) < qvUnicodeCccv( b ); } );
        at = end == text->end() ? end : end + 1;
    }
}

// A whole text by the definitions, for texts without surrogates that stay below the limits: a character is blocked
// from the last starter if there is one of class 0 or of at least its own class between.
std::u32string normalized( const std::u32string &text, QV_INT form )
{
    std::u32string all, result;

    for( QV_CHAR ch : text )
        decompose( &all, ch, form );

    order( &all );

    if( !composes( form ) )
        return all;

    size_t starter = std::u32string::npos;

    for( QV_CHAR ch : all )
    {
        bool blocked = starter == std::u32string::npos;

        for( size_t i = starter + 1; !blocked && i < result.size(); i++ )
            blocked = qvUnicodeCccv( result[i] ) == 0 || qvUnicodeCccv( result[i] ) >= qvUnicodeCccv( ch );

        QV_CHAR joined = blocked ? 0 : composite( result[starter], ch );

        if( joined )
        {
            result[starter] = joined;
            continue;
        }

        if( qvUnicodeCccv( ch ) == 0 )
            starter = result.size();

        result += ch;
    }

    return result;
}

// The stream, one character after the other and each stage in a text of its own.
struct Model
{
    explicit Model( QV_INT normalForm ) : form( normalForm )
    {
    }

    QV_INT         form;
    QV_CHAR        high = 0;
    std::u32string decomposed, reordered, composed;
    size_t         readable = 0;
    bool           open     = false; // composed[readable] can take up more
    QV_INT         last     = 0;

    void write( QV_CHAR ch )
    {
        QV_CHAR pendingHigh = high;
        high                = 0;

        if( ch >= 0xD800 && ch <= 0xDBFF )
        {
            high = ch;
            return;
        }

        if( ch >= 0xDC00 && ch <= 0xDFFF )
        {
            if( !pendingHigh )
                return;

            ch = 0x10000 + ( pendingHigh - 0xD800 ) * 0x400 + ( ch - 0xDC00 );
        }

        if( ch >= 0x110000 )
            return;

        size_t before = decomposed.size();
        decompose( &decomposed, ch, form );

        // The last starter beyond the first place can only be a new one.
        size_t starter = decomposed.size();
        while( starter > before && qvUnicodeCccv( decomposed[starter - 1] ) != 0 )
            starter--;

        if( starter > before && starter > 1 )
            move( starter - 1 );
        else if( decomposed.size() >= LIMIT )
            move( decomposed.size() );
    }

    void flush()
    {
        high = 0;
        move( decomposed.size() );
        readable = composed.size();
        open     = false;
    }

    void move( size_t count )
    {
        std::u32string part = decomposed.substr( 0, count );
        order( &part );
        decomposed.erase( 0, count );

        if( !composes( form ) )
        {
            reordered += part;
            return;
        }

        for( QV_CHAR ch : part )
        {
            QV_INT  cccv   = qvUnicodeCccv( ch );
            bool    free   = open && ( last < cccv || ( last == 0 && cccv == 0 ) );
            QV_CHAR joined = free ? composite( composed[readable], ch ) : 0;

            if( joined )
            {
                composed[readable] = joined;
                continue;
            }

            if( cccv == 0 )
            {
                readable = composed.size();
                open     = true;
                last     = 0;
            }

            last = std::max( last, cccv );
            composed += ch;
        }

        if( composed.size() - readable >= LIMIT )
        {
            readable = composed.size();
            open     = false;
        }
    }

    std::u32string read( size_t limit )
    {
        std::u32string &from   = composes( form ) ? composed : reordered;
        std::u32string  result = from.substr( 0, std::min( limit, available() ) );

        from.erase( 0, result.size() );
        readable -= composes( form ) ? result.size() : 0;

        return result;
    }

    size_t available() const
    {
        return composes( form ) ? readable : reordered.size();
    }
};

// A normalizer whose results are C++ texts.
struct Normalizer
{
    explicit Normalizer( QV_INT form ) : norm( qvUnicodeNormalizerCreate( form ) )
    {
    }

    Ref< QV_UNICODE_NORMALIZER > norm;

    void write( const std::u32string &text )
    {
        qvUnicodeNormalizerWriteChars( norm, text.data(), static_cast< QV_INT >( text.size() ) );
    }

    size_t readable() const
    {
        return static_cast< size_t >( qvUnicodeNormalizerReadable( norm ) );
    }

    std::u32string read( QV_INT limit = -1 )
    {
        Ref< QV_STRING > result( qvStringCreate() );
        QV_INT           count = qvUnicodeNormalizerRead( norm, result.at(), limit );
        EXPECT_EQ( count, qvStringLength( result ) );

        return chars( result );
    }

    std::u32string finish()
    {
        qvUnicodeNormalizerFlush( norm );
        return read();
    }
};

std::u32string streamed( const std::u32string &text, QV_INT form )
{
    Normalizer normalizer( form );
    normalizer.write( text );
    return normalizer.finish();
}

std::u32string normalizedString( const std::u32string &content, QV_INT form )
{
    static void ( *const functions[] )( QV_STRING ** ) = { qvStringNormalizeNFC, qvStringNormalizeNFKC,
                                                           qvStringNormalizeNFD, qvStringNormalizeNFKD };
    Ref< QV_STRING > qvs = text( content );
    functions[form]( qvs.at() );
    return chars( qvs );
}

// Texts in which something happens: characters that decompose, marks of all classes, Hangul and its letters, characters
// that never compose again, and plain ones between.
class Texts
{
public:
    explicit Texts( uint32_t seed ) : random_( seed )
    {
        for( QV_CHAR ch = 0; ch < 0x30000; ch++ )
        {
            QV_INT type;
            qv___UnicodeCdmDbLookup( ch, nullptr, &type );

            if( qvUnicodeCccv( ch ) )
                marks_ += ch;
            else if( type == QV_UNICODE_CDMT_CANONICAL )
                canonical_ += ch;
            else if( type )
                compatible_ += ch;
        }
    }

    size_t below( size_t limit )
    {
        return std::uniform_int_distribution< size_t >( 0, limit - 1 )( random_ );
    }

    QV_CHAR pick( const std::u32string &from )
    {
        return from[below( from.size() )];
    }

    QV_CHAR mark()
    {
        return below( 3 ) ? pick( U"\u0301\u0308\u0323\u0327\u0345\u0334\u3099\u093C\u0F71\u0F72" ) : pick( marks_ );
    }

    std::u32string next( size_t length )
    {
        std::u32string text;

        while( text.size() < length )
            switch( below( 12 ) )
            {
                case 0: text += pick( canonical_ ); break;
                case 1: text += pick( compatible_ ); break;
                case 2: text += static_cast< QV_CHAR >( 0xAC00 + below( 11172 ) ); break;
                case 3: text += static_cast< QV_CHAR >( 0x1100 + below( 0x100 ) ); break;
                case 4: text += pick( U"\u1100\u1112\u1161\u1175\u11A7\u11A8\u11C2\uAC00\uAC01" ); break;
                case 5: text += pick( U"\u09C7\u09BE\u09D7\u0DD9\u0DCF\u0DCA\u0958\u0915\u2ADC\uFB1F\u212B\u0344" ); break;
                case 6: text.append( below( 40 ), static_cast< QV_CHAR >( U'a' + below( 26 ) ) ); break;
                case 7: text.append( below( 5 ), static_cast< QV_CHAR >( 0x4E00 + below( 0x5000 ) ) ); break;
                case 8: text += pick( U"aeioAEIOnsz\u00E9\u1EC7\u01D5\u03B1\u1F04" ); break;
                default:
                    for( size_t i = below( 5 ); i > 0; i-- )
                        text += mark();
            }

        return text;
    }

private:
    std::mt19937   random_;
    std::u32string marks_, canonical_, compatible_;
};
} // namespace

TEST( UnicodeNormalizer, ChosenTexts )
{
    struct
    {
        std::u32string text, nfc, nfd, nfkc, nfkd;
    } cases[] = {
        { U"", U"", U"", U"", U"" },
        { U"\u00E9", U"\u00E9", U"e\u0301", U"\u00E9", U"e\u0301" },
        { U"e\u0301", U"\u00E9", U"e\u0301", U"\u00E9", U"e\u0301" },
        { U"\uAC01", U"\uAC01", U"\u1100\u1161\u11A8", U"\uAC01", U"\u1100\u1161\u11A8" },
        { U"\uAC00\u11C2", U"\uAC1B", U"\u1100\u1161\u11C2", U"\uAC1B", U"\u1100\u1161\u11C2" },
        { U"\uAC00\u11A7", U"\uAC00\u11A7", U"\u1100\u1161\u11A7", U"\uAC00\u11A7", U"\u1100\u1161\u11A7" },
        { U"\u1100\u0334\u1161", U"\u1100\u0334\u1161", U"\u1100\u0334\u1161", U"\u1100\u0334\u1161",
          U"\u1100\u0334\u1161" },
        { U"a\u0307\u0323", U"\u1EA1\u0307", U"a\u0323\u0307", U"\u1EA1\u0307", U"a\u0323\u0307" },
        { U"e\u0327\u0301", U"\u0229\u0301", U"e\u0327\u0301", U"\u0229\u0301", U"e\u0327\u0301" },
        { U"\uFB01", U"\uFB01", U"\uFB01", U"fi", U"fi" },
        { U"\u1E9B\u0323", U"\u1E9B\u0323", U"\u017F\u0323\u0307", U"\u1E69", U"s\u0323\u0307" },
        { U"\u0958", U"\u0915\u093C", U"\u0915\u093C", U"\u0915\u093C", U"\u0915\u093C" },
        { U"\u212B", U"\u00C5", U"A\u030A", U"\u00C5", U"A\u030A" },
        { U"\u0301\u0308", U"\u0301\u0308", U"\u0301\u0308", U"\u0301\u0308", U"\u0301\u0308" },
        { U"\U0001D160", U"\U0001D158\U0001D165\U0001D16E", U"\U0001D158\U0001D165\U0001D16E",
          U"\U0001D158\U0001D165\U0001D16E", U"\U0001D158\U0001D165\U0001D16E" },
    };

    for( auto &each : cases )
    {
        const std::u32string expected[] = { each.nfc, each.nfkc, each.nfd, each.nfkd };

        for( QV_INT form : FORMS )
        {
            EXPECT_EQ( expected[form], streamed( each.text, form ) );
            EXPECT_EQ( expected[form], normalizedString( each.text, form ) );
        }
    }

    EXPECT_EQ( 18u, streamed( U"\uFDFA", QV_UNICODE_NORMAL_FORM_NFKD ).size() );
}

TEST( UnicodeNormalizer, EveryCharacterByTheDefinitions )
{
    // Alone, and between characters that may take it up or that it may take up.
    for( QV_INT form : FORMS )
        for( QV_CHAR ch = 0; ch < 0x110000; ch++ )
        {
            // Without surrogates, and where long ranges are all alike.
            for( auto [from, to] : { std::pair( 0x3500u, 0x9F00u ), { 0xD800u, 0xF8F0u }, { 0x1F300u, 0x2F7F0u },
                                     { 0x2FA20u, 0xE0000u }, { 0xE0200u, 0x10FFF0u } } )
                if( ch == from )
                    ch = to;

            const std::u32string text = { U'a', U'b', ch, U'\u0316', U'\u0301', U'c', U'\u0334', ch, ch, U'd' };
            ASSERT_EQ( normalized( text, form ), streamed( text, form ) ) << std::hex << (uint32_t)ch << " " << form;
        }
}

TEST( UnicodeNormalizer, RandomTextsByTheDefinitions )
{
    Texts texts( 1 );

    for( int round = 0; round < 3000; round++ )
    {
        std::u32string text = texts.next( texts.below( 60 ) );

        for( QV_INT form : FORMS )
        {
            std::u32string result = streamed( text, form );
            ASSERT_EQ( normalized( text, form ), result );
            ASSERT_EQ( result, normalizedString( text, form ) );
            ASSERT_EQ( result, normalizedString( result, form ) );
        }

        // Equal texts stay equal in every form that keeps apart no less.
        std::u32string nfd = streamed( text, QV_UNICODE_NORMAL_FORM_NFD );
        std::u32string nfc = streamed( text, QV_UNICODE_NORMAL_FORM_NFC );
        ASSERT_EQ( nfc, streamed( nfd, QV_UNICODE_NORMAL_FORM_NFC ) );
        ASSERT_EQ( nfd, streamed( nfc, QV_UNICODE_NORMAL_FORM_NFD ) );
        ASSERT_EQ( streamed( text, QV_UNICODE_NORMAL_FORM_NFKD ), streamed( nfc, QV_UNICODE_NORMAL_FORM_NFKD ) );
    }
}

TEST( UnicodeNormalizer, PiecesGiveTheSameAsSingleCharacters )
{
    Texts texts( 2 );

    for( int round = 0; round < 300; round++ )
        for( QV_INT form : FORMS )
        {
            Model      model( form );
            Normalizer normalizer( form );

            for( int i = 0; i < 20; i++ )
            {
                std::u32string text = texts.next( texts.below( texts.below( 10 ) ? 60 : 3000 ) );

                if( texts.below( 4 ) == 0 )
                    text += texts.pick( U"\xD800\xDBFF\xDC00\xDFFF\x110000\x80000041\xFFFFFFFF" );

                if( texts.below( 30 ) == 0 )
                    for( size_t k = texts.below( 2 ) ? texts.below( 200 ) : 4000 + texts.below( 5000 ); k > 0; k-- )
                        text += texts.mark();

                // One character at a time, the borders move after each as they always do.
                bool single = texts.below( 3 ) == 0;

                if( !single )
                    normalizer.write( text );

                for( QV_CHAR ch : text )
                {
                    model.write( ch );

                    if( single )
                    {
                        qvUnicodeNormalizerWriteChar( normalizer.norm, ch );
                        ASSERT_EQ( model.available(), normalizer.readable() ) << "form " << form;
                    }
                }

                ASSERT_EQ( model.available(), normalizer.readable() ) << "form " << form;

                if( texts.below( 20 ) == 0 )
                {
                    qvUnicodeNormalizerFlush( normalizer.norm );
                    model.flush();
                    ASSERT_EQ( model.available(), normalizer.readable() );
                }

                if( texts.below( 3 ) == 0 )
                {
                    size_t limit = texts.below( 100 );
                    ASSERT_EQ( model.read( limit ), normalizer.read( static_cast< QV_INT >( limit ) ) );
                }
            }

            model.flush();
            ASSERT_EQ( model.read( SIZE_MAX ), normalizer.finish() );
        }
}

TEST( UnicodeNormalizer, WhatCanStillChangeIsNotReadable )
{
    Normalizer nfc( QV_UNICODE_NORMAL_FORM_NFC );
    nfc.write( U"e\u0301x" );
    EXPECT_EQ( 0u, nfc.readable() );
    nfc.write( U"y" );
    EXPECT_EQ( U"\u00E9", nfc.read() );
    EXPECT_EQ( U"xy", nfc.finish() );

    // A flush cuts: the mark behind it finds nobody.
    nfc.write( U"e" );
    qvUnicodeNormalizerFlush( nfc.norm );
    nfc.write( U"\u0301\u0302" );
    EXPECT_EQ( U"e", nfc.read() );
    EXPECT_EQ( U"\u0301\u0302", nfc.finish() );

    Normalizer nfd( QV_UNICODE_NORMAL_FORM_NFD );
    nfd.write( U"ab\u00E9" );
    EXPECT_EQ( U"ab", nfd.read() );
    EXPECT_EQ( U"e\u0301", nfd.finish() );
}

TEST( UnicodeNormalizer, SurrogatesJoinAcrossWritesOrDisappear )
{
    for( QV_INT form : FORMS )
    {
        Normalizer normalizer( form );
        normalizer.write( U"\xD834" );
        normalizer.write( U"\xDD1E" );
        normalizer.write( U"\xD834" "A" "\xDC00" "\xD800\xD834\xDD1E" "B\x110000" "C\xD800" );
        normalizer.write( U"\x110000" );
        normalizer.write( U"\xDC00" );
        normalizer.write( U"D\xD834" );
        EXPECT_EQ( U"\U0001D11EA\U0001D11E" U"BCD", normalizer.finish() );
        normalizer.write( U"\xDD1E" );
        EXPECT_EQ( U"", normalizer.finish() );
    }

    EXPECT_EQ( U"", normalizedString( std::u32string( 1, 0xD800 ), QV_UNICODE_NORMAL_FORM_NFC ) );
}

TEST( UnicodeNormalizer, EndlessMarksPassInBoundedMemory )
{
    for( QV_INT form : FORMS )
    {
        Normalizer normalizer( form );
        normalizer.write( U"a" );
        QV_INT largest = 0;
        size_t total   = 0;

        for( int i = 0; i < 200000; i++ )
        {
            qvUnicodeNormalizerWriteChar( normalizer.norm, i % 2 ? 0x0301 : 0x0323 );
            ASSERT_LE( normalizer.readable(), 2 * LIMIT );
            total += normalizer.read().size();
            largest = std::max( largest, allocated( normalizer.norm.get() ) );
        }

        EXPECT_LT( largest, 100000 );
        total += normalizer.finish().size();
        EXPECT_EQ( composes( form ) ? 200000u : 200001u, total );
    }
}

TEST( UnicodeNormalizer, AStarterGivenUpAtTheLimitStaysGivenUp )
{
    // The starter with all marks that it can hold is followed by marks that ascend and that it could take up.
    Normalizer normalizer( QV_UNICODE_NORMAL_FORM_NFC );
    normalizer.write( U"a" + std::u32string( 4095, U'\u0334' ) );
    EXPECT_EQ( 4096u, normalizer.readable() );
    normalizer.write( U"\u0323\u0301" );
    EXPECT_EQ( U"a" + std::u32string( 4095, U'\u0334' ) + U"\u0323\u0301", normalizer.finish() );

    // With one mark less it takes up both; that is so in one write and with single ones.
    normalizer.write( U"a" + std::u32string( 4092, U'\u0334' ) + U"\u0301\u0323" );
    EXPECT_EQ( 0u, normalizer.readable() );
    EXPECT_EQ( U"\u1EA1" + std::u32string( 4092, U'\u0334' ) + U"\u0301", normalizer.finish() );
}

TEST( UnicodeNormalizer, ClearForgetsAll )
{
    Normalizer normalizer( QV_UNICODE_NORMAL_FORM_NFC );
    normalizer.write( U"abce\xD834" );
    qvUnicodeNormalizerClear( normalizer.norm );
    EXPECT_EQ( 0u, normalizer.readable() );
    EXPECT_EQ( 0, allocated( normalizer.norm.get() ) );
    normalizer.write( U"\xDD1E\u0301" );
    EXPECT_EQ( U"\u0301", normalizer.finish() );
}

TEST( UnicodeNormalizer, ReadsIntoSharedStringsAndArraysInParts )
{
    Normalizer normalizer( QV_UNICODE_NORMAL_FORM_NFD );
    normalizer.write( U"\u00E9\u00E8xyz" );

    Ref< QV_STRING > dest  = text( U">" );
    Ref< QV_STRING > other = Ref< QV_STRING >::share( dest );
    EXPECT_EQ( 3, qvUnicodeNormalizerRead( normalizer.norm, dest.at(), 3 ) );
    EXPECT_EQ( U">e\u0301e", chars( dest ) );
    EXPECT_EQ( U">", chars( other ) );
    EXPECT_EQ( 0, qvUnicodeNormalizerRead( normalizer.norm, dest.at(), 0 ) );

    QV_CHAR array[8] = {};
    EXPECT_EQ( 0, qvUnicodeNormalizerReadChars( normalizer.norm, nullptr, 0 ) );
    EXPECT_EQ( 3, qvUnicodeNormalizerReadChars( normalizer.norm, array, 8 ) );
    EXPECT_EQ( U"\u0300xy", std::u32string( array ) );
    EXPECT_EQ( U"z", normalizer.finish() );
}

TEST( UnicodeNormalizer, WritesPartsOfStrings )
{
    Normalizer       normalizer( QV_UNICODE_NORMAL_FORM_NFC );
    Ref< QV_STRING > src = text( U"abe\u0301cd" );

    qvUnicodeNormalizerWrite( normalizer.norm, src );
    EXPECT_EQ( U"ab\u00E9cd", normalizer.finish() );
    qvUnicodeNormalizerWriteInner( normalizer.norm, src, 1, 3 );
    EXPECT_EQ( U"b\u00E9", normalizer.finish() );
    qvUnicodeNormalizerWriteOuter( normalizer.norm, src, 0, 2 );
    qvUnicodeNormalizerWriteOuter( normalizer.norm, src, 1, 2 );
    EXPECT_EQ( U"\u00E9cd\u00E1cd", normalizer.finish() );
    qvUnicodeNormalizerWriteLeading( normalizer.norm, src, 3 );
    qvUnicodeNormalizerWriteTrailing( normalizer.norm, src, 3 );
    EXPECT_EQ( U"ab\u00E9cd", normalizer.finish() );
}

TEST( UnicodeNormalizer, ANormalStringStaysTheSameObject )
{
    for( const char32_t *each : { U"", U"plain", U"\u4E00\u0434\u0430\u05D0\u05B0\uAC00", U"\u0334\u0316x" } )
    {
        Ref< QV_STRING > qvs  = text( each );
        QV_STRING       *same = qvs;
        qvStringNormalizeNFC( qvs.at() );
        EXPECT_EQ( same, qvs.get() );
    }
}

TEST( UnicodeNormalizer, AChangedStringHasRoomToGrow )
{
    for( size_t length : { 1, 5, 40, 5000 } )
    {
        Ref< QV_STRING > qvs = text( std::u32string( length, U'\u1EC7' ) );
        qvStringNormalizeNFD( qvs.at() );
        EXPECT_EQ( static_cast< QV_INT >( ( 3 * length + 64 ) * 4 ), allocated( qvs.get() ) );

        // At both ends.
        Ref< QV_STRING > more = text( std::u32string( 32, U'x' ) );
        const QV_CHAR   *at   = qvStringBacking( qvs );
        qvStringAppend( qvs.at(), more );
        EXPECT_EQ( at, qvStringBacking( qvs ) );
        qvStringPrepend( qvs.at(), more );
        EXPECT_EQ( at - 32, qvStringBacking( qvs ) );
        EXPECT_EQ( static_cast< QV_INT >( ( 3 * length + 64 ) * 4 ), allocated( qvs.get() ) );
    }
}

TEST( UnicodeNormalizer, BrokenContracts )
{
    Normalizer       normalizer( QV_UNICODE_NORMAL_FORM_NFC );
    Ref< QV_STRING > src = text( "abc" );
    QV_CHAR          ch  = U'a';

    EXPECT_BROKEN( qvUnicodeNormalizerCreate( 4 ), "QV_UNICODE_NORMAL_FORM_OK( normalForm )" );
    EXPECT_BROKEN( qvUnicodeNormalizerWriteChars( normalizer.norm, &ch, -1 ), "chsLength >= 0" );
    EXPECT_BROKEN( qvUnicodeNormalizerWriteChars( normalizer.norm, nullptr, 1 ), "chs || chsLength == 0" );
    EXPECT_BROKEN( qvUnicodeNormalizerWriteTrailing( normalizer.norm, src, 4 ), "offset >= 0" );
    EXPECT_BROKEN( qvUnicodeNormalizerWriteOuter( normalizer.norm, src, 1, -1 ), "count >= 0" );
    EXPECT_BROKEN(
        qvUnicodeNormalizerWriteInner( normalizer.norm, src, 1, QV_INT_MAX ), "QV_INT_ADD_OK( offset, count )" );
    EXPECT_BROKEN(
        qvUnicodeNormalizerWriteLeading( normalizer.norm, src, 4 ), "offset + count <= qvStringLength( src )" );
    EXPECT_BROKEN( qvUnicodeNormalizerRead( normalizer.norm, src.at(), -2 ), "maxLen == -1 || maxLen >= 0" );
    EXPECT_BROKEN( qvUnicodeNormalizerReadChars( normalizer.norm, &ch, -1 ), "destLen >= 0" );
    EXPECT_BROKEN( qvUnicodeNormalizerReadChars( normalizer.norm, nullptr, 1 ), "dest || destLen == 0" );
}
