/** @file
    What the parts of the Store share, and the steps of both forms that start at a depth. The text form line by line is
    declared in qv_tool_private.h. */

#ifndef QV_STORE_PRIVATE_H
#define QV_STORE_PRIVATE_H

#include "qv/base/qv_dict_private.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_family.h"
#include "qv/sys/qv_vectors_line_private.h"

#include <array>

struct QV_STORE : QV_OBJ
{
    QV_DICT *values;    /**< Strings by address */
    QV_DICT *stores;    /**< Stores by address */
    QV_DICT *addresses; /**< every address that has an entry, and the same String as its value; or empty, see
                             addressesOf() */
};

/** Appends the lines of a store, each with `prefix` before it. */
QV_API void qv___StoreEncodeToStringVector( QV_STORE *store, QV_VECTOR **vec, QV_STRING *prefix );

/** A new store of lines that lie `depth` sub-stores deep. `vec` has to hold Strings only. */
QV_API QV_STORE *qv___StoreDecodeFromStringVector( QV_VECTOR *vec, QV_INT depth );

/** A new store of a binary form that lies `depth` sub-stores deep, or null with the decoder's error set. */
QV_API QV_STORE *qv___StoreTryDecodeFromDecoder( QV_DECODER *decoder, QV_INT depth );

namespace qv
{
/** One of the two tables that hold what addresses have: values or sub-stores. */
using StoreTable = QV_DICT *QV_STORE::*;

constexpr StoreTable STORE_VALUES = &QV_STORE::values;
constexpr StoreTable STORE_STORES = &QV_STORE::stores;

/** A new store without entries, in a batch of stores. */
QV_STORE *createStoreIn( ObjBatch *batch );

/** A table whose keys are all addresses of a store. Most stores have values or sub-stores, not both: then the table of
    these is the one, and there is no other. A store that has got both keeps a table of the addresses from then on. */
inline QV_DICT *addressesOf( QV_STORE *store )
{
    return store->addresses->length > 0 ? store->addresses : store->stores->length > 0 ? store->stores : store->values;
}

/** Makes the table of the addresses if a store has none and needs it: it has both kinds of entries, or an entry of the
    kind `table` is going to be the first one beside others. Only the caller holds the store. */
void makeAddresses( QV_STORE *store );
void makeAddressesFor( QV_STORE *store, StoreTable table );

/** Sets an entry of a store that only the caller holds. The arguments are borrowed. */
void setInStore( QV_STORE *store, StoreTable table, QV_STRING *address, QV_OBJ *value );

/** The index of the value that an address has, or -1, also where the store is null. */
QV_INT valueInStore( QV_STORE **store, QV_STRING *address );

/** Replaces the value there. Takes over the reference. */
void replaceInStore( QV_STORE **store, QV_INT idx, QV_STRING *value );

/** Whether an address and its entries are sound, and all others too if the store is small: where there is a table of the
    addresses, an address is in it exactly when it is in one of the other two, and is its own value there; without it one
    of these is empty; each value is of the sort of its table. For assertions, after each change. */
bool isSoundStore( QV_STORE *store, QV_STRING *address );

/** Asks for what a writer needs of a short String, some Strings ahead: the memory of those that were made in another order
    than that of their addresses comes from far away. */
inline void fetchString( QV_OBJ *string )
{
    __builtin_prefetch( reinterpret_cast< char * >( string ) + 80 );
    __builtin_prefetch( reinterpret_cast< char * >( string ) + 144 );
}

/** Which ASCII characters an address can have. It has no others. */
constexpr std::array< bool, 128 > ADDRESS_CHARS = []
{
    std::array< bool, 128 > table{};

    for( char32_t ch = 0; ch < 128; ch++ )
        table[ch] = isWordChar( ch );

    return table;
}();

/** The first unit that cannot be in an address. The units are characters, or bytes if all of them are ASCII. */
template< class Unit >
const Unit *skipAddressChars( const Unit *pos, const Unit *end )
{
    while( pos < end && *pos < 128 && ADDRESS_CHARS[*pos] )
        pos++;

    return pos;
}
} // namespace qv

#endif
