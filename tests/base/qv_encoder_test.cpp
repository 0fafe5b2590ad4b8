#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_store.h"
#include "qv/runtime/qv_family.h"

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

// What the Buffer of a document declares is what its entries make it declare, one append each.
TEST( Encoder, DocumentsDeclareWhatTheirEntriesDo )
{
    for( int entries : { 1, 5, 90, 1000 } )
    {
        Ref< QV_STORE >   store( qvStoreCreate() ), sub( qvStoreCreate() );
        Ref< QV_ENCODER > whole( qvEncoderCreate() ), single( qvEncoderCreate() );

        auto entry = [&]( const std::string &address, const std::string &value, char last )
        {
            std::string bytes = "\x01" + std::string( 1, char( address.size() ) ) + address + "\x01";
            bytes += value.empty() ? std::string( 1, '\0' ) : "\x01" + std::string( 1, char( value.size() ) ) + value;
            bytes += last;
            qvEncoderWriteBytes( single, bytes.data(), static_cast< QV_INT >( bytes.size() ) );
        };

        qvEncoderEncodeInt( single, entries );

        for( int i = 0; i < entries; i++ )
        {
            std::string address = "key" + std::to_string( 1000 + i ),
                        value( static_cast< size_t >( i * 31 % 200 ), 'v' );
            bool hasSub = i % 10 == 9;
            qvStoreSetValueCstr( store.at(), address.c_str(), -1, text( value ) );
            entry( address, value, hasSub );

            if( hasSub )
            {
                qvStoreSetStoreCstr( store.at(), address.c_str(), -1, sub );
                qvEncoderEncodeInt( single, 0 );
            }
        }

        qvStoreEncodeToEncoder( store, whole );
        Ref< QV_BUFFER > bytes( qvEncoderBuffer( whole ) ), singly( qvEncoderBuffer( single ) );
        EXPECT_TRUE( qvBufferEquals( singly, bytes ) );
        EXPECT_EQ(
            qv___ObjDbgAllocationSize( qv::obj( singly.get() ) ), qv___ObjDbgAllocationSize( qv::obj( bytes.get() ) ) );
    }
}
