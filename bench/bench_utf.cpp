#include "bench.h"

#include <map>
#include <memory>

#include <iconv.h>

#ifdef BENCH_ICU
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_SIMDUTF
#include <simdutf.h>
#endif
#ifdef BENCH_UTF8PROC
#include <utf8proc.h>
#endif

// UTF-8 to text and back: whole texts, short ones, and whole texts through streams.

namespace bench
{
namespace
{
// The same texts in the forms of all sides; those of 32 bits are the answers of decoding.
struct Texts
{
    std::vector< std::string >    utf8;
    std::vector< std::u32string > utf32;
    std::vector< std::u16string > utf16;
    std::vector< QV_STRING * >    ours;
};

Texts *makeTexts(
    std::vector< std::string > utf8, std::vector< std::u32string > utf32, std::vector< std::u16string > utf16 )
{
    Texts *texts = new Texts{ std::move( utf8 ), std::move( utf32 ), std::move( utf16 ), {} };

    for( const std::u32string &text : texts->utf32 )
        texts->ours.push_back( string( text ) );

    return texts;
}

// A peer that does its work on every text.
template< class Input, class Convert >
Peer peer( const char *name, const std::vector< Input > &inputs, Convert convert )
{
    return {
        name, [&inputs, convert]
        {
            for( const Input &input : inputs )
                convert( input );
        } };
}

std::string_view iconvert( iconv_t converter, const void *in, size_t size, void *out, size_t room )
{
    char  *from     = static_cast< char * >( const_cast< void * >( in ) );
    char  *to       = static_cast< char * >( out );
    size_t fromLeft = size, toLeft = room;
    iconv( converter, &from, &fromLeft, &to, &toLeft );

    return { static_cast< char * >( out ), room - toLeft };
}

std::u32string_view wide( const void *chars, size_t count )
{
    return { static_cast< const char32_t * >( chars ), count };
}

std::vector< Peer > decodingPeers( const Texts *texts )
{
    std::vector< Peer > peers;

    peers.push_back( peer(
        "iconv", texts->utf8,
        []( const std::string &text )
        {
            static iconv_t          converter = iconv_open( "UCS-4LE", "UTF-8" );
            std::vector< char32_t > out( text.size() );
            std::string_view        bytes = iconvert( converter, text.data(), text.size(), out.data(), out.size() * 4 );
            show( wide( out.data(), bytes.size() / 4 ) );
        } ) );
#ifdef BENCH_ICU
    peers.push_back( peer(
        "ICU, 16 bits", texts->utf8,
        []( const std::string &text )
        {
            icu::UnicodeString decoded = icu::UnicodeString::fromUTF8( text );
            show( std::u16string_view( decoded.getBuffer(), size_t( decoded.length() ) ) );
        } ) );
#endif
#ifdef BENCH_GLIB
    peers.push_back( peer(
        "GLib", texts->utf8,
        []( const std::string &text )
        {
            glong     length  = 0;
            gunichar *decoded = g_utf8_to_ucs4( text.data(), glong( text.size() ), nullptr, &length, nullptr );
            show( wide( decoded, size_t( length ) ) );
            g_free( decoded );
        } ) );
#endif
#ifdef BENCH_QT
    peers.push_back( peer(
        "Qt, 16 bits", texts->utf8,
        []( const std::string &text ) { show( view( QString::fromUtf8( text.data(), int( text.size() ) ) ) ); } ) );
#endif
#ifdef BENCH_SIMDUTF
    peers.push_back( peer(
        "simdutf", texts->utf8,
        []( const std::string &text )
        {
            std::unique_ptr< char32_t[] > out( new char32_t[text.size()] );
            show( wide( out.get(), simdutf::convert_utf8_to_utf32( text.data(), text.size(), out.get() ) ) );
        } ) );
#endif
#ifdef BENCH_UTF8PROC
    peers.push_back( peer(
        "utf8proc", texts->utf8,
        []( const std::string &text )
        {
            std::vector< utf8proc_int32_t > out( text.size() );
            auto                            at    = reinterpret_cast< const utf8proc_uint8_t * >( text.data() );
            utf8proc_ssize_t                left  = static_cast< utf8proc_ssize_t >( text.size() );
            size_t                          count = 0;

            while( left > 0 )
            {
                utf8proc_ssize_t size = utf8proc_iterate( at, left, &out[count++] );
                at += size;
                left -= size;
            }

            show( wide( out.data(), count ) );
        } ) );
#endif
    return peers;
}

std::vector< Peer > encodingPeers( const Texts *texts )
{
    std::vector< Peer > peers;

    peers.push_back( peer(
        "iconv", texts->utf32,
        []( const std::u32string &text )
        {
            static iconv_t      converter = iconv_open( "UTF-8", "UCS-4LE" );
            std::vector< char > out( text.size() * 4 );
            show( iconvert( converter, text.data(), text.size() * 4, out.data(), out.size() ) );
        } ) );
#ifdef BENCH_ICU
    static std::map< const Texts *, std::vector< icu::UnicodeString > > icuTexts;

    for( const std::u16string &text : texts->utf16 )
        icuTexts[texts].push_back( icu::UnicodeString( text.data(), int32_t( text.size() ) ) );

    peers.push_back( peer(
        "ICU, 16 bits", icuTexts[texts],
        []( const icu::UnicodeString &text )
        {
            std::string out;
            text.toUTF8String( out );
            show( std::string_view( out ) );
        } ) );
#endif
#ifdef BENCH_GLIB
    peers.push_back( peer(
        "GLib", texts->utf32,
        []( const std::u32string &text )
        {
            glong length  = 0;
            char *encoded = g_ucs4_to_utf8(
                reinterpret_cast< const gunichar * >( text.data() ), glong( text.size() ), nullptr, &length, nullptr );
            show( std::string_view( encoded, size_t( length ) ) );
            g_free( encoded );
        } ) );
#endif
#ifdef BENCH_QT
    peers.push_back( peer(
        "Qt, 16 bits", texts->utf16,
        []( const std::u16string &text )
        {
            const QByteArray encoded =
                QString::fromRawData( reinterpret_cast< const QChar * >( text.data() ), int( text.size() ) ).toUtf8();
            show( std::string_view( encoded.data(), size_t( encoded.size() ) ) );
        } ) );
#endif
#ifdef BENCH_SIMDUTF
    peers.push_back( peer(
        "simdutf", texts->utf32,
        []( const std::u32string &text )
        {
            std::unique_ptr< char[] > out( new char[text.size() * 4] );
            show(
                std::string_view( out.get(), simdutf::convert_utf32_to_utf8( text.data(), text.size(), out.get() ) ) );
        } ) );
#endif
#ifdef BENCH_UTF8PROC
    peers.push_back( peer(
        "utf8proc", texts->utf32,
        []( const std::u32string &text )
        {
            std::vector< utf8proc_uint8_t > out( text.size() * 4 );
            utf8proc_uint8_t               *at = out.data();

            for( char32_t ch : text )
                at += utf8proc_encode_char( static_cast< utf8proc_int32_t >( ch ), at );

            show( std::string_view( reinterpret_cast< const char * >( out.data() ), size_t( at - out.data() ) ) );
        } ) );
#endif
    return peers;
}

void addTexts( const Texts *texts, const std::string &input, double decoding, double encoding )
{
    const Peer bound = allocations( texts->utf8.size(), texts->utf8[0].size() );

    add(
        { "UTF-8", "to String", input, decoding,
          [texts]
          {
              for( const std::string &utf8 : texts->utf8 )
              {
                  QV_STRING *text = qvStringCreateFromUtf8( utf8.data(), static_cast< QV_INT >( utf8.size() ) );
                  show( text );
                  qvStringRelease( text );
              }
          },
          decodingPeers( texts ), bound } );
    add(
        { "UTF-8", "from String", input, encoding,
          [texts]
          {
              for( QV_STRING *text : texts->ours )
              {
                  QV_INT length;
                  char  *utf8 = qvStringConvertToUtf8( text, QV_FALSE, &length );
                  show( std::string_view( utf8, size_t( length ) ) );
                  qvMemFree( utf8 );
              }
          },
          encodingPeers( texts ), bound } );
}

#ifdef BENCH_ICU
const size_t PIECE = 1024;

void icuDecodeInPieces( const Language &language )
{
    UErrorCode         error     = U_ZERO_ERROR;
    static UConverter *converter = ucnv_open( "UTF-8", &error );
    icu::UnicodeString text;
    const char        *from = language.utf8.data();
    const char        *end  = from + language.utf8.size();
    ucnv_reset( converter );

    while( from < end )
    {
        char16_t    piece[PIECE];
        char16_t   *to    = piece;
        const char *limit = from + std::min( PIECE, static_cast< size_t >( end - from ) );
        error             = U_ZERO_ERROR;
        ucnv_toUnicode( converter, &to, piece + PIECE, &from, limit, nullptr, limit == end, &error );
        text.append( piece, static_cast< int32_t >( to - piece ) );
    }

    show( std::u16string_view( text.getBuffer(), size_t( text.length() ) ) );
}

void icuEncodeInPieces( const Language &language )
{
    UErrorCode         error     = U_ZERO_ERROR;
    static UConverter *converter = ucnv_open( "UTF-8", &error );
    std::string        bytes;
    const char16_t    *from = language.utf16.data();
    const char16_t    *end  = from + language.utf16.size();
    ucnv_reset( converter );

    while( from < end )
    {
        char  piece[PIECE];
        char *to = piece;
        error    = U_ZERO_ERROR;
        ucnv_fromUnicode( converter, &to, piece + PIECE, &from, end, nullptr, true, &error );
        bytes.append( piece, to );
    }

    show( std::string_view( bytes ) );
}
#endif

void addStreams( const Language &language )
{
    QV_BUFFER *bytes = buffer( language.utf8 );
    QV_STRING *text  = string( language.text );

    Case decoding{
        "UTF-8",
        "to String through streams",
        language.name,
        0.4,
        [bytes]
        {
            QV_BUFFER_BYTE_SOURCE *bufferSource = qvBufferByteSourceCreate( bytes );
            QV_BYTE_SOURCE        *byteSource   = qvBufferByteSourceByteSource( bufferSource );
            QV_CHAR_SOURCE        *charSource   = qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, 0 );
            QV_STRING             *all          = qvStringCreate();
            qvCharSourceRead( charSource, &all, -1 );
            show( all );
            qvStringRelease( all );
            qvCharSourceRelease( charSource );
            qvByteSourceRelease( byteSource );
            qvBufferByteSourceRelease( bufferSource );
        },
        {} };
    Case encoding{
        "UTF-8",
        "from String through streams",
        language.name,
        0.4,
        [text]
        {
            QV_BUFFER_BYTE_SINK *bufferSink = qvBufferByteSinkCreate();
            QV_BYTE_SINK        *byteSink   = qvBufferByteSinkByteSink( bufferSink );
            QV_CHAR_SINK        *charSink   = qvCharsetCreateCharSink( byteSink, QV_CHARSET_UTF_8, 0 );
            qvCharSinkWrite( charSink, text );
            qvCharSinkFlush( charSink );
            QV_BUFFER *result = qvBufferByteSinkBuffer( bufferSink );
            show( result );
            qvBufferRelease( result );
            qvCharSinkRelease( charSink );
            qvByteSinkRelease( byteSink );
            qvBufferByteSinkRelease( bufferSink );
        },
        {} };
#ifdef BENCH_ICU
    decoding.peers = { { "ICU converter, 16 bits", [&language] { icuDecodeInPieces( language ); } } };
    encoding.peers = { { "ICU converter, 16 bits", [&language] { icuEncodeInPieces( language ); } } };
#endif
    add( decoding );
    add( encoding );
}
} // namespace

void addUtfCases()
{
#ifdef BENCH_SIMDUTF
    const double decoding = 1.1, encoding = 1.2, english = 1.0;
#else
    const double decoding = 0.5, encoding = 0.5, english = 2.0;
#endif
    for( const Language &language : languages() )
    {
        const double factor = language.isEnglish() ? english : 1.0;
        addTexts(
            makeTexts( { language.utf8 }, { language.text }, { language.utf16 } ),
            std::string( language.name ) + ", 32 KiB", decoding * factor, encoding * factor );
        addTexts(
            makeTexts( language.utf8Strings, language.strings, language.utf16Strings ),
            std::string( language.name ) + ", 24 characters", 0.6, 0.6 );
        addStreams( language );
    }
}
} // namespace bench
