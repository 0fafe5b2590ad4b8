/** @file
    New Strings, inline for the sources of String itself and others that make many. */

#ifndef QV_STRING_CREATE_PRIVATE_H
#define QV_STRING_CREATE_PRIVATE_H

#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/sys/qv_mem_private.h"

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

namespace qv
{
/** A block of so many characters at most is allocated with its String. */
const QV_INT MOST_EMBEDDED = 512;

/** All that is copied here fits a block, so that there is nothing to check; most of it is short. */
inline void copyChars( QV_CHAR *dest, const QV_CHAR *src, QV_INT count )
{
    if( count > 0 )
        copyBytes( dest, src, static_cast< size_t >( count ) * sizeof( QV_CHAR ) );
}

/** A String of `count` undefined characters and of `space` free places at each end; if it isn't large, in a batch where
    there is one. The sum is above 0. */
__attribute__( ( always_inline ) ) inline QV_STRING *newString( QV_INT count, ObjBatch *batch, QV_INT space )
{
    QV_SORT *sort   = &qv___sort_QV_STRING;
    QV_INT   places = count + 2 * space;

    if( __builtin_expect( places > MOST_EMBEDDED, 0 ) )
    {
        QV_OBJ *object =
            batch ? batch->create( sizeof( QV_STRING ), 0 ) : createWithRoom( sizeof( QV_STRING ), 0, sort );
        QV_STRING *qvs = static_cast< QV_STRING * >( object );
        qvs->initBlock( 0, count, { space, space } );

        return qvs;
    }

    // A block that comes with the String ends with it.
    const uint16_t ENDS   = QV___MEMORY_ENDS_ALONE;
    const QV_INT   SIZE   = sizeof( QV_STRING );
    QV_INT         bytes  = places * QV_INT( sizeof( QV_CHAR ) );
    QV_OBJ        *object = batch ? batch->createInline( SIZE, bytes, ENDS ) : createQuickly( SIZE, bytes, sort, ENDS );

    if( __builtin_expect( !object, 0 ) )
        object = createWithRoom( SIZE, bytes, sort, ENDS );

    QV_STRING *qvs = static_cast< QV_STRING * >( object );
    qvs->initBlock( places, count, { space, space } );

    return qvs;
}

/** A String with memory for `room` characters, at most MOST_EMBEDDED. The caller writes to that memory, which follows the
    structure, and then calls initWritten(). With `onlyKept` null where there is no block for it: see createQuickly(). */
__attribute__( ( always_inline ) ) inline QV_STRING *newUnwritten( QV_INT room, bool onlyKept )
{
    const uint16_t ENDS   = QV___MEMORY_ENDS_ALONE;
    const QV_INT   SIZE   = sizeof( QV_STRING );
    QV_SORT       *sort   = &qv___sort_QV_STRING;
    QV_INT         bytes  = room * QV_INT( sizeof( QV_CHAR ) );
    QV_OBJ        *object = createQuickly( SIZE, bytes, sort, ENDS, onlyKept );

    if( __builtin_expect( !object && !onlyKept, 0 ) )
        object = createWithRoom( SIZE, bytes, sort, ENDS );

    return static_cast< QV_STRING * >( object );
}

/** The first character of that memory. */
inline QV_CHAR *embeddedChars( QV_STRING *qvs )
{
    return reinterpret_cast< QV_CHAR * >( qvs + 1 );
}

/** So many characters at most an open String has when it is closed. */
const QV_INT MOST_OPEN = 36;

/** A String for a short text with the free places of a new one. First openChars() are written, as many as MOST_OPEN and
    those free places, since vectors are written whole; then closeOpen() tells how many the text has. */
inline QV_STRING *newOpenString()
{
    return newUnwritten( QV_STRING_FSPACE + MOST_OPEN + QV_STRING_BSPACE, false );
}

inline QV_CHAR *openChars( QV_STRING *open )
{
    return embeddedChars( open ) + QV_STRING_FSPACE;
}

inline void closeOpen( QV_STRING *open, QV_INT count )
{
    QV_ASSERT( count > 0 && count <= MOST_OPEN );
    open->initWritten(
        QV_STRING_FSPACE + MOST_OPEN + QV_STRING_BSPACE, QV_STRING_FSPACE, count,
        { QV_STRING_FSPACE, QV_STRING_BSPACE } );
}

/** As newString() without free places, and fixed if it is in a batch and isn't large. For what is rarely changed by a caller
    that alone holds it: then a change is five times as expensive. */
inline QV_STRING *newFixedString( QV_INT count, ObjBatch *batch )
{
    if( !batch || count > MOST_EMBEDDED )
        return newString( count, batch, 0 );

    QV_INT     bytes = count * QV_INT( sizeof( QV_CHAR ) );
    QV_STRING *qvs   = static_cast< QV_STRING * >( batch->createInline( FIXED_STRING, bytes, QV___MEMORY_ENDS_ALONE ) );
    qvs->length      = count;
    qvs->first       = reinterpret_cast< QV_CHAR * >( reinterpret_cast< char * >( qvs ) + FIXED_STRING );
    qvs->dbgAllocationSize = bytes;
    qvs->dbgObjectSize     = sizeof( QV_STRING ); // one size is told of all Strings

    return qvs;
}

/** A String with a copy of good characters in a block exactly as long as the text; the empty String for none. */
inline QV_STRING *newExactCopy( const QV_CHAR *chs, QV_INT count, ObjBatch *batch = nullptr )
{
    if( count == 0 )
        return qvStringCreate();

    QV_STRING *qvs = newString( count, batch, 0 );
    copyChars( chars( qvs ), chs, count );

    return qvs;
}
} // namespace qv

#endif
