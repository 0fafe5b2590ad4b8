#include "qv/base/qv_random.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_int.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

namespace
{
const QV_INT POOL_SIZE = 128;

QV_MONITOR *qv___RandomMonitor = nullptr; // guards the pool, and the C library's generator where that is used
QV_BUFFER  *qv___RandomBuffer  = nullptr; // bytes that have not been handed out yet
int         qv___RandomFd      = -1;

void fillPool()
{
    QV_CHECK( !qvBufferLength( qv___RandomBuffer ) );

    uint8_t bytes[POOL_SIZE];
    ssize_t bytesRead = POOL_SIZE;

    if( qv___RandomFd >= 0 )
    {
        do
            bytesRead = read( qv___RandomFd, bytes, sizeof( bytes ) );
        while( bytesRead < 0 && errno == EINTR );

        QV_CHECK( bytesRead > 0 );
        QV_CHECK_AS( bytesRead <= POOL_SIZE, "bytesRead <= (ssize_t)QV_SIZEOF_ARRAY( bytes )" );
    }
    else
    {
        for( uint8_t &byte : bytes )
            byte = static_cast< uint8_t >( rand() );
    }

    qvBufferAppendBytes( &qv___RandomBuffer, bytes, bytesRead );
}

// Takes bytes out of the pool in runs. `consume` reads the first bytes of the pool, as many as it is called with,
// before they are deleted.
template< class Consume >
void takeFromPool( QV_INT byteCount, Consume consume )
{
    qv::checkRun();
    qv::HeldMonitor held( qv___RandomMonitor );

    while( byteCount > 0 )
    {
        if( !qvBufferLength( qv___RandomBuffer ) )
            fillPool();

        QV_INT count = qvIntMin( byteCount, qvBufferLength( qv___RandomBuffer ) );
        consume( count );
        qvBufferDelLeading( &qv___RandomBuffer, count );
        byteCount -= count;
    }
}
} // namespace

void qv___RandomStartup( void )
{
    qv___RandomMonitor = qvMonitorCreate();
    qv___RandomBuffer  = qvBufferCreate();
    qv___RandomFd      = open( "/dev/urandom", O_RDONLY | O_CLOEXEC );

    srand( static_cast< unsigned >( time( nullptr ) ) );
    fillPool();
}

void qv___RandomShutdown( void )
{
    qv::drop( qv___RandomMonitor );
    qv::drop( qv___RandomBuffer );

    if( qv___RandomFd >= 0 )
        close( qv___RandomFd );

    qv___RandomFd = -1;
}

void qvRandom( QV_BUFFER **buffer, QV_INT byteCount )
{
    QV_CHECK( buffer );
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( *buffer || !byteCount );

    takeFromPool( byteCount, [buffer]( QV_INT count ) { qvBufferAppendLeading( buffer, qv___RandomBuffer, count ); } );
}

void qvRandomBytes( void *bytes, QV_INT byteCount )
{
    QV_CHECK( byteCount >= 0 );
    QV_CHECK( bytes || !byteCount );

    uint8_t *next = static_cast< uint8_t * >( bytes );

    takeFromPool(
        byteCount,
        [&next]( QV_INT count )
        {
            qvBufferReadBytes( qv___RandomBuffer, 0, next, count );
            next += count;
        } );
}

uint8_t qvRandomByte( void )
{
    uint8_t byte;
    qvRandomBytes( &byte, sizeof( byte ) );

    return byte;
}

QV_INT qvRandomInt( void )
{
    QV_INT value;
    qvRandomBytes( &value, sizeof( value ) );

    return value;
}

QV_INT qvRandomBits( QV_INT bitCount )
{
    QV_CHECK( bitCount >= 0 );
    QV_CHECK( bitCount <= QV_INT_BITS );

    return qvIntBitClearHighest( qvRandomInt(), QV_INT_BITS - bitCount );
}

QV_INT qvRandomBit( void )
{
    return qvRandomBits( 1 );
}

QV_INT qvRandomNonNegativeInt( void )
{
    return qvRandomBits( 63 );
}

QV_INT qvRandomNonNegativeIntRange( QV_INT lowVal, QV_INT highVal )
{
    QV_CHECK( lowVal >= 0 );
    QV_CHECK( highVal >= 0 );

    if( lowVal == highVal )
        return lowVal;

    qvIntSortPair( &lowVal, &highVal );

    if( lowVal == 0 && highVal == QV_INT_MAX )
        return qvRandomNonNegativeInt();

    return lowVal + qvRandomNonNegativeInt() % ( highVal - lowVal + 1 );
}
