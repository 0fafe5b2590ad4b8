// Encoders beside the bytes of their formats, Decoders beside a reader of them: values written and read back, and any
// bytes, up to the error that stays.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
// Reads by the formats. A failure stays.
struct Reader
{
    std::string bytes;
    size_t      at      = 0;
    bool        failed  = false;
    int         nesting = 0;

    QV_INT left() const
    {
        return failed ? 0 : static_cast< QV_INT >( bytes.size() - at );
    }

    bool ok( bool condition )
    {
        failed = failed || !condition;
        return !failed;
    }

    QV_INT byte()
    {
        return ok( left() > 0 ) ? static_cast< uint8_t >( bytes[at++] ) : 0;
    }

    QV_INT number()
    {
        QV_INT   lead = byte(), count = lead & 0x7F;
        __int128 value = 0;

        // How deep counts may be nested is the library's choice; nothing here nests them further.
        if( count == 127 )
            count = ++nesting < 9 ? number() : -1;

        for( ok( count >= 0 && count <= left() ); count > 0 && !failed; count-- )
        {
            value = value * 256 + ( lead & 0x80 ? -byte() : byte() );
            ok( value >= QV_INT_MIN && value <= QV_INT_MAX );
        }

        nesting = 0;

        return failed ? 0 : static_cast< QV_INT >( value );
    }

    QV_BOOL flag()
    {
        QV_INT value = byte();
        return ok( value < 2 ) && value;
    }

    QV_CHAR character()
    {
        QV_INT value = byte();

        if( value >= 0x80 && ok( ( value & 0x60 ) == 0 ) )
            value = ( ( value & 0x1F ) << 8 | byte() ) << 8, value |= byte();

        return ok( value < 0x110000 ) ? static_cast< QV_CHAR >( value ) : 0;
    }

    Text text()
    {
        QV_INT count = number();
        Text   result;

        for( ok( count >= 0 && count <= left() ); count > 0 && !failed; count-- )
            result += character();

        return result;
    }

    std::string block()
    {
        QV_INT count = number();
        return ok( count >= 0 && count <= left() ) ? skip( count ) : "";
    }

    std::string skip( QV_INT count )
    {
        at += static_cast< size_t >( count );
        return bytes.substr( at - static_cast< size_t >( count ), static_cast< size_t >( count ) );
    }

    std::vector< Text > texts()
    {
        std::vector< Text > result;

        for( QV_INT count = number(); count > 0 && !failed; count-- )
            result.push_back( text() );

        return result;
    }
};

/* The walk --------------------------------------------------------------------------------------------------------- */

struct EncoderWalk
{
    Ref< QV_ENCODER > encoder{ qvEncoderCreate() };
    Ref< QV_BUFFER >  held; // the bytes of an earlier moment, which must not change
    std::string       bytes, heldBytes;

    // One of each kind. Any objects are written as their texts.
    void values()
    {
        QV_INT           number = in.number();
        bool             flag   = number > 0;
        QV_CHAR          ch     = in.character();
        Text             text   = in.text( 1000 );
        Ref< QV_STRING > qvs    = stringOf( text );
        Ref< QV_VECTOR > vec( qvVectorCreate() );
        std::string      first( 1, static_cast< char >( flag ) ), block = in.bytes( 300 );

        qvVectorAppendInt( vec.at(), number );
        qvVectorAppendString( vec.at(), qvs );
        qvEncoderEncodeBool( encoder, flag );
        qvEncoderEncodeInt( encoder, number );
        qvEncoderEncodeChar( encoder, ch );
        qvEncoderEncodeChars( encoder, text.data(), lengthOf( text ) );
        qvEncoderEncodeString( encoder, qvs );
        qvEncoderEncodeOptionalString( encoder, flag ? qvs.get() : nullptr );
        qvEncoderEncodeStringVector( encoder, vec );
        qvEncoderEncodeBuffer( encoder, bufferOf( block ) );
        bytes += first + encodedInt( number ) + encodedChars( ch + text ) + encodedText( text ) + first;
        bytes += ( flag ? encodedText( text ) : "" ) + "\1\2" + encodedText( wide( std::to_string( number ) ) );
        bytes += encodedText( text ) + encodedInt( lengthOf( block ) ) + block;
    }

    // Plain bytes; the Buffer may be the one that the Encoder itself writes to.
    void write()
    {
        Ref< QV_BUFFER > buf( in.flag() ? qvEncoderBuffer( encoder ) : bufferOf( in.bytes( 300 ) ).give() );
        std::string      src  = bytesOf( buf );
        Span             span = in.span( lengthOf( src ), in.below( 6 ) );

        if( bytes.size() > 20000 || in.below( 8 ) == 0 )
            qvEncoderClear( encoder ), bytes.clear();

        held.reset( qvEncoderBuffer( encoder ) ), heldBytes = bytes;

        if( span.form <= OUTER )
            CALL_FORM( qvEncoderWrite, span, 1, encoder, buf );
        else
            qvEncoderWriteEncoder( encoder, encoder );

        bytes += span.form <= OUTER ? span.of( src ) : std::string( bytes );
    }

    // The bytes as they are, or changed here and there, or any others.
    void decode()
    {
        Reader reader{ bytes };

        if( in.below( 3 ) == 0 )
            for( reader.bytes.clear(); reader.bytes.size() < 40 && in.at < in.end; )
                reader.bytes += static_cast< char >( in.byte() & ( in.flag() ? 0x87 : 0xFF ) );

        for( QV_INT changes = in.below( 4 ); changes > 0 && !reader.bytes.empty(); changes-- )
            at( reader.bytes, in.upTo( lengthOf( reader.bytes ) - 1 ) ) = static_cast< char >( in.byte() );

        Ref< QV_DECODER > decoder( qvDecoderCreate( bufferOf( reader.bytes ) ) );

        for( QV_INT steps = in.below( 40 ); steps > 0; steps-- )
        {
            read( decoder, reader );
            require( ( qvDecoderError( decoder ) != 0 ) == reader.failed );
            require( qvDecoderRemaining( decoder ) == reader.left() );
            require( qvDecoderOffset( decoder ) == QV_INT( reader.failed ? reader.bytes.size() : reader.at ) );
        }
    }

    // A value, kept or skipped. What is in the variable is given up in any case.
    template< class T >
    void value( QV_DECODER *dec, Reader &reader, T ( Reader::*model )(), QV_BOOL ( *tried )( QV_DECODER *, T * ) )
    {
        T    value = 7, expected = ( reader.*model )();
        bool skips = in.flag(), ok = tried( dec, skips ? nullptr : &value );
        require( ok == !reader.failed && ( skips || value == ( ok ? expected : T() ) ) );
    }

    template< class T, class E >
    void object(
        QV_DECODER *dec, Reader &reader, Ref< T > value, E ( Reader::*model )(), E ( *contents )( T * ),
        QV_BOOL ( *tried )( QV_DECODER *, T ** ), QV_BOOL ( *triedOptional )( QV_DECODER *, T ** ) )
    {
        bool skips = in.flag(), optional = in.flag(), null = optional && !reader.flag();
        E    expected = null || reader.failed ? E() : ( reader.*model )();
        require( ( optional ? triedOptional : tried )( dec, skips ? nullptr : value.at() ) == !reader.failed );
        require( skips || ( reader.failed || null ? !value : value && contents( value ) == expected ) );
    }

    void read( QV_DECODER *dec, Reader &reader )
    {
        QV_INT what = in.below( 7 ), count = in.below( 8 );

        if( what == 0 )
        {
            bool ok = reader.ok( count <= reader.left() );
            reader.skip( ok ? count : 0 );
            require( qvDecoderTrySkip( dec, count ) == ok );
        }
        else
            what == 1   ? value( dec, reader, &Reader::flag, qvDecoderTryDecodeBool )
            : what == 2 ? value( dec, reader, &Reader::number, qvDecoderTryDecodeInt )
            : what == 3 ? value( dec, reader, &Reader::character, qvDecoderTryDecodeChar )
            : what == 4 ? object(
                              dec, reader, stringOf( U"before" ), &Reader::text, charsOf, qvDecoderTryDecodeString,
                              qvDecoderTryDecodeOptionalString )
            : what == 5 ? object(
                              dec, reader, bufferOf( "before" ), &Reader::block, bytesOf, qvDecoderTryDecodeBuffer,
                              qvDecoderTryDecodeOptionalBuffer )
                        : object(
                              dec, reader, Ref< QV_VECTOR >( qvVectorCreate() ), &Reader::texts, textsOf,
                              qvDecoderTryDecodeStringVector, qvDecoderTryDecodeOptionalStringVector );
    }

    void check()
    {
        Ref< QV_BUFFER > buf( qvEncoderBuffer( encoder ) );
        require( bytesOf( buf ) == bytes && qvEncoderLength( encoder ) == lengthOf( bytes ) );
        require( !held || bytesOf( held ) == heldBytes );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( EncoderWalk, OP( values ) OP( write ) OP( decode ) OP( decode ) )
