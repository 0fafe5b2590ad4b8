/** @file
    What the parts of the Store share, and the steps of both forms that start at a depth. The text form line by line is
    declared in qv_tool_private.h. */

#ifndef QV_STORE_PRIVATE_H
#define QV_STORE_PRIVATE_H

#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_family.h"

#include <array>

struct QV_STORE : QV_OBJ
{
    QV_DICT *addresses; /**< every address that has an entry; the value is the same String */
    QV_DICT *values;    /**< Strings by address */
    QV_DICT *stores;    /**< Stores by address */
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

/** A new store without entries, with memory for as many as another one has, at most for 32 of each kind. */
QV_STORE *createStoreLike( QV_STORE *other );

/** Sets an entry of a store that only the caller holds. The arguments are borrowed. */
void setInStore( QV_STORE *store, StoreTable table, QV_STRING *address, QV_OBJ *value );

/** Enters an address that the store doesn't have yet, with an entry in `table`, before the address at `idx`. Takes over
    three references to the address and one to the value. Only the caller holds the store. */
void insertIntoStore( QV_STORE *store, StoreTable table, QV_INT idx, QV_STRING *address, QV_OBJ *value );

/** Whether an address and its entries are sound, and all others too if the store is small: an address is in `addresses`
    exactly when it is in one of the other two tables, it is its own value there, and each value is of the sort of its
    table. For assertions, after each change. */
bool isSoundStore( QV_STORE *store, QV_STRING *address );

/** Which ASCII characters an address can have. It has no others. */
constexpr std::array< bool, 128 > ADDRESS_CHARS = []
{
    std::array< bool, 128 > table{};

    for( char32_t ch = 0; ch < 128; ch++ )
        table[ch] = ( ch >= U'0' && ch <= U'9' ) || ( ch >= U'A' && ch <= U'Z' ) || ( ch >= U'a' && ch <= U'z' )
                    || ch == U'_' || ch == U'-';

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
