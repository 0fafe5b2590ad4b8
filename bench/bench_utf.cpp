#include "bench.h"

#include <iconv.h>

#ifdef BENCH_ICU
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_QT
#include <QString>
#endif
#ifdef BENCH_UTF8PROC
#include <utf8proc.h>
#endif

// UTF-8 to text and back: whole texts, and through streams. All answers are lengths.

namespace bench
{
namespace
{
std::vector< Peer > decodingPeers( const Language *language )
{
    (void)language;
    return {
        { "iconv",
          [language]
          {
              static iconv_t          converter = iconv_open( "UCS-4LE", "UTF-8" );
              std::vector< char32_t > out( language->utf8.size() );
              char                   *from     = const_cast< char * >( language->utf8.data() );
              char                   *to       = reinterpret_cast< char * >( out.data() );
              size_t                  fromLeft = language->utf8.size();
              size_t                  toLeft   = out.size() * 4;
              iconv( converter, &from, &fromLeft, &to, &toLeft );
              return static_cast< uint64_t >( out.size() - toLeft / 4 );
          } },
#ifdef BENCH_ICU
        { "ICU",
          [language] { return static_cast< uint64_t >( icu::UnicodeString::fromUTF8( language->utf8 ).length() ); } },
#endif
#ifdef BENCH_GLIB
        { "GLib",
          [language]
          {
              glong     length = 0;
              gunichar *text   = g_utf8_to_ucs4(
                  language->utf8.data(), static_cast< glong >( language->utf8.size() ), nullptr, &length, nullptr );
              g_free( text );
              return static_cast< uint64_t >( length );
          } },
#endif
#ifdef BENCH_QT
        { "Qt",
          [language]
          {
              return static_cast< uint64_t >(
                  QString::fromUtf8( language->utf8.data(), static_cast< int >( language->utf8.size() ) ).size() );
          } },
#endif
#ifdef BENCH_UTF8PROC
        { "utf8proc",
          [language]
          {
              std::vector< utf8proc_int32_t > out( language->utf8.size() );
              const utf8proc_uint8_t *at    = reinterpret_cast< const utf8proc_uint8_t * >( language->utf8.data() );
              utf8proc_ssize_t        left  = static_cast< utf8proc_ssize_t >( language->utf8.size() );
              size_t                  count = 0;

              while( left > 0 )
              {
                  utf8proc_ssize_t size = utf8proc_iterate( at, left, &out[count++] );
                  at += size;
                  left -= size;
              }

              return static_cast< uint64_t >( count );
          } },
#endif
    };
}

std::vector< Peer > encodingPeers( const Language *language )
{
    return {
        { "iconv",
          [language]
          {
              static iconv_t      converter = iconv_open( "UTF-8", "UCS-4LE" );
              std::vector< char > out( language->text.size() * 4 );
              char  *from     = reinterpret_cast< char * >( const_cast< char32_t * >( language->text.data() ) );
              char  *to       = out.data();
              size_t fromLeft = language->text.size() * 4;
              size_t toLeft   = out.size();
              iconv( converter, &from, &fromLeft, &to, &toLeft );
              return static_cast< uint64_t >( out.size() - toLeft );
          } },
#ifdef BENCH_ICU
        { "ICU",
          [language]
          {
              static std::vector< std::pair< const Language *, icu::UnicodeString > > cache;

              for( auto &entry : cache )
                  if( entry.first == language )
                  {
                      std::string out;
                      entry.second.toUTF8String( out );
                      return static_cast< uint64_t >( out.size() );
                  }

              cache.emplace_back( language, icu::UnicodeString::fromUTF8( language->utf8 ) );
              return static_cast< uint64_t >( language->utf8.size() );
          } },
#endif
#ifdef BENCH_GLIB
        { "GLib",
          [language]
          {
              glong length = 0;
              char *text   = g_ucs4_to_utf8(
                  reinterpret_cast< const gunichar * >( language->text.data() ),
                  static_cast< glong >( language->text.size() ), nullptr, &length, nullptr );
              g_free( text );
              return static_cast< uint64_t >( length );
          } },
#endif
#ifdef BENCH_QT
        { "Qt",
          [language]
          {
              const QString text = QString::fromRawData(
                  reinterpret_cast< const QChar * >( language->utf16.data() ),
                  static_cast< int >( language->utf16.size() ) );
              return static_cast< uint64_t >( text.toUtf8().size() );
          } },
#endif
#ifdef BENCH_UTF8PROC
        { "utf8proc",
          [language]
          {
              std::vector< utf8proc_uint8_t > out( language->text.size() * 4 );
              utf8proc_uint8_t               *at = out.data();

              for( char32_t ch : language->text )
                  at += utf8proc_encode_char( static_cast< utf8proc_int32_t >( ch ), at );

              return static_cast< uint64_t >( at - out.data() );
          } },
#endif
    };
}

#ifdef BENCH_ICU
const size_t PIECE = 1024;

uint64_t icuDecodeInPieces( const Language *language )
{
    UErrorCode         error     = U_ZERO_ERROR;
    static UConverter *converter = ucnv_open( "UTF-8", &error );
    icu::UnicodeString text;
    const char        *from = language->utf8.data();
    const char        *end  = from + language->utf8.size();
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

    return static_cast< uint64_t >( text.length() );
}

uint64_t icuEncodeInPieces( const Language *language )
{
    UErrorCode         error     = U_ZERO_ERROR;
    static UConverter *converter = ucnv_open( "UTF-8", &error );
    std::string        bytes;
    const char16_t    *from = language->utf16.data();
    const char16_t    *end  = from + language->utf16.size();
    ucnv_reset( converter );

    while( from < end )
    {
        char  piece[PIECE];
        char *to = piece;
        error    = U_ZERO_ERROR;
        ucnv_fromUnicode( converter, &to, piece + PIECE, &from, end, nullptr, true, &error );
        bytes.append( piece, to );
    }

    return bytes.size();
}
#endif
} // namespace

void addUtfCases()
{
    for( const Language &each : languages() )
    {
        const Language *language = &each;

        add(
            "UTF-8", "to String", language->name, language->isEnglish ? 0.3 : 0.8,
            [language]
            {
                QV_STRING *text =
                    qvStringCreateFromUtf8( language->utf8.data(), static_cast< QV_INT >( language->utf8.size() ) );
                uint64_t length = static_cast< uint64_t >( qvStringLength( text ) );
                qvStringRelease( text );
                return length;
            },
            decodingPeers( language ) );

        QV_STRING *text = string( language->text );

        add(
            "UTF-8", "from String", language->name, language->isEnglish ? 0.3 : 0.7,
            [text]
            {
                QV_INT length;
                qvMemFree( qvStringConvertToUtf8( text, QV_FALSE, &length ) );
                return static_cast< uint64_t >( length );
            },
            encodingPeers( language ) );

        QV_BUFFER *bytes = qvBufferCreateFromBytesCopy(
            reinterpret_cast< const uint8_t * >( language->utf8.data() ),
            static_cast< QV_INT >( language->utf8.size() ) );

        add( "UTF-8", "to String through streams", language->name, 0.8,
             [bytes]
             {
                 QV_BUFFER_BYTE_SOURCE *bufferSource = qvBufferByteSourceCreate( bytes );
                 QV_BYTE_SOURCE        *byteSource   = qvBufferByteSourceByteSource( bufferSource );
                 QV_CHAR_SOURCE        *charSource   = qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, 0 );
                 QV_STRING             *all          = qvStringCreate();
                 qvCharSourceRead( charSource, &all, -1 );
                 uint64_t length = static_cast< uint64_t >( qvStringLength( all ) );
                 qvStringRelease( all );
                 qvCharSourceRelease( charSource );
                 qvByteSourceRelease( byteSource );
                 qvBufferByteSourceRelease( bufferSource );
                 return length;
             },
             {
#ifdef BENCH_ICU
                 { "ICU converter", [language] { return icuDecodeInPieces( language ); } },
#endif
             } );

        add( "UTF-8", "from String through streams", language->name, 0.8,
             [text]
             {
                 QV_BUFFER_BYTE_SINK *bufferSink = qvBufferByteSinkCreate();
                 QV_BYTE_SINK        *byteSink   = qvBufferByteSinkByteSink( bufferSink );
                 QV_CHAR_SINK        *charSink   = qvCharsetCreateCharSink( byteSink, QV_CHARSET_UTF_8, 0 );
                 qvCharSinkWrite( charSink, text );
                 qvCharSinkFlush( charSink );
                 QV_BUFFER *result = qvBufferByteSinkBuffer( bufferSink );
                 uint64_t   length = static_cast< uint64_t >( qvBufferLength( result ) );
                 qvBufferRelease( result );
                 qvCharSinkRelease( charSink );
                 qvByteSinkRelease( byteSink );
                 qvBufferByteSinkRelease( bufferSink );
                 return length;
             },
             {
#ifdef BENCH_ICU
                 { "ICU converter", [language] { return icuEncodeInPieces( language ); } },
#endif
             } );
    }
}
} // namespace bench
