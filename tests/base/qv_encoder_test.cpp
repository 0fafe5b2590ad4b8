#include "qv_test_stream.h"

#include "qv/qv.h"
#include "qv/runtime/qv_family.h"

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

TEST( Decoder, ReadsAllThatIsAskedForOrFails )
{
    Ref< QV_BUFFER > buf          = buffer( "abcdef" );
    Ref< QV_BUFFER > dest         = buffer( "-" );
    char             bytesRead[4] = {};
    uint8_t          byte         = 9;
    QV_CHAR          chs[2]       = {};

    Ref< QV_DECODER > dec( qvDecoderCreate( buf ) );
    EXPECT_TRUE( qvDecoderTryReadBytes( dec, bytesRead, 2 ) && qvDecoderTryReadByte( dec, &byte ) );
    EXPECT_STREQ( "ab", bytesRead );
    EXPECT_EQ( 'c', byte );
    EXPECT_TRUE( qvDecoderTryRead( dec, dest.at(), 2 ) );
    EXPECT_FALSE( qvDecoderTryRead( dec, dest.at(), 2 ) );
    EXPECT_EQ( "-de", bytes( dest ) );

    // Nothing gets through after an error, though there is a byte left.
    EXPECT_FALSE( qvDecoderTryReadByte( dec, &byte ) || qvDecoderTryReadBytes( dec, nullptr, 0 ) );
    EXPECT_EQ( 0, byte );
    EXPECT_EQ( 6, qvDecoderOffset( dec ) );
    EXPECT_EQ( 0, qvDecoderRemaining( dec ) );

    // Characters of which the second is cut off.
    Ref< QV_DECODER > cut( qvDecoderCreate( buffer( "a\x80\x20" ) ) );
    EXPECT_FALSE( qvDecoderTryDecodeChars( cut, chs, 2 ) );
    EXPECT_TRUE( qvDecoderError( cut ) );
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
