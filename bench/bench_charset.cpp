#include "bench.h"

#include <iconv.h>

#ifdef BENCH_ICU
#include <unicode/ucnv.h>
#endif
#ifdef BENCH_QT
#include <QString>
#include <QTextCodec>
#endif

// Character sets with one byte a character: whole texts to String and back. Answers are lengths and the last letter.

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

uint64_t answer( size_t length, uint32_t letter )
{
    return static_cast< uint64_t >( length ) << 32 | letter;
}

uint64_t iconvConvert( iconv_t converter, const void *in, size_t inSize, void *out, size_t outSize )
{
    char  *from     = static_cast< char * >( const_cast< void * >( in ) );
    char  *to       = static_cast< char * >( out );
    size_t fromLeft = inSize;
    size_t toLeft   = outSize;
    iconv( converter, &from, &fromLeft, &to, &toLeft );

    return outSize - toLeft;
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
              size_t                  length =
                  iconvConvert( toUcs4, sample->bytes.data(), sample->bytes.size(), out.data(), out.size() * 4 ) / 4;
              return answer( length, out[length - 2] );
          } },
#ifdef BENCH_ICU
        { "ICU",
          [sample, icu]
          {
              std::vector< char16_t > out( sample->bytes.size() );
              UErrorCode              status = U_ZERO_ERROR;
              int32_t                 size   = static_cast< int32_t >( out.size() );
              int32_t length = ucnv_toUChars( icu, out.data(), size, sample->bytes.data(), size, &status );
              return answer( static_cast< size_t >( length ), out[static_cast< size_t >( length ) - 2] );
          } },
#endif
#ifdef BENCH_QT
        { "Qt",
          [sample, codec]
          {
              QString text = codec->toUnicode( sample->bytes.data(), static_cast< int >( sample->bytes.size() ) );
              return answer( static_cast< size_t >( text.size() ), text.at( text.size() - 2 ).unicode() );
          } },
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
              size_t                 length =
                  iconvConvert( fromUcs4, sample->text.data(), sample->text.size() * 4, out.data(), out.size() );
              return answer( length, out[length - 2] );
          } },
#ifdef BENCH_ICU
        { "ICU",
          [sample, icu]
          {
              std::vector< uint8_t > out( sample->utf16.size() );
              UErrorCode             status = U_ZERO_ERROR;
              int32_t                size   = static_cast< int32_t >( out.size() );
              int32_t                length = ucnv_fromUChars(
                  icu, reinterpret_cast< char * >( out.data() ), size, sample->utf16.data(), size, &status );
              return answer( static_cast< size_t >( length ), out[static_cast< size_t >( length ) - 2] );
          } },
#endif
#ifdef BENCH_QT
        { "Qt",
          [sample, codec]
          {
              const QString text = QString::fromRawData(
                  reinterpret_cast< const QChar * >( sample->utf16.data() ),
                  static_cast< int >( sample->utf16.size() ) );
              QByteArray bytes = codec->fromUnicode( text );
              return answer(
                  static_cast< size_t >( bytes.size() ), static_cast< uint8_t >( bytes.at( bytes.size() - 2 ) ) );
          } },
#endif
    };
}

void addSet( const char *set, QV_INT charset, const char *languageOfSet )
{
    for( const Language &language : languages() )
    {
        if( !language.isEnglish && std::string( language.name ) != languageOfSet )
            continue;

        const Sample *sample = createSample( set, charset, language );

        add(
            set, "to String", language.name, 0.8,
            [sample, charset]
            {
                QV_STRING *text   = qvCharsetBufferToString( charset, sample->buffer );
                QV_INT     length = qvStringLength( text );
                uint64_t   result = answer( static_cast< size_t >( length ), qvStringCharAt( text, length - 2 ) );
                qvStringRelease( text );
                return result;
            },
            decodingPeers( sample ) );

        add(
            set, "from String", language.name, 0.6,
            [sample, charset]
            {
                QV_BUFFER     *buffer = qvCharsetStringToBuffer( charset, sample->string );
                QV_INT         length = qvBufferLength( buffer );
                const uint8_t *bytes  = static_cast< const uint8_t * >( qvBufferBacking( buffer ) );
                uint64_t       result = answer( static_cast< size_t >( length ), bytes[length - 2] );
                qvBufferRelease( buffer );
                return result;
            },
            encodingPeers( sample ) );
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
