// Every charset in both directions, against models that go by the letter of the rules.

#include "qv_test_stream.h"
#include "qv_test_utf8.h"

#include "qv/base/qv_string_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/sys/qv_utf8_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"

#include <algorithm>
#include <map>
#include <random>

using qv::Ref;
using namespace qv::test;
using namespace std::string_literals;

namespace
{
const QV_INT ABORT    = QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER;
const QV_INT IGNORE   = QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS;
const QV_INT KEEP     = QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;
const QV_INT INSERT   = QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK;
const QV_INT CHARSETS = QV_CHARSET_UTF_32_LE + 1;

const struct Map
{
    const char                    *name;
    QV___CHARSET_BYTE_TO_CHAR_FUNC byteToChar;
    QV___CHARSET_CHAR_TO_BYTE_FUNC charToByte;
} MAPS[] = {
#define MAP( Name ) { #Name, qv___Charset##Name##MapByteToChar, qv___Charset##Name##MapCharToByte },
    QV___CHARSET_MAPS( MAP )
#undef MAP
};

bool isUtf16( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_16 && charset <= QV_CHARSET_UTF_16_LE;
}

bool isBigEndian( QV_INT charset )
{
    return charset == QV_CHARSET_UTF_16_BE || charset == QV_CHARSET_UTF_32_BE;
}

// What a conversion gives, and whether it fails.
template< class Text >
struct Result
{
    Text text   = {};
    bool failed = false;

    bool operator==( const Result & ) const = default;

    friend void PrintTo( const Result &result, std::ostream *out )
    {
        *out << testing::PrintToString( result.text ) << ( result.failed ? " and failed" : "" );
    }
};

typedef Result< std::u32string > Decoded;
typedef Result< std::string >    Encoded;

// What becomes of faults by the flags. After a failure nothing comes any more.
template< class Text >
Result< Text > withFaults( const std::u32string &marked, QV_INT flags, auto put, auto putFault )
{
    Result< Text > result;
    flags = qvCharsetFlagsNormalize( flags );

    for( QV_CHAR ch : marked )
    {
        if( ch != FAULT )
            put( result.text, ch );
        else if( flags & ABORT )
            return { result.text, true };
        else if( !( flags & IGNORE ) )
            putFault( result.text );
    }

    return result;
}

/* Models --------------------------------------------------------------------------------------------------------- */

Decoded modelOfSource( QV_INT charset, const std::string &bytes, QV_INT flags )
{
    std::u32string marked;
    bool           isUtf = charset >= QV_CHARSET_UTF_8;
    QV_CHAR        ch;

    auto byte = [&]( size_t at ) { return static_cast< uint8_t >( bytes[at] ); };

    if( !isUtf )
    {
        for( size_t i = 0; i < bytes.size(); i++ )
            marked += MAPS[charset].byteToChar( byte( i ), &ch ) ? ch : FAULT;
    }
    else if( charset == QV_CHARSET_UTF_8 )
    {
        marked = decodedUtf8( bytes, true );

        // A fault that leaves nothing does not count as the first character.
        size_t first = flags & IGNORE ? std::min( marked.find_first_not_of( FAULT ), marked.size() ) : 0;

        if( first < marked.size() && marked[first] == 0xFEFF && !( flags & KEEP ) )
            marked.erase( first, 1 );
    }
    else
    {
        size_t size = isUtf16( charset ) ? 2 : 4;
        bool   big = isBigEndian( charset ), marks = charset == QV_CHARSET_UTF_16 || charset == QV_CHARSET_UTF_32;
        size_t at  = 0;

        auto unit = [&]( size_t from, bool bigEndian )
        {
            QV_CHAR value = 0;

            for( size_t k = 0; k < size; k++ )
                value = value << 8 | byte( from + ( bigEndian ? k : size - 1 - k ) );

            return value;
        };

        if( marks && !( flags & KEEP ) && bytes.size() >= size &&
            ( unit( 0, true ) == 0xFEFF || unit( 0, false ) == 0xFEFF ) )
        {
            big = unit( 0, true ) == 0xFEFF;
            at  = size;
        }

        for( ; at + size <= bytes.size(); at += size )
        {
            ch = unit( at, big );

            if( size == 2 && ch / 0x400 == 0x36 && at + 4 <= bytes.size() && unit( at + 2, big ) / 0x400 == 0x37 )
            {
                ch = 0x10000 + ch % 0x400 * 0x400 + unit( at + 2, big ) % 0x400;
                at += 2;
            }

            marked += ch < 0x110000 ? ch : FAULT;
        }

        if( at < bytes.size() )
            marked += FAULT;
    }

    return withFaults< std::u32string >(
        marked, flags, []( auto &text, QV_CHAR each ) { text += each; }, []( auto &text ) { text += U'\uFFFD'; } );
}

// Characters of 0x110000 and above are in no charset but UTF-16 and UTF-32, which take any value.
Encoded modelOfSink( QV_INT charset, const std::u32string &chars, QV_INT flags )
{
    std::u32string marked;

    if( charset == QV_CHARSET_UTF_8 )
    {
        for( QV_CHAR ch : ( flags & INSERT ? U"\uFEFF" : U"" ) + chars )
            marked += ch < 0x110000 ? ch : FAULT;

        return withFaults< std::string >(
            marked, flags, []( auto &text, QV_CHAR each ) { text += encodedUtf8( each ); },
            []( auto &text ) { text += "\xEF\xBF\xBD"; } );
    }

    if( charset > QV_CHARSET_UTF_8 )
    {
        Encoded result;
        bool    big = isBigEndian( charset );

        auto put = [&]( QV_CHAR value, int size )
        {
            for( int k = 0; k < size; k++ )
                result.text += static_cast< char >( value >> 8 * ( big ? size - 1 - k : k ) );
        };

        for( QV_CHAR ch : ( flags & INSERT ? U"\uFEFF" : U"" ) + chars )
        {
            if( isUtf16( charset ) && ch >= 0x10000 )
                put( 0xD800 + ( ( ch - 0x10000 ) >> 10 ), 2 );

            if( isUtf16( charset ) )
                put( ch < 0x10000 ? ch : 0xDC00 + ch % 0x400, 2 );
            else
                put( ch, 4 );
        }

        return result;
    }

    // What is none ends a text that is composed.
    for( size_t at = 0; at <= chars.size(); at++ )
    {
        size_t end = at;

        while( end < chars.size() && chars[end] < 0x110000 )
            end++;

        Ref< QV_STRING >             composed( qvStringCreate() );
        Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC ) );
        qvUnicodeNormalizerWriteChars( norm, chars.data() + at, static_cast< QV_INT >( end - at ) );
        qvUnicodeNormalizerFlush( norm );
        qvUnicodeNormalizerRead( norm, composed.at(), -1 );

        for( QV_CHAR ch : qv::test::chars( composed ) )
        {
            uint8_t byte;
            marked += MAPS[charset].charToByte( ch, &byte ) ? QV_CHAR( byte ) : FAULT;
        }

        if( end < chars.size() )
            marked += FAULT;

        at = end;
    }

    uint8_t replacement;
    EXPECT_TRUE( MAPS[charset].charToByte( U'?', &replacement ) );

    return withFaults< std::string >(
        marked, flags, []( auto &text, QV_CHAR byte ) { text += static_cast< char >( byte ); },
        [&]( auto &text ) { text += static_cast< char >( replacement ); } );
}

/* Streams -------------------------------------------------------------------------------------------------------- */

Ref< QV_CHAR_SOURCE > sourceOf( QV_INT charset, std::string_view from, QV_INT flags )
{
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buffer( from ) ) );
    Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );

    return Ref< QV_CHAR_SOURCE >( qvCharsetCreateCharSource( byteSource, charset, flags ) );
}

// By reads without a limit or, with a generator, in pieces through either kind of read.
Decoded decode( QV_INT charset, std::string_view from, QV_INT flags = 0, std::mt19937 *random = nullptr )
{
    Ref< QV_CHAR_SOURCE > source = sourceOf( charset, from, flags );
    Ref< QV_STRING >      qvs( qvStringCreate() );

    while( !qvCharSourceEnd( source ) )
    {
        QV_INT limit = !random ? -1 : ( *random )() % 3 ? ( *random )() % 7 + 1 : ( *random )() % 2000 + 1;

        if( !random || ( *random )() % 2 )
            qvCharSourceRead( source, qvs.at(), limit );
        else
        {
            std::u32string piece( limit, U'?' );
            QV_INT         count = qvCharSourceReadChars( source, piece.data(), limit );
            qvStringAppendChars( qvs.at(), piece.data(), count );
        }
    }

    EXPECT_GE( ( qvStringLength( qvs ) + 128 ) * 4, allocated( qvs.get() ) ); // no more free places than any String has
    return { qv::test::chars( qvs ), qvCharSourceError( source ) == QV_TRUE };
}

// A String of any values, which no caller can make: what a sink has to be safe from all the same.
Ref< QV_STRING > anyText( const std::u32string &values )
{
    Ref< QV_STRING > qvs = text( std::u32string( values.size(), U'x' ) );
    std::copy( values.begin(), values.end(), qv::chars( qvs ) );

    return qvs;
}

Encoded encode( QV_INT charset, const std::u32string &values, QV_INT flags = 0, std::mt19937 *random = nullptr )
{
    Ref< QV_BUFFER_BYTE_SINK > bbs( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        byteSink( qvBufferByteSinkByteSink( bbs ) );
    Ref< QV_CHAR_SINK >        sink( qvCharsetCreateCharSink( byteSink, charset, flags ) );
    Ref< QV_STRING >           qvs    = anyText( values );
    QV_INT                     length = static_cast< QV_INT >( values.size() );

    for( QV_INT at = 0; at < length; )
    {
        QV_INT piece = random ? ( *random )() % ( ( *random )() % 4 ? 12 : 3000 ) : length;
        QV_INT count = std::min( length - at, piece );
        qvCharSinkWriteInner( sink, qvs, at, count );
        at += count;
    }

    qvCharSinkFlush( sink );
    bool failed = qvCharSinkError( sink );
    sink.reset();

    return { bytes( Ref< QV_BUFFER >( qvBufferByteSinkBuffer( bbs ) ) ), failed };
}

// Most charsets once, UTF-8 on every kernel that the machine has.
template< class Body >
void forEachCharset( Body body )
{
    for( QV_INT charset = 0; charset < CHARSETS; charset++ )
        for( QV_INT kernel = charset == QV_CHARSET_UTF_8 ? 0 : 2; kernel <= qv::utf8::VECTORS_32; kernel++ )
        {
            qv___Utf8ForceKernel( kernel );
            SCOPED_TRACE( "charset " + std::to_string( charset ) + " on kernel " + std::to_string( kernel ) );
            body( charset, charset == QV_CHARSET_UTF_8 ? 700 : charset > QV_CHARSET_UTF_8 ? 150 : 25 );
        }

    qv___Utf8ForceKernel( -1 );
}
} // namespace

TEST( Codec, SourcesDecodeAsTheModelDoes )
{
    const std::string PIECES[] = { "\xEF\xBB\xBF",     "\xC3\xA9",     "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                   "\xF4\x90\x80\x80", "\xED\xA0\x80", "\xC0\x80",     "plain text of 23 bytes ",
                                   "\xD0\xB4\xD0\xB0",
                                   "\xFF\xFE"s, "\0\0\xFE\xFF"s, "\xD8\x3D\xDE\x00"s, "\xD8\x3D"s,
                                   "\0\x11\0\0"s, "\xFF\xFE\0\0"s, "\0A\0B"s };

    forEachCharset(
        [&]( QV_INT charset, int rounds )
        {
            std::mt19937 random( 8 + charset );

            for( int round = 0; round < rounds; round++ )
            {
                // Half of the texts go over the end of a cache with their first pieces.
                std::string from( random() % 2 ? 1000 + random() % 26 : 0, '-' );
                bool        dirty = random() % 2;
                size_t      kinds = charset == QV_CHARSET_UTF_8 ? 9 : std::size( PIECES );

                for( unsigned i = random() % ( round % 10 ? 20 : 400 ); i > 0; i-- )
                {
                    if( dirty && random() % 4 == 0 )
                        from += static_cast< char >( random() );
                    else
                        from += PIECES[random() % kinds];
                }

                QV_INT  flags    = random() % 8;
                Decoded expected = modelOfSource( charset, from, flags );

                Ref< QV_STRING > whole( qvCharsetBufferToStringWithFlags( charset, buffer( from ), flags ) );
                ASSERT_EQ( expected.failed, !whole ) << "round " << round;
                ASSERT_TRUE( !whole || expected.text == qv::test::chars( whole ) ) << "round " << round;
                ASSERT_TRUE( !whole || allocated( whole.get() ) <= ( qvStringLength( whole ) + 128 ) * 4 );

                ASSERT_EQ( expected, decode( charset, from, flags ) ) << "round " << round;
                ASSERT_EQ( expected, decode( charset, from, flags, &random ) ) << "round " << round;
            }
        } );
}

TEST( Codec, SinksEncodeAsTheModelDoes )
{
    const std::u32string KINDS[] = {
        U"the quick brown fox", U"aeiouAEO", U"\u0300\u0301\u0302\u0308\u0323", U"éüßÿ", U"привет, йод", U"αβγώ",
        U"\u1100\u1161\u11A8\uAC00", U"\u20AC\u2019\u4E2D", U"\U0001F600", U"a\u2000\u2001\u2002\u20CF\u20D0\u02FF",
        { 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFEFF, 0xFFFF, 0x10000, 0x10FFFF }, { 0xD83D, 0xDE00 },
        { 0x110000, 0x110041, 0x1000041, 0x7FFFFFFF, 0x80000000, 0x80000041, 0x80000301, 0xFFFFFF41, 0xFFFFFFFF } };

    forEachCharset(
        [&]( QV_INT charset, int rounds )
        {
            std::mt19937 random( 82 + charset );

            for( int round = 0; round < rounds; round++ )
            {
                std::u32string values;

                for( size_t runs = random() % 40; runs > 0; runs-- )
                {
                    const std::u32string &kind = KINDS[random() % ( round % 3 ? 10 : std::size( KINDS ) )];

                    for( size_t count = random() % ( random() % 8 ? 20 : 1500 ); count > 0; count-- )
                        values += kind[random() % kind.size()];
                }

                QV_INT  flags    = random() % 16;
                Encoded expected = modelOfSink( charset, values, flags );
                Encoded got      = encode( charset, values, flags, &random );

                ASSERT_EQ( expected.failed, got.failed ) << "round " << round;

                // What a failed sink still had in its cache stays there.
                if( got.failed )
                    ASSERT_EQ( expected.text.substr( 0, got.text.size() ), got.text ) << "round " << round;
                else
                    ASSERT_EQ( expected, got ) << "round " << round;
            }
        } );
}

TEST( Codec, ExamplesComeOutAsTheyShould )
{
    const struct
    {
        QV_INT      charset;
        std::string from;
        QV_INT      flags;
        Decoded     expected;
    } SOURCES[] = {
        { QV_CHARSET_UTF_8, "\xEF\xBB\xBF"s "A", 0, { U"A" } },
        { QV_CHARSET_UTF_8, "\xEF\xBB\xBF"s "A", KEEP, { U"\uFEFFA" } },
        { QV_CHARSET_UTF_8, "\xEF\xBB\xBF\xEF\xBB\xBF", 0, { U"\uFEFF" } },
        { QV_CHARSET_UTF_8, "\xFF\xEF\xBB\xBF", 0, { U"\uFFFD\uFEFF" } },
        { QV_CHARSET_UTF_8, "\xE2"s "AB", 0, { U"\uFFFD"s U"B" } },
        { QV_CHARSET_UTF_8, "\x80\x80"s "A", 0, { U"\uFFFD"s U"A" } },
        { QV_CHARSET_UTF_8, "A\xE2\x82", 0, { U"A\uFFFD" } },
        { QV_CHARSET_UTF_8, "A\xC3\xA9\xE2\x82", ABORT, { U"A\u00E9", true } },
        { QV_CHARSET_UTF_8, "\xF4\x90\x80\x80", 0, { U"\uFFFD" } },
        { QV_CHARSET_UTF_8, "\xC0\x80\xED\xA0\x80", 0, { { 0, 0xD800 } } },
        { QV_CHARSET_UTF_16, "A\0"s, 0, { U"A" } },
        { QV_CHARSET_UTF_16, "\xFE\xFF\0A"s, 0, { U"A" } },
        { QV_CHARSET_UTF_16_BE, "\xFE\xFF\0A"s, 0, { U"\uFEFFA" } },
        { QV_CHARSET_UTF_16_LE, "A\0B"s, 0, { U"A\uFFFD" } },
        { QV_CHARSET_UTF_16_LE, "\x3D\xD8\0\xDE"s, 0, { U"\U0001F600" } },
        { QV_CHARSET_UTF_32, "\0\0\xFE\xFF\0\0\0A"s, 0, { U"A" } },
        { QV_CHARSET_UTF_32_BE, "\0\0\xD8\0\0\x11\0\0\0"s, IGNORE, { std::u32string( 1, QV_CHAR( 0xD800 ) ) } },
        { QV_CHARSET_MSFT_CP1252, "\x80\x93\x9E", 0, { U"\u20AC\u201C\u017E" } },
        { QV_CHARSET_ISO_8859_15, "\xA4", 0, { U"\u20AC" } },
        { QV_CHARSET_ISO_8859_1, "\xA4", 0, { U"\u00A4" } },
        { QV_CHARSET_KOI_8R, "\xD0\xD2\xC9\xD7\xC5\xD4", 0, { U"привет" } },
        { QV_CHARSET_MSFT_CP1251, "\xEF\xF0\xE8\xE2\xE5\xF2", 0, { U"привет" } },
        { QV_CHARSET_MSFT_CP866, "\xAF\xE0\xA8\xA2\xA5\xE2", 0, { U"привет" } },
        { QV_CHARSET_MSFT_CP037, "\xC1\xC2\xC3\x40\xF1\xF2\xF3", 0, { U"ABC 123" } },
        { QV_CHARSET_MSFT_CP437, "\x82", 0, { U"\u00E9" } },
        { QV_CHARSET_ISO_8859_7, "\xE1\xE2\xE3", 0, { U"αβγ" } },
        { QV_CHARSET_ISO_8859_8, "\xF9\xEC\xE5\xED\xA1", 0, { U"שלום\uFFFD" } },
        { QV_CHARSET_ASCII, "a\xFF"s "b", ABORT, { U"a", true } },
    };

    for( const auto &c : SOURCES )
        EXPECT_EQ( c.expected, decode( c.charset, c.from, c.flags ) ) << &c - SOURCES;

    const struct
    {
        QV_INT         charset;
        std::u32string values;
        QV_INT         flags;
        Encoded        expected;
    } SINKS[] = {
        { QV_CHARSET_UTF_8, U"\U0001F600", INSERT, { "\xEF\xBB\xBF\xF0\x9F\x98\x80" } },
        { QV_CHARSET_UTF_8, std::u32string( 64, U'x' ) + U'\x80000000' + std::u32string( 63, U'x' ), IGNORE,
          { std::string( 127, 'x' ) } },
        { QV_CHARSET_UTF_16, U"A", INSERT, { "\xFF\xFE"s "A\0"s } },
        { QV_CHARSET_UTF_16_BE, U"\U0001F600", 0, { "\xD8\x3D\xDE\0"s } },
        { QV_CHARSET_UTF_32_BE, U"\U0001F600", INSERT, { "\0\0\xFE\xFF\0\x01\xF6\0"s } },
        { QV_CHARSET_ISO_8859_1, U"e\u0301", 0, { "\xE9" } },
        { QV_CHARSET_ISO_8859_1, U"ae"s + U'\x80000301' + U"\u0301b", 0, { "ae??b" } },
        { QV_CHARSET_ASCII, U"a\u00E9b", 0, { "a?b" } },
        { QV_CHARSET_ASCII, U"a\u00E9b", IGNORE, { "ab" } },
        { QV_CHARSET_ASCII, U"a\u00E9b", ABORT, { "a", true } },
        { QV_CHARSET_MSFT_CP037, U"\u4E2D", 0, { "\x6F" } }, // its own question mark
    };

    for( const auto &c : SINKS )
        EXPECT_EQ( c.expected, encode( c.charset, c.values, c.flags ) ) << &c - SINKS;
}

TEST( Codec, CharactersMapToTheirLowestByteAndNothingElseDoes )
{
    ASSERT_EQ( 44u, std::size( MAPS ) );

    for( const Map &map : MAPS )
    {
        std::map< QV_CHAR, int > lowest;
        QV_CHAR                  ch;
        uint8_t                  byte;

        for( int each = 255; each >= 0; each-- )
            if( map.byteToChar( static_cast< uint8_t >( each ), &ch ) )
                lowest[ch] = each;

        for( ch = 0; ch < 0x110000; ch++ )
            if( map.charToByte( ch, &byte ) )
            {
                ASSERT_EQ( lowest[ch], byte ) << map.name << " " << static_cast< uint32_t >( ch );
                lowest.erase( ch );
            }

        EXPECT_TRUE( lowest.empty() ) << map.name;
    }
}

TEST( Codec, ReadingAppendsToACopyOfASharedString )
{
    Ref< QV_STRING >      qvs = text( "ab" ), other = Ref< QV_STRING >::share( qvs );
    Ref< QV_CHAR_SOURCE > source = sourceOf( QV_CHARSET_UTF_8, "cde", 0 );

    EXPECT_EQ( 2, qvCharSourceRead( source, qvs.at(), 2 ) );
    EXPECT_FALSE( qvCharSourceEnd( source ) );
    EXPECT_EQ( "abcd", utf8( qvs ) );
    EXPECT_EQ( "ab", utf8( other ) );
    EXPECT_EQ( 1, qvCharSourceRead( source, qvs.at(), 2 ) );
    EXPECT_TRUE( qvCharSourceEnd( source ) );
}

TEST( Codec, FailuresBelowComeBehindWhatWentWell )
{
    for( QV_INT charset : { QV_CHARSET_ASCII, QV_CHARSET_UTF_8, QV_CHARSET_UTF_16_BE, QV_CHARSET_UTF_32_BE } )
    {
        SourceLog< Bytes >    from { .data = modelOfSink( charset, U"good", 0 ).text, .fails = true };
        Ref< QV_BYTE_SOURCE > byteSource = from.source();
        Ref< QV_CHAR_SOURCE > source( qvCharsetCreateCharSource( byteSource, charset, 0 ) );
        Ref< QV_STRING >      qvs( qvStringCreate() );

        EXPECT_EQ( 4, qvCharSourceRead( source, qvs.at(), -1 ) );
        EXPECT_TRUE( qvCharSourceError( source ) );
        EXPECT_EQ( "good", utf8( qvs ) );

        SinkLog< Bytes > to;
        to.callsUntilFailure         = 1;
        Ref< QV_BYTE_SINK > byteSink = to.sink();
        Ref< QV_CHAR_SINK > sink( qvCharsetCreateCharSink( byteSink, charset, 0 ) );

        EXPECT_FALSE( qvCharSinkWrite( sink, text( std::u32string( 5000, U'x' ) ) ) );
        EXPECT_FALSE( qvCharSinkFlush( sink ) );
        EXPECT_EQ( "ww", to.calls );
        EXPECT_LE( 1020u, to.written.size() );
    }
}

TEST( Codec, SinksHandDownTheirCacheWhenItIsFull )
{
    const struct
    {
        QV_INT         charset;
        std::u32string values;
        std::string    lengths;
    } CASES[] = {
        // A character goes over as a whole; the last cache stays until the flush.
        { QV_CHARSET_UTF_8, std::u32string( 1024, U'x' ), "1024 " },
        { QV_CHARSET_UTF_8, std::u32string( 2049, U'x' ), "1024 1024 1 " },
        { QV_CHARSET_UTF_8, std::u32string( 400, U'\u20AC' ), "1023 177 " },
        { QV_CHARSET_UTF_8, std::u32string( 1022, U'x' ) + U"\u20AC", "1022 3 " },
        { QV_CHARSET_UTF_8, std::u32string( 1021, U'x' ) + U"\u20AC", "1024 " },
        { QV_CHARSET_UTF_16_BE, std::u32string( 511, U'x' ), "1020 2 " },
        { QV_CHARSET_UTF_16_BE, std::u32string( 300, U'\U0001F600' ) + U"x", "1020 182 " },
        { QV_CHARSET_UTF_32_BE, std::u32string( 257, U'x' ), "1024 4 " },
        { QV_CHARSET_ISO_8859_1, std::u32string( 1026, U'x' ), "1024 2 " },
    };

    for( const auto &c : CASES )
    {
        std::string lengths;
        auto        write = []( QV_OBJ *closure, QV_BUFFER *, QV_INT, QV_INT count ) -> QV_BOOL
        {
            *logOf< std::string >( closure ) += std::to_string( count ) + " ";
            return QV_TRUE;
        };
        auto flush = []( QV_OBJ *closure ) -> QV_BOOL
        {
            *logOf< std::string >( closure ) += "flushed";
            return QV_TRUE;
        };

        Ref< QV_BYTE_SINK > byteSink( qv___ByteSinkCreate( write, flush, qv::obj( closureOf( &lengths ).get() ) ) );
        Ref< QV_CHAR_SINK > sink( qvCharsetCreateCharSink( byteSink, c.charset, 0 ) );

        // Flushing reaches the cache, but not the byte sink, which is flushed when it ends.
        EXPECT_TRUE( qvCharSinkWrite( sink, text( c.values ) ) );
        EXPECT_TRUE( qvCharSinkFlush( sink ) );
        EXPECT_EQ( c.lengths, lengths );
        sink.reset();
        byteSink.reset();
        EXPECT_EQ( c.lengths + "flushed", lengths );
    }
}
