#include "qv/sys/qv_unique_private.h"

#include "qv/runtime/qv_component_private.h"

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_lock_private.h"
#include "qv/sys/qv_mem.h"

namespace
{
const QV_INT IN_USE  = -2;
const QV_INT ENLARGE = 4096;

QV___LOCK *uniLock      = nullptr;
QV_INT    *uniList      = nullptr; // a free slot holds the number of the next free one
QV_INT     uniListSize  = 0;
QV_INT     uniFirstFree = QV___UNIQUE_INVALID;
QV_INT     uniUsed      = 0;

void enlarge()
{
    QV_CHECK( QV___UNIQUE_MAX - ENLARGE >= uniListSize );

    QV_INT newSize = uniListSize + ENLARGE;
    uniList        = static_cast< QV_INT * >( qvMemReallocN( uniList, newSize, sizeof( QV_INT ) ) );

    for( QV_INT slot = uniListSize; slot < newSize; slot++ )
        uniList[slot] = slot + 1;

    uniList[newSize - 1] = QV___UNIQUE_INVALID;
    uniFirstFree         = uniListSize;
    uniListSize          = newSize;
}
} // namespace

QV___ATOMIC_INT qv::uniqueRun = 0;

void qv___UniqueStartup( void )
{
    uniLock = qv___LockCreate();
    QV_CHECK( uniLock );
}

void qv___UniqueShutdown( void )
{
    qv___AtomicStore64( &qv::uniqueRun, ( qv::uniqueRun + 1 ) % 32768 );

    qv___LockDestroy( uniLock );
    uniLock = nullptr;

    qvMemFree( uniList );
    uniList      = nullptr;
    uniListSize  = 0;
    uniFirstFree = QV___UNIQUE_INVALID;
}

QV_INT qv___UniqueGet( void )
{
    qv::HeldLock held( uniLock );

    if( uniFirstFree == QV___UNIQUE_INVALID )
        enlarge();

    QV_CHECK( QV___UNIQUE_INVALID != uniFirstFree );

    QV_INT uni   = uniFirstFree;
    uniFirstFree = uniList[uni];
    uniList[uni] = IN_USE;
    uniUsed++;

    return uni;
}

void qv___UniquePut( QV_INT uni )
{
    qv::HeldLock held( uniLock );

    QV_CHECK( uniUsed > 0 );
    QV_CHECK( uni >= 0 );
    QV_CHECK( uni < uniListSize );
    QV_CHECK( uniList[uni] == IN_USE );

    uniUsed--;
    uniList[uni] = uniFirstFree;
    uniFirstFree = uni;
}
