#include "qv/unicode/qv_unicode_db_private.h"

#include "qv/sys/qv_abort.h"
#include "qv/unicode/qv_unicode_tables_private.h"

using qv::unicode::Mapping;

namespace
{
// Stores the length of a mapping. Returns its characters.
const QV_CHAR *unpack( Mapping mapping, QV_INT *length )
{
    if( length )
        *length = mapping.length;

    return mapping.chars;
}
} // namespace

QV_INT qv___UnicodeGencDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::generalCategory( ch );
}

QV_INT qv___UnicodeCccvDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::combiningClass( ch );
}

QV_INT qv___UnicodeScriptDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::scriptOf( ch );
}

QV_INT qv___UnicodeDecimalDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::decimalDigit( ch );
}

const QV_CHAR *qv___UnicodeUpperCaseDbLookup( QV_CHAR ch, QV_INT *length )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return unpack( qv::unicode::upperCase( ch ), length );
}

const QV_CHAR *qv___UnicodeLowerCaseDbLookup( QV_CHAR ch, QV_INT *length )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return unpack( qv::unicode::lowerCase( ch ), length );
}

const QV_CHAR *qv___UnicodeCaseFoldDbLookup( QV_CHAR ch, QV_INT *length )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return unpack( qv::unicode::caseFold( ch ), length );
}

const QV_CHAR *qv___UnicodeCdmDbLookup( QV_CHAR ch, QV_INT *length, QV_INT *type )
{
    QV_CHECK( QV_CHAR_OK( ch ) );

    QV_INT  found;
    Mapping mapping = qv::unicode::decompose( ch, &found );

    if( type )
        *type = found;

    return unpack( mapping, length );
}

QV_BOOL qv___UnicodeCompDbLookup( QV_CHAR ch1, QV_CHAR ch2, QV_CHAR *composeTo )
{
    QV_CHECK( QV_CHAR_OK( ch1 ) );
    QV_CHECK( QV_CHAR_OK( ch2 ) );

    QV_CHAR composite = qv::unicode::compose( ch1, ch2 );

    if( composite && composeTo )
        *composeTo = composite;

    return composite ? QV_TRUE : QV_FALSE;
}
