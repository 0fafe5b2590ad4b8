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

/** A String with memory for `room` characters, in a block that the thread keeps. Null where there is no such block: see
    createQuickly(). The caller fills that memory, from this + 1 on, and ends with initAtEnd(). */
__attribute__( ( always_inline ) ) inline QV_STRING *newKeptString( QV_INT room )
{
    QV_INT  bytes  = room * QV_INT( sizeof( QV_CHAR ) );
    QV_OBJ *object = createQuickly( sizeof( QV_STRING ), bytes, &qv___sort_QV_STRING, QV___MEMORY_ENDS_ALONE, true );

    return static_cast< QV_STRING * >( object );
}

/** A String of `count` undefined characters and the free places of a new one, of which those at the end count as characters
    until dropBack() and refresh() tell the text: they take whole vectors. */
inline QV_STRING *newOpenString( QV_INT count )
{
    QV_STRING *qvs = newString( QV_STRING_FSPACE + count + QV_STRING_BSPACE, nullptr, 0 );
    qvs->dropFront( QV_STRING_FSPACE );

    return qvs;
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
