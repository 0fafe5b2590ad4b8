// Any bytes through a Decoder. The first byte, modulo 16, is the number of bytes that choose what is read, one after
// the other; the Decoder gets what follows them. What could be read must be readable again after an Encoder has written
// it, and values that are skipped must end where they end when they are kept.

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

using qv::Ref;

namespace
{
void require( bool condition )
{
    if( !condition )
        __builtin_trap();
}

// Reads an object with the plain or the optional form, skips it in the second Decoder, and takes it through an Encoder.
template< class T >
void check(
    QV_DECODER *dec, QV_DECODER *skipping, QV_BOOL ( *decode )( QV_DECODER *, T ** ),
    void ( *encode )( QV_ENCODER *, T * ), QV_BOOL ( *equals )( T *, T * ) )
{
    Ref< T > value;
    QV_BOOL  ok = decode( dec, value.at() );
    require( decode( skipping, nullptr ) == ok );

    if( !ok )
    {
        require( !value );
        return;
    }

    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    encode( enc, value );

    Ref< T >          again;
    Ref< QV_BUFFER >  buf( qvEncoderBuffer( enc ) );
    Ref< QV_DECODER > reading( qvDecoderCreate( buf ) );
    require( decode( reading, again.at() ) && qvDecoderRemaining( reading ) == 0 );
    require( value ? again && equals( value, again ) : !again );
}

void readOne( uint8_t kind, QV_DECODER *dec, QV_DECODER *skipping )
{
    QV_BOOL flag;
    QV_INT  number;
    QV_CHAR ch;

    switch( kind % 12 )
    {
    case 0:
        require( qvDecoderTryDecodeBool( dec, &flag ) == qvDecoderTryDecodeBool( skipping, nullptr ) );
        break;
    case 1:
        require( qvDecoderTryDecodeInt( dec, &number ) == qvDecoderTryDecodeInt( skipping, nullptr ) );
        break;
    case 2:
        require( qvDecoderTryDecodeChar( dec, &ch ) == qvDecoderTryDecodeChar( skipping, nullptr ) );
        require( QV_CHAR_OK( ch ) );
        break;
    case 3:
        require( qvDecoderTrySkip( dec, kind / 12 ) == qvDecoderTrySkip( skipping, kind / 12 ) );
        break;
    case 4:
        check( dec, skipping, qvDecoderTryDecodeString, qvEncoderEncodeString, qvStringEquals );
        break;
    case 5:
        check( dec, skipping, qvDecoderTryDecodeBuffer, qvEncoderEncodeBuffer, qvBufferEquals );
        break;
    case 6:
        check( dec, skipping, qvDecoderTryDecodeStringVector, qvEncoderEncodeStringVector, qvVectorEquals );
        break;
    case 7:
        check( dec, skipping, qvDecoderTryDecodeStore, qvEncoderEncodeStore, qvStoreEquals );
        break;
    case 8:
        check( dec, skipping, qvDecoderTryDecodeOptionalString, qvEncoderEncodeOptionalString, qvStringEquals );
        break;
    case 9:
        check( dec, skipping, qvDecoderTryDecodeOptionalBuffer, qvEncoderEncodeOptionalBuffer, qvBufferEquals );
        break;
    case 10:
        check(
            dec, skipping, qvDecoderTryDecodeOptionalStringVector, qvEncoderEncodeOptionalStringVector,
            qvVectorEquals );
        break;
    default:
        check( dec, skipping, qvDecoderTryDecodeOptionalStore, qvEncoderEncodeOptionalStore, qvStoreEquals );
        break;
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )
{
    [[maybe_unused]] static const bool started =
        ( qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr ), true );

    if( size == 0 || size <= data[0] % 16u )
        return 0;

    const uint8_t    *kinds = data + 1;
    const uint8_t    *bytes = kinds + data[0] % 16;
    Ref< QV_BUFFER >  buf( qvBufferCreateFromBytesCopy( bytes, static_cast< QV_INT >( data + size - bytes ) ) );
    Ref< QV_DECODER > dec( qvDecoderCreate( buf ) ), skipping( qvDecoderCreate( buf ) );

    for( const uint8_t *kind = kinds; kind < bytes; kind++ )
    {
        readOne( *kind, dec, skipping );
        require( qvDecoderOffset( dec ) == qvDecoderOffset( skipping ) );
        require( qvDecoderError( dec ) == qvDecoderError( skipping ) );
    }

    return 0;
}
