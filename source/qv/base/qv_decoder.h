/** @file
    Decoder: takes values back from bytes, in the order in which an Encoder wrote them. qv_encoder.h has their forms.

        QV_DECODER *dec  = qvDecoderCreate( bytes );
        QV_INT      port = 0;
        QV_STRING  *host = NULL;

        qvDecoderTryDecodeInt( dec, &port );
        qvDecoderTryDecodeOptionalString( dec, &host );

        if( qvDecoderError( dec ) )
            ...                                         // port is 0 or host null, whichever failed first

    Bytes may come from anywhere. What cannot be read sets the Decoder's error, which stays: every later Try fails at
    once, so that a whole record can be read and its success tested once. Nothing that bytes hold ends the process, and
    a length that they don't bear out fails before anything is allocated for it.

    Every Try gives whether it succeeded. It first clears its out value, which may be null to skip a value: a number
    becomes 0, a reference is released and becomes null, so that a variable with a reference can be used again and one
    without must be null. On success the caller owns what stands there, and the offset is exactly after this value.
    On failure the out value stays cleared. Arrays are not cleared; after a failure their contents are undefined.

    The reader is more tolerant than the writer: of an Int it takes any number of digits, 0 included, as long as the
    value fits QV_INT, and a number of digits of 127 stands for an Int with the number after it, up to eight times.

    Null as a Decoder and negative lengths as arguments end the process. One thread at a time uses a Decoder. Each read
    costs what it reads. */

#ifndef QV_DECODER_H
#define QV_DECODER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Decoder, QV_DECODER )

/** A new Decoder at the beginning of a Buffer, which it retains and never changes. Bits after the last whole byte are
    not read. */
QV_API QV_DECODER *qvDecoderCreate( QV_BUFFER *buf );

/** A new reference to the Buffer. */
QV_API QV_BUFFER *qvDecoderBuffer( QV_DECODER *dec );

/** @{ */
/** The Buffer's length, the place of the next read and what is left, in bytes. After an error the place is the end and
    nothing is left. */
QV_API QV_INT qvDecoderLength( QV_DECODER *dec );
QV_API QV_INT qvDecoderOffset( QV_DECODER *dec );
QV_API QV_INT qvDecoderRemaining( QV_DECODER *dec );
/** @} */

/** @{ */
/** Whether anything has failed; makes it so, for values that are well formed but not acceptable. */
QV_API QV_BOOL qvDecoderError( QV_DECODER *dec );
QV_API void    qvDecoderSetError( QV_DECODER *dec );
/** @} */

/* Bytes as they are ---------------------------------------------------------------------------------------------- */

/** Skips so many bytes. */
QV_API QV_BOOL qvDecoderTrySkip( QV_DECODER *dec, QV_INT length );

/** Appends so many bytes to `*dest`, which is not cleared. `dest` and `*dest` may be null if `length` is 0. */
QV_API QV_BOOL qvDecoderTryRead( QV_DECODER *dec, QV_BUFFER **dest, QV_INT length );

/** @{ */
/** Copies so many bytes, or one, to the caller's memory, which may be null if `length` is 0. */
QV_API QV_BOOL qvDecoderTryReadBytes( QV_DECODER *dec, void *dest, QV_INT length );
QV_API QV_BOOL qvDecoderTryReadByte( QV_DECODER *dec, uint8_t *dest );
/** @} */

/* Values --------------------------------------------------------------------------------------------------------- */

/** A byte other than 00 and 01 is an error. */
QV_API QV_BOOL qvDecoderTryDecodeBool( QV_DECODER *dec, QV_BOOL *value );

/** An Int. One that does not fit is an error. */
QV_API QV_BOOL qvDecoderTryDecodeInt( QV_DECODER *dec, QV_INT *value );

/** @{ */
/** What is no code point is an error. Chars reads `length` of them; `value` may be null if that is 0. */
QV_API QV_BOOL qvDecoderTryDecodeChar( QV_DECODER *dec, QV_CHAR *value );
QV_API QV_BOOL qvDecoderTryDecodeChars( QV_DECODER *dec, QV_CHAR *value, QV_INT length );
/** @} */

/** @{ */
/** A length that is negative or greater than the number of bytes left is an error. */
QV_API QV_BOOL qvDecoderTryDecodeString( QV_DECODER *dec, QV_STRING **value );
QV_API QV_BOOL qvDecoderTryDecodeBuffer( QV_DECODER *dec, QV_BUFFER **value );
/** @} */

/** A document in its binary form. */
QV_API QV_BOOL qvDecoderTryDecodeStore( QV_DECODER *dec, QV_STORE **value );

/** A new Vector of Strings. A negative number of elements gives an empty one. */
QV_API QV_BOOL qvDecoderTryDecodeStringVector( QV_DECODER *dec, QV_VECTOR **value );

/** @{ */
/** The same where there may be no value: then they succeed with null. */
QV_API QV_BOOL qvDecoderTryDecodeOptionalString( QV_DECODER *dec, QV_STRING **value );
QV_API QV_BOOL qvDecoderTryDecodeOptionalBuffer( QV_DECODER *dec, QV_BUFFER **value );
QV_API QV_BOOL qvDecoderTryDecodeOptionalStore( QV_DECODER *dec, QV_STORE **value );
QV_API QV_BOOL qvDecoderTryDecodeOptionalStringVector( QV_DECODER *dec, QV_VECTOR **value );
/** @} */

#endif
