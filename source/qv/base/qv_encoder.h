/** @file
    Encoder: values one after the other as bytes, for a Decoder that reads them in the same order.

        QV_ENCODER *enc = qvEncoderCreate();
        qvEncoderEncodeInt( enc, 8080 );
        qvEncoderEncodeOptionalString( enc, NULL );
        QV_BUFFER *bytes = qvEncoderBuffer( enc );     // 02 1f 90 00
        qvEncoderRelease( enc );

    The bytes are meant to be kept and exchanged. They carry neither tags nor names: both sides know the order.

        Bool            1 byte, 00 or 01
        Int             the number of digits, 0 to 8, with bit 7 set for a negative value; then the digits of the
                        magnitude to the base 256, most significant first
        Char            below U+0080 1 byte; else 3, the code point most significant byte first with bit 23 set
        Chars           one Char after the other, without their number
        String          Int, the number of characters; then the Chars
        Buffer          Int, the number of bytes; then the bytes
        StringVector    Int, the number of elements; then each as String
        Store           the binary form of the document
        Optional...     Bool, whether there is a value; then the value

    An Encoder cannot fail on data. Null as an Encoder or, but for the Optional forms, as a value ends the process. One
    thread at a time uses an Encoder. Everything is appended; each costs what it writes. */

#ifndef QV_ENCODER_H
#define QV_ENCODER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Encoder, QV_ENCODER )

/** A new Encoder that has written nothing. */
QV_API QV_ENCODER *qvEncoderCreate( void );

/** What was written so far: a new reference to a value that later writing doesn't change. */
QV_API QV_BUFFER *qvEncoderBuffer( QV_ENCODER *enc );

/** Its length in bytes. */
QV_API QV_INT qvEncoderLength( QV_ENCODER *enc );

/** Starts again with nothing written. */
QV_API void qvEncoderClear( QV_ENCODER *enc );

/* Bytes as they are ---------------------------------------------------------------------------------------------- */

/** @{ */
/** All of a Buffer or a part of it; offsets and lengths are in bytes and as for qvBufferAppend() and its sisters. */
QV_API void qvEncoderWrite( QV_ENCODER *enc, QV_BUFFER *buf );
QV_API void qvEncoderWriteLeading( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT length );
QV_API void qvEncoderWriteTrailing( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT length );
QV_API void qvEncoderWriteInner( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT offset, QV_INT length );
QV_API void qvEncoderWriteOuter( QV_ENCODER *enc, QV_BUFFER *buf, QV_INT offset, QV_INT length );
/** @} */

/** @{ */
/** A byte; an array, which may be null if it is empty. */
QV_API void qvEncoderWriteByte( QV_ENCODER *enc, uint8_t byte );
QV_API void qvEncoderWriteBytes( QV_ENCODER *enc, const void *bytes, QV_INT length );
/** @} */

/** @{ */
/** So many bytes 00 or FF. */
QV_API void qvEncoderWriteZero( QV_ENCODER *enc, QV_INT length );
QV_API void qvEncoderWriteOne( QV_ENCODER *enc, QV_INT length );
/** @} */

/** What another Encoder has written so far; it may be the same one. */
QV_API void qvEncoderWriteEncoder( QV_ENCODER *enc, QV_ENCODER *src );

/* Values --------------------------------------------------------------------------------------------------------- */

/** A Bool; everything but 0 counts as true. */
QV_API void qvEncoderEncodeBool( QV_ENCODER *enc, QV_BOOL value );

/** An Int, any value. */
QV_API void qvEncoderEncodeInt( QV_ENCODER *enc, QV_INT value );

/** A Char. A value of 0x110000 or above ends the process. */
QV_API void qvEncoderEncodeChar( QV_ENCODER *enc, QV_CHAR value );

/** Chars, without their number. A negative number, null with another number than 0, and a value of 0x110000 or above
    end the process. */
QV_API void qvEncoderEncodeChars( QV_ENCODER *enc, const QV_CHAR *values, QV_INT valuesLength );

/** A String. */
QV_API void qvEncoderEncodeString( QV_ENCODER *enc, QV_STRING *qvs );

/** A Buffer. One that is not a whole number of bytes long ends the process. */
QV_API void qvEncoderEncodeBuffer( QV_ENCODER *enc, QV_BUFFER *buf );

/** A document in its binary form. */
QV_API void qvEncoderEncodeStore( QV_ENCODER *enc, QV_STORE *store );

/** A StringVector. The elements may be objects of any kind; their texts are written. */
QV_API void qvEncoderEncodeStringVector( QV_ENCODER *enc, QV_VECTOR *vec );

/** @{ */
/** The same with null for no value. */
QV_API void qvEncoderEncodeOptionalString( QV_ENCODER *enc, QV_STRING *qvs );
QV_API void qvEncoderEncodeOptionalBuffer( QV_ENCODER *enc, QV_BUFFER *buf );
QV_API void qvEncoderEncodeOptionalStore( QV_ENCODER *enc, QV_STORE *store );
QV_API void qvEncoderEncodeOptionalStringVector( QV_ENCODER *enc, QV_VECTOR *vec );
/** @} */

#endif
