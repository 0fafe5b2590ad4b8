#include "bench.h"

#include <random>

#ifdef BENCH_ICU
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#endif
#ifdef BENCH_UTF8PROC
#include <utf8proc.h>
#endif

// Normal forms of whole texts and of short ones: of texts that are in the form already, and of texts that change.

namespace bench
{
namespace
{
using Texts = std::vector< std::u32string >;

struct Form
{
    const char *name;
    void ( *ours )( QV_STRING ** );
    bool composes, isCompatible;
};

const Form NFC  = { "NFC", qvStringNormalizeNFC, true, false };
const Form NFD  = { "NFD", qvStringNormalizeNFD, false, false };
const Form NFKC = { "NFKC", qvStringNormalizeNFKC, true, true };

Texts normalized( const Texts &texts, const Form &form )
{
    Texts result;

    for( const std::u32string &text : texts )
    {
        QV_STRING *qvs = string( text );
        form.ours( &qvs );
        result.emplace_back( qvStringBacking( qvs ), static_cast< size_t >( qvStringLength( qvs ) ) );
        qvStringRelease( qvs );
    }

    return result;
}

#ifdef BENCH_ICU
Peer icuPeer( const Form &form, const Texts &texts )
{
    UErrorCode                        code       = U_ZERO_ERROR;
    const icu::Normalizer2           *normalizer = form.isCompatible ? icu::Normalizer2::getNFKCInstance( code )
                                                   : form.composes   ? icu::Normalizer2::getNFCInstance( code )
                                                                     : icu::Normalizer2::getNFDInstance( code );
    std::vector< icu::UnicodeString > inputs;

    for( const std::u32string &text : texts )
        inputs.push_back( icu::UnicodeString::fromUTF8( toUtf8( text ) ) );

    return {
        "ICU, 16 bits", [normalizer, inputs]
        {
            for( const icu::UnicodeString &input : inputs )
            {
                UErrorCode         status = U_ZERO_ERROR;
                icu::UnicodeString text   = normalizer->normalize( input, status );
                show( std::u16string_view( text.getBuffer(), size_t( text.length() ) ) );
            }
        } };
}
#endif

#ifdef BENCH_QT
Peer qtPeer( const Form &form, const Texts &texts )
{
    const auto             kind = form.isCompatible ? QString::NormalizationForm_KC
                                  : form.composes   ? QString::NormalizationForm_C
                                                    : QString::NormalizationForm_D;
    std::vector< QString > inputs;

    for( const std::u32string &text : texts )
        inputs.push_back( QString::fromStdString( toUtf8( text ) ) );

    return {
        "Qt, 16 bits", [kind, inputs]
        {
            for( const QString &input : inputs )
                show( view( input.normalized( kind ) ) );
        } };
}
#endif

#ifdef BENCH_UTF8PROC
Peer utf8procPeer( const Form &form, const Texts &texts )
{
    std::vector< std::string > inputs;
    const int                  options = UTF8PROC_STABLE | ( form.composes ? UTF8PROC_COMPOSE : UTF8PROC_DECOMPOSE )
                        | ( form.isCompatible ? UTF8PROC_COMPAT : 0 );

    for( const std::u32string &text : texts )
        inputs.push_back( toUtf8( text ) );

    return {
        "utf8proc", [options, inputs]
        {
            for( const std::string &input : inputs )
            {
                std::vector< utf8proc_int32_t > out( input.size() * 3 );
                const auto                      option = static_cast< utf8proc_option_t >( options );
                const auto                      count  = utf8proc_decompose(
                    reinterpret_cast< const utf8proc_uint8_t * >( input.data() ),
                    static_cast< utf8proc_ssize_t >( input.size() ), out.data(),
                    static_cast< utf8proc_ssize_t >( out.size() ), option );
                const auto length = utf8proc_normalize_utf32( out.data(), count, option );
                show( std::u32string_view(
                    reinterpret_cast< const char32_t * >( out.data() ), static_cast< size_t >( length ) ) );
            }
        } };
}
#endif

void addForm( const Form &form, const char *kind, const std::string &input, double target, const Texts &texts )
{
    std::vector< QV_STRING * > ours;

    for( const std::u32string &text : texts )
        ours.push_back( string( text ) );

    Case normalizing{
        "Normal form",
        std::string( form.name ) + kind,
        input,
        target,
        [ours, form]
        {
            for( QV_STRING *text : ours )
            {
                qvStringRetain( text );
                form.ours( &text );
                show( text );
                qvStringRelease( text );
            }
        },
        {},
        lockedAdditions( 2 * texts.size() ) };
#ifdef BENCH_ICU
    normalizing.peers.push_back( icuPeer( form, texts ) );
#endif
#ifdef BENCH_QT
    normalizing.peers.push_back( qtPeer( form, texts ) );
#endif
#ifdef BENCH_UTF8PROC
    normalizing.peers.push_back( utf8procPeer( form, texts ) );
#endif
    add( normalizing );
}

void addForms( const std::string &input, bool isEnglish, const Texts &texts )
{
    const Texts composed = normalized( texts, NFC ), decomposed = normalized( texts, NFD );

    addForm( NFC, " of normal text", input, isEnglish ? 1.5 : 0.5, composed );
    addForm( NFD, " of normal text", input, isEnglish ? 1.5 : 0.5, decomposed );
    addForm( NFKC, " of normal text", input, isEnglish ? 1.5 : 0.5, normalized( texts, NFKC ) );

    if( composed != decomposed )
    {
        addForm( NFC, " of text that changes", input, 0.9, decomposed );
        addForm( NFD, " of text that changes", input, 0.9, composed );
    }
}

std::u32string wordsOf( std::u32string_view alphabet )
{
    std::mt19937   random( 3 );
    std::u32string text;

    while( text.size() < 16 * 1024 )
    {
        for( size_t i = 2 + random() % 6; i > 0; i-- )
            text += alphabet[random() % alphabet.size()];

        text += U' ';
    }

    return text;
}
} // namespace

void addNormalizeCases()
{
    for( const Language &language : languages() )
    {
        addForms( std::string( language.name ) + ", 32 KiB", language.isEnglish(), { language.text } );
        addForms( std::string( language.name ) + ", 24 characters", language.isEnglish(), language.strings );
    }

    addForms( "Greek with tonos, 16 Ki characters", false, { wordsOf( U"αβγδάέόοτν" ) } );
    addForms(
        "Hebrew with points, 16 Ki characters", false,
        { wordsOf( U"\u05D0\u05B0\u05D1\u05B7\u05D2\u05B8\u05D3\u05B4\u05D4" ) } );

    std::u32string marks = U"a";
    std::mt19937   random( 4 );

    while( marks.size() < 4000 )
        marks += static_cast< char32_t >( 0x300 + random() % 0x40 );

    addForm( NFC, " of text that changes", "one letter with 4000 marks", 0.9, { marks } );
    addForm( NFD, " of text that changes", "one letter with 4000 marks", 0.9, { marks } );
}
} // namespace bench
