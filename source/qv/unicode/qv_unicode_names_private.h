#ifndef QV_UNICODE_NAMES_PRIVATE_H
#define QV_UNICODE_NAMES_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"

/* What the sources of the properties' names share. The names are constant tables of ASCII text, which need neither
   start-up nor relocation. They are so few that a name is found by comparing it with each. */

namespace qv::unicode
{
inline char upperAscii( char ch )
{
    return ch >= 'a' && ch <= 'z' ? static_cast< char >( ch - 'a' + 'A' ) : ch;
}

inline char lowerAscii( char ch )
{
    return ch >= 'A' && ch <= 'Z' ? static_cast< char >( ch - 'A' + 'a' ) : ch;
}

/** A new String of a text of a table. */
inline QV_STRING *createName( const char *text )
{
    return qvStringCreateFromAscii( text, -1 );
}

/** A new String of the name of a constant: the prefix and the rest in capitals. */
inline QV_STRING *createSymName( const char *prefix, const char *text )
{
    char   name[64];
    QV_INT length = 0;

    while( *prefix )
        name[length++] = *prefix++;

    while( *text )
        name[length++] = upperAscii( *text++ );

    return qvStringCreateFromAscii( name, length );
}

/** True if a String is a text of a table, which is folded to lower case first if `folded`. The empty String is no name.
    */
inline bool equalsName( QV_STRING *qvs, const char *text, bool folded )
{
    const QV_CHAR *chs = chars( qvs );
    QV_INT         i   = 0;

    while( i < qvs->length && text[i] && chs[i] == static_cast< QV_CHAR >( folded ? lowerAscii( text[i] ) : text[i] ) )
        i++;

    return i == qvs->length && !text[i] && i > 0;
}

/** The index of the row whose `member` is the name, or -1. */
template< class Row, size_t count, class Text >
QV_INT findName( const Row ( &rows )[count], Text Row::*member, QV_STRING *name, bool folded )
{
    for( size_t i = 0; i < count; i++ )
        if( equalsName( name, rows[i].*member, folded ) )
            return static_cast< QV_INT >( i );

    return -1;
}

/** The same, regardless of the case of letters. */
template< class Row, size_t count, class Text >
QV_INT findNameCaseFold( const Row ( &rows )[count], Text Row::*member, QV_STRING *name )
{
    Ref< QV_STRING > folded = Ref< QV_STRING >::share( name );
    qvStringToCaseFold( folded.at() );

    return findName( rows, member, folded, true );
}
} // namespace qv::unicode

#endif
