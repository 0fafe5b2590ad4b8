#include "qv/charset/qv_charset.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_enum_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace
{
using qv::Ref;

const QV_INT NO_CODE_PAGE = -1; // what qvCharsetToWindowsCodePage() returns then

struct Charset
{
    const char *enumerant;
    const char *ianaName; // the preferred one
    QV_INT      codePage;
    const char *aliases; // separated by spaces
    QV_CHAR_SOURCE *( *createCharSource )( QV_BYTE_SOURCE *byteSource, QV_INT flags );
    QV_CHAR_SINK *( *createCharSink )( QV_BYTE_SINK *byteSink, QV_INT flags );

    // For a charset with one byte a character, instead of the two functions above.
    const uint16_t *( *chars )()              = nullptr;
    QV___CHARSET_CHAR_TO_BYTE_FUNC charToByte = nullptr;
};

#define MAPPED( Name ) nullptr, nullptr, qv::charsetChars##Name, qv___Charset##Name##MapCharToByte

// In the order of the values.
constexpr Charset charsets[] = {
    { "QV_CHARSET_ASCII", "US-ASCII", 20127,
      "ANSI_X3.4-1968 iso-ir-6 ANSI_X3.4-1986 ISO_646.irv:1991 ASCII ascii ISO646-US us IBM367 cp367 367 "
      "csASCII ISO-10646-UCS-Basic csUnicodeASCII cp20127 20127",
      MAPPED( Ascii ) },
    { "QV_CHARSET_ISO_8859_1", "ISO-8859-1", 28591,
      "ISO_8859-1:1987 iso-ir-100 ISO_8859-1 latin1 l1 IBM819 CP819 819 csISOLatin1 ISO-10646-Unicode-Latin1 "
      "csUnicodeLatin1 ISO-10646 cp28591 28591",
      MAPPED( Iso8859_1 ) },
    { "QV_CHARSET_ISO_8859_2", "ISO-8859-2", 28592,
      "ISO_8859-2:1987 iso-ir-101 ISO_8859-2 latin2 l2 csISOLatin2 cp28592 28592", MAPPED( Iso8859_2 ) },
    { "QV_CHARSET_ISO_8859_3", "ISO-8859-3", 28593,
      "ISO_8859-3:1988 iso-ir-109 ISO_8859-3 latin3 l3 csISOLatin3 cp28593 28593", MAPPED( Iso8859_3 ) },
    { "QV_CHARSET_ISO_8859_4", "ISO-8859-4", 28594,
      "ISO_8859-4:1988 iso-ir-110 ISO_8859-4 latin4 l4 csISOLatin4 cp28594 28594", MAPPED( Iso8859_4 ) },
    { "QV_CHARSET_ISO_8859_5", "ISO-8859-5", 28595,
      "ISO_8859-5:1988 iso-ir-144 ISO_8859-5 cyrillic csISOLatinCyrillic cp28595 28595", MAPPED( Iso8859_5 ) },
    { "QV_CHARSET_ISO_8859_6", "ISO-8859-6", 28596,
      "ISO_8859-6:1987 iso-ir-127 ISO_8859-6 ECMA-114 ASMO-708 arabic csISOLatinArabic cp28596 28596",
      MAPPED( Iso8859_6 ) },
    { "QV_CHARSET_ISO_8859_7", "ISO-8859-7", 28597,
      "ISO_8859-7:1987 iso-ir-126 ISO_8859-7 ELOT_928 ECMA-118 greek greek8 csISOLatinGreek cp28597 28597",
      MAPPED( Iso8859_7 ) },
    { "QV_CHARSET_ISO_8859_8", "ISO-8859-8", 28598,
      "ISO_8859-8:1988 iso-ir-138 ISO_8859-8 hebrew csISOLatinHebrew cp28598 28598", MAPPED( Iso8859_8 ) },
    { "QV_CHARSET_ISO_8859_9", "ISO-8859-9", 28599,
      "ISO_8859-9:1989 iso-ir-148 ISO_8859-9 latin5 l5 csISOLatin5 cp28599 28599", MAPPED( Iso8859_9 ) },
    { "QV_CHARSET_ISO_8859_10", "ISO-8859-10", NO_CODE_PAGE,
      "ISO_8859-10:1992 iso-ir-157 ISO_8859-10 latin6 l6 csISOLatin6", MAPPED( Iso8859_10 ) },
    { "QV_CHARSET_ISO_8859_11", "ISO-8859-11", NO_CODE_PAGE, "ISO_8859-11", MAPPED( Iso8859_11 ) },
    { "QV_CHARSET_ISO_8859_13", "ISO-8859-13", 28603, "ISO_8859-13 latin7 l7 csISOLatin7 cp28603 28603",
      MAPPED( Iso8859_13 ) },
    { "QV_CHARSET_ISO_8859_14", "ISO-8859-14", NO_CODE_PAGE,
      "ISO_8859-14:1998 iso-ir-199 ISO_8859-14 ISO-8859-14 iso-celtic latin8 l8 csISOLatin8", MAPPED( Iso8859_14 ) },
    { "QV_CHARSET_ISO_8859_15", "ISO-8859-15", 28605, "ISO_8859-15 Latin-9 latin9 l9 csISOLatin9 cp28605 28605",
      MAPPED( Iso8859_15 ) },
    { "QV_CHARSET_ISO_8859_16", "ISO-8859-16", NO_CODE_PAGE,
      "ISO_8859-16:2001 iso-ir-226 ISO_8859-16 ISO-8859-16 latin10 l10 csISOLatin10", MAPPED( Iso8859_16 ) },
    { "QV_CHARSET_KOI_8R", "KOI8-R", 20866, "csKOI8R cp20866 20866", MAPPED( Koi8R ) },
    { "QV_CHARSET_MSFT_CP037", "IBM037", 37, "cp037 ebcdic-cp-us ebcdic-cp-ca ebcdic-cp-wt ebcdic-cp-nl csIBM037 037",
      MAPPED( MsftCp037 ) },
    { "QV_CHARSET_MSFT_CP437", "IBM437", 437, "cp437 437 csPC8CodePage437", MAPPED( MsftCp437 ) },
    { "QV_CHARSET_MSFT_CP500", "IBM500", 500, "cp500 ebcdic-cp-be ebcdic-cp-ch csIBM500 500", MAPPED( MsftCp500 ) },
    { "QV_CHARSET_MSFT_CP850", "IBM850", 850, "cp850 850 csPC850Multilingual", MAPPED( MsftCp850 ) },
    { "QV_CHARSET_MSFT_CP852", "IBM852", 852, "cp852 852 csPCp852", MAPPED( MsftCp852 ) },
    { "QV_CHARSET_MSFT_CP855", "IBM855", 855, "cp855 855 csIBM855", MAPPED( MsftCp855 ) },
    { "QV_CHARSET_MSFT_CP857", "IBM857", 857, "cp857 857 csIBM857", MAPPED( MsftCp857 ) },
    { "QV_CHARSET_MSFT_CP860", "IBM860", 860, "cp860 860 csIBM860", MAPPED( MsftCp860 ) },
    { "QV_CHARSET_MSFT_CP861", "IBM861", 861, "cp861 861 csIBM861", MAPPED( MsftCp861 ) },
    { "QV_CHARSET_MSFT_CP862", "IBM862", 862, "cp862 862 csPC862LatinHebrew", MAPPED( MsftCp862 ) },
    { "QV_CHARSET_MSFT_CP863", "IBM863", 863, "cp863 863 csIBM863", MAPPED( MsftCp863 ) },
    { "QV_CHARSET_MSFT_CP864", "IBM864", 864, "cp864 864 csIBM864", MAPPED( MsftCp864 ) },
    { "QV_CHARSET_MSFT_CP865", "IBM865", 865, "cp865 865 csIBM865", MAPPED( MsftCp865 ) },
    { "QV_CHARSET_MSFT_CP866", "IBM866", 866, "cp866 866 csIBM866", MAPPED( MsftCp866 ) },
    { "QV_CHARSET_MSFT_CP869", "IBM869", 869, "cp869 869 cp-gr csIBM869", MAPPED( MsftCp869 ) },
    { "QV_CHARSET_MSFT_CP874", "cp874", 874, "874", MAPPED( MsftCp874 ) },
    { "QV_CHARSET_MSFT_CP875", "cp875", 875, "875", MAPPED( MsftCp875 ) },
    { "QV_CHARSET_MSFT_CP1026", "IBM1026", 1026, "cp1026 csIBM1026 1026", MAPPED( MsftCp1026 ) },
    { "QV_CHARSET_MSFT_CP1250", "windows-1250", 1250, "cp1250 1250", MAPPED( MsftCp1250 ) },
    { "QV_CHARSET_MSFT_CP1251", "windows-1251", 1251, "cp1251 1251", MAPPED( MsftCp1251 ) },
    { "QV_CHARSET_MSFT_CP1252", "windows-1252", 1252, "cp1252 1252", MAPPED( MsftCp1252 ) },
    { "QV_CHARSET_MSFT_CP1253", "windows-1253", 1253, "cp1253 1253", MAPPED( MsftCp1253 ) },
    { "QV_CHARSET_MSFT_CP1254", "windows-1254", 1254, "cp1254 1254", MAPPED( MsftCp1254 ) },
    { "QV_CHARSET_MSFT_CP1255", "windows-1255", 1255, "cp1255 1255", MAPPED( MsftCp1255 ) },
    { "QV_CHARSET_MSFT_CP1256", "windows-1256", 1256, "cp1256 1256", MAPPED( MsftCp1256 ) },
    { "QV_CHARSET_MSFT_CP1257", "windows-1257", 1257, "cp1257 1257", MAPPED( MsftCp1257 ) },
    { "QV_CHARSET_MSFT_CP1258", "windows-1258", 1258, "cp1258 1258", MAPPED( MsftCp1258 ) },
    { "QV_CHARSET_UTF_8", "UTF-8", 65001, "cp65001 65001", qv___CharsetUtf8CharSourceCreate,
      qv___CharsetUtf8CharSinkCreate },
    { "QV_CHARSET_UTF_16", "UTF-16", NO_CODE_PAGE, "", qv___CharsetUtf16CharSourceCreate,
      qv___CharsetUtf16CharSinkCreate },
    { "QV_CHARSET_UTF_16_BE", "UTF-16BE", 1201, "ISO-10646-UCS-2 csUCS2 csUnicode cp1201 1201",
      qv___CharsetUtf16BECharSourceCreate, qv___CharsetUtf16BECharSinkCreate },
    { "QV_CHARSET_UTF_16_LE", "UTF-16LE", 1200, "cp1200 1200", qv___CharsetUtf16LECharSourceCreate,
      qv___CharsetUtf16LECharSinkCreate },
    { "QV_CHARSET_UTF_32", "UTF-32", NO_CODE_PAGE, "", qv___CharsetUtf32CharSourceCreate,
      qv___CharsetUtf32CharSinkCreate },
    { "QV_CHARSET_UTF_32_BE", "UTF-32BE", NO_CODE_PAGE, "ISO-10646-UCS-4 csUCS4", qv___CharsetUtf32BECharSourceCreate,
      qv___CharsetUtf32BECharSinkCreate },
    { "QV_CHARSET_UTF_32_LE", "UTF-32LE", NO_CODE_PAGE, "", qv___CharsetUtf32LECharSourceCreate,
      qv___CharsetUtf32LECharSinkCreate },
};

#undef MAPPED

const QV_INT CHARSETS = sizeof( charsets ) / sizeof( charsets[0] );
static_assert( CHARSETS == QV_CHARSET_UTF_32_LE + 1 );

Ref< QV_STRING > createText( std::string_view ascii )
{
    return Ref< QV_STRING >( qvStringCreateFromAscii( ascii.data(), static_cast< QV_INT >( ascii.size() ) ) );
}

// Calls `take` with each alias of a charset.
template< class Take >
constexpr void eachAlias( const Charset &row, Take take )
{
    for( std::string_view rest = row.aliases; !rest.empty(); )
    {
        size_t length = std::min( rest.find( ' ' ), rest.size() );
        take( std::string_view( rest.begin(), rest.begin() + length ) ); // substr() can throw
        rest.remove_prefix( std::min( length + 1, rest.size() ) );
    }
}

/* All names and aliases, in lower case and in order, each with its charset: a constant table, in which a bisection
   finds a name. */

struct Name
{
    char    folded[26]; // the rest is zero
    uint8_t length;
    uint8_t charset;

    constexpr std::string_view text() const
    {
        return std::string_view( folded, length );
    }
};

constexpr size_t countNames()
{
    size_t count = 0;

    for( const Charset &row : charsets )
    {
        count++;
        eachAlias( row, [&count]( std::string_view ) { count++; } );
    }

    return count;
}

constexpr std::array< Name, countNames() > orderNames()
{
    std::array< Name, countNames() > names = {};
    size_t                           count = 0;

    for( QV_INT cs = 0; cs < CHARSETS; cs++ )
    {
        auto enter = [&]( std::string_view ascii )
        {
            Name &name   = names[count++];
            name.length  = static_cast< uint8_t >( ascii.size() );
            name.charset = static_cast< uint8_t >( cs );

            for( size_t i = 0; i < ascii.size(); i++ )
                name.folded[i] =
                    static_cast< char >( ascii[i] + ( ascii[i] >= 'A' && ascii[i] <= 'Z' ? 'a' - 'A' : 0 ) );
        };

        enter( charsets[cs].ianaName );
        eachAlias( charsets[cs], enter );
    }

    std::sort( names.begin(), names.end(), []( const Name &a, const Name &b ) { return a.text() < b.text(); } );
    return names;
}

constexpr std::array< Name, countNames() > NAMES = orderNames();

// Some aliases differ in case only, but those of one charset.
constexpr bool namesAreUnique()
{
    for( size_t i = 1; i < NAMES.size(); i++ )
        if( NAMES[i - 1].text() == NAMES[i].text() && NAMES[i - 1].charset != NAMES[i].charset )
            return false;

    return true;
}

static_assert( namesAreUnique() );

// True for a name that comes before a folded text.
bool isBefore( const Name &name, QV_STRING *folded )
{
    const QV_CHAR *chs    = qv::chars( folded );
    QV_INT         common = std::min( QV_INT( name.length ), folded->length );

    for( QV_INT i = 0; i < common; i++ )
        if( QV_CHAR ch = static_cast< uint8_t >( name.folded[i] ); ch != chs[i] )
            return ch < chs[i];

    return name.length < folded->length;
}

// An empty String to decode a Buffer into. For a charset with one byte a character it has room for all characters, and
// for one more, so that the read meets the end without growing it.
QV_STRING *createFor( const Charset &row, QV_BUFFER *buffer )
{
    QV_INT count = qvBufferLength( buffer );

    if( !row.chars || count == 0 )
        return qvStringCreate();

    QV_STRING *qvs = qv::createString( count + 1 );
    qvs->dropBack( count + 1 );

    return qvs;
}
} // namespace

void qv___CharsetStartup( void )
{
}

void qv___CharsetShutdown( void )
{
}

/* Names ---------------------------------------------------------------------------------------------------------- */

QV_INT qvCharsetFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qv::parseConstant( qvs, CHARSETS, []( QV_INT cs ) { return charsets[cs].enumerant; } );
}

QV_STRING *qvCharsetToString( QV_INT cs )
{
    QV_CHECK( QV_CHARSET_OK( cs ) );
    return qvStringCreateFromAscii( charsets[cs].enumerant, -1 );
}

QV_INT qvCharsetFromIanaName( QV_STRING *name )
{
    QV_CHECK( name );

    Ref< QV_STRING > fold = Ref< QV_STRING >::share( name );
    qvStringToCaseFold( fold.at() );

    const Name *found = std::lower_bound( NAMES.begin(), NAMES.end(), fold.get(), isBefore );
    bool        named = found != NAMES.end() && qvStringEqualsCstr( fold, found->folded, found->length );

    return named ? found->charset : -1;
}

QV_STRING *qvCharsetToIanaName( QV_INT cs )
{
    QV_CHECK( QV_CHARSET_OK( cs ) );
    return qvStringCreateFromAscii( charsets[cs].ianaName, -1 );
}

QV_VECTOR *qvCharsetIanaNames( QV_INT cs )
{
    QV_CHECK( QV_CHARSET_OK( cs ) );

    Ref< QV_VECTOR > names( qvVectorCreate() );
    auto append        = [&names]( std::string_view name ) { qvVectorAppendString( names.at(), createText( name ) ); };
    const Charset &row = charsets[cs];
    append( row.ianaName );
    eachAlias( row, append );

    return names.give();
}

QV_INT qvCharsetFromWindowsCodePage( QV_INT cp )
{
    QV_CHECK( cp >= 0 );

    for( QV_INT cs = 0; cs < CHARSETS; cs++ )
        if( charsets[cs].codePage == cp )
            return cs;

    return -1;
}

QV_INT qvCharsetToWindowsCodePage( QV_INT cs )
{
    QV_CHECK( QV_CHARSET_OK( cs ) );
    return charsets[cs].codePage;
}

/* Conversion ----------------------------------------------------------------------------------------------------- */

QV_CHAR_SOURCE *qvCharsetCreateCharSource( QV_BYTE_SOURCE *byteSource, QV_INT charset, QV_INT flags )
{
    QV_CHECK( byteSource );
    QV_CHECK( QV_CHARSET_OK( charset ) );

    const Charset &row = charsets[charset];
    flags              = qvCharsetFlagsNormalize( flags );

    return row.chars ? qv::createMapCharSource( byteSource, flags, row.chars() )
                     : row.createCharSource( byteSource, flags );
}

QV_CHAR_SINK *qvCharsetCreateCharSink( QV_BYTE_SINK *byteSink, QV_INT charset, QV_INT flags )
{
    QV_CHECK( byteSink );
    QV_CHECK( QV_CHARSET_OK( charset ) );

    const Charset &row = charsets[charset];
    flags              = qvCharsetFlagsNormalize( flags );

    return row.charToByte ? qv___CharsetMapCharSinkCreate( byteSink, flags, row.charToByte )
                          : row.createCharSink( byteSink, flags );
}

QV_STRING *qvCharsetBufferToString( QV_INT charset, QV_BUFFER *buffer )
{
    return qvCharsetBufferToStringWithFlags( charset, buffer, 0 );
}

QV_STRING *qvCharsetBufferToStringWithFlags( QV_INT charset, QV_BUFFER *buffer, QV_INT flags )
{
    QV_CHECK( QV_CHARSET_OK( charset ) );
    QV_CHECK( buffer );

    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buffer ) );
    Ref< QV_BYTE_SOURCE >        bytes( qvBufferByteSourceByteSource( bbs ) );
    Ref< QV_CHAR_SOURCE >        chars( qvCharsetCreateCharSource( bytes, charset, flags ) );
    Ref< QV_STRING >             string( createFor( charsets[charset], buffer ) );

    while( !qvCharSourceEnd( chars ) )
        qvCharSourceRead( chars, string.at(), -1 );

    return qvCharSourceError( chars ) ? nullptr : string.give();
}

QV_BUFFER *qvCharsetStringToBuffer( QV_INT charset, QV_STRING *string )
{
    return qvCharsetStringToBufferWithFlags( charset, string, 0 );
}

QV_BUFFER *qvCharsetStringToBufferWithFlags( QV_INT charset, QV_STRING *string, QV_INT flags )
{
    QV_CHECK( QV_CHARSET_OK( charset ) );
    QV_CHECK( string );

    Ref< QV_BUFFER_BYTE_SINK > bbs( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        bytes( qvBufferByteSinkByteSink( bbs ) );
    Ref< QV_CHAR_SINK >        chars( qvCharsetCreateCharSink( bytes, charset, flags ) );

    qvCharSinkWrite( chars, string );
    qvCharSinkFlush( chars );

    return qvCharSinkError( chars ) ? nullptr : qvBufferByteSinkBuffer( bbs );
}
