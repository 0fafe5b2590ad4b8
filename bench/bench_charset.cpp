#include "bench.h"

#include <iconv.h>

#ifdef BENCH_ICU
#include <unicode/ucnv.h>
#endif
#ifdef BENCH_QT
#include <QTextCodec>
#endif

// Character sets with one byte a character: whole texts to String and back.

namespace bench
{
namespace
{
// A text as far as its set has the characters.
struct Sample
{
    const char    *set;
    QV_BUFFER     *buffer;
    QV_STRING     *string;
    std::string    bytes;
    std::u32string text;
    std::u16string utf16;
};

Sample *createSample( const char *set, QV_INT charset, const Language &language )
{
    QV_STRING *all    = string( language.text );
    QV_BUFFER *buffer = qvCharsetStringToBufferWithFlags( charset, all, QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS );
    QV_STRING *text   = qvCharsetBufferToString( charset, buffer );
    qvStringRelease( all );

    const char    *bytes = reinterpret_cast< const char * >( qvBufferBacking( buffer ) );
    const QV_CHAR *chars = qvStringBacking( text );
    const size_t   count = static_cast< size_t >( qvStringLength( text ) );

    return new Sample{ set, buffer, text, { bytes, count }, { chars, chars + count }, { chars, chars + count } };
}

std::string_view iconvert( iconv_t converter, const void *in, size_t inSize, void *out, size_t outSize )
{
    char  *from     = static_cast< char * >( const_cast< void * >( in ) );
    char  *to       = static_cast< char * >( out );
    size_t fromLeft = inSize;
    size_t toLeft   = outSize;
    iconv( converter, &from, &fromLeft, &to, &toLeft );

    return { static_cast< char * >( out ), outSize - toLeft };
}

std::vector< Peer > decodingPeers( const Sample *sample )
{
    iconv_t toUcs4 = iconv_open( "UCS-4LE", sample->set );
#ifdef BENCH_ICU
    UErrorCode  error = U_ZERO_ERROR;
    UConverter *icu   = ucnv_open( sample->set, &error );
#endif
#ifdef BENCH_QT
    QTextCodec *codec = QTextCodec::codecForName( sample->set );
#endif

    return {
        { "iconv",
          [sample, toUcs4]
          {
              std::vector< char32_t > out( sample->bytes.size() );
              std::string_view        bytes =
                  iconvert( toUcs4, sample->bytes.data(), sample->bytes.size(), out.data(), out.size() * 4 );
              show( std::u32string_view( out.data(), bytes.size() / 4 ) );
          } },
#ifdef BENCH_ICU
        { "ICU, 16 bits",
          [sample, icu]
          {
              std::vector< char16_t > out( sample->bytes.size() );
              UErrorCode              status = U_ZERO_ERROR;
              int32_t                 size   = static_cast< int32_t >( out.size() );
              int32_t length = ucnv_toUChars( icu, out.data(), size, sample->bytes.data(), size, &status );
              show( std::u16string_view( out.data(), size_t( length ) ) );
          } },
#endif
#ifdef BENCH_QT
        { "Qt, 16 bits", [sample, codec]
          { show( view( codec->toUnicode( sample->bytes.data(), static_cast< int >( sample->bytes.size() ) ) ) ); } },
#endif
    };
}

std::vector< Peer > encodingPeers( const Sample *sample )
{
    iconv_t fromUcs4 = iconv_open( sample->set, "UCS-4LE" );
#ifdef BENCH_ICU
    UErrorCode  error = U_ZERO_ERROR;
    UConverter *icu   = ucnv_open( sample->set, &error );
#endif
#ifdef BENCH_QT
    QTextCodec *codec = QTextCodec::codecForName( sample->set );
#endif

    return {
        { "iconv",
          [sample, fromUcs4]
          {
              std::vector< uint8_t > out( sample->text.size() );
              show( iconvert( fromUcs4, sample->text.data(), sample->text.size() * 4, out.data(), out.size() ) );
          } },
#ifdef BENCH_ICU
        { "ICU, 16 bits",
          [sample, icu]
          {
              std::vector< uint8_t > out( sample->utf16.size() );
              UErrorCode             status = U_ZERO_ERROR;
              int32_t                size   = static_cast< int32_t >( out.size() );
              int32_t                length = ucnv_fromUChars(
                  icu, reinterpret_cast< char * >( out.data() ), size, sample->utf16.data(), size, &status );
              show( std::string_view( reinterpret_cast< const char * >( out.data() ), size_t( length ) ) );
          } },
#endif
#ifdef BENCH_QT
        { "Qt, 16 bits",
          [sample, codec]
          {
              const QString text = QString::fromRawData(
                  reinterpret_cast< const QChar * >( sample->utf16.data() ),
                  static_cast< int >( sample->utf16.size() ) );
              QByteArray bytes = codec->fromUnicode( text );
              show( std::string_view( bytes.data(), size_t( bytes.size() ) ) );
          } },
#endif
    };
}

void addSet( const char *set, QV_INT charset, const char *languageOfSet )
{
    for( const Language &language : languages() )
    {
        if( !language.isEnglish() && std::string( language.name ) != languageOfSet )
            continue;

        const Sample *sample = createSample( set, charset, language );

        add(
            { set, "to String", language.name, 0.45,
              [sample, charset]
              {
                  QV_STRING *text = qvCharsetBufferToString( charset, sample->buffer );
                  show( text );
                  qvStringRelease( text );
              },
              decodingPeers( sample ) } );
        add(
            { set, "from String", language.name, 0.4,
              [sample, charset]
              {
                  QV_BUFFER *bytes = qvCharsetStringToBuffer( charset, sample->string );
                  show( bytes );
                  qvBufferRelease( bytes );
              },
              encodingPeers( sample ) } );
    }
}
} // namespace

void addCharsetCases()
{
    addSet( "windows-1252", QV_CHARSET_MSFT_CP1252, "German/French" );
    addSet( "ISO-8859-15", QV_CHARSET_ISO_8859_15, "German/French" );
    addSet( "KOI8-R", QV_CHARSET_KOI_8R, "Cyrillic/Greek" );
}
} // namespace bench
