/** @file
    New Strings, inline for the sources of String itself and others that make many. */

#ifndef QV_STRING_CREATE_PRIVATE_H
#define QV_STRING_CREATE_PRIVATE_H

#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/sys/qv_mem_private.h"

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
inline QV_STRING *newString( QV_INT count, ObjBatch *batch, QV_INT space )
{
    QV_INT     places = count + 2 * space;
    QV_INT     home   = places <= MOST_EMBEDDED ? places : 0;
    QV_INT     extra  = home * QV_INT( sizeof( QV_CHAR ) );
    QV_OBJ    *object = batch ? batch->createInline( sizeof( QV_STRING ), extra )
                              : createWithRoom( sizeof( QV_STRING ), extra, qvStringSort() );
    QV_STRING *qvs    = static_cast< QV_STRING * >( object );
    qvs->initBlock( home, count, { space, space } );

    return qvs;
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

    QV_INT     bytes       = count * QV_INT( sizeof( QV_CHAR ) );
    QV_STRING *qvs         = static_cast< QV_STRING * >( batch->createInline( FIXED_STRING, bytes ) );
    qvs->length            = count;
    qvs->first             = reinterpret_cast< QV_CHAR * >( reinterpret_cast< char * >( qvs ) + FIXED_STRING );
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
