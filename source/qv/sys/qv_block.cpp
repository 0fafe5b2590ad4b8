#include "qv/sys/qv_block_private.h"

#include <algorithm>

namespace
{
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

// How much of what is allocated beyond the need goes before the contents: most of it where the gap is at the start,
// little where it is at the end, so that the other end is not without any when its turn comes.
QV_INT shareBefore( QV_INT spare, const qv::BlockKind &kind, const qv::BlockChange &change )
{
    QV_INT quarter = spare / 4;
    QV_INT share   = change.at == change.length ? quarter : change.at == 0 ? spare - quarter : spare / 2;

    return share - share % kind.step;
}

// An allocation without the head of the owner's, and back.
char *allocateMemory( const qv::BlockKind &kind, QV_INT size )
{
    return static_cast< char * >( qvMemAlloc( kind.head + size ) ) + kind.head;
}

void freeMemory( const qv::BlockKind &kind, char *memory, QV_INT size )
{
    if( memory )
        qv::freeBlock( memory - kind.head, kind.head + size );
}

// What has to be allocated after a change, at least.
QV_INT needOf( const qv::BlockChange &change )
{
    return change.front + change.length + change.count + change.back;
}

bool isAtHome( const qv::BlockMemory *block )
{
    return block->memory && block->memory == block->home;
}

// The object's own memory is taken again where there is no gap to fill it up.
bool comesHome( const qv::BlockMemory *block, const qv::BlockChange &change )
{
    return !isAtHome( block ) && needOf( change ) <= block->homeSize && ( change.count == 0 || !block->memory );
}

// True if the contents go to other memory, though they would have room: what is too large is given back.
bool leavesMemory( const qv::BlockMemory *block, const qv::BlockChange &change )
{
    return !block->memory || comesHome( block, change ) || ( !isAtHome( block ) && block->size > change.most );
}
} // namespace

void qv::changeBlock( BlockMemory *block, const BlockKind &kind, const BlockChange &change )
{
    QV_INT before = block->memory ? block->first - block->memory : 0;
    QV_INT after  = block->size - before - change.length;

    if( leavesMemory( block, change ) || !openBlockGap( &block->first, before, after, change ) )
        moveBlock( block, kind, change );
}

void qv::moveBlock( BlockMemory *block, const BlockKind &kind, const BlockChange &change )
{
    QV_INT length = change.length;
    QV_INT tail   = length - change.at;
    QV_INT need   = needOf( change );
    QV_INT before = block->memory ? block->first - block->memory : 0;
    QV_INT after  = block->size - before - length;
    bool   home   = isAtHome( block );
    bool   leaves = leavesMemory( block, change );

    if( block->memory )
    {
        takeFree( block->memory, before );
        takeFree( block->first + length, after );
    }

    QV_INT left    = block->size - need;
    QV_INT spare   = leaves || need > QV_INT_MAX / 4 ? 0 : change.spare;
    char  *was     = block->memory;
    QV_INT wasSize = block->size;
    char  *to;

    if( !leaves && left >= ( length <= FEW_BLOCK_BYTES ? 0 : change.spare / 2 ) )
    {
        // Within the memory. What is moved has that much room then before it is moved again.
        to = block->memory + change.front + shareBefore( left, kind, change );
        transfer( to, block->first, change );
    }
    else if( comesHome( block, change ) )
    {
        takeFree( block->home, block->homeSize );
        to = block->home + change.front;
        transfer( to, block->first, change );
        block->memory = block->home;
        block->size   = block->homeSize;
        freeMemory( kind, was, wasSize );
    }
    else if(
        spare > 0 && !home && block->size >= kind.extended && tail == 0 && before >= change.front
        && before - change.front <= spare / 2 )
    {
        // At the end the C library may extend the memory where it is.
        block->size = std::min( before + length + change.count + change.back + spare, change.most );
        block->memory =
            static_cast< char * >( qvMemRealloc( block->memory - kind.head, kind.head + block->size ) ) + kind.head;
        to = block->memory + before;
    }
    else
    {
        block->memory = allocateMemory( kind, need + spare );

        if( was && kind.head > 0 )
            memcpy( block->memory - kind.head, was - kind.head, static_cast< size_t >( kind.head ) );

        block->size = need + spare;
        to          = block->memory + change.front + shareBefore( spare, kind, change );
        transfer( to, block->first, change );

        if( home )
            markFree( block->home, static_cast< size_t >( block->homeSize ) );
        else
            freeMemory( kind, was, wasSize );
    }

    block->first = to;

    QV_INT used = to - block->memory + length + change.count;
    markFree( block->memory, static_cast< size_t >( to - block->memory ) );
    markFree( block->memory + used, static_cast< size_t >( block->size - used ) );
}
