#include "qv/base/qv_decoder.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_encoder_private.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_utf8_private.h"

#include <algorithm>
#include <utility>

struct QV_DECODER : QV_OBJ
{
    QV_BUFFER     *buf;    // never changes while it is held here
    const uint8_t *bytes;  // its contents
    QV_INT         length; // their whole bytes
    QV_INT         offset; // of the next read
    QV_BOOL        error;
    qv::ObjBatch  *strings; // where Strings are created, or null
};

namespace
{
const QV_INT COUNT_FOLLOWS = 127; // as the number of digits of an Int: an Int with the number comes first
const int    MAX_NESTING   = 8;   // how often that may be so of one Int

void freeDecoder( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvDecoderFrom( thisObj )->buf );
}

QV_BOOL fail( QV_DECODER *dec )
{
    dec->error = QV_TRUE;
    return QV_FALSE;
}

// What every Try of a value starts with: the out value is given up, and an earlier error shows again.
template< class T >
bool begin( QV_DECODER *dec, T **value )
{
    if( value )
        qv::assign( value, static_cast< T * >( nullptr ) );

    return !dec->error;
}

template< class T >
bool begin( QV_DECODER *dec, T *value )
{
    if( value )
        *value = 0;

    return !dec->error;
}

template< class T >
QV_BOOL deliver( T *value, T result )
{
    if( value )
        *value = result;

    return QV_TRUE;
}

QV_INT remaining( QV_DECODER *dec )
{
    return dec->length - dec->offset;
}

// The digits of an Int, any number of them. False where the value doesn't fit.
bool joinDigits( const uint8_t *from, QV_INT count, bool negative, QV_INT *value )
{
    QV_INT acc = 0;

    for( QV_INT i = 0; i < count; i++ )
        if( __builtin_mul_overflow( acc, 256, &acc )
            || __builtin_add_overflow( acc, negative ? -from[i] : from[i], &acc ) )
            return false;

    *value = acc;
    return true;
}

// Reads an Int and moves the offset past it; false without a change of the decoder where there is none.
bool readInt( QV_DECODER *dec, QV_INT *value, int nesting = 0 )
{
    if( remaining( dec ) < 1 )
        return false;

    QV_INT start    = dec->offset;
    int    lead     = dec->bytes[dec->offset++];
    bool   negative = lead & 0x80;
    QV_INT count    = lead & 0x7F;

    if( count == COUNT_FOLLOWS && ( nesting == MAX_NESTING || !readInt( dec, &count, nesting + 1 ) || count < 0 ) )
    {
        dec->offset = start;
        return false;
    }

    if( count > remaining( dec ) || !joinDigits( dec->bytes + dec->offset, count, negative, value ) )
    {
        dec->offset = start;
        return false;
    }

    dec->offset += count;
    return true;
}

// Reads a length or a number of values that take at least a byte each.
bool readLength( QV_DECODER *dec, QV_INT *length )
{
    return readInt( dec, length ) && *length >= 0 && *length <= remaining( dec );
}

// Reads Chars, one after the other; without a destination they are only checked. Each takes a byte at least.
bool readChars( QV_DECODER *dec, QV_CHAR *to, QV_INT count )
{
    if( count > remaining( dec ) )
        return false;

    const uint8_t *from = dec->bytes + dec->offset;
    const uint8_t *end  = dec->bytes + dec->length;

    for( QV_INT i = 0; i < count; i++ )
    {
        QV_INT most  = std::min( count - i, QV_INT( end - from ) );
        QV_INT ascii = qv::utf8::decodeLeadingAscii( to ? to + i : nullptr, from, most );
        from += ascii;
        i += ascii;

        if( i == count )
            break;

        if( end - from < 3 || from[0] & 0x60 )
            return false;

        QV_CHAR value =
            static_cast< QV_CHAR >( from[0] & 0x1F ) << 16 | static_cast< QV_CHAR >( from[1] ) << 8 | from[2];
        from += 3;

        if( !QV_CHAR_OK( value ) )
            return false;

        if( to )
            to[i] = value;
    }

    dec->offset = from - dec->bytes;
    return true;
}
} // namespace

QV___FAMILY( Decoder, QV_DECODER, freeDecoder, nullptr, nullptr )

QV_DECODER *qvDecoderCreate( QV_BUFFER *buf )
{
    QV_CHECK( buf );

    QV_DECODER *dec = qv::create< QV_DECODER >( qvDecoderSort() );
    dec->buf        = qv::retain( buf );
    dec->bytes      = qv::bytes( buf );
    dec->length     = qv::byteLength( buf );
    dec->offset     = 0;
    dec->error      = QV_FALSE;
    dec->strings    = nullptr;

    return dec;
}

qv::ObjBatch *qv::setDecoderBatch( QV_DECODER *dec, ObjBatch *strings )
{
    return std::exchange( dec->strings, strings );
}

qv::DecoderRest qv::restOf( QV_DECODER *dec )
{
    const uint8_t *end = dec->bytes + dec->length;
    return { dec->error ? end : dec->bytes + dec->offset, end };
}

void qv::moveDecoder( QV_DECODER *dec, const uint8_t *to )
{
    QV_ASSERT( !dec->error && to >= dec->bytes + dec->offset && to <= dec->bytes + dec->length );
    dec->offset = to - dec->bytes;
}

QV_INT qv::decoderOffset( QV_DECODER *dec )
{
    return dec->offset;
}

QV_BUFFER *qvDecoderBuffer( QV_DECODER *dec )
{
    QV_CHECK( dec );
    return qv::retain( dec->buf );
}

QV_INT qvDecoderLength( QV_DECODER *dec )
{
    QV_CHECK( dec );
    return dec->length;
}

QV_INT qvDecoderOffset( QV_DECODER *dec )
{
    QV_CHECK( dec );
    return dec->error ? dec->length : dec->offset;
}

QV_INT qvDecoderRemaining( QV_DECODER *dec )
{
    QV_CHECK( dec );
    return dec->error ? 0 : remaining( dec );
}

QV_BOOL qvDecoderError( QV_DECODER *dec )
{
    QV_CHECK( dec );
    return dec->error;
}

void qvDecoderSetError( QV_DECODER *dec )
{
    QV_CHECK( dec );
    dec->error = QV_TRUE;
}

/* Bytes as they are ---------------------------------------------------------------------------------------------- */

QV_BOOL qvDecoderTrySkip( QV_DECODER *dec, QV_INT length )
{
    QV_CHECK( dec );
    QV_CHECK( length >= 0 );

    if( dec->error || length > remaining( dec ) )
        return fail( dec );

    dec->offset += length;
    return QV_TRUE;
}

QV_BOOL qvDecoderTryRead( QV_DECODER *dec, QV_BUFFER **dest, QV_INT length )
{
    QV_CHECK( dec );
    QV_CHECK( length >= 0 );
    QV_CHECK( length == 0 || dest );
    QV_CHECK( length == 0 || *dest );

    if( dec->error || length > remaining( dec ) )
        return fail( dec );

    if( length > 0 )
        qvBufferAppendInner( dest, dec->buf, dec->offset, length );

    dec->offset += length;
    return QV_TRUE;
}

QV_BOOL qvDecoderTryReadBytes( QV_DECODER *dec, void *dest, QV_INT length )
{
    QV_CHECK( dec );
    QV_CHECK( length >= 0 );
    QV_CHECK( length == 0 || dest );

    if( dec->error || length > remaining( dec ) )
        return fail( dec );

    qvMemCopy( dest, dec->bytes + dec->offset, length );
    dec->offset += length;
    return QV_TRUE;
}

QV_BOOL qvDecoderTryReadByte( QV_DECODER *dec, uint8_t *dest )
{
    QV_CHECK( dec );

    if( dest )
        *dest = 0;

    return qvDecoderTryReadBytes( dec, dest, 1 );
}

/* Values --------------------------------------------------------------------------------------------------------- */

QV_BOOL qvDecoderTryDecodeBool( QV_DECODER *dec, QV_BOOL *value )
{
    QV_CHECK( dec );

    if( !begin( dec, value ) || remaining( dec ) < 1 || dec->bytes[dec->offset] > 1 )
        return fail( dec );

    return deliver< QV_BOOL >( value, dec->bytes[dec->offset++] ? QV_TRUE : QV_FALSE );
}

QV_BOOL qvDecoderTryDecodeInt( QV_DECODER *dec, QV_INT *value )
{
    QV_CHECK( dec );

    QV_INT result;

    if( !begin( dec, value ) || !readInt( dec, &result ) )
        return fail( dec );

    return deliver( value, result );
}

QV_BOOL qvDecoderTryDecodeChar( QV_DECODER *dec, QV_CHAR *value )
{
    QV_CHECK( dec );

    QV_CHAR result;

    if( !begin( dec, value ) || !readChars( dec, &result, 1 ) )
        return fail( dec );

    return deliver( value, result );
}

QV_BOOL qvDecoderTryDecodeChars( QV_DECODER *dec, QV_CHAR *value, QV_INT length )
{
    QV_CHECK( dec );
    QV_CHECK( value || !length );
    QV_CHECK( length >= 0 );

    return dec->error || !readChars( dec, value, length ) ? fail( dec ) : QV_TRUE;
}

QV_BOOL qvDecoderTryDecodeString( QV_DECODER *dec, QV_STRING **value )
{
    QV_CHECK( dec );

    QV_INT length;

    if( !begin( dec, value ) || !readLength( dec, &length ) )
        return fail( dec );

    if( !value )
        return readChars( dec, nullptr, length ) ? QV_TRUE : fail( dec );

    if( length == 0 )
        return deliver( value, qvStringCreate() );

    qv::Ref< QV_STRING > result( qv::newFixedString( length, dec->strings ) );

    if( !readChars( dec, qv::chars( result.get() ), length ) )
        return fail( dec );

    return deliver( value, result.give() );
}

QV_BOOL qvDecoderTryDecodeBuffer( QV_DECODER *dec, QV_BUFFER **value )
{
    QV_CHECK( dec );

    QV_INT length;

    if( !begin( dec, value ) || !readLength( dec, &length ) )
        return fail( dec );

    // After the test of the length these cannot fail.
    if( value )
    {
        *value = qvBufferCreate();
        QV_CHECK( qvDecoderTryRead( dec, &*value, length ) );
    }
    else
    {
        QV_CHECK( qvDecoderTrySkip( dec, length ) );
    }

    return QV_TRUE;
}

QV_BOOL qvDecoderTryDecodeStore( QV_DECODER *dec, QV_STORE **value )
{
    QV_CHECK( dec );

    if( !begin( dec, value ) )
        return fail( dec );

    qv::Ref< QV_STORE > store( qvStoreTryDecodeFromDecoder( dec ) );

    if( !store )
        return fail( dec );

    return value ? deliver( value, store.give() ) : QV_TRUE;
}

QV_BOOL qvDecoderTryDecodeStringVector( QV_DECODER *dec, QV_VECTOR **value )
{
    QV_CHECK( dec );

    QV_INT count;

    if( !begin( dec, value ) || !readInt( dec, &count ) || count > remaining( dec ) )
        return fail( dec );

    qv::Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( QV_INT i = 0; i < count; i++ )
    {
        qv::Ref< QV_STRING > qvs;

        if( !qvDecoderTryDecodeString( dec, value ? qvs.at() : nullptr ) )
            return QV_FALSE;

        if( value )
        {
            QV_OBJ *obj = qv::obj( qvs.give() );
            qv___VectorPushNoRetain( vec.at(), &obj, 1 );
        }
    }

    return value ? deliver( value, vec.give() ) : QV_TRUE;
}

namespace
{
// Whether there is a value, and then the value.
template< class T >
QV_BOOL decodeOptional( QV_DECODER *dec, T **value, QV_BOOL ( *decode )( QV_DECODER *, T ** ) )
{
    QV_CHECK( dec );

    QV_BOOL present;

    if( !begin( dec, value ) || !qvDecoderTryDecodeBool( dec, &present ) )
        return fail( dec );

    return present ? decode( dec, value ) : QV_TRUE;
}
} // namespace

QV_BOOL qvDecoderTryDecodeOptionalString( QV_DECODER *dec, QV_STRING **value )
{
    return decodeOptional( dec, value, qvDecoderTryDecodeString );
}

QV_BOOL qvDecoderTryDecodeOptionalBuffer( QV_DECODER *dec, QV_BUFFER **value )
{
    return decodeOptional( dec, value, qvDecoderTryDecodeBuffer );
}

QV_BOOL qvDecoderTryDecodeOptionalStore( QV_DECODER *dec, QV_STORE **value )
{
    return decodeOptional( dec, value, qvDecoderTryDecodeStore );
}

QV_BOOL qvDecoderTryDecodeOptionalStringVector( QV_DECODER *dec, QV_VECTOR **value )
{
    return decodeOptional( dec, value, qvDecoderTryDecodeStringVector );
}
