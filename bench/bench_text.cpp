#include "bench.h"

#ifdef BENCH_ICU
#include <unicode/locid.h>
#include <unicode/unistr.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif

// Whole texts and short strings: cases, splitting.

namespace bench
{
namespace
{
using OurMapping = void ( * )( QV_STRING ** );

// Case mapping may lengthen a text, but not the texts here, so that the lengths of all sides agree.
uint64_t mapOurs( const std::vector< QV_STRING * > &texts, OurMapping map )
{
    uint64_t length = 0;

    for( QV_STRING *text : texts )
    {
        qvStringRetain( text );
        map( &text );
        length += static_cast< uint64_t >( qvStringLength( text ) );
        qvStringRelease( text );
    }

    return length;
}

#ifdef BENCH_ICU
template< class Mapping >
uint64_t mapIcu( const std::vector< icu::UnicodeString > &texts, Mapping mapping )
{
    uint64_t length = 0;

    for( const icu::UnicodeString &text : texts )
    {
        icu::UnicodeString own( text );
        mapping( own );
        length += static_cast< uint64_t >( own.length() );
    }

    return length;
}
#endif

struct Texts
{
    std::string                name;
    std::vector< QV_STRING * > ours;
#ifdef BENCH_ICU
    std::vector< icu::UnicodeString > icu;
#endif
    std::vector< std::string > utf8;
};

// For each language one long text, and the short strings.
const std::vector< Texts > &allTexts()
{
    static const std::vector< Texts > all = []
    {
        std::vector< Texts > result;

        for( const Language &language : languages() )
        {
            Texts whole, pieces;
            whole.name  = std::string( language.name ) + ", 32 KiB";
            pieces.name = std::string( language.name ) + ", 24 characters";

            auto enter = []( Texts &texts, const std::u32string &text )
            {
                texts.ours.push_back( string( text ) );
                texts.utf8.push_back( toUtf8( text ) );
#ifdef BENCH_ICU
                texts.icu.push_back( icu::UnicodeString::fromUTF8( texts.utf8.back() ) );
#endif
            };

            enter( whole, language.text );

            for( const std::u32string &text : language.strings )
                enter( pieces, text );

            result.push_back( std::move( whole ) );
            result.push_back( std::move( pieces ) );
        }

        return result;
    }();

    return all;
}
} // namespace

void addTextCases()
{
    for( const Texts &texts : allTexts() )
    {
        const Texts *input = &texts;

#ifdef BENCH_ICU
#define ICU_PEER( call )                                                                                               \
    {                                                                                                                  \
        {                                                                                                              \
            "ICU", [input] { return mapIcu( input->icu, []( icu::UnicodeString &text ) { text.call; } ); }             \
        }                                                                                                              \
    }
#else
#define ICU_PEER( call )                                                                                               \
    {                                                                                                                  \
    }
#endif
        add(
            "String", "upper case", texts.name, 0.8, [input] { return mapOurs( input->ours, qvStringToUpper ); },
            ICU_PEER( toUpper( icu::Locale::getRoot() ) ) );
        add(
            "String", "lower case", texts.name, 0.8, [input] { return mapOurs( input->ours, qvStringToLower ); },
            ICU_PEER( toLower( icu::Locale::getRoot() ) ) );
        add(
            "String", "case fold", texts.name, 0.8, [input] { return mapOurs( input->ours, qvStringToCaseFold ); },
            ICU_PEER( foldCase() ) );

        add( "String", "split at a character", texts.name, 0.7,
             [input]
             {
                 uint64_t parts = 0;

                 for( QV_STRING *text : input->ours )
                 {
                     QV_VECTOR *vec = qvStringSplitChar( text, U' ', -1 );
                     parts += static_cast< uint64_t >( qvVectorLength( vec ) );
                     qvVectorRelease( vec );
                 }

                 return parts;
             },
             {
#ifdef BENCH_GLIB
                 { "GLib",
                   [input]
                   {
                       uint64_t parts = 0;

                       for( const std::string &text : input->utf8 )
                       {
                           char **split = g_strsplit( text.c_str(), " ", -1 );
                           parts += g_strv_length( split );
                           g_strfreev( split );
                       }

                       return parts;
                   } },
#endif
             } );
    }
}
} // namespace bench
