#include "bench.h"

#ifdef BENCH_QT
#include <QString>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif

// String: growing, searching, comparing.

namespace bench
{
namespace
{
const int MILLION = 1000000;

const char16_t SIXTEEN_UTF16[] = u"0123456789abcdef";

struct Haystack
{
    const Language *language;
    QV_STRING      *ours, *oursAgain;
    std::u32string  peer, peerAgain;
    std::u32string  needle;
    QV_STRING      *needleString;
};

// Long texts with the thing that is looked for at their end.
const std::vector< Haystack > &haystacks()
{
    static const std::vector< Haystack > all = []
    {
        std::vector< Haystack > result;

        for( const Language &language : languages() )
        {
            std::u32string needle = language.text.substr( 0, 6 ) + U"\x2603";
            std::u32string text   = language.text + needle;
            result.push_back( { &language, string( text ), string( text ), text, text, needle, string( needle ) } );
        }

        return result;
    }();

    return all;
}
} // namespace

void addStringCases()
{
    add( "String", "append one character", "10^6 times", 1.0,
         []
         {
             QV_STRING *text = qvStringCreate();

             for( int i = 0; i < MILLION; i++ )
                 qvStringAppendChar( &text, U'x' );

             uint64_t length = static_cast< uint64_t >( qvStringLength( text ) );
             qvStringRelease( text );
             return length;
         },
         {
#ifdef BENCH_QT
             { "QString",
               []
               {
                   QString text;

                   for( int i = 0; i < MILLION; i++ )
                       text.append( QChar( 'x' ) );

                   return static_cast< uint64_t >( text.size() );
               } },
#endif
         } );

    static QV_STRING *sixteen = qvStringCreateFromCstr( "0123456789abcdef", -1 );

    add( "String", "append 16 characters", "10^5 times", 1.0,
         []
         {
             QV_STRING *text = qvStringCreate();

             for( int i = 0; i < MILLION / 10; i++ )
                 qvStringAppend( &text, sixteen );

             uint64_t length = static_cast< uint64_t >( qvStringLength( text ) );
             qvStringRelease( text );
             return length;
         },
         {
#ifdef BENCH_QT
             { "QString",
               []
               {
                   QString       text;
                   const QString piece = QString::fromUtf16( SIXTEEN_UTF16 );

                   for( int i = 0; i < MILLION / 10; i++ )
                       text.append( piece );

                   return static_cast< uint64_t >( text.size() );
               } },
#endif
#ifdef BENCH_GLIB
             { "GString",
               []
               {
                   GString *text = g_string_new( nullptr );

                   for( int i = 0; i < MILLION / 10; i++ )
                       g_string_append_len( text, "0123456789abcdef", 16 );

                   uint64_t length = text->len;
                   g_string_free( text, TRUE );
                   return length;
               } },
#endif
         } );

    for( const Haystack &haystack : haystacks() )
    {
        const char     *name = haystack.language->name;
        const Haystack *hay  = &haystack;

        add( "String", "find a character", name, 0.5,
             [hay] { return static_cast< uint64_t >( qvStringFindChar( hay->ours, 0, U'\x2603' ) ); },
             { { "std::u32string", [hay] { return static_cast< uint64_t >( hay->peer.find( U'\x2603' ) ); } } } );

        add( "String", "find text", name, 0.5,
             [hay] { return static_cast< uint64_t >( qvStringFind( hay->ours, 0, hay->needleString ) ); },
             { { "std::u32string", [hay] { return static_cast< uint64_t >( hay->peer.find( hay->needle ) ); } } } );

        add( "String", "compare long", name, 0.5,
             [hay] { return static_cast< uint64_t >( qvStringCompare( hay->ours, hay->oursAgain ) ); },
             { { "std::u32string",
                 [hay] { return static_cast< uint64_t >( hay->peer.compare( hay->peerAgain ) ); } } } );
    }
}
} // namespace bench
