#include "qv/base/qv_encoder.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_encoder_private.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_vectors_line_private.h"

#include <bit>

struct QV_ENCODER : QV_OBJ
{
    QV_BUFFER *buf; // what was written so far
};

namespace
{
void freeEncoder( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvEncoderFrom( thisObj )->buf );
}

// Appends `size` bytes, above 0, which `fill` writes where it is told to: in the Buffer itself, unless somebody has
// written odd bits.
template< class Fill >
void appendFilled( QV_ENCODER *enc, QV_INT size, Fill fill )
{
    if( enc->buf->length % 8 == 0 )
    {
        fill( qv::appendRoom( &enc->buf, size ) );
        return;
    }

    uint8_t *bytes = static_cast< uint8_t * >( qvMemAlloc( size ) );
    fill( bytes );
    qvBufferAppendBytes( &enc->buf, bytes, size );
    qvMemFree( bytes );
}

uint64_t magnitude( QV_INT value )
{
    return value < 0 ? -static_cast< uint64_t >( value ) : static_cast< uint64_t >( value );
}

// How many digits an Int has.
QV_INT digits( QV_INT value )
{
    return ( std::bit_width( magnitude( value ) ) + 7 ) / 8;
}

uint8_t *putInt( uint8_t *to, QV_INT value )
{
    QV_INT bytes = digits( value );
    *to++        = static_cast< uint8_t >( bytes | ( value < 0 ? 0x80 : 0 ) );

    for( QV_INT shift = 8 * ( bytes - 1 ); shift >= 0; shift -= 8 )
        *to++ = static_cast< uint8_t >( magnitude( value ) >> shift );

    return to;
}

uint8_t *putChar( uint8_t *to, QV_CHAR value )
{
    if( value >= 0x80 )
    {
        *to++ = static_cast< uint8_t >( 0x80 | value >> 16 );
        *to++ = static_cast< uint8_t >( value >> 8 );
    }

    *to++ = static_cast< uint8_t >( value );
    return to;
}

// How many bytes the Chars take.
QV_INT charsSize( const QV_CHAR *values, QV_INT count )
{
    QV_INT wide = 0;

    for( QV_INT i = qv::asciiLength( values, count ); i < count; i++ )
        wide += values[i] >= 0x80;

    return count + 2 * wide;
}

void putChars( uint8_t *to, const QV_CHAR *values, QV_INT count, QV_INT size )
{
    if( size == count )
    {
        qv::narrowAscii( to, values, count );
        return;
    }

    for( QV_INT i = 0; i < count; i++ )
        to = putChar( to, values[i] );
}

// Writes whether there is a value.
template< class T >
bool encodePresence( QV_ENCODER *enc, T *value )
{
    qvEncoderEncodeBool( enc, value ? QV_TRUE : QV_FALSE );
    return value;
}
} // namespace

QV___FAMILY( Encoder, QV_ENCODER, freeEncoder, nullptr, nullptr )

QV_ENCODER *qvEncoderCreate( void )
{
    QV_ENCODER *enc = qv::create< QV_ENCODER >( qvEncoderSort() );
    enc->buf        = qvBufferCreate();

    return enc;
}

QV_BUFFER *qvEncoderBuffer( QV_ENCODER *enc )
{
    QV_CHECK( enc );
    return qv::retain( enc->buf );
}

QV_INT qvEncoderLength( QV_ENCODER *enc )
{
    QV_CHECK( enc );
    return qvBufferLength( enc->buf );
}

void qvEncoderClear( QV_ENCODER *enc )
{
    QV_CHECK( enc );
    qvBufferClear( &enc->buf );
}

/* Bytes as they are ---------------------------------------------------------------------------------------------- */

void qvEncoderWrite( QV_ENCODER *enc, QV_BUFFER *buf )
{
    QV_CHECK( enc );
    qvBufferAppend( &enc->buf, buf );
}

void qvEncoderWriteLeading( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendLeading( &enc->buf, buf, length );
}

void qvEncoderWriteTrailing( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendTrailing( &enc->buf, buf, length );
}

void qvEncoderWriteInner( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT offset, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendInner( &enc->buf, buf, offset, length );
}

void qvEncoderWriteOuter( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT offset, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendOuter( &enc->buf, buf, offset, length );
}

void qvEncoderWriteByte( QV_ENCODER *enc, uint8_t byte )
{
    QV_CHECK( enc );
    qvBufferAppendByte( &enc->buf, byte );
}

void qvEncoderWriteBytes( QV_ENCODER *enc, const void *bytes, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendBytes( &enc->buf, bytes, length );
}

void qvEncoderWriteZero( QV_ENCODER *enc, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendZero( &enc->buf, length );
}

void qvEncoderWriteOne( QV_ENCODER *enc, QV_INT length )
{
    QV_CHECK( enc );
    qvBufferAppendOne( &enc->buf, length );
}

void qvEncoderWriteEncoder( QV_ENCODER *enc, QV_ENCODER *src )
{
    QV_CHECK( enc );
    QV_CHECK( src );
    qvBufferAppend( &enc->buf, src->buf );
}

/* Values --------------------------------------------------------------------------------------------------------- */

void qvEncoderEncodeBool( QV_ENCODER *enc, QV_BOOL value )
{
    QV_CHECK( enc );
    qvBufferAppendByte( &enc->buf, value ? 1 : 0 );
}

void qvEncoderEncodeInt( QV_ENCODER *enc, QV_INT value )
{
    QV_CHECK( enc );
    appendFilled( enc, 1 + digits( value ), [=]( uint8_t *to ) { putInt( to, value ); } );
}

void qvEncoderEncodeChar( QV_ENCODER *enc, QV_CHAR value )
{
    QV_CHECK( enc );
    QV_CHECK( QV_CHAR_OK( value ) );

    appendFilled( enc, value < 0x80 ? 1 : 3, [=]( uint8_t *to ) { putChar( to, value ); } );
}

void qvEncoderEncodeChars( QV_ENCODER *enc, const QV_CHAR *values, QV_INT valuesLength )
{
    QV_CHECK( enc );
    QV_CHECK( valuesLength >= 0 );
    QV_CHECK( values || valuesLength == 0 );
    QV_CHECK_AS( qvCharsAllOk( values, valuesLength ), "QV_CHAR_OK( value )" );

    if( valuesLength == 0 )
        return;

    QV_INT size = charsSize( values, valuesLength );
    appendFilled( enc, size, [=]( uint8_t *to ) { putChars( to, values, valuesLength, size ); } );
}

void qvEncoderEncodeString( QV_ENCODER *enc, QV_STRING *qvs )
{
    QV_CHECK( enc );
    QV_CHECK( qvs );

    const QV_CHAR *values = qv::chars( qvs );
    QV_INT         length = qvs->length;
    QV_INT         size   = charsSize( values, length );

    appendFilled(
        enc, 1 + digits( length ) + size,
        [=]( uint8_t *to ) { putChars( putInt( to, length ), values, length, size ); } );
}

namespace
{
// Appends an entry, whatever it is.
void encodeEntry( QV_ENCODER *enc, QV_STRING *address, QV_STRING *value, bool hasStore )
{
    QV_INT valueSize = value ? charsSize( qv::chars( value ), value->length ) : 0;
    QV_INT size      = 1 + digits( address->length ) + address->length + 2;

    if( value )
        size += 1 + digits( value->length ) + valueSize;

    appendFilled(
        enc, size,
        [=]( uint8_t *to )
        {
            to = putInt( to, address->length );
            putChars( to, qv::chars( address ), address->length, address->length );
            to += address->length;
            *to++ = value ? 1 : 0;

            if( value )
            {
                to = putInt( to, value->length );
                putChars( to, qv::chars( value ), value->length, valueSize );
                to += valueSize;
            }

            *to = hasStore ? 1 : 0;
        } );
}
} // namespace

qv::EntryWriter::EntryWriter( QV_ENCODER *enc ) : enc_( enc ), isDirect_( enc->buf->length % 8 != 0 )
{
}

qv::EntryWriter::~EntryWriter()
{
    flush();
}

// In two parts, of which the Buffer grows by the first one, as it would grow by the last bytes of that, and has the second
// one in what is free then.
void qv::EntryWriter::flush()
{
    if( mark_.grownAt > 0 )
        qvBufferAppendBytes( &enc_->buf, block_, mark_.grownAt );

    if( mark_.length > mark_.grownAt )
        qvBufferAppendBytes( &enc_->buf, block_ + mark_.grownAt, mark_.length - mark_.grownAt );

    QV_ASSERT( mark_.length == 0 || enc_->buf->bspace / 8 == mark_.spare );
    mark_ = { .length = 0, .spare = enc_->buf->bspace / 8, .grownAt = 0 };
}

void qv::EntryWriter::writeInt( QV_INT value )
{
    const QV_INT MOST = 9; // bytes

    if( !isOwn_ )
    {
        qvEncoderEncodeInt( enc_, value );
        isOwn_ = !isDirect_;
        flush();
        return;
    }

    if( mark_.length + MOST > SIZE )
        flush();

    uint8_t *start = block_ + mark_.length;
    took( mark_, putInt( start, value ) - start );
}

void qv::EntryWriter::writeAny( QV_STRING *address, QV_STRING *value, bool hasStore )
{
    flush();

    if( writeShort( mark_, address, value, hasStore ) )
        return;

    encodeEntry( enc_, address, value, hasStore );
    isOwn_ = !isDirect_;
    flush();
}

void qvEncoderEncodeBuffer( QV_ENCODER *enc, QV_BUFFER *buf )
{
    QV_CHECK( enc );
    QV_CHECK( buf );
    QV_CHECK( qvBufferBitIsAligned( buf ) );

    qvEncoderEncodeInt( enc, qv::byteLength( buf ) );
    qvBufferAppend( &enc->buf, buf );
}

void qvEncoderEncodeStore( QV_ENCODER *enc, QV_STORE *store )
{
    QV_CHECK( enc );
    qvStoreEncodeToEncoder( store, enc );
}

void qvEncoderEncodeStringVector( QV_ENCODER *enc, QV_VECTOR *vec )
{
    QV_CHECK( enc );
    QV_CHECK( vec );

    // The text of an element can be made by a function that changes the Vector it stands in: then that becomes another.
    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( vec );

    qvEncoderEncodeInt( enc, vec->length );

    for( QV_INT i = 0; i < vec->length; i++ )
    {
        qv::Ref< QV_STRING > qvs( qvObjToString( qv::objs( vec )[i] ) );
        qvEncoderEncodeString( enc, qvs );
    }
}

void qvEncoderEncodeOptionalString( QV_ENCODER *enc, QV_STRING *qvs )
{
    if( encodePresence( enc, qvs ) )
        qvEncoderEncodeString( enc, qvs );
}

void qvEncoderEncodeOptionalBuffer( QV_ENCODER *enc, QV_BUFFER *buf )
{
    if( encodePresence( enc, buf ) )
        qvEncoderEncodeBuffer( enc, buf );
}

void qvEncoderEncodeOptionalStore( QV_ENCODER *enc, QV_STORE *store )
{
    if( encodePresence( enc, store ) )
        qvEncoderEncodeStore( enc, store );
}

void qvEncoderEncodeOptionalStringVector( QV_ENCODER *enc, QV_VECTOR *vec )
{
    if( encodePresence( enc, vec ) )
        qvEncoderEncodeStringVector( enc, vec );
}
