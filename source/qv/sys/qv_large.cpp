#include "qv/sys/qv_large_private.h"

#include "qv/sys/qv_assert_private.h"

#include <utility>

namespace
{
struct Kept
{
    void  *block = nullptr;
    QV_INT bytes = 0;
};

// Under isTaken.
Kept    kept[qv::MOST_LARGE];
int     oldest  = 0;
int32_t isTaken = 0;

// Other threads may use memory while the library starts or stops.
bool keeps()
{
    return __atomic_load_n( &qv::keepsMemory, __ATOMIC_RELAXED );
}

// Takes hold of what is kept, if no other thread has it.
class Hold
{
public:
    Hold() : succeeded_( !__atomic_exchange_n( &isTaken, 1, __ATOMIC_ACQUIRE ) )
    {
    }

    ~Hold()
    {
        if( succeeded_ )
            __atomic_store_n( &isTaken, 0, __ATOMIC_RELEASE );
    }

    Hold( const Hold & )            = delete;
    Hold &operator=( const Hold & ) = delete;

    explicit operator bool() const
    {
        return succeeded_;
    }

private:
    bool succeeded_;
};

void *takeOut( QV_INT bytes )
{
    Hold hold;

    if( hold )
        for( Kept &each : kept )
            if( each.bytes >= bytes && each.bytes - bytes <= bytes / 8 )
                return std::exchange( each, {} ).block;

    return nullptr;
}

// The block that has to go to the C library: the one that has been kept longest, the new one, or none.
void *putIn( void *block, QV_INT bytes )
{
    Hold hold;

    if( !hold || !keeps() )
        return block;

    for( Kept &each : kept )
        if( !each.block )
        {
            each = { block, bytes };
            return nullptr;
        }

    return std::exchange( kept[std::exchange( oldest, ( oldest + 1 ) % qv::MOST_LARGE )], { block, bytes } ).block;
}
} // namespace

void *qv::takeLarge( QV_INT bytes )
{
    void *block = keeps() && bytes <= LARGEST ? takeOut( bytes ) : nullptr;

    // In builds with assertions, a block that was written to since its object ended is found here.
    if( QV___ASSERTIONS && block )
        for( QV_INT i = 0; i < bytes; i++ )
            QV_CHECK_AS( static_cast< unsigned char * >( block )[i] == FREE_PATTERN, "free memory is as it was left" );

    return block;
}

void qv::leaveLarge( void *block, QV_INT bytes )
{
    QV_ASSERT( bytes >= LARGE );

    // One that was handed out for less than it has, again and again, is not: `bytes` is what the last owner knew of.
    if( keeps() && bytes <= LARGEST && allocatedBytes( block ) - bytes <= bytes / 8 )
    {
        markFree( block, static_cast< size_t >( bytes ) );
        block = putIn( block, bytes );
    }

    freeBlock( block );
}

// A thread that is in here meanwhile lives on after the stop, and what is kept is there for the next start.
void qv::closeLarge()
{
    Hold hold;

    if( hold )
        for( Kept &each : kept )
            freeBlock( std::exchange( each, {} ).block );
}
