/** @file
    qv::Encoder and qv::Decoder: values as bytes, and back.

        qv::Encoder out;
        out.encode( name ).encode( 42 ).encode( std::optional< qv::String >() );
        qv::Decoder in( out.buffer() );
        std::optional< qv::String > text   = in.decode< qv::String >();
        std::optional< QV_INT >     number = in.decode< QV_INT >();
        if( in.failed() )
            ...

    qv_encoder.h tells the form of the bytes. Copies are the same encoder or decoder, at the same place; one thread at a
    time may use it. */

#ifndef QV_ENCODER_HPP
#define QV_ENCODER_HPP

#include "qv/cpp/qv_containers.hpp"
#include "qv/cpp/qv_store.hpp"

namespace qv
{
/** Writes values one after the other. */
class Encoder : public Reference< Encoder, QV_ENCODER >
{
public:
    using Reference::Reference;

    /** With nothing written. */
    Encoder() : Encoder( own( qvEncoderCreate() ) )
    {
    }

    /** What was written so far. */
    [[nodiscard]] Buffer buffer() const
    {
        return Buffer::own( qvEncoderBuffer( raw() ) );
    }

    /** Writes bytes as they are. */
    Encoder &write( const Buffer &bytes )
    {
        qvEncoderWrite( raw(), bytes.c() );
        return *this;
    }

    /** Writes an integer; one beyond QV_INT ends the process. */
    template< std::integral T >
        requires( !std::same_as< T, bool > && !std::same_as< T, char32_t > && !std::same_as< T, char > )
    Encoder &encode( T value )
    {
        detail::demand( std::in_range< QV_INT >( value ), "std::in_range< QV_INT >( value )" );
        qvEncoderEncodeInt( raw(), static_cast< QV_INT >( value ) );
        return *this;
    }

    /** @{ */
    /** Writes a value of another type. */
    template< std::same_as< bool > T >
    Encoder &encode( T value )
    {
        qvEncoderEncodeBool( raw(), value ? QV_TRUE : QV_FALSE );
        return *this;
    }

    template< std::same_as< char32_t > T >
    Encoder &encode( T value )
    {
        qvEncoderEncodeChar( raw(), value );
        return *this;
    }

    Encoder &encode( const String &text )
    {
        qvEncoderEncodeString( raw(), text.c() );
        return *this;
    }

    Encoder &encode( const Buffer &bytes )
    {
        qvEncoderEncodeBuffer( raw(), bytes.c() );
        return *this;
    }

    Encoder &encode( const Store &store )
    {
        qvEncoderEncodeStore( raw(), store.c() );
        return *this;
    }

    Encoder &encode( const Vector< String > &texts )
    {
        qvEncoderEncodeStringVector( raw(), texts.c() );
        return *this;
    }

    template< class T >
        requires( std::same_as< T, String > || std::same_as< T, Buffer > )
    Encoder &encode( const std::optional< T > &value )
    {
        typename T::CType *object = value ? static_cast< typename T::CType * >( value->c() ) : nullptr;

        if constexpr( std::same_as< T, String > )
            qvEncoderEncodeOptionalString( raw(), object );
        else
            qvEncoderEncodeOptionalBuffer( raw(), object );

        return *this;
    }
    /** @} */
};

/** Reads values in the order in which they were written. After a failure nothing more is read. */
class Decoder : public Reference< Decoder, QV_DECODER >
{
public:
    using Reference::Reference;

    /** Reads bytes from their start. */
    explicit Decoder( const Buffer &bytes ) : Decoder( own( qvDecoderCreate( bytes.c() ) ) )
    {
    }

    /** True if what was to be read was not there, or was something else. */
    [[nodiscard]] bool failed() const
    {
        return qvDecoderError( raw() );
    }

    /** How many bytes are left. */
    [[nodiscard]] QV_INT remaining() const
    {
        return qvDecoderRemaining( raw() );
    }

    /** Reads a value: bool, an integer, char32_t, String, Buffer, Store, Vector< String >, or an optional String or
        Buffer. Nothing if it cannot be read; an integer that T does not hold sets the error too. */
    template< class T >
    [[nodiscard]] std::optional< T > decode()
    {
        if constexpr( std::same_as< T, bool > )
        {
            QV_BOOL value = QV_FALSE;
            return qvDecoderTryDecodeBool( raw(), &value ) ? std::optional< T >( value != QV_FALSE ) : std::nullopt;
        }
        else if constexpr( std::same_as< T, char32_t > )
        {
            QV_CHAR value = 0;
            return qvDecoderTryDecodeChar( raw(), &value ) ? std::optional< T >( value ) : std::nullopt;
        }
        else if constexpr( std::integral< T > )
        {
            QV_INT value = 0;

            if( !qvDecoderTryDecodeInt( raw(), &value ) )
                return std::nullopt;

            if( std::in_range< T >( value ) )
                return static_cast< T >( value );

            qvDecoderSetError( raw() );
            return std::nullopt;
        }
        else if constexpr( std::same_as< T, String > )
            return object< T >( qvDecoderTryDecodeString );
        else if constexpr( std::same_as< T, Buffer > )
            return object< T >( qvDecoderTryDecodeBuffer );
        else if constexpr( std::same_as< T, Store > )
            return object< T >( qvDecoderTryDecodeStore );
        else if constexpr( std::same_as< T, Vector< String > > )
            return object< T >( qvDecoderTryDecodeStringVector );
        else if constexpr( std::same_as< T, std::optional< String > > )
            return optional< String >( qvDecoderTryDecodeOptionalString );
        else
        {
            static_assert( std::same_as< T, std::optional< Buffer > >, "no such value can be decoded" );
            return optional< Buffer >( qvDecoderTryDecodeOptionalBuffer );
        }
    }

private:
    template< class T, class C = typename T::CType >
    std::optional< T > object( QV_BOOL ( *read )( QV_DECODER *dec, C **value ) )
    {
        C *value = nullptr;
        return read( raw(), &value ) ? T::ownOptional( value ) : std::nullopt;
    }

    template< class T, class C = typename T::CType >
    std::optional< std::optional< T > > optional( QV_BOOL ( *read )( QV_DECODER *dec, C **value ) )
    {
        C *value = nullptr;

        if( !read( raw(), &value ) )
            return std::nullopt;

        return std::optional< std::optional< T > >( std::in_place, T::ownOptional( value ) );
    }
};
} // namespace qv

#endif
