/** @file
    What Enums and Flagsets have in common: names with a value each, and for each value the name that was entered last.

    T is the structure of one of them. It has `nameToValue`, a Dict of Strings to boxed integers, and three functions:

        QV_STRING *nameOf( QV_INT value )                               a new reference, or null
        void       setNameOf( QV_BOXED_INT *value, QV_STRING *name )    borrows both
        void       clearNameOf( QV_INT value ) */

#ifndef QV_NAMED_VALUES_PRIVATE_H
#define QV_NAMED_VALUES_PRIVATE_H

#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"

namespace qv
{
/** The value of a name, or `missing`. */
template< class T >
QV_INT valueOfName( T *names, QV_STRING *name, QV_INT missing )
{
    return takeInt( qvDictStringKey( names->nameToValue, name ), missing );
}

/** Deletes a name of a structure that nobody else holds, and the value's name if it is this one: the value may have a
    name that was entered later. */
template< class T >
void deleteName( T *names, QV_STRING *name )
{
    if( !qvDictHasStringKey( names->nameToValue, name ) )
        return;

    QV_INT value = valueOfName( names, name, 0 );
    qvDictDelStringKey( &names->nameToValue, name );

    Ref< QV_STRING > named( names->nameOf( value ) );

    if( named && qvStringEquals( named, name ) )
        names->clearNameOf( value );
}

/** Enters a name, or moves it to another value. Replaces `*names` by a copy if it is shared. */
template< class T >
void enterName( T **names, T *( *copy )( T *source ), QV_STRING *name, QV_INT value )
{
    // `*names` may hold the only reference to the name.
    Ref< QV_STRING > alive = Ref< QV_STRING >::share( name );

    makePrivate( names, copy );
    deleteName( *names, name );

    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( value ) );
    qvDictSetStringKey( &( *names )->nameToValue, name, qvBoxedIntObj( boxed ) );
    ( *names )->setNameOf( boxed, name );
}

/** Removes a name, if there is one. Replaces `*names` by a copy if it is shared and has the name. */
template< class T >
void removeName( T **names, T *( *copy )( T *source ), QV_STRING *name )
{
    if( !qvDictHasStringKey( ( *names )->nameToValue, name ) )
        return;

    // `*names` may hold the only reference to the name.
    Ref< QV_STRING > alive = Ref< QV_STRING >::share( name );

    makePrivate( names, copy );
    deleteName( *names, name );
}
} // namespace qv

#endif
