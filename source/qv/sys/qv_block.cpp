#include "qv/sys/qv_block_private.h"

#include <algorithm>

namespace
{
const QV_INT FEW = 256; // bytes that are moved without a thought

// Copies or moves the contents to `to`, with the gap in them. Within the same memory, the part that moves onto the
// place of the other one waits until that has gone.
void transfer( char *to, const char *from, const qv::BlockChange &change )
{
    if( change.length == 0 )
        return;

    size_t head = static_cast< size_t >( change.at );
    size_t tail = static_cast< size_t >( change.length - change.at );

    if( to <= from )
        memmove( to, from, head );

    memmove( to + change.at + change.count, from + change.at, tail );

    if( to > from )
        memmove( to, from, head );
}

// How much of what is allocated beyond the need goes in front: most of it where the gap is at the start, little where
// it is at the end, so that the other end is not without any when its turn comes. In steps that keep elements aligned.
QV_INT shareInFront( QV_INT spare, const qv::BlockChange &change )
{
    QV_INT quarter = spare / 4;
    QV_INT share   = change.at == change.length ? quarter : change.at == 0 ? spare - quarter : spare / 2;

    return share & ~QV_INT( 15 );
}
} // namespace

void qv::changeBlock( BlockMemory *block, const BlockChange &change )
{
    QV_INT length = change.length;
    QV_INT at     = change.at;
    QV_INT tail   = length - at;
    QV_INT need   = change.front + length + change.count + change.back;
    QV_INT before = block->memory ? block->first - block->memory : 0;
    QV_INT behind = block->size - before - length;
    bool   home   = block->memory && block->memory == block->home;

    // What is too large is given back, and the object's own memory is taken again where there is no gap to fill it up.
    bool comesHome = !home && need <= block->homeSize && ( change.count == 0 || !block->memory );
    bool leaves    = !block->memory || comesHome || ( !home && block->size / 2 > need );

    if( !leaves )
    {
        // One side of the gap moves, unless that is much more than the other.
        QV_INT most     = 2 * std::min( at, tail ) + FEW;
        bool   tailUp   = tail <= most && before >= change.front && behind >= change.back + change.count;
        bool   headDown = at <= most && before >= change.front + change.count && behind >= change.back;

        if( tailUp && ( !headDown || tail <= at ) )
        {
            char *gap = block->first + at;
            takeFree( gap + tail, change.count );
            memmove( gap + change.count, gap, static_cast< size_t >( tail ) );
            return;
        }

        if( headDown )
        {
            char *first = block->first - change.count;
            takeFree( first, change.count );
            memmove( first, block->first, static_cast< size_t >( at ) );
            block->first = first;
            return;
        }
    }

    if( block->memory )
    {
        takeFree( block->memory, before );
        takeFree( block->first + length, behind );
    }

    QV_INT left  = block->size - need;
    QV_INT spare = leaves || need > QV_INT_MAX / 4 ? 0 : change.spare;
    char  *was   = block->memory;
    char  *to;

    if( !leaves && left >= ( length <= FEW ? 0 : change.spare / 2 ) )
    {
        // Within the memory. What is moved has that much room then before it is moved again.
        to = block->memory + change.front + shareInFront( left, change );
        transfer( to, block->first, change );
    }
    else if( comesHome )
    {
        takeFree( block->home, block->homeSize );
        to = block->home + change.front;
        transfer( to, block->first, change );
        block->memory = block->home;
        block->size   = block->homeSize;
        qvMemFree( was );
    }
    else if( spare > 0 && !home && tail == 0 && before >= change.front && before - change.front <= spare / 2 )
    {
        // At the end the C library may extend the memory where it is.
        block->size   = before + length + change.count + change.back + spare;
        block->memory = static_cast< char * >( qvMemRealloc( block->memory, block->size ) );
        to            = block->memory + before;
    }
    else
    {
        block->memory = static_cast< char * >( qvMemAlloc( need + spare ) );
        block->size   = need + spare;
        to            = block->memory + change.front + shareInFront( spare, change );
        transfer( to, block->first, change );

        if( home )
            markFree( block->home, static_cast< size_t >( block->homeSize ) );
        else
            qvMemFree( was );
    }

    block->first = to;

    QV_INT used = to - block->memory + length + change.count;
    markFree( block->memory, static_cast< size_t >( to - block->memory ) );
    markFree( block->memory + used, static_cast< size_t >( block->size - used ) );
}
