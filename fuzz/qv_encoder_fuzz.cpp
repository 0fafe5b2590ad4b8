// Encoders beside the bytes of their formats, Decoders beside a reader of them: values written and read back, and any
// bytes, up to the error that stays.

#include "qv_fuzz_models.h"

#include "qv/base/qv_decoder.h"
#include "qv/base/qv_encoder.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
// Reads by the formats. A failure stays.
struct Reader
{
    std::string bytes;
    size_t      at     = 0;
    bool        failed = false;

    QV_INT left() const
    {
        return failed ? 0 : static_cast< QV_INT >( bytes.size() - at );
    }

    bool ok( bool condition )
    {
        failed = failed || !condition;
        return !failed;
    }

    unsigned byte()
    {
        return ok( left() > 0 ) ? static_cast< uint8_t >( bytes[at++] ) : 0;
    }

    QV_INT number( int nesting = 0 )
    {
        unsigned lead  = byte();
        QV_INT   count = lead & 0x7F;

        // How deep counts may be nested is the library's choice; nothing here nests them further.
        if( count == 127 )
            count = nesting < 8 ? number( nesting + 1 ) : -1;

        if( !ok( !failed && count >= 0 && count <= left() ) )
            return 0;

        __int128 value = 0;

        for( ; count > 0; count-- )
        {
            value = value * 256 + ( lead & 0x80 ? -static_cast< int >( byte() ) : static_cast< int >( byte() ) );

            if( !ok( value >= QV_INT_MIN && value <= QV_INT_MAX ) )
                return 0;
        }

        return static_cast< QV_INT >( value );
    }

    QV_INT integer()
    {
        return number();
    }

    QV_BOOL flag()
    {
        unsigned value = byte();
        return ok( value < 2 ) && value;
    }

    QV_CHAR character()
    {
        unsigned first = byte();

        if( first < 0x80 || !ok( ( first & 0x60 ) == 0 ) )
            return failed ? 0 : first;

        char32_t value = ( first & 0x1F ) << 16;
        value |= byte() << 8;
        value |= byte();

        return ok( value < 0x110000 ) ? value : 0;
    }

    Text text()
    {
        QV_INT count = number();
        Text   result;

        if( !ok( count >= 0 && count <= left() ) )
            return result;

        for( ; count > 0 && !failed; count-- )
            result += character();

        return failed ? Text() : result;
    }

    std::string block()
    {
        QV_INT count = number();

        if( !ok( count >= 0 && count <= left() ) )
            return {};

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

struct EncoderWalk : Walk
{
    using Walk::Walk;

    Ref< QV_ENCODER > encoder{ qvEncoderCreate() };
    Ref< QV_BUFFER >  held; // the bytes of an earlier moment, which must not change
    std::string       bytes, heldBytes;

    void value()
    {
        QV_INT number = in.number();

        QV_INT how = in.below( 7 );

        if( how == 0 )
        {
            qvEncoderEncodeBool( encoder, number > 0 );
            bytes += static_cast< char >( number > 0 );
        }
        else if( how < 3 )
        {
            qvEncoderEncodeInt( encoder, number );
            bytes += encodedInt( number );
        }
        else if( how == 3 )
        {
            QV_CHAR ch = in.character();
            qvEncoderEncodeChar( encoder, ch );
            bytes += encodedChars( Text( 1, ch ) );
        }
        else if( how < 6 )
        {
            Text             text     = in.text( 2000 );
            bool             optional = how == 5 && in.flag(), null = optional && in.flag();
            Ref< QV_STRING > qvs = stringOf( text );

            how == 4   ? qvEncoderEncodeChars( encoder, text.data(), lengthOf( text ) )
            : optional ? qvEncoderEncodeOptionalString( encoder, null ? nullptr : qvs.get() )
                       : qvEncoderEncodeString( encoder, qvs );
            bytes += optional ? std::string( 1, static_cast< char >( !null ) ) : "";
            bytes += how == 4 ? encodedChars( text ) : null ? "" : encodedText( text );
        }
        else
        {
            // Any objects, which are written as their texts.
            Ref< QV_VECTOR > vec( qvVectorCreate() );
            QV_INT           count = in.below( 5 );
            bytes += encodedInt( count * 2 );

            for( ; count > 0; count-- )
            {
                Text text = in.text( 100 );
                qvVectorAppendInt( vec.at(), number );
                qvVectorAppendString( vec.at(), stringOf( text ) );
                bytes += encodedText( wide( std::to_string( number ) ) ) + encodedText( text );
            }

            qvEncoderEncodeStringVector( encoder, vec );
        }
    }

    // Plain bytes; the Buffer may be the one that the Encoder itself writes to.
    void write()
    {
        Ref< QV_BUFFER > buf(
            in.below( 4 ) == 0 ? qvEncoderBuffer( encoder )
                               : bufferOf( std::string( static_cast< size_t >( in.length( 300 ) ), 'x' ) ).give() );
        std::string src  = bytesOf( buf );
        Span        span = in.span( lengthOf( src ), in.below( 8 ) );

        if( bytes.size() > 20000 )
            return;

        if( span.form <= OUTER )
        {
            CALL_FORM( qvEncoderWrite, span, 1, encoder, buf );
            bytes += span.of( src );
        }
        else if( span.form == 5 )
        {
            qvEncoderEncodeBuffer( encoder, buf );
            bytes += encodedInt( span.length ) + src;
        }
        else if( span.form == 6 )
        {
            qvEncoderWriteEncoder( encoder, encoder );
            bytes += std::string( bytes );
        }
        else
        {
            qvEncoderWriteByte( encoder, static_cast< uint8_t >( span.offset ) );
            bytes += static_cast< char >( span.offset );
        }
    }

    void hold()
    {
        held.reset( qvEncoderBuffer( encoder ) );
        heldBytes = bytes;
    }

    void clear()
    {
        qvEncoderClear( encoder );
        bytes.clear();
    }

    // The bytes as they are, or changed here and there, or any others.
    void decode()
    {
        Reader reader{ bytes };

        if( in.below( 3 ) == 0 )
            for( reader.bytes.clear(); reader.bytes.size() < 40 && in.more(); )
                reader.bytes += static_cast< char >( in.flag() ? in.byte() & 0x87 : in.byte() );

        for( QV_INT changes = in.below( 4 ); changes > 0 && !reader.bytes.empty(); changes-- )
            reader.bytes[static_cast< size_t >( in.below( lengthOf( reader.bytes ) ) )] =
                static_cast< char >( in.byte() );

        Ref< QV_DECODER > decoder( qvDecoderCreate( bufferOf( reader.bytes ) ) );

        for( QV_INT steps = in.below( 40 ); steps > 0; steps-- )
        {
            read( decoder, reader );
            require( ( qvDecoderError( decoder ) != 0 ) == reader.failed );
            require( qvDecoderRemaining( decoder ) == reader.left() );
            require(
                qvDecoderOffset( decoder )
                == static_cast< QV_INT >( reader.failed ? reader.bytes.size() : reader.at ) );
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

    template< class T, class E, class Same >
    void object(
        QV_DECODER *dec, Reader &reader, bool optional, Ref< T > value, E ( Reader::*model )(),
        QV_BOOL ( *tried )( QV_DECODER *, T ** ), Same same )
    {
        bool skips = in.flag(), null = optional && !reader.flag();
        E    expected = null || reader.failed ? E() : ( reader.*model )();
        bool ok       = tried( dec, skips ? nullptr : value.at() );
        require( ok == !reader.failed );
        require( skips || ( ok && !null ? value && same( value, expected ) : !value ) );
    }

    void read( QV_DECODER *dec, Reader &reader )
    {
        QV_INT what     = in.below( 12 );
        bool   optional = what % 2;
        auto   isText   = []( QV_STRING *qvs, const Text &text ) { return charsOf( qvs ) == text; };
        auto   isBlock  = []( QV_BUFFER *buf, const std::string &block ) { return bytesOf( buf ) == block; };
        auto   areTexts = []( QV_VECTOR *vec, const std::vector< Text > &texts ) { return textsOf( vec ) == texts; };

        switch( what )
        {
        case 0:
            return value( dec, reader, &Reader::flag, qvDecoderTryDecodeBool );
        case 1:
        case 2:
            return value( dec, reader, &Reader::integer, qvDecoderTryDecodeInt );
        case 3:
            return value( dec, reader, &Reader::character, qvDecoderTryDecodeChar );
        case 4:
        case 5:
            return object(
                dec, reader, optional, stringOf( U"before" ), &Reader::text,
                optional ? qvDecoderTryDecodeOptionalString : qvDecoderTryDecodeString, isText );
        case 6:
        case 7:
            return object(
                dec, reader, optional, bufferOf( "before" ), &Reader::block,
                optional ? qvDecoderTryDecodeOptionalBuffer : qvDecoderTryDecodeBuffer, isBlock );
        case 8:
        case 9:
            return object(
                dec, reader, optional, Ref< QV_VECTOR >( qvVectorCreate() ), &Reader::texts,
                optional ? qvDecoderTryDecodeOptionalStringVector : qvDecoderTryDecodeStringVector, areTexts );
        default:
            QV_INT count = in.below( 8 );
            bool   ok    = reader.ok( !reader.failed && count <= reader.left() );
            reader.at += ok ? static_cast< size_t >( count ) : 0;
            require( qvDecoderTrySkip( dec, count ) == ok );
        }
    }

    void check()
    {
        Ref< QV_BUFFER > buf( qvEncoderBuffer( encoder ) );
        require( bytesOf( buf ) == bytes && qvEncoderLength( encoder ) == lengthOf( bytes ) );
        require( !held || bytesOf( held ) == heldBytes );
    }
};
} // namespace

QV_FUZZ_WALK( EncoderWalk, OP( value, 2 ) OP( write, 1 ) OP( hold, 1 ) OP( clear, 1 ) OP( decode, 2 ) )
