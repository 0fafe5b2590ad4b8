/** @file What the tools of `morvane` need beyond the public headers: the text form of documents line by line, single
    mappings of the character database, the file of a module without a load, and the rules of UTF-8. The tools include
    no other private header; the private headers of the families include this one. All functions may be called from any
    thread while the library runs; null ends the process unless said otherwise. */

#ifndef QV_TOOL_PRIVATE_H
#define QV_TOOL_PRIVATE_H

#include "qv/sys/qv_types.h"
#include "qv/sys/qv_utf8_private.h"

/* Documents ------------------------------------------------------------------------------------------------------ */

/** Levels that a document can have. What lies deeper is dropped by the reader of the text form, and an error for the
    reader of the binary form. */
#define QV_STORE_MAX_DEPTH 100

/** @{ */
/** What the reader of the text form makes of a line. */
#define QV___STORE_LINE_VALUE        0 /**< sets a value */
#define QV___STORE_LINE_STORE        1 /**< names a sub-store */
#define QV___STORE_LINE_EMPTY        2 /**< skipped: has no characters */
#define QV___STORE_LINE_NO_SEPARATOR 3 /**< skipped: has neither `.` nor `=`, or no more of them below a sub-store */
#define QV___STORE_LINE_BAD_ADDRESS  4 /**< skipped: what stands before the separator is no address */
#define QV___STORE_LINE_TOO_DEEP     5 /**< skipped: lies more than QV_STORE_MAX_DEPTH sub-stores deep */
/** @} */

/** Tells what the reader makes of `line`, which has no line end, as QV___STORE_LINE_...; by the reader's own code.

    `path` and `value` may be null. Where they are not, what they hold is released, and `*path` becomes the addresses of
    the line without white space around them, separated by dots, with one more dot at the end where the last one is
    that of a sub-store; `*value` becomes the value without escapes, or null if the line sets none. Of a line that is
    skipped the path has the sub-stores that it nevertheless makes, and is null if there are none. The caller owns
    both. */
QV_API QV_INT qv___StoreParseLine( QV_STRING *line, QV_STRING **path, QV_STRING **value );

/** The canonical line of a path as qv___StoreParseLine() returns it: with `=` and the escaped value, or as it stands if
    `value` is null. The caller owns it. */
QV_API QV_STRING *qv___StoreEncodeLine( QV_STRING *path, QV_STRING *value );

/* Characters ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** The full case mapping without conditions, static, and its length; null and 0 for a character that maps to itself.
    A value of 0x110000 and above ends the process; `length` may be null. */
QV_API const QV_CHAR *qv___UnicodeUpperCaseDbLookup( QV_CHAR ch, QV_INT *length );
QV_API const QV_CHAR *qv___UnicodeLowerCaseDbLookup( QV_CHAR ch, QV_INT *length );
QV_API const QV_CHAR *qv___UnicodeCaseFoldDbLookup( QV_CHAR ch, QV_INT *length );
/** @} */

/** The decomposition in one step, static, its length and its type QV_UNICODE_CDMT_...; null, 0 and 0 where there is
    none. Hangul syllables have none. Otherwise as the case mappings. */
QV_API const QV_CHAR *qv___UnicodeCdmDbLookup( QV_CHAR ch, QV_INT *length, QV_INT *type );

/* Modules -------------------------------------------------------------------------------------------------------- */

/** Opens the file of a module and returns the module, a new reference, or null: the file is missing or is none, is
    built for another product, or holds another module. Starts nothing. A file that was opened and refused is closed
    again; that of a module that was returned stays open for the life of the process. */
QV_API QV_MODULE *qv___RuntimePlatformLoadModule( QV_STRING *moduleName );

/** Called while an unload waits for the last object of a module, after each pause: how long it has waited for this
    module, and how long until the process is ended, both in milliseconds; -1 for a wait without an end. */
typedef void ( *QV___UNLOAD_WAIT_FUNC )( QV_MODULE *module, QV_INT waited, QV_INT left );

/** Sets what is called while an unload waits, until the library stops; null: nothing. In one thread. */
QV_API void qv___RuntimeSetUnloadWaitFunc( QV___UNLOAD_WAIT_FUNC func );

/** As qvRuntimeLeakVisit(), for the sorts of a module. */
QV_API void qv___ModuleLeakVisit(
    QV_MODULE *module, void ( *func )( QV_SORT *sort, const char *sortName, QV_INT objects, void *context ),
    void      *context );

#endif
