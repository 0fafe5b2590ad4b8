#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"

#include <random>

using namespace qv::test;
using qv::Ref;

namespace
{
const QV_INT NFC = QV_UNICODE_NORMAL_FORM_NFC, NFKC = QV_UNICODE_NORMAL_FORM_NFKC, NFD = QV_UNICODE_NORMAL_FORM_NFD,
             NFKD = QV_UNICODE_NORMAL_FORM_NFKD, FORMS[] = { NFC, NFKC, NFD, NFKD };

const QV_INT LIMIT = 4096;

// A normalizer whose results are C++ texts.
struct Normalizer
{
    explicit Normalizer( QV_INT form ) : norm( qvUnicodeNormalizerCreate( form ) )
    {
    }

    Ref< QV_UNICODE_NORMALIZER > norm;

    void write( const std::u32string &text ) const
    {
        qvUnicodeNormalizerWriteChars( norm, text.data(), static_cast< QV_INT >( text.size() ) );
    }

    std::u32string read() const
    {
        Ref< QV_STRING > result( qvStringCreate() );
        qvUnicodeNormalizerRead( norm, result.at(), -1 );
        return chars( result );
    }

    std::u32string finish() const
    {
        qvUnicodeNormalizerFlush( norm );
        return read();
    }
};

// The normal form of a text by a normalizer, after a check that a String has the same.
std::u32string normalized( const std::u32string &content, QV_INT form )
{
    static void ( *const functions[] )( QV_STRING ** ) = {
        qvStringNormalizeNFC, qvStringNormalizeNFKC, qvStringNormalizeNFD, qvStringNormalizeNFKD };
    Ref< QV_STRING > qvs = text( content );
    Normalizer       normalizer( form );

    functions[form]( qvs.at() );
    normalizer.write( content );
    std::u32string streamed = normalizer.finish();
    EXPECT_EQ( streamed, chars( qvs ) );

    return streamed;
}
} // namespace

TEST( UnicodeNormalizer, ChosenTexts )
{
    const std::u32string CASES[][5] = {
        // and what becomes of it
        { U"\u00E9", U"\u00E9", U"\u00E9", U"e\u0301", U"e\u0301" },
        { U"\uAC01", U"\uAC01", U"\uAC01", U"\u1100\u1161\u11A8", U"\u1100\u1161\u11A8" },
        { U"\uAC00\u11A7", U"\uAC00\u11A7", U"\uAC00\u11A7", U"\u1100\u1161\u11A7", U"\u1100\u1161\u11A7" },
        { U"a\u0307\u0323", U"\u1EA1\u0307", U"\u1EA1\u0307", U"a\u0323\u0307", U"a\u0323\u0307" },
        { U"\uFB01", U"\uFB01", U"fi", U"\uFB01", U"fi" },
        { U"\u1E9B\u0323", U"\u1E9B\u0323", U"\u1E69", U"\u017F\u0323\u0307", U"s\u0323\u0307" },
        { U"\u0958", U"\u0915\u093C", U"\u0915\u093C", U"\u0915\u093C", U"\u0915\u093C" },
    };

    for( const auto &row : CASES )
        for( QV_INT form : FORMS )
            EXPECT_EQ( row[1 + form], normalized( row[0], form ) );
}

// Between others that may take it up or that it may take up, each character keeps the laws that connect the forms.
TEST( UnicodeNormalizer, FormsAgreeOnEveryCharacter )
{
    // Without surrogates, and where long ranges are all alike.
    const std::pair< QV_CHAR, QV_CHAR > RANGES[] = {
        { 0, 0x3500 }, { 0x9F00, 0xD800 }, { 0xF8F0, 0x1F300 }, { 0x2F7F0, 0x2FA20 }, { 0xE0000, 0xE0200 } };

    for( auto [from, to] : RANGES )
        for( QV_CHAR ch = from; ch < to && !HasFailure(); ch++ )
        {
            const std::u32string text = { U'a', U'b', ch, U'\u0316', U'\u0301', U'c', U'\u0334', ch, ch, U'd' };
            const std::u32string nfd = normalized( text, NFD ), nfc = normalized( text, NFC );
            const std::u32string nfkd = normalized( text, NFKD );
            SCOPED_TRACE( static_cast< uint32_t >( ch ) );
            EXPECT_EQ( nfc, normalized( nfd, NFC ) );
            EXPECT_EQ( nfd, normalized( nfc, NFD ) );
            EXPECT_EQ( nfkd, normalized( nfc, NFKD ) );
            EXPECT_EQ( normalized( text, NFKC ), normalized( nfkd, NFC ) );

            for( QV_CHAR each : nfkd )
                EXPECT_FALSE( qv___UnicodeCdmDbLookup( each, nullptr, nullptr ) );
        }
}

TEST( UnicodeNormalizer, WhatCanStillChangeIsNotReadable )
{
    Normalizer nfc( NFC );
    nfc.write( U"e\u0301x" );
    EXPECT_EQ( 0, qvUnicodeNormalizerReadable( nfc.norm ) );
    nfc.write( U"y" );
    EXPECT_EQ( U"\u00E9", nfc.read() );
    EXPECT_EQ( U"xy", nfc.finish() );

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
        size_t total = 0;

        for( int i = 0; i < 200000; i++ )
        {
            qvUnicodeNormalizerWriteChar( normalizer.norm, i % 2 ? 0x0301 : 0x0323 );
            ASSERT_LE( qvUnicodeNormalizerReadable( normalizer.norm ), 2 * LIMIT );
            total += normalizer.read().size();
            ASSERT_LT( allocated( normalizer.norm.get() ), 100000 );
        }

        EXPECT_EQ( form == NFC || form == NFKC ? 200000u : 200001u, total + normalizer.finish().size() );
    }

    // The starter with all marks that it can hold is given up, and takes up nothing more.
    Normalizer normalizer( NFC );
    normalizer.write( U"a" + std::u32string( 4095, U'\u0334' ) );
    EXPECT_EQ( LIMIT, qvUnicodeNormalizerReadable( normalizer.norm ) );
    normalizer.write( U"\u0323\u0301" );
    EXPECT_EQ( U"a" + std::u32string( 4095, U'\u0334' ) + U"\u0323\u0301", normalizer.finish() );

    // With one mark less it takes up one.
    normalizer.write( U"a" + std::u32string( 4092, U'\u0334' ) + U"\u0301\u0323" );
    EXPECT_EQ( 0, qvUnicodeNormalizerReadable( normalizer.norm ) );
    EXPECT_EQ( U"\u1EA1" + std::u32string( 4092, U'\u0334' ) + U"\u0301", normalizer.finish() );
}

TEST( UnicodeNormalizer, StringsChangeOnlyWhereTheyAreNotNormal )
{
    for( const char32_t *each :
         { U"", U"plain", U"\u4E00\u0434\u0430\u05D0\u05B0\uAC00", U"\u0334\u0316x", U"\u0E01\u0E38\u0E48\u06DB" } )
        for( auto normalize : { qvStringNormalizeNFC, qvStringNormalizeNFKC } )
        {
            Ref< QV_STRING > qvs = text( each ), same = Ref< QV_STRING >::share( qvs );
            normalize( qvs.at() );
            EXPECT_EQ( same.get(), qvs.get() );
        }
}

// Long texts are looked at 64 characters at a time for what can change there. Written one by one, none is looked at so.
TEST( UnicodeNormalizer, LongTextsAreTheSameAsTheirCharacters )
{
    const std::u32string FILLERS[] = { U"plain",        U"\u00DF\u00E6",         U"\u0434\u0430", U"\u05D0\u05D1",
                                       U"\u4E00\uAC01", U"\U0001F600\U00010400", U"\U00020000" };
    const std::u32string OTHERS[]  = {
        U"\u0301",
        U"\u0316",
        U"\u0334",
        U"\u0316\u0301",
        U"\u0301\u0316",
        U"\u05B0\u05BC",
        U"\u05BC\u05B0",
        U"e\u0301",
        U"\u00E9",
        U"\u0958",
        U"\uAC00\u11A8",
        U"\u0344",
        U"\uFB01",
        U"\U0001D15E",
        U"\U0002F800",
        U"\u0E38\u0E48",
        U"\u0E48\u0E38",
        U"\u0483\u0316",
        U"\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316\u0316" };
    std::mt19937 random( 7 );

    for( int round = 0; round < 4000 && !HasFailure(); round++ )
    {
        const std::u32string &filler = FILLERS[random() % std::size( FILLERS )];
        std::u32string        whole( 70 + random() % 150, U'x' );

        for( char32_t &each : whole )
            each = random() % 8 ? filler[random() % filler.size()] : FILLERS[random() % std::size( FILLERS )][0];

        for( size_t others = random() % 4; others > 0; others-- )
        {
            const std::u32string &other = OTHERS[random() % std::size( OTHERS )];
            size_t                at    = random() % 2 ? random() % whole.size() : 60 + random() % 6;
            whole.replace( at, std::min( other.size(), whole.size() - at ), other );
        }

        for( QV_INT form : FORMS )
        {
            Normalizer oneByOne( form );

            for( char32_t each : whole )
                qvUnicodeNormalizerWriteChar( oneByOne.norm, each );

            EXPECT_EQ( oneByOne.finish(), normalized( whole, form ) ) << round << ' ' << form;
        }
    }
}

// Texts of up to 64 characters are written on the stack, at once if no mark moves, and those of up to 32 are checked at
// once; the longest decomposition has 18 characters.
TEST( UnicodeNormalizer, ShortTextsAreTheSameAsLongOnes )
{
    for( const std::u32string &each :
         { std::u32string( U"\uFDFA" ), std::u32string( U"e\u0301\u0323" ), std::u32string( U"\U0001D15E\U0001F600" ),
           std::u32string( 1, char32_t( 0xD800 ) ), std::u32string( U"\u0301\uAC01" ),
           std::u32string( U"\u00EA\u0301\u0316\u1EA1\u0302" ), std::u32string( U"\u1100\u1161\u11A8\uAC00\u11A8" ),
           std::u32string( U"\u0E01\u0E38\u0E48\u05D0\u05B0\u05BC" ), std::u32string( U"x\u1EBF\u0958\u0E01" ),
           std::u32string( U"\uFA6C\u0439" ), std::u32string( U"\u00E9\U0001F600" ), std::u32string( U"\u0439\u0E38" ),
           std::u32string( U"x\u0316\u0E38" ), std::u32string( U"\u00E9\u0F73" ) } )
        for( QV_INT form : FORMS )
            for( size_t count : { 1, 10, 16, 17, 31, 32, 33, 64, 65 } )
            {
                std::u32string whole;

                while( whole.size() < count )
                    whole += each;

                Normalizer normalizer( form );
                normalizer.write( whole );

                Ref< QV_STRING > qvs = text( whole );
                ( form == NFC    ? qvStringNormalizeNFC
                  : form == NFKC ? qvStringNormalizeNFKC
                  : form == NFD  ? qvStringNormalizeNFD
                                 : qvStringNormalizeNFKD )( qvs.at() );
                EXPECT_EQ( normalizer.finish(), std::u32string( chars( qvs ) ) ) << form << ' ' << count;

                QV_INT length = qvStringLength( qvs );
                bool   isNew  = std::u32string( chars( qvs ) ) != whole && length > 0;
                EXPECT_TRUE( !isNew || allocated( qvs.get() ) == ( length + 64 ) * QV_INT( sizeof( QV_CHAR ) ) );
            }
}
