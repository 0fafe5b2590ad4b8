#ifndef QV_UNICODE_DB_PRIVATE_H
#define QV_UNICODE_DB_PRIVATE_H

#include "qv/qv_tool_private.h"
#include "qv/sys/qv_types.h"
#include "qv/unicode/qv_unicode_cdmt.h"

/* Look-ups in the generated tables. Sources that look up many characters use the inline forms of
   qv_unicode_tables_private.h instead. Values of 0x110000 and above end the process. Out pointers may be null.
   Mappings are declared in qv_tool_private.h. Short names in the functions: genc is the general category, cccv the canonical combining class value, cdm a character
   decomposition mapping, comp a composition, nlf a newline function. */

/** General category, canonical combining class, script; 0 for a character that has none. */
QV_API QV_INT qv___UnicodeGencDbLookup( QV_CHAR ch );
QV_API QV_INT qv___UnicodeCccvDbLookup( QV_CHAR ch );
QV_API QV_INT qv___UnicodeScriptDbLookup( QV_CHAR ch );

/** The value of a decimal digit of any script, or -1. */
QV_API QV_INT qv___UnicodeDecimalDbLookup( QV_CHAR ch );

/** Whether a pair composes to one character in the normal forms with composition, and to which one. False for the
    composition exclusions and for Hangul. `*composeTo` is stored only if the result is true. */
QV_API QV_BOOL qv___UnicodeCompDbLookup( QV_CHAR ch1, QV_CHAR ch2, QV_CHAR *composeTo );

/* Look-ups made by hand (madb is for manual database): few ranges, for which a table would be larger and no faster. */

/** The property White_Space; a character that ends a line; the value of a hexadecimal digit, or -1. */
QV_API QV_BOOL qv___UnicodeWhiteSpaceDbLookup( QV_CHAR ch );
QV_API QV_BOOL qv___UnicodeNlfDbLookup( QV_CHAR ch );
QV_API QV_INT  qv___UnicodeHexDigitDbLookup( QV_CHAR ch );

#endif
