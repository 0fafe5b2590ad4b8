#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_vector.h"

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

std::string written( QV_ENCODER *enc )
{
    return textOf( Ref< QV_BUFFER >( qvEncoderBuffer( enc ) ).get() );
}

// Writes a value, on byte boundaries and behind odd bits; reads it back, and skips it.
template< class Value, class Encode, class Decode, class Kept >
void expectBytes( const char *bytes, Value value, const Encode &encode, const Decode &decode, Kept &kept )
{
    SCOPED_TRACE( bytes );
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    qvEncoderWrite( enc, Ref< QV_BUFFER >( qvBufferCreateFromBits( 5, 3 ) ) );
    encode( enc, value );
    Ref< QV_BUFFER > shifted( qvEncoderBuffer( enc ) );
    qvBufferBitDelLeading( shifted.at(), 3 );
    EXPECT_EQ( bytes, textOf( shifted.get() ) );

    qvEncoderClear( enc );
    EXPECT_EQ( 0, qvEncoderLength( enc ) );
    encode( enc, value );
    EXPECT_EQ( bytes, written( enc ) );

    for( auto *out : { &kept, static_cast< Kept * >( nullptr ) } )
    {
        Ref< QV_DECODER > dec( qvDecoderCreate( shifted ) );
        EXPECT_TRUE( decode( dec, out ) );
        EXPECT_EQ( 0, qvDecoderRemaining( dec ) );
    }
}

template< class T >
void expectNumber(
    const char *bytes, T value, void ( *encode )( QV_ENCODER *, T ), QV_BOOL ( *decode )( QV_DECODER *, T * ) )
{
    T kept = 5;
    expectBytes( bytes, value, encode, decode, kept );
    EXPECT_EQ( value, kept );
}

// The variable is used again and again: what it holds is given up.
template< class T >
void expectObject(
    const char *bytes, T *value, void ( *encode )( QV_ENCODER *, T * ), QV_BOOL ( *decode )( QV_DECODER *, T ** ) )
{
    Ref< T > kept = Ref< T >::share( value );
    expectBytes( bytes, value, encode, decode, *kept.at() );
    EXPECT_EQ( value ? textOf( value ) : "", kept ? textOf( kept.get() ) : "" );
}
} // namespace

TEST( Encoder, ValuesHaveTheirBytesAndComeBack )
{
    expectNumber( "[01]", QV_TRUE, qvEncoderEncodeBool, qvDecoderTryDecodeBool );
    expectNumber( "[88 80 00 00 00 00 00 00 00]", QV_INT_MIN, qvEncoderEncodeInt, qvDecoderTryDecodeInt );
    expectNumber( "[90 ff ff]", QV_CHAR( 0x10FFFF ), qvEncoderEncodeChar, qvDecoderTryDecodeChar );

    Ref< QV_STRING > none, word = text( U"a\u20AC" );
    Ref< QV_BUFFER > bytes = bufferOf( { 1, 2 } ), noBytes = bufferOf( {} );
    Ref< QV_VECTOR > vec( qvStringSplitChar( text( "a " ), U' ', -1 ) );

    expectObject(
        "[01 01 02 61 80 20 ac]", word.get(), qvEncoderEncodeOptionalString, qvDecoderTryDecodeOptionalString );
    expectObject( "[00]", none.get(), qvEncoderEncodeOptionalString, qvDecoderTryDecodeOptionalString );
    expectObject( "[01 02 01 02]", bytes.get(), qvEncoderEncodeBuffer, qvDecoderTryDecodeBuffer );
    expectObject( "[01 00]", noBytes.get(), qvEncoderEncodeOptionalBuffer, qvDecoderTryDecodeOptionalBuffer );
    expectObject(
        "[01 01 02 01 01 61 00]", vec.get(), qvEncoderEncodeOptionalStringVector,
        qvDecoderTryDecodeOptionalStringVector );
}

TEST( Encoder, BrokenContractsAreReported )
{
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    Ref< QV_BUFFER >  odd( qvBufferCreateFromBits( 1, 1 ) );
    Ref< QV_DECODER > dec = decoderOf( std::vector< uint8_t >{ 1 } );

    EXPECT_BROKEN( qvEncoderEncodeChar( enc, 0x110000 ), "QV_CHAR_OK( value )" );
    EXPECT_BROKEN( qvEncoderEncodeChars( enc, nullptr, -1 ), "valuesLength >= 0" );
    EXPECT_BROKEN( qvEncoderEncodeBuffer( enc, odd ), "qvBufferBitIsAligned( buf )" );
    EXPECT_BROKEN( qvDecoderTrySkip( dec, -1 ), "length >= 0" );
    EXPECT_BROKEN( qvDecoderTryRead( dec, nullptr, 1 ), "length == 0 || dest" );
    EXPECT_BROKEN( qvDecoderTryReadByte( dec, nullptr ), "length == 0 || dest" );
    EXPECT_BROKEN( qvDecoderTryDecodeChars( dec, nullptr, 1 ), "value || !length" );
}

/* Decoder -------------------------------------------------------------------------------------------------------- */

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

// Reads or skips a value that cannot be read.
template< auto decode, class T >
QV_BOOL decodeInto( QV_DECODER *dec, bool keep )
{
    T       value = {};
    QV_BOOL ok    = decode( dec, keep ? &value : nullptr );
    EXPECT_EQ( T{}, value );
    return ok;
}
