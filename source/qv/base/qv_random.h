/** @file
    Random bytes and integers, for identifiers, shuffling and the like.

        QV_INT die = qvRandomNonNegativeIntRange( 1, 6 );

        uint8_t salt[ 16 ];
        qvRandomBytes( salt, sizeof( salt ) );

    The bytes come from "/dev/urandom", 128 of them at a time, which all threads share; no byte is given out twice.
    If the device cannot be opened at start-up, the C library's `rand`, seeded from the clock, takes its place: use
    nothing from here as a secret. A device that fails later ends the process.

    Callable from any thread: one monitor is entered for each call, and one read of the device made for 128 bytes. */

#ifndef QV_RANDOM_H
#define QV_RANDOM_H

#include "qv/sys/qv_types.h"

/** Appends `byteCount` random bytes to `*buffer`, which may be null for a count of 0. A negative count ends the
    process. */
QV_API void qvRandom( QV_BUFFER **buffer, QV_INT byteCount );

/** Stores `byteCount` random bytes at `bytes`, which may be null for a count of 0. A negative count ends the
    process. */
QV_API void qvRandomBytes( void *bytes, QV_INT byteCount );

/** 8 random bits. */
QV_API uint8_t qvRandomByte( void );

/** 64 random bits, as an integer of either sign. */
QV_API QV_INT qvRandomInt( void );

/** An integer of which the low `bitCount` bits are random, the others 0. A count outside 0 to 64 ends the process. */
QV_API QV_INT qvRandomBits( QV_INT bitCount );

/** 0 or 1. */
QV_API QV_INT qvRandomBit( void );

/** 63 random bits: from 0 to QV_INT_MAX. */
QV_API QV_INT qvRandomNonNegativeInt( void );

/** A number from one value to the other, both included, in either order. A negative value ends the process.
    Low values are more likely by at most one part in 2^63 divided by the size of the range. */
QV_API QV_INT qvRandomNonNegativeIntRange( QV_INT lowVal, QV_INT highVal );

#endif
