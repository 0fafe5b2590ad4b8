#include "qv/sys/qv_mem.h"

#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_large_private.h"
#include "qv/sys/qv_mem_private.h"
#include "qv/sys/qv_order_private.h"
#include "qv/sys/qv_slab_private.h"

#include <stdlib.h>
#include <string.h>

QV_BOOL qv___MemDebug   = QV_FALSE;
bool    qv::keepsMemory = false;

/** Null unless the program has been built with AddressSanitizer. */
extern "C" __attribute__( ( weak ) ) void __asan_init( void );

void qv___MemStartup( void )
{
    qv___MemDebug = ( qvRuntimeFlags() & QV_RUNTIME_FLAG_MEMORY_DEBUG ) ? QV_TRUE : QV_FALSE;
    __atomic_store_n( &qv::keepsMemory, !qv___MemDebug && !QV___ASAN && !__asan_init, __ATOMIC_RELAXED );
}

void qv___MemShutdown( void )
{
    __atomic_store_n( &qv::keepsMemory, false, __ATOMIC_RELAXED );
    qv::closeLarge();
    qv::closeSlabs();
}

void *qvMemAlloc( QV_INT size )
{
    QV_CHECK( size >= 0 );
    QV_CHECK( size > 0 );
    QV_CHECK( QV_INT_TO_SIZET_CONV_OK( size ) );

    if( __builtin_expect( size >= qv::LARGE, 0 ) )
        if( void *kept = qv::takeLarge( size ) )
            return kept;

    void *res = malloc( (size_t)size );
    QV_CHECK( res );

    if( __builtin_expect( qv___MemDebug, 0 ) )
        memset( res, 0xFF, (size_t)size );

    return res;
}

void *qvMemAllocN( QV_INT count, QV_INT size )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( count > 0 );
    QV_CHECK( size >= 0 );
    QV_CHECK( size > 0 );
    QV_CHECK( QV_INT_MUL_OK( count, size ) );

    return qvMemAlloc( count * size );
}

void *qvMemRealloc( void *ptr, QV_INT newSize )
{
    QV_CHECK( newSize >= 0 );
    QV_CHECK( newSize > 0 );
    QV_CHECK( QV_INT_TO_SIZET_CONV_OK( newSize ) );

    void *res = realloc( ptr, (size_t)newSize );
    QV_CHECK( res );

    return res;
}

void *qvMemReallocN( void *ptr, QV_INT count, QV_INT size )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( count > 0 );
    QV_CHECK( size >= 0 );
    QV_CHECK( size > 0 );
    QV_CHECK( QV_INT_MUL_OK( count, size ) );

    return qvMemRealloc( ptr, count * size );
}

void qvMemFree( void *ptr )
{
    free( ptr );
}

void *qvMemSet( void *ptr, QV_INT value, QV_INT size )
{
    QV_CHECK( size >= 0 );
    QV_CHECK( ptr || size == 0 );
    QV_CHECK( QV_INT_TO_SIZET_CONV_OK( size ) );

    return size ? memset( ptr, (int)( value & 0xFF ), (size_t)size ) : ptr;
}

void *qvMemSetN( void *ptr, QV_INT value, QV_INT count, QV_INT size )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( size >= 0 );

    if( count && size )
        QV_CHECK( QV_INT_MUL_OK( count, size ) );

    return qvMemSet( ptr, value, count * size );
}

void *qvMemCopy( void *dest, const void *src, QV_INT size )
{
    QV_CHECK( size >= 0 );
    QV_CHECK( size == 0 || dest );
    QV_CHECK( size == 0 || src );
    QV_CHECK( QV_INT_TO_SIZET_CONV_OK( size ) );

    return size ? memcpy( dest, src, (size_t)size ) : dest;
}

void *qvMemCopyN( void *dest, const void *src, QV_INT count, QV_INT size )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( size >= 0 );

    if( count && size )
        QV_CHECK( QV_INT_MUL_OK( count, size ) );

    return qvMemCopy( dest, src, count * size );
}

void *qvMemMove( void *dest, const void *src, QV_INT size )
{
    QV_CHECK( size >= 0 );
    QV_CHECK( size == 0 || dest );
    QV_CHECK( size == 0 || src );
    QV_CHECK( QV_INT_TO_SIZET_CONV_OK( size ) );

    return size ? memmove( dest, src, (size_t)size ) : dest;
}

void *qvMemMoveN( void *dest, const void *src, QV_INT count, QV_INT size )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( size >= 0 );

    if( count && size )
        QV_CHECK( QV_INT_MUL_OK( count, size ) );

    return qvMemMove( dest, src, count * size );
}

QV_INT qvMemCompare( const void *a, const void *b, QV_INT size )
{
    QV_CHECK( size >= 0 );
    QV_CHECK( size == 0 || a );
    QV_CHECK( size == 0 || b );
    QV_CHECK( QV_INT_TO_SIZET_CONV_OK( size ) );

    return qv::orderBytes( a, b, (size_t)size );
}

QV_INT qvMemCompareN( const void *a, const void *b, QV_INT count, QV_INT size )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( size >= 0 );

    if( count && size )
        QV_CHECK( QV_INT_MUL_OK( count, size ) );

    return qvMemCompare( a, b, count * size );
}
