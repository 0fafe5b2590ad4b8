#ifndef QV_UNICODE_DB_PRIVATE_H
#define QV_UNICODE_DB_PRIVATE_H

#include "qv/qv_tool_private.h"
#include "qv/sys/qv_types.h"
#include "qv/unicode/qv_unicode_cdmt.h"

/* Look-ups in the generated tables. Sources that ask for many characters use the inline forms of
   qv_unicode_tables_private.h. Mappings are declared in qv_tool_private.h. Values of 0x110000 and above end the
   process; out pointers may be null. */

/** General category, combining class, script; 0 where there is none. */
QV_API QV_INT qv___UnicodeGencDbLookup( QV_CHAR ch );
QV_API QV_INT qv___UnicodeCccvDbLookup( QV_CHAR ch );
QV_API QV_INT qv___UnicodeScriptDbLookup( QV_CHAR ch );

/** Value of a decimal digit of any script, or -1. */
QV_API QV_INT qv___UnicodeDecimalDbLookup( QV_CHAR ch );

/** Whether a pair composes to one character in the normal forms with composition, and to which one. Without the
    exclusions; Hangul does not stand here. `*composeTo` is left alone where it doesn't. */
QV_API QV_BOOL qv___UnicodeCompDbLookup( QV_CHAR ch1, QV_CHAR ch2, QV_CHAR *composeTo );

/* Hand-made look-ups. */

/** White_Space; what ends a line; value of a hexadecimal digit or -1. */
QV_API QV_BOOL qv___UnicodeWhiteSpaceDbLookup( QV_CHAR ch );
QV_API QV_BOOL qv___UnicodeNlfDbLookup( QV_CHAR ch );
QV_API QV_INT  qv___UnicodeHexDigitDbLookup( QV_CHAR ch );

#endif
