// Every charset beside a reader and a writer of its rules: any bytes, decoded at once and in pieces through either kind
// of read, with every treatment of what is invalid; any text, encoded. The tables of single bytes are those of single
// bytes.

#include "qv_fuzz_models.h"

#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_source.h"

#include <map>

using namespace qv::fuzz;
using qv::Ref;

namespace
{
enum Flags
{
    ABORT       = 1,
    IGNORE      = 2,
    KEEP_MARK   = 4,
    INSERT_MARK = 8
};

// Decodes by the rules; `failed` if something was invalid and the flags let that fail.
struct Decoder
{
    QV_INT      flags;
    std::string bytes;
    Text        text   = {};
    bool        failed = false;

    bool invalid()
    {
        if( flags & IGNORE )
            return true;

        failed = flags & ABORT;

        if( !failed )
            text += U'\uFFFD';

        return !failed;
    }

    uint32_t unit( size_t at, int count, bool little ) const
    {
        uint32_t value = 0;

        for( int i = 0; i < count; i++ )
            value |= static_cast< uint32_t >( static_cast< uint8_t >( bytes[at + static_cast< size_t >( i )] ) )
                     << 8 * ( little ? i : count - 1 - i );

        return value;
    }

    void utf8()
    {
        bool     skipping = false, first = true;
        uint32_t value   = 0;
        int      missing = 0;
        auto     add     = [&]( uint32_t ch )
        {
            if( !( first && ch == 0xFEFF && !( flags & KEEP_MARK ) ) )
                text += ch;

            first = false;
        };

        for( char c : bytes )
        {
            uint8_t byte = static_cast< uint8_t >( c );
            bool    tail = byte >> 6 == 2;

            if( missing > 0 && tail )
            {
                value = value << 6 | ( byte & 63 );

                if( --missing > 0 )
                    continue;

                if( value < 0x110000 )
                    add( value );
                else if( !invalid() )
                    return;
                else
                    first = first && flags & IGNORE;
            }
            else if( missing > 0 || ( !skipping && tail ) || byte >= 0xF8 )
            {
                // What breaks a sequence goes with it.
                skipping = true, missing = 0;

                if( !invalid() )
                    return;

                first = first && flags & IGNORE;
            }
            else if( tail )
                continue;
            else if( skipping = false; byte < 0x80 )
                add( byte );
            else
            {
                missing = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
                value   = byte & ( 0x3Fu >> missing );
            }
        }

        if( missing > 0 )
            invalid();
    }

    void wide( int count, QV_INT charset )
    {
        bool   little = charset != QV_CHARSET_UTF_16_BE && charset != QV_CHARSET_UTF_32_BE;
        bool   marked = charset == QV_CHARSET_UTF_16 || charset == QV_CHARSET_UTF_32;
        size_t at = 0, width = static_cast< size_t >( count );

        if( marked && !( flags & KEEP_MARK ) && bytes.size() >= width )
        {
            if( unit( 0, count, true ) == 0xFEFF )
                at = width;
            else if( unit( 0, count, false ) == 0xFEFF )
                at = width, little = false;
        }

        for( ; at + width <= bytes.size(); at += width )
        {
            uint32_t ch = unit( at, count, little );

            if( count == 2 && ch >> 10 == 0xD800 >> 10 && at + 4 <= bytes.size()
                && unit( at + 2, 2, little ) >> 10 == 0xDC00 >> 10 )
            {
                ch = 0x10000 + ( ( ch & 0x3FF ) << 10 ) + ( unit( at + 2, 2, little ) & 0x3FF );
                at += 2;
            }

            if( ch < 0x110000 )
                text += ch;
            else if( !invalid() )
                return;
        }

        if( at < bytes.size() )
            invalid();
    }
};

// The tables of a charset of single bytes, asked for byte by byte.
struct Table
{
    char32_t chars[256]; // 0x110000 for none

    explicit Table( QV_INT charset )
    {
        for( int i = 0; i < 256; i++ )
        {
            Ref< QV_STRING > qvs( qvCharsetBufferToStringWithFlags(
                charset, bufferOf( std::string( 1, static_cast< char >( i ) ) ), ABORT ) );
            chars[i] = qvs ? qvStringCharAt( qvs, 0 ) : 0x110000;
        }
    }
};

const Table &tableOf( QV_INT charset )
{
    static std::map< QV_INT, Table > tables;
    return tables.try_emplace( charset, charset ).first->second;
}

struct CodecWalk : Walk
{
    using Walk::Walk;

    void decode()
    {
        // clang-format off
        static const char *const PIECES[] = {
            "\xEF\xBB\xBF", "\xF0\x9F\x98\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF\xFE", "\xFE\xFF",
            "\xD8\x3D\xDE\x00", "\xDB\xFF\xDF\xFD", "\xFF\xDB\xFD\xDF", "\x3D\xD8\x01\xDE", "\xE2\x82", "\xC3", "abc",
            "\xC3\xA9\xC3\xA9", "\x80\x80", "\xF8", "\xFB" };
        // clang-format on
        QV_INT  charset = in.below( 3 ) ? QV_CHARSET_UTF_8 + in.below( 7 ) : in.below( QV_CHARSET_UTF_8 );
        QV_INT  flags   = in.below( 8 );
        Decoder model{ flags & IGNORE ? flags & ~ABORT : flags, {} };

        for( QV_INT count = in.below( 12 ); count > 0; count-- )
        {
            QV_INT how = in.below( 3 );

            if( how == 0 )
                model.bytes += static_cast< char >( in.byte() );
            else
                for( QV_INT which = in.below( std::size( PIECES ) ), repeat = how == 1 ? 1 : in.length( 700 );
                     repeat > 0; repeat-- )
                    model.bytes += PIECES[which];
        }

        if( charset == QV_CHARSET_UTF_8 )
            model.utf8();
        else if( charset > QV_CHARSET_UTF_8 )
            model.wide( charset < QV_CHARSET_UTF_32 ? 2 : 4, charset );
        else
            for( char c : model.bytes )
            {
                char32_t ch = tableOf( charset ).chars[static_cast< uint8_t >( c )];

                if( ch < 0x110000 )
                    model.text += ch;
                else if( !model.invalid() )
                    break;
            }

        Ref< QV_BUFFER > bytes = bufferOf( model.bytes );
        Ref< QV_STRING > whole( qvCharsetBufferToStringWithFlags( charset, bytes, flags ) );
        require( model.failed ? !whole : whole && charsOf( whole ) == model.text );

        // What was read can be written and read again, but two surrogates, which are one character in UTF-16.
        if( whole && charset >= QV_CHARSET_UTF_8 && std::none_of( model.text.begin(), model.text.end(), isSurrogate ) )
        {
            Ref< QV_BUFFER > written( qvCharsetStringToBuffer( charset, whole ) );
            Ref< QV_STRING > again( qvCharsetBufferToStringWithFlags( charset, written, KEEP_MARK | ABORT ) );
            require( again && qvStringEquals( whole, again ) );
        }

        // In pieces, and what came before a failure.
        Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( bytes ) );
        Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );
        Ref< QV_CHAR_SOURCE >        source( qvCharsetCreateCharSource( byteSource, charset, flags ) );
        Text                         text;

        while( !qvCharSourceEnd( source ) )
        {
            QV_INT limit = 1 + in.length( 3000 ), count;
            Text   array( static_cast< size_t >( limit ), U' ' );

            Ref< QV_STRING > qvs( qvStringCreate() );
            bool             asChars = in.flag();
            count                    = asChars ? qvCharSourceReadChars( source, array.data(), limit )
                                               : qvCharSourceRead( source, qvs.at(), limit );
            array                    = asChars ? part( array, 0, count ) : charsOf( qvs );
            require( count == lengthOf( array ) && ( count == limit ) != ( qvCharSourceEnd( source ) != 0 ) );
            text += array;
        }

        require( text == model.text && ( qvCharSourceError( source ) != 0 ) == model.failed );
    }

    // Single bytes from texts: what has no byte is replaced, dropped, or fails all.
    void encode()
    {
        QV_INT           charset = in.below( QV_CHARSET_UTF_8 ), flags = in.below( 3 );
        Ref< QV_STRING > qvs = stringOf( in.text( 3000 ) ), normal = Ref< QV_STRING >( qvStringCreateFrom( qvs ) );
        std::string      expected;
        bool             fails = false;

        qvStringNormalizeNFC( normal.at() );
        qvStringSanitize( normal.at() );

        auto byteOf = [&]( char32_t ch )
        {
            const char32_t *chars = tableOf( charset ).chars, *found = std::find( chars, chars + 256, ch );
            return found == chars + 256 ? -1 : static_cast< int >( found - chars );
        };
        int question = byteOf( U'?' );

        for( char32_t ch : charsOf( normal ) )
        {
            int byte = byteOf( ch );
            fails    = fails || ( byte < 0 && flags & ABORT );

            if( byte >= 0 || !( flags & IGNORE ) )
                expected += static_cast< char >( byte >= 0 ? byte : std::max( question, 0 ) );
        }

        Ref< QV_BUFFER > buf( qvCharsetStringToBufferWithFlags( charset, qvs, flags ) );
        require( fails ? !buf : buf && bytesOf( buf ) == expected );
    }
};
} // namespace

QV_FUZZ_WALK( CodecWalk, OP( decode, 2 ) OP( encode, 1 ) )
