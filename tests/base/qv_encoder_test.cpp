#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_encoder.h"

#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
Ref< QV_BUFFER > bufferOf( const std::vector< uint8_t > &bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
}

Ref< QV_DECODER > decoderOf( const std::vector< uint8_t > &bytes )
{
    return Ref< QV_DECODER >( qvDecoderCreate( bufferOf( bytes ) ) );
}
} // namespace

TEST( Encoder, WritesAfterOddBits )
{
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    qvEncoderWrite( enc, Ref< QV_BUFFER >( qvBufferCreateFromBits( 5, 3 ) ) );
    qvEncoderEncodeInt( enc, QV_INT_MIN );
    qvEncoderEncodeOptionalString( enc, text( U"a\u20AC" ) );
    Ref< QV_BUFFER > shifted( qvEncoderBuffer( enc ) );
    qvBufferBitDelLeading( shifted.at(), 3 );
    EXPECT_EQ( "[88 80 00 00 00 00 00 00 00 01 01 02 61 80 20 ac]", textOf( shifted.get() ) );
}

TEST( Decoder, NestedIntsHaveALimit )
{
    // A number of digits that is an Int in its turn, and so on: eight times, not nine.
    for( size_t nested : { 8u, 9u, 100000u } )
    {
        std::vector< uint8_t > bytes( nested, 0x7F );
        bytes.insert( bytes.end(), nested + 2, 1 );
        EXPECT_EQ( nested == 8, qvDecoderTryDecodeInt( decoderOf( bytes ), nullptr ) );
    }
}
