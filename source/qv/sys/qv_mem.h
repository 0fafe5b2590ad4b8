/** @file
    Memory: the C library's blocks, with sizes that are checked.

    All sizes are in bytes and signed; a function that ends in `N` takes `count` elements of `size` bytes. A
    negative size, a product that overflows, a null pointer with a size other than 0 and exhausted memory end the
    process. The functions may be called from any thread and before the library is started. Blocks come from
    `malloc` and are given back with qvMemFree(). */

#ifndef QV_MEM_H
#define QV_MEM_H

#include "qv/sys/qv_types.h"

/** @{ */
/** A new block of `size` bytes, above 0; never null. The caller frees it. Its bytes are undefined, and 0xFF where
    the library was started with QV_RUNTIME_FLAG_MEMORY_DEBUG. */
QV_API void *qvMemAlloc( QV_INT size );
QV_API void *qvMemAllocN( QV_INT count, QV_INT size );
/** @} */

/** @{ */
/** Makes a block larger or smaller, keeping what fits, and returns it: it may have moved, and then `ptr` is no longer
    valid. A null `ptr` makes a new block. The new size is above 0; bytes that are added are undefined. */
QV_API void *qvMemRealloc( void *ptr, QV_INT newSize );
QV_API void *qvMemReallocN( void *ptr, QV_INT count, QV_INT size );
/** @} */

/** Gives a block back. Null does nothing. */
QV_API void qvMemFree( void *ptr );

/** @{ */
/** Fills with the low byte of `value`. Returns `ptr`. */
QV_API void *qvMemSet( void *ptr, QV_INT value, QV_INT size );
QV_API void *qvMemSetN( void *ptr, QV_INT value, QV_INT count, QV_INT size );
/** @} */

/** @{ */
/** Copies between ranges that do not overlap. Returns `dest`. */
QV_API void *qvMemCopy( void *dest, const void *src, QV_INT size );
QV_API void *qvMemCopyN( void *dest, const void *src, QV_INT count, QV_INT size );
/** @} */

/** @{ */
/** Copies between ranges that may overlap. Returns `dest`. */
QV_API void *qvMemMove( void *dest, const void *src, QV_INT size );
QV_API void *qvMemMoveN( void *dest, const void *src, QV_INT count, QV_INT size );
/** @} */

/** @{ */
/** The order of two ranges as unsigned bytes: -1, 0 or 1. */
QV_API QV_INT qvMemCompare( const void *a, const void *b, QV_INT size );
QV_API QV_INT qvMemCompareN( const void *a, const void *b, QV_INT count, QV_INT size );
/** @} */

#endif
