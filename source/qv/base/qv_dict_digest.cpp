// The digests of a run, as keys come and go.

#include "qv/base/qv_dict_digest_private.h"
#include "qv/sys/qv_chars_private.h"

#include <algorithm>

using namespace qv::dict;

namespace
{
using Item = QV___DICT_ITEM;
using Run  = QV___DICT_RUN;

// What a prefix counts for at most.
const QV_INT MAX_PREFIX = 1 << 29;

// How many characters two texts have in common, in steps of four: keys which share less and less do not each cause new
// digests for all. `limit` at most, which is such a step too.
QV_INT commonPrefix( QV_OBJ *a, QV_OBJ *b, QV_INT limit )
{
    const QV_CHAR *aChars = qv::chars( stringOf( a ) );
    const QV_CHAR *bChars = qv::chars( stringOf( b ) );
    QV_INT         i      = 0;

    QV_ASSERT( limit % 4 == 0 );
    limit = std::min( limit, std::min( stringOf( a )->length, stringOf( b )->length ) );

    while( i + 4 <= limit && memcmp( aChars + i, bChars + i, 4 * sizeof( QV_CHAR ) ) == 0 )
        i += 4;

    return i;
}

uint32_t steppedPrefix( QV_INT common )
{
    return static_cast< uint32_t >( std::min( common, MAX_PREFIX ) & ~QV_INT( 3 ) );
}

// All digests anew, of keys that are of one sort and share as many characters.
void digestAll( Run *run, uint32_t digests, QV_INT common )
{
    run->digests = digests;
    run->prefix  = steppedPrefix( common );

    for( Item *item = run->items(); item != run->items() + run->length; item++ )
        item->digest = qv::digestOf( run, item->key );
}
} // namespace

QV___DICT_DIGEST qv::digestOf( QV___DICT_RUN *run, QV_OBJ *key )
{
    if( run->digests == STRING_DIGESTS )
    {
        Digest digest = digestBehind( stringOf( key ), run->prefix );
        return { digest.number, restBehind( stringOf( key ), run->prefix, digest ) };
    }

    return { run->digests == INTEGER_DIGESTS ? digestInt( key ) : 0, 0 };
}

QV___DICT_DIGEST qv::newDigest( QV___DICT_RUN *run, QV_OBJ *key )
{
    uint32_t digests = digestsOf( key->sort );

    if( run->length == 0 )
    {
        run->digests = digests;
        run->prefix  = digests == STRING_DIGESTS ? steppedPrefix( stringOf( key )->length ) : 0;
    }
    else if( digests != run->digests )
    {
        run->digests = NO_DIGESTS;
        run->prefix  = 0;
    }
    else if( run->prefix > 0 )
    {
        QV_INT common = commonPrefix( run->items()->key, key, run->prefix );

        if( common < run->prefix )
            digestAll( run, digests, common );
    }

    return digestOf( run, key );
}

void qv::mixDigests( QV___DICT_RUN *run, uint32_t otherDigests, uint32_t otherPrefix )
{
    if( run->digests != otherDigests || run->digests == NO_DIGESTS )
    {
        run->digests = NO_DIGESTS;
        run->prefix  = 0;
    }
    else if( run->digests == STRING_DIGESTS )
    {
        // What the first and the last of ordered texts share, all share.
        QV_INT common = commonPrefix(
            run->items()[0].key, run->items()[run->length - 1].key, std::min( run->prefix, otherPrefix ) );

        if( common != run->prefix || common != otherPrefix )
            digestAll( run, STRING_DIGESTS, common );
    }
}

void qv::sharpenDigests( QV___DICT_RUN *run )
{
    QV_OBJ  *first   = run->items()[0].key;
    QV_OBJ  *last    = run->items()[run->length - 1].key;
    uint32_t digests = first->sort == last->sort ? digestsOf( first->sort ) : NO_DIGESTS;
    QV_INT   common  = digests == STRING_DIGESTS ? commonPrefix( first, last, MAX_PREFIX ) : 0;

    // Of keys in order with one sort at both ends none has another.
    if( digests != run->digests || steppedPrefix( common ) != run->prefix )
        digestAll( run, digests, common );
}
