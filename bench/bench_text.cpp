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
struct Texts
{
    std::string                name;
    bool                       areShort;
    std::vector< QV_STRING * > ours;
    std::vector< std::string > utf8;
#ifdef BENCH_ICU
    std::vector< icu::UnicodeString > icu;
#endif
#ifdef BENCH_QT
    std::vector< QString > qt;
#endif
};

Texts *makeTexts( const std::string &name, const std::vector< std::u32string > &texts )
{
    Texts *result    = new Texts;
    result->name     = name;
    result->areShort = texts.size() > 1;

    for( const std::u32string &text : texts )
    {
        result->ours.push_back( string( text ) );
        result->utf8.push_back( toUtf8( text ) );
#ifdef BENCH_ICU
        result->icu.push_back( icu::UnicodeString::fromUTF8( result->utf8.back() ) );
#endif
#ifdef BENCH_QT
        result->qt.push_back( QString::fromStdString( result->utf8.back() ) );
#endif
    }

    return result;
}

// Everybody works on a copy of each text that shares its characters. Qt knows no letters that depend on what surrounds
// them.
template< class IcuMapping, class QtMapping >
void addMapping(
    const Texts *texts, const char *operation, void ( *map )( QV_STRING ** ), [[maybe_unused]] IcuMapping icuMap,
    [[maybe_unused]] QtMapping qtMap )
{
    Case mapping{
        "String",
        operation,
        texts->name,
        texts->areShort ? 0.8 : 0.5,
        [texts, map]
        {
            for( QV_STRING *text : texts->ours )
            {
                qvStringRetain( text );
                map( &text );
                show( text );
                qvStringRelease( text );
            }
        },
        {},
        lockedAdditions( 2 * texts->ours.size() ) };
#ifdef BENCH_ICU
    mapping.peers.push_back(
        { "ICU, 16 bits", [texts, icuMap]
          {
              for( icu::UnicodeString text : texts->icu )
              {
                  icuMap( text );
                  show( std::u16string_view( text.getBuffer(), size_t( text.length() ) ) );
              }
          } } );
#endif
#ifdef BENCH_QT
    mapping.peers.push_back(
        { "Qt, 16 bits",
          [texts, qtMap]
          {
              for( const QString &text : texts->qt )
                  show( view( qtMap( text ) ) );
          },
          true } );
#endif
    add( mapping );
}

void addSplitting( const Texts *texts )
{
    Case splitting{
        "String",
        "split at a character",
        texts->name,
        texts->areShort ? 0.6 : 0.45,
        [texts]
        {
            for( QV_STRING *text : texts->ours )
            {
                QV_VECTOR *parts = qvStringSplitChar( text, U' ', -1 );
                show( uint64_t( qvVectorLength( parts ) ) );

                for( QV_INT i = 0; comparing && i < qvVectorLength( parts ); i++ )
                    show( qvStringFrom( qvVectorObjAt( parts, i ) ) );

                qvVectorRelease( parts );
            }
        },
        {} };
#ifdef BENCH_GLIB
    splitting.peers = {
        { "GLib, 8 bits", [texts]
          {
              for( const std::string &text : texts->utf8 )
              {
                  char **parts = g_strsplit( text.c_str(), " ", -1 );
                  show( uint64_t( g_strv_length( parts ) ) );

                  for( char **part = parts; comparing && *part; part++ )
                      show( std::string_view( *part ) );

                  g_strfreev( parts );
              }
          } } };
#endif
    add( splitting );
}
} // namespace

void addTextCases()
{
    for( const Language &language : languages() )
        for( const Texts *texts :
             { makeTexts( std::string( language.name ) + ", 32 KiB", { language.text } ),
               makeTexts( std::string( language.name ) + ", 24 characters", language.strings ) } )
        {
            addMapping(
                texts, "upper case", qvStringToUpper, []( auto &text ) { text.toUpper( "" ); },
                []( const auto &text ) { return text.toUpper(); } );
            addMapping(
                texts, "lower case", qvStringToLower, []( auto &text ) { text.toLower( "" ); },
                []( const auto &text ) { return text.toLower(); } );
            addMapping(
                texts, "case fold", qvStringToCaseFold, []( auto &text ) { text.foldCase(); },
                []( const auto &text ) { return text.toCaseFolded(); } );
            addSplitting( texts );
        }
}
} // namespace bench
