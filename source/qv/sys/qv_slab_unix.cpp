#include "qv/sys/qv_slab_private.h"

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_atomic.h"
#include "qv/sys/qv_mem.h"

#include <sched.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{
const QV_INT SIZE  = 2 << 20;                  // and what the address of a slab is a multiple of
const QV_INT PARTS = SIZE / qv::SLAB_PART - 1; // the head has the place of one

// So many parts that are left cause a look for pages to give back. A look may be missed where two threads give parts
// back at once; the next one makes up for it.
const int32_t FEW[] = { PARTS / 8, PARTS / 64, 1 };

struct Slab
{
    int32_t uses;  // atomic; parts that are in use or have not been taken, and 1 until the slab is closed
    int32_t taken; // under the lock
    uint64_t
        isFree[PARTS / 64 + 1]; // atomic; a bit for each part that was left, or not taken before the slab was closed
};

static_assert( sizeof( Slab ) <= qv::SLAB_PART );

// The slab of which parts are taken, and the lock for that.
Slab   *current  = nullptr;
int32_t isLocked = 0;

class HeldSlabs
{
public:
    HeldSlabs()
    {
        while( __atomic_exchange_n( &isLocked, 1, __ATOMIC_ACQUIRE ) )
            sched_yield();
    }

    ~HeldSlabs()
    {
        __atomic_store_n( &isLocked, 0, __ATOMIC_RELEASE );
    }

    HeldSlabs( const HeldSlabs & )            = delete;
    HeldSlabs &operator=( const HeldSlabs & ) = delete;
};

char *partsOf( Slab *slab )
{
    return reinterpret_cast< char * >( slab ) + qv::SLAB_PART;
}

void markPartFree( Slab *slab, QV_INT part )
{
    __atomic_fetch_or( &slab->isFree[part / 64], uint64_t( 1 ) << part % 64, __ATOMIC_RELEASE );
}

bool isPartFree( Slab *slab, QV_INT part )
{
    return __atomic_load_n( &slab->isFree[part / 64], __ATOMIC_ACQUIRE ) >> part % 64 & 1;
}

// Gives the whole pages among parts in a row back that are free.
void giveBack( Slab *slab, QV_INT part, QV_INT end )
{
    uintptr_t page  = static_cast< uintptr_t >( sysconf( _SC_PAGESIZE ) );
    uintptr_t start = reinterpret_cast< uintptr_t >( partsOf( slab ) + part * qv::SLAB_PART );
    uintptr_t after = reinterpret_cast< uintptr_t >( partsOf( slab ) + end * qv::SLAB_PART );
    start           = ( start + page - 1 ) & ~( page - 1 );
    after           = after & ~( page - 1 );

    if( start < after )
        madvise( reinterpret_cast< void * >( start ), after - start, MADV_DONTNEED );
}

// A part that is free stays so as long as there is a use. Other threads may leave more in the meantime.
void giveBackFree( Slab *slab )
{
    QV_INT part = 0;

    while( part < PARTS )
    {
        QV_INT end = part;

        while( end < PARTS && isPartFree( slab, end ) )
            end++;

        if( end > part )
            giveBack( slab, part, end );

        part = end + 1;
    }
}

// Ends so many uses of a slab, which is gone with the last.
void leave( Slab *slab, int32_t uses )
{
    int32_t left = qv___AtomicAdd32( &slab->uses, -uses );

    QV_ASSERT( left >= 0 );

    if( left == 0 )
    {
        qv::unpoison( slab, SIZE );
        munmap( slab, SIZE );
    }
}

void closeCurrent()
{
    Slab *slab = current;
    current    = nullptr;

    for( QV_INT part = slab->taken; part < PARTS; part++ )
        markPartFree( slab, part );

    int32_t notTaken = static_cast< int32_t >( PARTS ) - slab->taken;

    // The slab may have had few parts in use for long.
    if( qv___AtomicLoad32( &slab->uses ) - notTaken - 1 <= FEW[0] )
        giveBackFree( slab );

    leave( slab, notTaken + 1 );
}

void openSlab( bool isLarge )
{
    void *memory = mmap( nullptr, 2 * SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0 );

    if( memory == MAP_FAILED )
        return;

    char  *start  = static_cast< char * >( memory );
    QV_INT before = -reinterpret_cast< intptr_t >( start ) & ( SIZE - 1 );

    if( before > 0 )
        munmap( start, static_cast< size_t >( before ) );

    munmap( start + before + SIZE, static_cast< size_t >( SIZE - before ) );

    if( isLarge )
        madvise( start + before, SIZE, MADV_HUGEPAGE );

    qv::unpoison( start + before, SIZE );
    current       = reinterpret_cast< Slab * >( start + before );
    current->uses = PARTS + 1;
}
} // namespace

void *qv::takeSlabPart()
{
    HeldSlabs held;

    // A thread that leaves a part is done with the slab then, unless it is the last use.
    if( current && current->taken > 0 && qv___AtomicLoad32( &current->uses ) == PARTS - current->taken + 1 )
    {
        unpoison( current, SIZE );
        memset( current->isFree, 0, sizeof( current->isFree ) );
        current->taken = 0;
        qv___AtomicStore32( &current->uses, PARTS + 1 );
    }

    bool isFull = current && current->taken == PARTS;

    if( isFull )
        closeCurrent();

    if( !current )
        openSlab( isFull );

    return current ? partsOf( current ) + SLAB_PART * current->taken++ : nullptr;
}

void qv::leaveSlabPart( void *part )
{
    Slab *slab = reinterpret_cast< Slab * >( reinterpret_cast< uintptr_t >( part ) & ~uintptr_t( SIZE - 1 ) );
    markPartFree( slab, ( static_cast< char * >( part ) - partsOf( slab ) ) / SLAB_PART );

    // Its own use ends after the look, so that the slab is there as long as that lasts, and no part is taken anew.
    int32_t uses = qv___AtomicLoad32( &slab->uses );

    for( int32_t few : FEW )
        if( uses - 1 == few )
            giveBackFree( slab );

    leave( slab, 1 );
}

void qv::closeSlabs()
{
    HeldSlabs held;

    if( current )
        closeCurrent();
}

void *qv::allocLarge( QV_INT bytes )
{
    void *memory = aligned_alloc( SIZE, static_cast< size_t >( ( bytes + SIZE - 1 ) / SIZE * SIZE ) );

    if( !memory )
        return qvMemAlloc( bytes ); // which ends the process

    madvise( memory, static_cast< size_t >( bytes ), MADV_HUGEPAGE );
    return memory;
}

void qv::useLargePages( void *memory, QV_INT bytes )
{
    uintptr_t start = reinterpret_cast< uintptr_t >( memory );
    uintptr_t first = ( start + SIZE - 1 ) / SIZE * SIZE;
    uintptr_t end   = ( start + static_cast< size_t >( bytes ) ) / SIZE * SIZE;

    if( first < end )
        madvise( static_cast< char * >( memory ) + ( first - start ), end - first, MADV_HUGEPAGE );
}
