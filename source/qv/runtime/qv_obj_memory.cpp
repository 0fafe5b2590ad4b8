// The store of blocks that all threads share.

#include "qv/runtime/qv_obj_memory_private.h"

using qv::KeptBlocks;

namespace
{
// Of one size: blocks go in and out in chains of half of those that a thread keeps, so that it creates and ends as many
// before the next ones go. In a chain they are linked as in a thread, and chains by the `odbPrevious` of their first.
struct Chains
{
    QV_OBJ *first; // atomic
    int64_t bytes; // atomic
};

struct Store
{
    int32_t isTaken;   // atomic; by a thread that changes it
    int32_t giver;     // the size that gave a chain up last
    int32_t overflows; // atomic; more objects have ended than there is room for, and no block was asked for since
    int64_t bytes;     // atomic; of all sizes
    Chains  chains[QV___COUNTS_SIZES];
};

constinit Store store = {};

int32_t lengthOf( int64_t size )
{
    return qv::mostKept( size ) / 2;
}

int64_t bytesOf( int64_t size )
{
    return lengthOf( size ) * qv::blockBytes( size );
}

// Waits for no other thread: that thread may be missing in a process that was forked.
bool takeStore()
{
    return !__atomic_exchange_n( &store.isTaken, 1, __ATOMIC_ACQUIRE );
}

void leaveStore()
{
    __atomic_store_n( &store.isTaken, 0, __ATOMIC_RELEASE );
}

void changeFirst( int64_t size, QV_OBJ *first, int64_t bytes )
{
    Chains *chains = &store.chains[size];
    __atomic_store_n( &chains->first, first, __ATOMIC_RELAXED );
    __atomic_store_n( &chains->bytes, chains->bytes + bytes, __ATOMIC_RELAXED );
    __atomic_store_n( &store.bytes, store.bytes + bytes, __ATOMIC_RELAXED );
}

void push( int64_t size, QV_OBJ *chain )
{
    chain->odbPrevious = store.chains[size].first;
    changeFirst( size, chain, bytesOf( size ) );
}

QV_OBJ *pop( int64_t size )
{
    QV_OBJ *chain = store.chains[size].first;

    if( chain )
    {
        changeFirst( size, chain->odbPrevious, -bytesOf( size ) );
        chain->odbPrevious = reinterpret_cast< QV_OBJ * >( UINTPTR_MAX );
    }

    return chain;
}

void freeChain( QV_OBJ *chain )
{
    while( QV_OBJ *object = chain )
    {
        chain = object->odbNext;
        qv::freeBlock( object );
    }
}

bool hasRoom( int64_t size )
{
    return __atomic_load_n( &store.bytes, __ATOMIC_RELAXED ) + bytesOf( size ) <= qv::MOST_STORED_BYTES;
}

// In a full store.
bool hasEnough( int64_t size )
{
    return __atomic_load_n( &store.chains[size].bytes, __ATOMIC_RELAXED ) >= qv::ENOUGH_BYTES;
}

// Whether blocks go to the C library, since more objects end than there is room for. What is stored goes as well then: left
// where they are among millions, the blocks would keep the C library from joining what is free around them, and from giving
// the end of its heap back.
bool overflows( int64_t size )
{
    if( !hasRoom( size ) && hasEnough( size ) )
        __atomic_store_n( &store.overflows, 1, __ATOMIC_RELAXED );

    return __atomic_load_n( &store.overflows, __ATOMIC_RELAXED );
}

// Takes a chain of another size than `size` out of the store, which has one, in turns.
QV_OBJ *popInTurn( int64_t size )
{
    do
        store.giver = ( store.giver + 1 ) % QV___COUNTS_SIZES;
    while( store.giver == size || !store.chains[store.giver].first );

    return pop( store.giver );
}

void freeChainInTurn()
{
    QV_OBJ *chain = nullptr;

    if( !__atomic_load_n( &store.bytes, __ATOMIC_RELAXED ) || !takeStore() )
        return;

    if( store.bytes > 0 )
        chain = popInTurn( -1 );

    leaveStore();
    freeChain( chain );
}

// A full store makes room for a size that has little, by giving up chains of other sizes in turns: those of which no more
// objects end have none soon.
bool giveToStore( int64_t size, QV_OBJ *chain )
{
    QV_OBJ *givenUp = nullptr;

    if( !takeStore() )
        return false;

    if( !hasRoom( size ) && !hasEnough( size ) )
    {
        QV_ASSERT( store.bytes > store.chains[size].bytes ); // so that there is another size

        givenUp = popInTurn( size );
    }

    bool fits = __atomic_load_n( &qv::keepsBlocks, __ATOMIC_RELAXED ) && hasRoom( size );

    if( fits )
        push( size, chain );

    leaveStore();
    freeChain( givenUp );

    return fits;
}
} // namespace

void qv::keepBeyond( KeptBlocks *kept, QV_OBJ *object )
{
    int64_t size = kept - ownTable->kept;
    QV_OBJ *last = kept->first; // of those that stay, the newest ones

    if( !last )
        return freeBlock( object );

    if( overflows( size ) )
    {
        freeBlock( object );
        return freeChainInTurn();
    }

    for( int32_t i = lengthOf( size ) + 1; i < mostKept( size ); i++ )
        last = last->odbNext;

    if( !giveToStore( size, last->odbNext ) )
        return freeBlock( object );

    last->odbNext = nullptr;
    kept->room += lengthOf( size );
    keepBlock( kept, object );
}

bool qv::fetchKept( KeptBlocks *kept )
{
    int64_t size = kept - ownTable->kept;

    if( __atomic_load_n( &store.overflows, __ATOMIC_RELAXED ) )
        __atomic_store_n( &store.overflows, 0, __ATOMIC_RELAXED );

    // A thread that got its table in a run without kept blocks has room for none, and lives on in this run.
    if( kept->room <= 0 || !__atomic_load_n( &store.chains[size].first, __ATOMIC_RELAXED ) || !takeStore() )
        return false;

    QV_ASSERT( kept->room == mostKept( size ) );
    kept->first = pop( size );
    leaveStore();

    if( !kept->first )
        return false;

    kept->room -= lengthOf( size );
    return true;
}

void qv::emptyStore()
{
    if( !__atomic_load_n( &store.bytes, __ATOMIC_RELAXED ) || !takeStore() )
        return;

    for( int64_t size = 0; size < QV___COUNTS_SIZES; size++ )
        while( QV_OBJ *chain = pop( size ) )
            freeChain( chain );

    leaveStore();
}
