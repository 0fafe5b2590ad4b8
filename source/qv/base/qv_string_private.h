#ifndef QV_STRING_PRIVATE_H
#define QV_STRING_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_block_private.h"

#include <stddef.h>

/** Free places that a new block has at each end, in characters. */
#define QV_STRING_FSPACE 32
#define QV_STRING_BSPACE 32

namespace qv
{
struct StringRules : SavingRules< QV_STRING_FSPACE, QV_STRING_BSPACE, 64, 64, 1 >
{
    using Unit = QV_CHAR;

    static constexpr QV_INT UNIT_BITS = 32;

    /** From here on the free function has a block to free. */
    static void leaveHome( QV_OBJ *object )
    {
        ownsMore( object );
    }
};
} // namespace qv

/** A block of characters. One that is made with the String follows the structure if it isn't large, in one
    allocation with it.

    A fixed String ends after `first`, and its characters follow there: the texts of documents, which are made by the
    thousand and mostly read, take 32 bytes less. It has no free places and nothing that could move, so it is never written to: for a caller
    that holds the only reference, what would change it makes a String that is no longer fixed in its place. Both declare
    the same. isFixed() tells it by where `first` leads. */
struct QV_STRING : qv::Block< QV_OBJ, qv::StringRules >
{
};

/** The one empty String of qvStringCreate(). */
extern "C" QV_STRING *qv___StringEmpty;

/** Opens a gap of `count` undefined characters in a String that nobody else holds; returns the gap. */
QV_API QV_CHAR *qv___StringMakeRoom( QV_STRING *qvs, QV_INT atIndex, QV_INT count );

/** Gives free places back where an end has more than 64 of them. */
QV_API void qv___StringCompact( QV_STRING *qvs );

namespace qv
{
/** The first character; null for a String without a block. */
inline QV_CHAR *chars( QV_STRING *qvs )
{
    return qvs->first;
}

/** The size of a fixed String without its characters. */
const QV_INT FIXED_STRING = offsetof( QV_STRING, fspace );

/** True if only the fields up to `first` may be used. */
inline bool isFixed( const QV_STRING *qvs )
{
    return reinterpret_cast< const char * >( qvs->first ) == reinterpret_cast< const char * >( qvs ) + FIXED_STRING;
}

/** True if a String's characters follow its fields in one allocation. False for the empty String. */
inline bool isEmbedded( const QV_STRING *qvs )
{
    return isFixed( qvs )
           || reinterpret_cast< const char * >( qvs->memory ) == reinterpret_cast< const char * >( qvs + 1 );
}

/** True if the caller must not write to a String. */
inline bool isShared( QV_STRING *qvs )
{
    return isShared< QV_STRING >( qvs ) || isFixed( qvs );
}

/** True if an address is in a String's memory. */
inline bool holdsChar( QV_STRING *qvs, const QV_CHAR *place )
{
    if( !isFixed( qvs ) )
        return qvs->holds( place );

    uintptr_t offset = reinterpret_cast< uintptr_t >( place ) - reinterpret_cast< uintptr_t >( qvs->first );
    return offset < static_cast< uintptr_t >( qvs->length ) * sizeof( QV_CHAR );
}

/** Lets the caller write to a String: it becomes a copy, with the free places of a new String, if somebody else holds it,
    and one without free places if it is fixed. */
void makeOwn( QV_STRING **qvs );

/** That is for what has a block alone. */
template<>
void makePrivate< QV_STRING >( QV_STRING **ref, QV_STRING *( *copy )( QV_STRING *source ) ) = delete;

/** A String of `count` undefined characters, above 0, which the caller fills with proper ones before anybody else sees it,
    without free places. */
QV_STRING *createString( QV_INT count );

/** A String that takes over a block of free places, `length` proper characters, and free places. The sum is above
    0. */
QV_STRING *createStringUse( QV_CHAR *block, QV_INT length, QV_INT front = 0, QV_INT back = 0 );

/** How many characters of white space there are at an end. */
QV_INT leadingWhiteSpace( QV_STRING *qvs );
QV_INT trailingWhiteSpace( QV_STRING *qvs );

/** A reference to a text in any form, for a scope. */
inline Ref< QV_STRING > asString( QV_STRING *qvs )
{
    return Ref< QV_STRING >::share( qvs );
}

inline Ref< QV_STRING > asString( const char *text, QV_INT length )
{
    return Ref< QV_STRING >( qvStringCreateFromCstr( text, length ) );
}

inline Ref< QV_STRING > asString( const wchar_t *text, QV_INT length )
{
    return Ref< QV_STRING >( qvStringCreateFromWcstr( text, length ) );
}
} // namespace qv

#endif
