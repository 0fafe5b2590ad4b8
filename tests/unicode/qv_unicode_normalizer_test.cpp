#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"

#include <algorithm>

using namespace qv::test;
using qv::Ref;

namespace
{
const QV_INT NFC = QV_UNICODE_NORMAL_FORM_NFC, NFKC = QV_UNICODE_NORMAL_FORM_NFKC, NFD = QV_UNICODE_NORMAL_FORM_NFD,
             NFKD = QV_UNICODE_NORMAL_FORM_NFKD, FORMS[] = { NFC, NFKC, NFD, NFKD };

const size_t LIMIT = 4096;

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
        qvUnicodeNormalizerRead( norm, result.at(), limit );
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
    static void ( *const functions[] )( QV_STRING ** ) = {
        qvStringNormalizeNFC, qvStringNormalizeNFKC, qvStringNormalizeNFD, qvStringNormalizeNFKD };
    Ref< QV_STRING > qvs = text( content );
    functions[form]( qvs.at() );
    return chars( qvs );
}
} // namespace

TEST( UnicodeNormalizer, ChosenTexts )
{
    const struct
    {
        std::u32string text, nfc, nfd, nfkc, nfkd;
    } CASES[] = {
        { U"\u00E9", U"\u00E9", U"e\u0301", U"\u00E9", U"e\u0301" },
        { U"\uAC01", U"\uAC01", U"\u1100\u1161\u11A8", U"\uAC01", U"\u1100\u1161\u11A8" },
        { U"\uAC00\u11A7", U"\uAC00\u11A7", U"\u1100\u1161\u11A7", U"\uAC00\u11A7", U"\u1100\u1161\u11A7" },
        { U"a\u0307\u0323", U"\u1EA1\u0307", U"a\u0323\u0307", U"\u1EA1\u0307", U"a\u0323\u0307" },
        { U"\uFB01", U"\uFB01", U"\uFB01", U"fi", U"fi" },
        { U"\u1E9B\u0323", U"\u1E9B\u0323", U"\u017F\u0323\u0307", U"\u1E69", U"s\u0323\u0307" },
        { U"\u0958", U"\u0915\u093C", U"\u0915\u093C", U"\u0915\u093C", U"\u0915\u093C" },
        { U"\u0301\u0308", U"\u0301\u0308", U"\u0301\u0308", U"\u0301\u0308", U"\u0301\u0308" },
    };

    for( const auto &each : CASES )
        for( QV_INT form : FORMS )
        {
            const std::u32string &expected = form == NFC    ? each.nfc
                                             : form == NFD  ? each.nfd
                                             : form == NFKC ? each.nfkc
                                                            : each.nfkd;
            EXPECT_EQ( expected, streamed( each.text, form ) );
        }
}

// Between others that may take it up or that it may take up, each character keeps the laws that connect the forms.
TEST( UnicodeNormalizer, FormsAgreeOnEveryCharacter )
{
    for( QV_CHAR ch = 0; ch < 0x110000; ch++ )
    {
        // Without surrogates, and where long ranges are all alike.
        for( auto [from, to] :
             { std::pair( 0x3500u, 0x9F00u ),
               { 0xD800u, 0xF8F0u },
               { 0x1F300u, 0x2F7F0u },
               { 0x2FA20u, 0xE0000u },
               { 0xE0200u, 0x10FFF0u } } )
            if( ch == from )
                ch = to;

        const std::u32string text = { U'a', U'b', ch, U'\u0316', U'\u0301', U'c', U'\u0334', ch, ch, U'd' };
        const std::u32string nfd = streamed( text, NFD ), nfc = streamed( text, NFC ), nfkd = streamed( text, NFKD );
        SCOPED_TRACE( static_cast< uint32_t >( ch ) );

        for( QV_INT form : FORMS )
            ASSERT_EQ( streamed( text, form ), normalizedString( text, form ) );

        ASSERT_EQ( nfc, streamed( nfd, NFC ) );
        ASSERT_EQ( nfd, streamed( nfc, NFD ) );
        ASSERT_EQ( nfkd, streamed( nfc, NFKD ) );
        ASSERT_EQ( streamed( text, NFKC ), streamed( nfkd, NFC ) );

        for( QV_CHAR each : nfkd )
            ASSERT_EQ( nullptr, qv___UnicodeCdmDbLookup( each, nullptr, nullptr ) );
    }
}

TEST( UnicodeNormalizer, WhatCanStillChangeIsNotReadable )
{
    Normalizer nfc( NFC );
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

    Normalizer nfd( NFD );
    nfd.write( U"ab\u00E9" );
    EXPECT_EQ( U"ab", nfd.read() );
    EXPECT_EQ( U"e\u0301", nfd.finish() );

    nfc.write( U"abce\xD834" );
    qvUnicodeNormalizerClear( nfc.norm );
    EXPECT_EQ( 0, allocated( nfc.norm.get() ) );
    nfc.write( U"\xDD1E\u0301" );
    EXPECT_EQ( U"\u0301", nfc.finish() );
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
        EXPECT_EQ( form == NFC || form == NFKC ? 200000u : 200001u, total );
    }

    // The starter with all marks that it can hold is given up, and takes up nothing more.
    Normalizer normalizer( NFC );
    normalizer.write( U"a" + std::u32string( 4095, U'\u0334' ) );
    EXPECT_EQ( LIMIT, normalizer.readable() );
    normalizer.write( U"\u0323\u0301" );
    EXPECT_EQ( U"a" + std::u32string( 4095, U'\u0334' ) + U"\u0323\u0301", normalizer.finish() );

    // With one mark less it takes up both; that is so in one write and with single ones.
    normalizer.write( U"a" + std::u32string( 4092, U'\u0334' ) + U"\u0301\u0323" );
    EXPECT_EQ( 0u, normalizer.readable() );
    EXPECT_EQ( U"\u1EA1" + std::u32string( 4092, U'\u0334' ) + U"\u0301", normalizer.finish() );
}

TEST( UnicodeNormalizer, StringsChangeOnlyWhereTheyAreNotNormal )
{
    for( const char32_t *each : { U"", U"plain", U"\u4E00\u0434\u0430\u05D0\u05B0\uAC00", U"\u0334\u0316x" } )
    {
        Ref< QV_STRING > qvs  = text( each );
        QV_STRING       *same = qvs;
        qvStringNormalizeNFC( qvs.at() );
        EXPECT_EQ( same, qvs.get() );
    }

    // One that has changed has room to grow at both ends.
    for( size_t length : { 1, 5, 40, 5000 } )
    {
        Ref< QV_STRING > qvs = text( std::u32string( length, U'\u1EC7' ) ), more = text( std::u32string( 32, U'x' ) );
        qvStringNormalizeNFD( qvs.at() );
        const QV_CHAR *at = qvStringBacking( qvs );
        qvStringAppend( qvs.at(), more );
        qvStringPrepend( qvs.at(), more );
        EXPECT_EQ( at - 32, qvStringBacking( qvs ) );
        EXPECT_EQ( static_cast< QV_INT >( ( 3 * length + 64 ) * 4 ), allocated( qvs.get() ) );
    }
}
