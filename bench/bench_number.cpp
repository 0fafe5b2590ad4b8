#include "bench.h"

#include <charconv>
#include <cmath>
#include <random>

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_FMT
#include <fmt/format.h>
#endif

// Numbers to text and back, and formats.

namespace bench
{
namespace
{
const int COUNT = 1000;

struct Numbers
{
    std::vector< int64_t >     integers;
    std::vector< double >      reals;
    std::vector< std::string > integerTexts, realTexts;
    std::vector< QV_STRING * > integerStrings, realStrings;
};

const Numbers &numbers()
{
    static const Numbers all = []
    {
        Numbers         result;
        std::mt19937_64 random( 3 );

        for( int i = 0; i < COUNT; i++ )
        {
            // Integers of all lengths alike; reals whose six places are exact, since ours are cut and others' rounded.
            int64_t integer = static_cast< int64_t >( random() ) >> ( random() % 63 );
            double  real = static_cast< double >( static_cast< int64_t >( random() % 2000000000 ) - 1000000000 ) / 64.0;
            result.integers.push_back( integer );
            result.reals.push_back( real );
            result.integerTexts.push_back( std::to_string( integer ) );
            result.realTexts.push_back( std::to_string( real ) );
            result.integerStrings.push_back( qvStringCreateFromCstr( result.integerTexts.back().c_str(), -1 ) );
            result.realStrings.push_back( qvStringCreateFromCstr( result.realTexts.back().c_str(), -1 ) );
        }

        return result;
    }();

    return all;
}

// A work that does something with every element.
template< class Element, class Do >
Work each( const std::vector< Element > &elements, Do function )
{
    return [&elements, function]
    {
        for( const Element &element : elements )
            function( element );
    };
}

void showOwned( QV_STRING *text )
{
    show( text );
    qvStringRelease( text );
}

#ifdef BENCH_GLIB
void showOwned( char *text )
{
    show( std::string_view( text ) );
    g_free( text );
}
#endif

void show( double value )
{
    bench::show( static_cast< uint64_t >( std::llround( value * 1000000 ) ) );
}

void addIntegers()
{
    Case writing{
        "number",
        "integer to text",
        "1000 of all lengths",
        2.0,
        each( numbers().integers, []( int64_t value ) { showOwned( qvFormatEncodeInt( value, 10, 0, 0 ) ); } ),
        {},
        allocations( COUNT, 128 ) };
    Case reading{
        "number",
        "text to integer",
        "1000 of all lengths",
        1.0,
        each(
            numbers().integerStrings,
            []( QV_STRING *text )
            {
                QV_INT value;
                qvFormatTryDecodeInt( text, 0, qvStringLength( text ), 10, &value, nullptr );
                bench::show( static_cast< uint64_t >( value ) );
            } ),
        { { "std::from_chars", each(
                                   numbers().integerTexts,
                                   []( const std::string &text )
                                   {
                                       int64_t value = 0;
                                       std::from_chars( text.data(), text.data() + text.size(), value );
                                       bench::show( static_cast< uint64_t >( value ) );
                                   } ) } } };
    Case appending{
        "number",
        "integer appended to text",
        "1000 of all lengths",
        2.0,
        []
        {
            QV_STRING *text = qvStringCreate();

            for( int64_t value : numbers().integers )
                qvStringAppendInt( &text, value, 10 );

            showOwned( text );
        },
        {} };
#ifdef BENCH_FMT
    appending.peers.push_back(
        { "fmt::format_int and std::string, 8 bits", []
          {
              std::string text;

              for( int64_t value : numbers().integers )
              {
                  fmt::format_int digits( value );
                  text.append( digits.data(), digits.size() );
              }

              bench::show( std::string_view( text ) );
          } } );
    const Peer onStack{
        "fmt::format_int, on the stack", each(
                                             numbers().integers,
                                             []( int64_t value )
                                             {
                                                 fmt::format_int text( value );
                                                 bench::show( std::string_view( text.data(), text.size() ) );
                                             } ) };
    writing.peers.push_back( onStack );
    appending.peers.push_back( onStack );
#endif
#ifdef BENCH_GLIB
    writing.peers.push_back(
        { "GLib", each(
                      numbers().integers,
                      []( int64_t value ) { showOwned( g_strdup_printf( "%" G_GINT64_FORMAT, value ) ); } ) } );
    reading.peers.push_back(
        { "GLib", each(
                      numbers().integerTexts, []( const std::string &text )
                      { bench::show( static_cast< uint64_t >( g_ascii_strtoll( text.c_str(), nullptr, 10 ) ) ); } ) } );
#endif
    add( writing );
    add( appending );
    add( reading );
}

void addReals()
{
    Work ourWriting =
        each( numbers().reals, []( double value ) { showOwned( qvFormatEncodeReal( value, 10, 0, 6, 0 ) ); } );
    Work ourReading = each(
        numbers().realStrings,
        []( QV_STRING *text )
        {
            QV_REAL value;
            qvFormatTryDecodeReal( text, 0, qvStringLength( text ), 10, &value, nullptr );
            show( value );
        } );
#ifdef BENCH_GLIB
    add(
        { "number",
          "real to text",
          "1000, six places",
          0.15,
          ourWriting,
          { { "GLib", each(
                          numbers().reals,
                          []( double value )
                          {
                              char buffer[64];
                              showOwned( g_strdup( g_ascii_formatd( buffer, sizeof( buffer ), "%.6f", value ) ) );
                          } ) } } } );
    add(
        { "number",
          "text to real",
          "1000, six places",
          0.4,
          ourReading,
          { { "GLib", each(
                          numbers().realTexts,
                          []( const std::string &text ) { show( g_ascii_strtod( text.c_str(), nullptr ) ); } ) } } } );
#endif
    add(
        { "number",
          "real to text, beside the C++ library",
          "1000, six places",
          0,
          ourWriting,
          { { "std::to_chars, on the stack",
              each(
                  numbers().reals,
                  []( double value )
                  {
                      char  text[64];
                      char *end = std::to_chars( text, text + 64, value, std::chars_format::fixed, 6 ).ptr;
                      bench::show( std::string_view( text, size_t( end - text ) ) );
                  } ) } } } );
    add(
        { "number",
          "text to real, beside the C++ library",
          "1000, six places",
          0,
          ourReading,
          { { "std::from_chars", each(
                                     numbers().realTexts,
                                     []( const std::string &text )
                                     {
                                         double value = 0;
                                         std::from_chars( text.data(), text.data() + text.size(), value );
                                         show( value );
                                     } ) } } } );
}

void addFormats()
{
    static QV_STRING        *name   = qvStringCreateFromCstr( "connections", -1 );
    static QV_STRING        *format = qvStringCreateFromCstr( "%s: %i (%06!16i) %.3r", -1 );
    static const std::string text   = "connections";

    static std::vector< double > eighths; // their three places are exact

    for( double value : numbers().reals )
        eighths.push_back( std::trunc( value * 8 ) / 8 );

    Case formatting{
        "format",
        "\"%s: %i (%06!16i) %.3r\"",
        "1000",
        1.0,
        []
        {
            for( QV_INT i = 0; i < COUNT; i++ )
                showOwned( qvStringCreateFromFormat( format, name, i, i, eighths[size_t( i )] ) );
        },
        {} };
#ifdef BENCH_FMT
    formatting.peers.push_back(
        { "{fmt}", []
          {
              for( int64_t i = 0; i < COUNT; i++ )
                  bench::show(
                      std::string_view( fmt::format( "{}: {} ({:06x}) {:.3f}", text, i, i, eighths[size_t( i )] ) ) );
          } } );
#endif
#ifdef BENCH_GLIB
    formatting.peers.push_back(
        { "GLib", []
          {
              for( int64_t i = 0; i < COUNT; i++ )
                  showOwned( g_strdup_printf(
                      "%s: %" G_GINT64_FORMAT " (%06" G_GINT64_MODIFIER "x) %.3f", text.c_str(), i, i,
                      eighths[size_t( i )] ) );
          } } );
#endif
    add( formatting );
}
} // namespace

void addNumberCases()
{
    addIntegers();
    addReals();
    addFormats();
}
} // namespace bench
