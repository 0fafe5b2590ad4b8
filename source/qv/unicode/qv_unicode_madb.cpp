// The look-ups made by hand (madb is for manual database): few ranges, for which a table would be larger and no faster.

#include "qv/sys/qv_abort.h"
#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

QV_BOOL qv___UnicodeWhiteSpaceDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::isWhiteSpace( ch ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qv___UnicodeNlfDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::isNlf( ch ) ? QV_TRUE : QV_FALSE;
}

QV_INT qv___UnicodeHexDigitDbLookup( QV_CHAR ch )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return qv::unicode::hexDigit( ch );
}
