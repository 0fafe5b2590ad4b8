#include "qv_test_stream.h"

#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

TEST( Encoder, WritesAfterOddBits )
{
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    qvEncoderWrite( enc, Ref( qvBufferCreateFromBits( 5, 3 ) ) );
    qvEncoderEncodeInt( enc, QV_INT_MIN );
    qvEncoderEncodeOptionalString( enc, text( U"a\u20AC" ) );
    Ref< QV_BUFFER > shifted( qvEncoderBuffer( enc ) );
    qvBufferBitDelLeading( shifted.at(), 3 );
    EXPECT_EQ( "[88 80 00 00 00 00 00 00 00 01 01 02 61 80 20 ac]", textOf( shifted.get() ) );
}

// A number of digits that is an Int in its turn, and so on: eight times, not nine.
TEST( Decoder, NestedIntsHaveALimit )
{
    for( size_t nested : { 8u, 9u, 100000u } )
    {
        Ref< QV_BUFFER > buf = buffer( std::string( nested, 0x7F ) + std::string( nested + 2, 1 ) );
        EXPECT_EQ( nested == 8, qvDecoderTryDecodeInt( Ref( qvDecoderCreate( buf ) ), nullptr ) );
    }
}
