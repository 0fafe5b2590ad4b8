#include "bench.h"

#include <cstring>
#include <random>

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_FMT
#include <fmt/format.h>
#endif

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
            // All lengths alike.
            int64_t integer = static_cast< int64_t >( random() ) >> ( random() % 63 );
            double  real =
                static_cast< double >( static_cast< int64_t >( random() % 2000000000 ) - 1000000000 ) / 1024.0;
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

uint64_t takeLength( QV_STRING *owned )
{
    uint64_t length = static_cast< uint64_t >( qvStringLength( owned ) );
    qvStringRelease( owned );

    return length;
}
} // namespace

void addNumberCases()
{
    add( "number", "integer to text", "1000 of all lengths", 0.5,
         []
         {
             uint64_t sum = 0;

             for( int64_t value : numbers().integers )
                 sum += takeLength( qvFormatEncodeInt( value, 10, 0, 0 ) );

             return sum;
         },
         {
#ifdef BENCH_GLIB
             { "GLib",
               []
               {
                   uint64_t sum = 0;

                   for( int64_t value : numbers().integers )
                   {
                       char *text = g_strdup_printf( "%" G_GINT64_FORMAT, value );
                       sum += std::strlen( text );
                       g_free( text );
                   }

                   return sum;
               } },
#endif
         } );

    add( "number", "text to integer", "1000 of all lengths", 0.5,
         []
         {
             uint64_t sum = 0;

             for( QV_STRING *text : numbers().integerStrings )
             {
                 QV_INT value;
                 qvFormatTryDecodeInt( text, 0, qvStringLength( text ), 10, &value, nullptr );
                 sum += static_cast< uint64_t >( value );
             }

             return sum;
         },
         {
#ifdef BENCH_GLIB
             { "GLib",
               []
               {
                   uint64_t sum = 0;

                   for( const std::string &text : numbers().integerTexts )
                       sum += static_cast< uint64_t >( g_ascii_strtoll( text.c_str(), nullptr, 10 ) );

                   return sum;
               } },
#endif
         } );

    add( "number", "real to text", "1000, six places", 0.5,
         []
         {
             uint64_t sum = 0;

             for( double value : numbers().reals )
                 sum += takeLength( qvFormatEncodeReal( value, 10, 0, 6, 0 ) );

             return sum;
         },
         {
#ifdef BENCH_GLIB
             { "GLib",
               []
               {
                   uint64_t sum = 0;

                   for( double value : numbers().reals )
                   {
                       char  buffer[64];
                       char *text = g_strdup( g_ascii_formatd( buffer, sizeof( buffer ), "%.6f", value ) );
                       sum += std::strlen( text );
                       g_free( text );
                   }

                   return sum;
               } },
#endif
         } );

    add( "number", "text to real", "1000, six places", 0.5,
         []
         {
             uint64_t sum = 0;

             for( QV_STRING *text : numbers().realStrings )
             {
                 QV_REAL value;
                 qvFormatTryDecodeReal( text, 0, qvStringLength( text ), 10, &value, nullptr );
                 sum += static_cast< uint64_t >( static_cast< int64_t >( value ) );
             }

             return sum;
         },
         {
#ifdef BENCH_GLIB
             { "GLib",
               []
               {
                   uint64_t sum = 0;

                   for( const std::string &text : numbers().realTexts )
                       sum +=
                           static_cast< uint64_t >( static_cast< int64_t >( g_ascii_strtod( text.c_str(), nullptr ) ) );

                   return sum;
               } },
#endif
         } );

    static QV_STRING *name   = qvStringCreateFromCstr( "connections", -1 );
    static QV_STRING *format = qvStringCreateFromCstr( "%s: %i (%06!16i) %.3r", -1 );

    add( "format", "\"%s: %i (%06!16i) %.3r\"", "1000", 1.0,
         []
         {
             uint64_t sum = 0;

             for( int i = 0; i < COUNT; i++ )
                 sum += takeLength( qvStringCreateFromFormat(
                     format, name, static_cast< QV_INT >( i ), static_cast< QV_INT >( i ), numbers().reals[i] ) );

             return sum;
         },
         {
#ifdef BENCH_FMT
             { "{fmt}",
               []
               {
                   static const std::string text = "connections";
                   uint64_t                 sum  = 0;

                   for( int i = 0; i < COUNT; i++ )
                       sum +=
                           fmt::format( "{}: {} ({:06x}) {:.3f}", text, int64_t( i ), int64_t( i ), numbers().reals[i] )
                               .size();

                   return sum;
               } },
#endif
#ifdef BENCH_GLIB
             { "GLib",
               []
               {
                   uint64_t sum = 0;

                   for( int i = 0; i < COUNT; i++ )
                   {
                       char *text = g_strdup_printf(
                           "%s: %" G_GINT64_FORMAT " (%06" G_GINT64_MODIFIER "x) %.3f", "connections", int64_t( i ),
                           int64_t( i ), numbers().reals[i] );
                       sum += std::strlen( text );
                       g_free( text );
                   }

                   return sum;
               } },
#endif
         } );
}
} // namespace bench
