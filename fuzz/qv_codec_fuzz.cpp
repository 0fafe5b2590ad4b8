// Every charset beside a reader and a writer of its rules: any bytes, decoded at once and in pieces through either kind
// of read, with every treatment of what is invalid; any text, encoded. The tables of single bytes are those of single
// bytes.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
const QV_INT ABORT = 1, IGNORE = 2, KEEP_MARK = 4; // the flags of a character set

// Decodes by the rules; `failed` if something was invalid and the flags let that fail.
struct Decoder
{
    QV_INT      flags;
    std::string bytes;
    Text        text   = {};
    bool        failed = false;

    void invalid()
    {
        failed = flags & ABORT;

        if( !( flags & ( ABORT | IGNORE ) ) )
            text += U'\uFFFD';
    }

    uint32_t unit( size_t at, size_t count, bool little ) const
    {
        uint32_t value = 0;

        for( size_t i = 0; i < count; i++ )
            value = value << 8 | static_cast< uint8_t >( bytes[little ? at + count - 1 - i : at + i] );

        return value;
    }

    // What breaks a sequence goes with it, and so do the bytes after it that could only continue one.
    void utf8()
    {
        bool     skipping = false, first = true;
        uint32_t value   = 0;
        int      missing = 0;

        for( size_t i = 0; i < bytes.size() && !failed; i++ )
        {
            uint8_t byte = static_cast< uint8_t >( bytes[i] );
            bool    tail = byte >> 6 == 2, starts = byte >= 0xC0 && byte < 0xF8;

            if( missing > 0 && tail )
            {
                value = value << 6 | ( byte & 63 );

                if( --missing > 0 )
                    continue;
            }
            else if( missing == 0 && tail && skipping )
                continue;
            else if( missing == 0 && starts )
            {
                missing  = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
                value    = byte & ( 0x3Fu >> missing );
                skipping = false;
                continue;
            }
            else
            {
                skipping = missing > 0 || byte >= 0x80;
                value    = skipping ? 0x110000 : byte;
                missing  = 0;
            }

            if( value >= 0x110000 )
                invalid();
            else if( !first || value != 0xFEFF || flags & KEEP_MARK )
                text += value;

            first = first && value >= 0x110000 && flags & IGNORE;
        }

        if( missing > 0 && !failed )
            invalid();
    }

    void wide( size_t count, QV_INT charset )
    {
        bool   little = charset != QV_CHARSET_UTF_16_BE && charset != QV_CHARSET_UTF_32_BE;
        size_t at     = 0;

        if( ( charset == QV_CHARSET_UTF_16 || charset == QV_CHARSET_UTF_32 ) && !( flags & KEEP_MARK )
            && bytes.size() >= count && ( unit( 0, count, true ) == 0xFEFF || unit( 0, count, false ) == 0xFEFF ) )
            little = unit( 0, count, true ) == 0xFEFF, at = count;

        for( ; at + count <= bytes.size() && !failed; at += count )
        {
            uint32_t ch = unit( at, count, little ), next = at + 4 <= bytes.size() ? unit( at + 2, 2, little ) : 0;

            if( count == 2 && ch >> 10 == 0xD800 >> 10 && next >> 10 == 0xDC00 >> 10 )
                ch = 0x10000 + ( ( ch & 0x3FF ) << 10 ) + ( next & 0x3FF ), at += 2;

            if( ch < 0x110000 )
                text += ch;
            else
                invalid();
        }

        if( at < bytes.size() && !failed )
            invalid();
    }
};

struct CodecWalk
{
    void decode()
    {
        // clang-format off
        static const char *const PIECES[] = {
            "\xEF\xBB\xBF", "\xF0\x9F\x98\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF\xFE", "\xFE\xFF",
            "\xD8\x3D\xDE\x00", "\xDB\xFF\xDF\xFD", "\xFF\xDB\xFD\xDF", "\x3D\xD8\x01\xDE", "\xE2\x82", "\xC3", "abc",
            "\xC3\xA9\xC3\xA9", "\x80\x80", "\xF8", "\xFB" };
        // clang-format on
        QV_INT charset = in.below( 3 ) ? QV_CHARSET_UTF_8 + in.below( 7 ) : in.below( QV_CHARSET_UTF_8 );
        QV_INT flags   = in.below( 8 );
        std::map< char, Text > known; // of the charset of single bytes
        Decoder                model{ flags & IGNORE ? flags & ~ABORT : flags, {} };

        for( QV_INT count = in.below( 12 ); count > 0; count-- )
        {
            QV_INT      how   = in.below( 3 );
            std::string piece = how ? in.oneOf( PIECES ) : std::string( 1, static_cast< char >( in.byte() ) );

            for( QV_INT repeat = how < 2 ? 1 : in.length( 700 ); repeat > 0; repeat-- )
                model.bytes += piece;
        }

        if( charset == QV_CHARSET_UTF_8 )
            model.utf8();
        else if( charset > QV_CHARSET_UTF_8 )
            model.wide( charset < QV_CHARSET_UTF_32 ? 2 : 4, charset );
        else
            for( size_t i = 0; i < model.bytes.size() && !model.failed; i++ )
            {
                char byte = model.bytes[i];

                if( !known.contains( byte ) )
                {
                    Ref< QV_STRING > ch(
                        qvCharsetBufferToStringWithFlags( charset, bufferOf( std::string( 1, byte ) ), IGNORE ) );
                    known[byte] = charsOf( ch );
                }

                if( known[byte].empty() )
                    model.invalid();

                model.text += known[byte];
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
            Ref< QV_STRING > qvs( qvStringCreate() );
            QV_INT           limit = 1 + in.length( 3000 ), count = qvCharSourceRead( source, qvs.at(), limit );
            require( count == qvStringLength( qvs ) && ( count == limit ) != ( qvCharSourceEnd( source ) != 0 ) );
            text += charsOf( qvs );
        }

        require( text == model.text && ( qvCharSourceError( source ) != 0 ) == model.failed );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( CodecWalk, OP( decode ) )
