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

Ref< QV_DECODER > decoderOf( QV_ENCODER *enc )
{
    return Ref< QV_DECODER >( qvDecoderCreate( Ref< QV_BUFFER >( qvEncoderBuffer( enc ) ) ) );
}

std::string written( QV_ENCODER *enc )
{
    return textOf( Ref< QV_BUFFER >( qvEncoderBuffer( enc ) ).get() );
}

Ref< QV_VECTOR > vectorOf( std::initializer_list< const char * > texts )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( const char *element : texts )
        qvVectorAppendString( vec.at(), text( element ) );

    return vec;
}

void expectFailed( QV_DECODER *dec )
{
    QV_INT number = 7;
    EXPECT_TRUE( qvDecoderError( dec ) );
    EXPECT_EQ( 0, qvDecoderRemaining( dec ) );
    EXPECT_EQ( qvDecoderLength( dec ), qvDecoderOffset( dec ) );
    EXPECT_FALSE( qvDecoderTrySkip( dec, 0 ) );
    EXPECT_FALSE( qvDecoderTryDecodeInt( dec, &number ) );
    EXPECT_EQ( 0, number );
}
} // namespace

TEST( Encoder, BytesOfIntsAreSignAndMagnitude )
{
    const std::pair< QV_INT, const char * > cases[] = {
        { 0, "[00]" }, { 1, "[01 01]" }, { -1, "[81 01]" }, { 255, "[01 ff]" }, { 256, "[02 01 00]" },
        { -65536, "[83 01 00 00]" }, { QV_INT_MAX, "[08 7f ff ff ff ff ff ff ff]" },
        { QV_INT_MIN, "[88 80 00 00 00 00 00 00 00]" } };

    for( auto &[value, bytes] : cases )
    {
        QV_INT            read = 5;
        Ref< QV_ENCODER > enc( qvEncoderCreate() );
        qvEncoderEncodeInt( enc, value );
        EXPECT_EQ( bytes, written( enc ) );
        EXPECT_TRUE( qvDecoderTryDecodeInt( decoderOf( enc ), &read ) );
        EXPECT_EQ( value, read );
    }
}

TEST( Encoder, BytesOfTheOtherValues )
{
    struct
    {
        const char *bytes;
        void ( *encode )( QV_ENCODER *enc );
    } cases[] = {
        { "[01]", []( QV_ENCODER *enc ) { qvEncoderEncodeBool( enc, 2 ); } },
        { "[7f]", []( QV_ENCODER *enc ) { qvEncoderEncodeChar( enc, 0x7F ); } },
        { "[80 00 80]", []( QV_ENCODER *enc ) { qvEncoderEncodeChar( enc, 0x80 ); } },
        { "[90 ff ff]", []( QV_ENCODER *enc ) { qvEncoderEncodeChar( enc, 0x10FFFF ); } },
        { "[61 80 20 ac]", []( QV_ENCODER *enc ) { qvEncoderEncodeChars( enc, U"a\u20AC", 2 ); } },
        { "[01 02 61 80 20 ac]", []( QV_ENCODER *enc ) { qvEncoderEncodeString( enc, text( U"a\u20AC" ) ); } },
        { "[01 01 03 61 62 63]", []( QV_ENCODER *enc ) { qvEncoderEncodeOptionalString( enc, text( "abc" ) ); } },
        { "[00]", []( QV_ENCODER *enc ) { qvEncoderEncodeOptionalString( enc, nullptr ); } },
        { "[00]", []( QV_ENCODER *enc ) { qvEncoderEncodeOptionalStore( enc, nullptr ); } },
        { "[01 02 01 02]", []( QV_ENCODER *enc ) { qvEncoderEncodeBuffer( enc, bufferOf( { 1, 2 } ) ); } },
        { "[01 00]", []( QV_ENCODER *enc ) { qvEncoderEncodeOptionalBuffer( enc, bufferOf( {} ) ); } },
        { "[01 01 02 01 01 61 00]",
          []( QV_ENCODER *enc ) { qvEncoderEncodeOptionalStringVector( enc, vectorOf( { "a", "" } ) ); } },
        { "[01 02 03 ff]",
          []( QV_ENCODER *enc )
          {
              qvEncoderWriteInner( enc, bufferOf( { 0, 1, 2, 3 } ), 1, 3 );
              qvEncoderWriteOne( enc, 1 );
          } },
    };

    for( auto &expected : cases )
    {
        Ref< QV_ENCODER > enc( qvEncoderCreate() );
        expected.encode( enc );
        EXPECT_EQ( expected.bytes, written( enc ) );

        // Behind odd bits the same bytes stand, only not on byte boundaries.
        qvEncoderClear( enc );
        EXPECT_EQ( 0, qvEncoderLength( enc ) );
        qvEncoderWrite( enc, Ref< QV_BUFFER >( qvBufferCreateFromBits( 5, 3 ) ) );
        expected.encode( enc );
        Ref< QV_BUFFER > shifted( qvEncoderBuffer( enc ) );
        qvBufferBitDelLeading( shifted.at(), 3 );
        EXPECT_EQ( expected.bytes, textOf( shifted.get() ) );
    }
}

TEST( Encoder, TheBufferStaysAsItWasTaken )
{
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    qvEncoderWriteByte( enc, 1 );
    Ref< QV_BUFFER > taken( qvEncoderBuffer( enc ) );
    qvEncoderEncodeInt( enc, 2 );
    EXPECT_EQ( "[01]", textOf( taken.get() ) );

    qvEncoderWriteEncoder( enc, enc );
    EXPECT_EQ( "[01 01 02 01 01 02]", written( enc ) );
}

TEST( Encoder, BrokenContractsAreReported )
{
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    Ref< QV_BUFFER >  odd( qvBufferCreateFromBits( 1, 1 ) );
    Ref< QV_DECODER > dec = decoderOf( std::vector< uint8_t >{ 1 } );

    EXPECT_BROKEN( qvEncoderEncodeInt( nullptr, 1 ), "enc" );
    EXPECT_BROKEN( qvEncoderEncodeChar( enc, 0x110000 ), "QV_CHAR_OK( value )" );
    EXPECT_BROKEN( qvEncoderEncodeChars( enc, nullptr, -1 ), "valuesLength >= 0" );
    EXPECT_BROKEN( qvEncoderEncodeBuffer( enc, odd ), "qvBufferBitIsAligned( buf )" );
    EXPECT_BROKEN( qvDecoderTrySkip( dec, -1 ), "length >= 0" );
    EXPECT_BROKEN( qvDecoderTryRead( dec, nullptr, 1 ), "length == 0 || dest" );
    EXPECT_BROKEN( qvDecoderTryReadByte( dec, nullptr ), "length == 0 || dest" );
    EXPECT_BROKEN( qvDecoderTryDecodeChars( dec, nullptr, 1 ), "value || !length" );
}

/* Decoder -------------------------------------------------------------------------------------------------------- */

TEST( Decoder, RecordsComeBack )
{
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    std::u32string    words = U"plain words and some more, \u00E4\u20AC\U0001F600, and again plain ones to the end";

    qvEncoderEncodeBool( enc, QV_TRUE );
    qvEncoderEncodeString( enc, text( words ) );
    qvEncoderEncodeChars( enc, words.data() + 30, 20 );
    qvEncoderEncodeBuffer( enc, bufferOf( { 9, 8, 7 } ) );
    qvEncoderEncodeStringVector( enc, vectorOf( { "one", "", "three" } ) );
    qvEncoderEncodeOptionalString( enc, nullptr );
    qvEncoderWriteBytes( enc, "xyz", 3 );

    // Each value is read once and skipped once; the out values are used again.
    for( bool skip : { false, true } )
    {
        QV_BOOL          flag = QV_FALSE;
        Ref< QV_STRING > qvs  = text( "old" );
        Ref< QV_BUFFER > buf( qvBufferCreateFromByte( 1 ) );
        Ref< QV_VECTOR > vec( qvVectorCreate() );
        QV_CHAR          chars[20];
        uint8_t          bytes[2] = {};

        Ref< QV_DECODER > dec = decoderOf( enc );
        EXPECT_TRUE( qvDecoderTryDecodeBool( dec, skip ? nullptr : &flag ) );
        EXPECT_TRUE( qvDecoderTryDecodeString( dec, skip ? nullptr : qvs.at() ) );
        EXPECT_TRUE( qvDecoderTryDecodeChars( dec, chars, 20 ) );
        EXPECT_TRUE( qvDecoderTryDecodeBuffer( dec, skip ? nullptr : buf.at() ) );
        EXPECT_TRUE( qvDecoderTryDecodeStringVector( dec, skip ? nullptr : vec.at() ) );

        if( !skip )
        {
            EXPECT_TRUE( flag );
            EXPECT_EQ( words, qv::test::chars( qvs ) );
            EXPECT_EQ( words.substr( 30, 20 ), std::u32string( chars, 20 ) );
            EXPECT_EQ( "[09 08 07]", textOf( buf.get() ) );
            ASSERT_EQ( 3, qvVectorLength( vec ) );
            EXPECT_EQ( "three", textOf( qvVectorBacking( vec )[2] ) );
        }

        EXPECT_TRUE( qvDecoderTryDecodeOptionalString( dec, qvs.at() ) );
        EXPECT_EQ( nullptr, qvs.get() );
        EXPECT_EQ( 3, qvDecoderRemaining( dec ) );
        EXPECT_TRUE( qvDecoderTryReadBytes( dec, bytes, 2 ) );
        EXPECT_EQ( 'y', bytes[1] );
        EXPECT_TRUE( qvDecoderTryRead( dec, buf.at(), 1 ) );
        EXPECT_EQ( 'z', qvBufferReadByte( buf, qvBufferLength( buf ) - 1 ) );
        EXPECT_FALSE( qvDecoderTryReadByte( dec, bytes ) );
        EXPECT_EQ( 0, bytes[0] );
        expectFailed( dec );
    }
}

TEST( Decoder, IntsAreReadMoreTolerantlyThanWritten )
{
    struct
    {
        std::vector< uint8_t > bytes;
        bool                   ok;
        QV_INT                 value;
    } cases[] = {
        { { 0x80 }, true, 0 },
        { { 0x03, 0, 0, 5 }, true, 5 },
        { { 0x0A, 0, 0, 0x7F, 1, 1, 1, 1, 1, 1, 1 }, true, 0x7F01010101010101 },
        { { 0x09, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF }, false, 0 },
        { { 0x08, 0x80, 0, 0, 0, 0, 0, 0, 0 }, false, 0 },
        { { 0x88, 0x80, 0, 0, 0, 0, 0, 0, 1 }, false, 0 },
        { { 0x02, 1 }, false, 0 },
        { { 0x7F, 0x01, 0x02, 0xAA, 0xBB }, true, 0xAABB },
        { { 0xFF, 0x01, 0x02, 0xAA, 0xBB }, true, -0xAABB },
        { { 0x7F, 0x81, 0x01, 0xAA }, false, 0 },
        { { 0x7F, 0x08, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1 }, false, 0 },
        { {}, false, 0 },
    };

    for( auto &expected : cases )
    {
        SCOPED_TRACE( textOf( bufferOf( expected.bytes ).get() ) );
        QV_INT            value = 5;
        Ref< QV_DECODER > dec   = decoderOf( expected.bytes );
        EXPECT_EQ( expected.ok, qvDecoderTryDecodeInt( dec, &value ) );
        EXPECT_EQ( expected.value, value );
        EXPECT_EQ( static_cast< QV_INT >( expected.bytes.size() ), qvDecoderOffset( dec ) );
        EXPECT_EQ( !expected.ok, qvDecoderError( dec ) );
    }

    // A number of digits that is an Int in its turn, and so on: eight times, not nine.
    for( size_t nested : { 8u, 9u, 100000u } )
    {
        std::vector< uint8_t > bytes( nested, 0x7F );
        bytes.insert( bytes.end(), nested + 2, 1 );
        EXPECT_EQ( nested == 8, qvDecoderTryDecodeInt( decoderOf( bytes ), nullptr ) );
    }
}

TEST( Decoder, BadBytesSetTheError )
{
    struct
    {
        std::vector< uint8_t > bytes;
        QV_BOOL ( *decode )( QV_DECODER *dec );
    } cases[] = {
        { { 2 }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeBool( dec, nullptr ); } },
        { { 0xA0, 0, 0 }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeChar( dec, nullptr ); } },
        { { 0xC0, 0, 0 }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeChar( dec, nullptr ); } },
        { { 0x91, 0, 0 }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeChar( dec, nullptr ); } },
        { { 0x80, 0 }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeChar( dec, nullptr ); } },
        { { 1, 3, 'a', 'b' }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeString( dec, nullptr ); } },
        { { 8, 0x7F, 0, 0, 0, 0, 0, 0, 0, 'a' },
          []( QV_DECODER *dec ) { return qvDecoderTryDecodeString( dec, nullptr ); } },
        { { 0x81, 1, 'a' }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeBuffer( dec, nullptr ); } },
        { { 1, 2, 1, 1, 'a', 1, 1 }, []( QV_DECODER *dec ) { return qvDecoderTryDecodeStringVector( dec, nullptr ); } },
        { { 8, 0x10, 0, 0, 0, 0, 0, 0, 0, 0, 0 },
          []( QV_DECODER *dec ) { return qvDecoderTryDecodeStringVector( dec, nullptr ); } },
        { { 1, 2, 0x9F, 0xFF, 0xFF, 'a' }, []( QV_DECODER *dec )
          {
              Ref< QV_STRING > qvs = text( "old" );
              QV_BOOL          ok  = qvDecoderTryDecodeString( dec, qvs.at() );
              EXPECT_EQ( nullptr, qvs.get() );
              return ok;
          } },
    };

    for( auto &bad : cases )
    {
        SCOPED_TRACE( textOf( bufferOf( bad.bytes ).get() ) );
        Ref< QV_DECODER > dec = decoderOf( bad.bytes );
        EXPECT_FALSE( bad.decode( dec ) );
        expectFailed( dec );
    }

    QV_CHAR value;
    EXPECT_TRUE( qvDecoderTryDecodeChar( decoderOf( std::vector< uint8_t >{ 0x90, 0, 0x41 } ), &value ) );
    EXPECT_EQ( 0x100041u, value );

    // A negative number of elements is an empty Vector.
    Ref< QV_VECTOR > vec;
    EXPECT_TRUE( qvDecoderTryDecodeStringVector( decoderOf( std::vector< uint8_t >{ 0x81, 5 } ), vec.at() ) );
    EXPECT_EQ( 0, qvVectorLength( vec ) );

    Ref< QV_DECODER > dec = decoderOf( std::vector< uint8_t >{ 1, 1 } );
    qvDecoderSetError( dec );
    expectFailed( dec );
}
