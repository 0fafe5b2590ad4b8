#ifndef QV_GROWTH_PRIVATE_H
#define QV_GROWTH_PRIVATE_H

#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"

#include <algorithm>

namespace qv
{
/* A String or Buffer alone grows by a constant, which costs a stream that appends run after run a new block for nearly
   each. These see to free places for what is appended next and, for a start, for half as much as there is already, so
   that a run costs what it is long. Whoever fills a container this way compacts it before it is handed out. */

inline void reserve( QV_STRING *dest, QV_INT count )
{
    // A shared one is copied by the append anyway.
    if( dest->bspace >= count || isShared( dest ) )
        return;

    count = std::max( count, dest->length / 2 );
    qv___StringMakeRoom( dest, dest->length, count );
    dest->length -= count;
    dest->bspace += count;
}

inline void reserve( QV_BUFFER *dest, QV_INT byteCount )
{
    uint64_t bits = static_cast< uint64_t >( byteCount ) * 8;

    if( dest->bitBspace >= bits || !isPrivate( dest ) )
        return;

    bits = std::max( bits, dest->bitLength / 16 * 8 );
    qv___BufferMakeRoom( &dest, dest->bitLength, bits );
    dest->bitLength -= bits;
    dest->bitBspace += bits;
}
} // namespace qv

#endif
