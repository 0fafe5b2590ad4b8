#include "bench.h"

#include <random>

#ifdef BENCH_ICU
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#endif
#ifdef BENCH_UTF8PROC
#include <utf8proc.h>
#endif

// Normal forms of whole texts: of texts that are in the form already, and of texts that change.

namespace bench
{
namespace
{
using OurForm = void ( * )( QV_STRING ** );

std::u32string normalized( const std::u32string &text, OurForm form )
{
    QV_STRING *qvs = string( text );
    form( &qvs );
    std::u32string result( qvStringBacking( qvs ), static_cast< size_t >( qvStringLength( qvs ) ) );
    qvStringRelease( qvs );

    return result;
}

// All characters here have one unit in UTF-16, so that the lengths of the results agree.
void addForm(
    const std::string &operation, const std::string &name, double target, const std::u32string &text, bool composes )
{
    OurForm    form  = composes ? qvStringNormalizeNFC : qvStringNormalizeNFD;
    QV_STRING *input = string( text );

    std::vector< Peer > peers;
#ifdef BENCH_ICU
    peers.push_back(
        { "ICU", [composes, own = icu::UnicodeString::fromUTF8( toUtf8( text ) )]
          {
              UErrorCode              code = U_ZERO_ERROR;
              const icu::Normalizer2 *form =
                  composes ? icu::Normalizer2::getNFCInstance( code ) : icu::Normalizer2::getNFDInstance( code );
              return static_cast< uint64_t >( form->normalize( own, code ).length() );
          } } );
#endif
#ifdef BENCH_UTF8PROC
    peers.push_back(
        { "utf8proc", [composes, own = toUtf8( text )]
          {
              auto options = composes ? UTF8PROC_COMPOSE : UTF8PROC_DECOMPOSE;
              auto bytes   = reinterpret_cast< const utf8proc_uint8_t * >( own.data() );
              auto length  = static_cast< utf8proc_ssize_t >( own.size() );

              std::vector< utf8proc_int32_t > out( own.size() * 3 );
              auto                            option = static_cast< utf8proc_option_t >( UTF8PROC_STABLE | options );
              auto                            count  = utf8proc_decompose(
                  bytes, length, out.data(), static_cast< utf8proc_ssize_t >( out.size() ), option );

              return static_cast< uint64_t >( utf8proc_normalize_utf32( out.data(), count, option ) );
          } } );
#endif
    add(
        "Normal form", operation, name, target,
        [form, input]
        {
            QV_STRING *own = input;
            qvStringRetain( own );
            form( &own );
            uint64_t length = static_cast< uint64_t >( qvStringLength( own ) );
            qvStringRelease( own );

            return length;
        },
        peers );
}

std::vector< std::pair< std::string, std::u32string > > texts()
{
    std::vector< std::pair< std::string, std::u32string > > result;
    std::mt19937                                            random( 3 );

    for( const Language &language : languages() )
        result.emplace_back( std::string( language.name ) + ", 32 KiB", language.text );

    for( auto &[name, letters] :
         { std::pair( "Greek with tonos", U"\u03B1\u03B2\u03B3\u03B4\u03AC\u03AD\u03CC\u03BF\u03C4\u03BD" ),
           std::pair( "Hebrew with points", U"\u05D0\u05B0\u05D1\u05B7\u05D2\u05B8\u05D3\u05B4\u05D4" ) } )
    {
        std::u32string text, alphabet = letters;

        while( text.size() < 16 * 1024 )
        {
            for( size_t i = 2 + random() % 6; i > 0; i-- )
                text += alphabet[random() % alphabet.size()];

            text += U' ';
        }

        result.emplace_back( std::string( name ) + ", 16 Ki characters", text );
    }

    return result;
}
} // namespace

void addNormalizeCases()
{
    for( auto &[name, text] : texts() )
    {
        std::u32string composed   = normalized( text, qvStringNormalizeNFC );
        std::u32string decomposed = normalized( text, qvStringNormalizeNFD );

        addForm( "NFC of normal text", name, 0.9, composed, true );
        addForm( "NFD of normal text", name, 0.9, decomposed, false );

        if( composed != decomposed )
        {
            addForm( "NFC of text that changes", name, 1.0, decomposed, true );
            addForm( "NFD of text that changes", name, 1.0, composed, false );
        }
    }

    std::u32string marks = U"a";
    std::mt19937   random( 4 );

    while( marks.size() < 4000 )
        marks += static_cast< char32_t >( 0x300 + random() % 0x40 );

    addForm( "NFC of text that changes", "one letter with 4000 marks", 1.0, marks, true );
    addForm( "NFD of text that changes", "one letter with 4000 marks", 1.0, marks, false );
}
} // namespace bench
