// The binary form of documents: what is not an error can be written and read again, in both forms.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
void decode( const uint8_t *data, size_t size )
{
    Ref< QV_BUFFER >  bytes( qvBufferCreateFromBytesCopy( data, static_cast< QV_INT >( size ) ) );
    Ref< QV_STORE >   store( qvStoreTryDecodeFromBuffer( bytes ) ), read, again;
    Ref< QV_DECODER > dec( qvDecoderCreate( bytes ) ), skipping( qvDecoderCreate( bytes ) );

    // With other bytes after it, skipped, and as one that may be missing.
    bool ok = qvDecoderTryDecodeStore( dec, read.at() );
    require( qvDecoderTryDecodeStore( skipping, nullptr ) == ok && !read == !ok );
    require( qvDecoderOffset( dec ) == qvDecoderOffset( skipping ) );
    require( !store == !( ok && qvDecoderRemaining( dec ) == 0 ) );

    Ref< QV_DECODER > optional( qvDecoderCreate( bufferOf( "\1" + bytesOf( bytes ) ) ) );
    require( qvDecoderTryDecodeOptionalStore( optional, again.at() ) == ok && !again == !ok );
    require( !ok || qvStoreEquals( read, again ) );

    if( !ok )
        return;

    Ref< QV_BUFFER > written( qvStoreEncodeToBuffer( read ) );
    again.reset( qvStoreTryDecodeFromBuffer( written ) );
    require( again && qvStoreEquals( read, again ) );
    require( qvBufferEquals( written, Ref< QV_BUFFER >( qvStoreEncodeToBuffer( again ) ) ) );

    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( read ) );
    again.reset( qvStoreDecodeFromStringVector( lines ) );
    require( qvStoreEquals( read, again ) );
}
} // namespace qv::fuzz

QV_FUZZ_READER( decode )
