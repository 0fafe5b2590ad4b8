/** @file
    What the parts of the Store share, what tools need of the text form line by line, and the steps of both forms that
    start at a depth. */

#ifndef QV_STORE_PRIVATE_H
#define QV_STORE_PRIVATE_H

#include "qv/runtime/qv_family.h"

#include <array>

struct QV_STORE : QV_OBJ
{
    QV_DICT *addresses; /**< every address that has an entry; the value is the same String */
    QV_DICT *values;    /**< Strings by address */
    QV_DICT *stores;    /**< Stores by address */
};

/** Levels that a document can have. What lies deeper is dropped by the reader of the text form, and an error for the
    reader of the binary form. */
#define QV_STORE_MAX_DEPTH 100

/** What the reader of the text form makes of a line. */
#define QV___STORE_LINE_VALUE        0 /**< sets a value */
#define QV___STORE_LINE_STORE        1 /**< names a sub-store */
#define QV___STORE_LINE_EMPTY        2 /**< skipped: has no characters */
#define QV___STORE_LINE_NO_SEPARATOR 3 /**< skipped: has neither `.` nor `=`, or no more of them below a sub-store */
#define QV___STORE_LINE_BAD_ADDRESS  4 /**< skipped: what stands before the separator is no address */
#define QV___STORE_LINE_TOO_DEEP     5 /**< skipped: lies more than QV_STORE_MAX_DEPTH sub-stores deep */

/** Tells what the reader makes of `line`, which has no line end, by the same code.

    `path` and `value` may be null. Where they are not, what they hold is released, and `*path` becomes the addresses of
    the line without white space around them, separated by dots, with one more dot at the end where the last one is
    that of a sub-store; `*value` becomes the value without escapes, or null if the line sets none. Of a line that is
    skipped the path has the sub-stores that it nevertheless makes, and is null if there are none. The caller owns
    both. */
QV_API QV_INT qv___StoreParseLine( QV_STRING *line, QV_STRING **path, QV_STRING **value );

/** The canonical line of a path as qv___StoreParseLine() gives it: with `=` and the escaped value, or as it stands if
    `value` is null. The caller owns it. */
QV_API QV_STRING *qv___StoreEncodeLine( QV_STRING *path, QV_STRING *value );

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
