#include "bench.h"

#include <qv/qv.hpp>

#include <cwchar>

// String: growing, searching, comparing, replacing.

namespace bench
{
namespace
{
const int MILLION = 1000000;

void addAppending()
{
    static QV_STRING *sixteen = qvStringCreateFromCstr( "0123456789abcdef", -1 );

    Case one{
        "String",
        "append one character",
        "10^6 times",
        1.2,
        []
        {
            QV_STRING *text = qvStringCreate();

            for( int i = 0; i < MILLION; i++ )
                qvStringAppendChar( &text, U'x' );

            show( text );
            qvStringRelease( text );
        },
        { { "std::u32string",
            []
            {
                std::u32string text;

                for( int i = 0; i < MILLION; i++ )
                    text.push_back( U'x' );

                show( std::u32string_view( text ) );
            } } },
        exportedCalls( MILLION ) };
    Case inPlace{
        "String",
        "append one character, in place",
        "10^6 times",
        1.2,
        []
        {
            qv::String text;

            {
                qv::Appender to( text );

                for( int i = 0; i < MILLION; i++ )
                    to.push_back( U'x' );
            }

            show( text.c() );
        },
        {} };
    Case more{
        "String",
        "append 16 characters",
        "10^5 times",
        1.1,
        []
        {
            QV_STRING *text = qvStringCreate();

            for( int i = 0; i < MILLION / 10; i++ )
                qvStringAppend( &text, sixteen );

            show( text );
            qvStringRelease( text );
        },
        { { "std::u32string", []
            {
                std::u32string       text;
                const std::u32string piece = U"0123456789abcdef";

                for( int i = 0; i < MILLION / 10; i++ )
                    text.append( piece );

                show( std::u32string_view( text ) );
            } } } };
#ifdef BENCH_QT
    one.peers.push_back(
        { "QString, 16 bits", []
          {
              QString text;

              for( int i = 0; i < MILLION; i++ )
                  text.append( QChar( 'x' ) );

              show( view( text ) );
          } } );
    more.peers.push_back(
        { "QString, 16 bits", []
          {
              QString       text;
              const QString piece = QStringLiteral( "0123456789abcdef" );

              for( int i = 0; i < MILLION / 10; i++ )
                  text.append( piece );

              show( view( text ) );
          } } );
#endif
    inPlace.peers = one.peers;
    add( one );
    add( inPlace );
    add( more );
}

// A long text with the thing that is looked for at its end.
struct Haystack
{
    QV_STRING     *ours, *oursAgain, *needleString;
    std::u32string text, needle;
    std::u32string again;
#ifdef BENCH_QT
    QString qt;
#endif

    // Where a position stands in the text of 32 bits, for the wide functions of C.
    const wchar_t *wide() const
    {
        return reinterpret_cast< const wchar_t * >( text.data() );
    }
};

Haystack *makeHaystack( const Language &language )
{
    Haystack *hay     = new Haystack;
    hay->needle       = language.text.substr( 0, 6 ) + U"\x2603";
    hay->text         = language.text + hay->needle;
    hay->again        = hay->text;
    hay->ours         = string( hay->text );
    hay->oursAgain    = string( hay->text );
    hay->needleString = string( hay->needle );
#ifdef BENCH_QT
    hay->qt = QString::fromUcs4( hay->text.data(), static_cast< int >( hay->text.size() ) );
#endif
    return hay;
}

void addSearching( const Language &language )
{
    const Haystack *hay = makeHaystack( language );

    add(
        { "String",
          "find a character",
          language.name,
          1.05,
          [hay] { show( uint64_t( qvStringFindChar( hay->ours, 0, U'\x2603' ) ) ); },
          { { "wmemchr", [hay]
              { show( uint64_t( std::wmemchr( hay->wide(), L'\x2603', hay->text.size() ) - hay->wide() ) ); } } } } );
    add(
        { "String",
          "find text",
          language.name,
          0.5,
          [hay] { show( uint64_t( qvStringFind( hay->ours, 0, hay->needleString ) ) ); },
          { { "std::u32string", [hay] { show( uint64_t( hay->text.find( hay->needle ) ) ); } } } } );
    add(
        { "String",
          "compare equal texts",
          language.name,
          1.05,
          [hay] { show( uint64_t( qvStringCompare( hay->ours, hay->oursAgain ) ) ); },
          { { "wmemcmp", [hay]
              {
                  show( uint64_t( std::wmemcmp(
                      hay->wide(), reinterpret_cast< const wchar_t * >( hay->again.data() ), hay->text.size() ) ) );
              } } } } );

    Case replacing{
        "String",
        "replace every blank by two characters",
        language.name,
        0,
        [hay]
        {
            QV_STRING *text = hay->ours;
            qvStringRetain( text );
            qvStringReplaceCstr( &text, " ", 1, "::", 2, -1 );
            show( text );
            qvStringRelease( text );
        },
        {} };
#ifdef BENCH_QT
    static const QString colons = QStringLiteral( "::" );
    replacing.peers             = {
        { "QString, 16 bits", [hay]
                      {
              QString text = hay->qt;
              text.replace( QChar( ' ' ), colons );
              show( view( text ) );
          } } };
#endif
    add( replacing );
}

void addEquality( const Language &language )
{
    struct Pairs
    {
        std::vector< QV_STRING * > ours;
        std::vector< std::string > texts; // every second one is another text
#ifdef BENCH_QT
        std::vector< QString > qt;
#endif
    };

    Pairs *pairs = new Pairs;

    for( size_t i = 0; i < language.strings.size(); i++ )
    {
        pairs->ours.push_back( string( language.strings[i] ) );
        pairs->texts.push_back( language.utf8Strings[i - i % 2] );
#ifdef BENCH_QT
        pairs->qt.push_back( QString::fromStdString( language.utf8Strings[i] ) );
#endif
    }

    Case equality{
        "String",
        "equals C text",
        std::string( language.name ) + ", 24 characters",
        1.5,
        [pairs]
        {
            uint64_t equal = 0;

            for( size_t i = 0; i < pairs->ours.size(); i++ )
                equal += qvStringEqualsCstr( pairs->ours[i], pairs->texts[i].c_str(), -1 );

            show( equal );
        },
        {} };
#ifdef BENCH_QT
    equality.peers = {
        { "QString", [pairs]
          {
              uint64_t equal = 0;

              for( size_t i = 0; i < pairs->qt.size(); i++ )
                  equal += pairs->qt[i] == pairs->texts[i].c_str();

              show( equal );
          } } };
#endif
    add( equality );
}
} // namespace

void addStringCases()
{
    addAppending();

    for( const Language &language : languages() )
    {
        addSearching( language );
        addEquality( language );
    }
}
} // namespace bench
