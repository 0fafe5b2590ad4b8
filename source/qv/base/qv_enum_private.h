/** @file
    Enumerations whose names are a constant table: their look-ups answer as an Enum with these names does, and need
    neither start-up nor memory. The tables are so short that a name is compared with each. */

#ifndef QV_ENUM_PRIVATE_H
#define QV_ENUM_PRIVATE_H

#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"

namespace qv
{
/** The value, from 0 to below `count`, whose text is `name`, or -1. `textOf( value )` returns ASCII text. */
template< class TextOf >
QV_INT findConstant( QV_STRING *name, QV_INT count, TextOf textOf )
{
    for( QV_INT value = 0; value < count; value++ )
        if( qvStringEqualsCstr( name, textOf( value ), -1 ) )
            return value;

    return -1;
}

/** The value of an enumerant or number with white space around it, as by qvEnumParse(); -1 for any other text. */
template< class TextOf >
QV_INT parseConstant( QV_STRING *text, QV_INT count, TextOf textOf )
{
    Ref< QV_STRING > name = Ref< QV_STRING >::share( text );
    qvStringTrim( name.at() );

    if( QV_INT value = findConstant( name, count, textOf ); value >= 0 )
        return value;

    QV_INT number;

    return scansAsInt( name, -1, &number ) && number >= 0 && number < count ? number : -1;
}
} // namespace qv

#endif
