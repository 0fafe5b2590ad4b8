/** @file
    Store: configuration documents. A tree of named entries, each with a text value, a sub-store or both.

        QV_STORE *store = qvStoreCreate(), *log = qvStoreCreate();
        qvStoreSetValueIntFormatCstr( &store, "port-%i", -1, 8080, (QV_INT)1 );     // at the address "port-1"
        qvStoreSetValueBoolCstr( &log, "verbose", -1, QV_TRUE );
        qvStoreSetStoreCstr( &store, "log", -1, log );
        QV_BUFFER *text = qvStoreEncodeToTextBuffer( store );      // port-1=8080 and log.verbose=true, a line each
        QV_INT port;
        QV_BOOL found = qvStoreValueIntCstr( store, &port, "port-1", -1 );          // true, 8080
        qvBufferRelease( text );
        qvStoreRelease( log );
        qvStoreRelease( store );

    Addresses. An address is one step, never a path: one or more of the characters 0-9, A-Z, a-z, `_` and `-`. Nested
    data is reached level by level: read the sub-store, change it, set it again. Entries are in ascending order of
    their addresses as texts ("10" before "2"); indexes count them from 0. An address that breaks the grammar ends the
    process, so test one that comes from outside with qvStoreAddressOk() first.

    Value and copy. A Store that others hold too is never changed: a mutator takes the address of the caller's
    reference and, where the store is shared, replaces it by a copy first, which shares all content with the old one.
    So retaining is copying: a reader that holds a reference does not see later changes. Only the tables of the level
    that is written are copied, and only while they are shared.

    Order. Stores order by their addresses, then their values, then their sub-stores.

    Text form. One entry a line: all values of a level, then its sub-stores, each in the order of the addresses.

        name=value          a value
        log.verbose=true    a value in the sub-store "log"
        log.empty.          a sub-store without entries

    In a value, `%` is written as `%%`, and a control character as `%` and six hexadecimal digits: `%00000a` is a line
    feed. Everything else is written unchanged, `.` and `=` too; so a value with U+2028 or U+2029, which end a line of a
    buffer, is not read back whole from a text buffer, but is from a Vector of lines.

    Lines are read in any order, and of several values of an address the last one counts. White space around an address
    is ignored, around a value it is part of it. After a `%` the reader accepts any six characters that
    qvFormatTryDecodeIntChars() reads whole as a number in base 16: with digits of either case, a sign and white space
    too. What is no escape is read unchanged. A line without `.` or `=`, or with something before it that is no address,
    is skipped: `# a = comment` is one. Content below 100 levels of sub-stores is skipped too. No text is an error, but
    for the strict readers.

    Binary form. The number of entries as an Int; then for each its address as a String, its value as an
    OptionalString and its sub-store as an OptionalStore (qv_encoder.h describes them). Entries are read in any order.
    The result of reading is null, with the decoder's error set, for data that ends early, holds an address that is none
    or nests deeper than 100 levels.

    Costs. Finding, setting and deleting cost a logarithm of the number of addresses, in any order, and the first change
    of a table that is shared a copy of it. The first sub-store beside values, or value beside sub-stores, costs a table
    of all addresses. qvStoreCreateFrom() costs a constant time. Reading and writing a form costs its length, reading
    with the logarithm of its entries. A tree may be nested to any depth: operations that walk it take memory for each
    level, not stack.

    Memory. A store with one entry takes a few hundred bytes, and so does each entry of short texts. A document that was
    read from text takes some ten to forty times its text where most lines set values, less where addresses or values
    come again, and up to 300 times where all of it is sub-stores.

    Threads. Any thread may read a Store, also one that others hold, and may lend it, its addresses and its values to
    operations on other Stores at the same time. A variable that mutators work on belongs to one thread at a time.

    Arguments stay alive for the call, even if the store that is changed is the only one to hold them.

    Null where an object is expected and as `*store`, and an index outside the store, end the process. */

#ifndef QV_STORE_H
#define QV_STORE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Store, QV_STORE )

/* Whole stores --------------------------------------------------------------------------------------------------- */

/** A new store without entries. */
QV_API QV_STORE *qvStoreCreate( void );

/** A new store that shares all content with `source`. Constant time. */
QV_API QV_STORE *qvStoreCreateFrom( QV_STORE *source );

/** Makes `*store` a new store without entries. */
QV_API void qvStoreClear( QV_STORE **store );

/** How many addresses have an entry. */
QV_API QV_INT qvStoreLength( QV_STORE *store );

/** The address at an index from 0 to below the length. The caller owns the reference. */
QV_API QV_STRING *qvStoreAddressAt( QV_STORE *store, QV_INT index );

/** @{ */
/** All addresses, those with a value, those with a sub-store: a new Vector of Strings in ascending order. */
QV_API QV_VECTOR *qvStoreAddressesVector( QV_STORE *store );
QV_API QV_VECTOR *qvStoreValueAddressesVector( QV_STORE *store );
QV_API QV_VECTOR *qvStoreStoreAddressesVector( QV_STORE *store );
/** @} */

/** True for a text that can be an address. */
QV_API QV_BOOL qvStoreAddressOk( QV_STRING *address );

/** Adds what `other` has and `*store` lacks, level by level. A value that both have stays as it is in `*store`, and a
    sub-store that `*store` lacks is shared with `other`. Costs a logarithm for each entry of `other` on the levels that
    both have, and copies of the tables of `*store` that are shared. */
QV_API void qvStoreMerge( QV_STORE **store, QV_STORE *other );

/* One entry ------------------------------------------------------------------------------------------------------ */

/*  Every operation has the same forms. They differ in how the address is given:

    - plain: a String;
    - At: the index of an address that has an entry, of whatever kind;
    - Cstr, Wcstr: UTF-8 text with a length in bytes or wide text with a length in units, -1 up to the terminator;
    - Format, FormatCstr, FormatWcstr: the text of a format and the arguments at the end (qv_format.h describes the
      language). */

/** @{ */
/** True if the address has an entry: a value, a sub-store or both. */
QV_API QV_BOOL qvStoreHasAddress( QV_STORE *store, QV_STRING *address );
QV_API QV_BOOL qvStoreHasAddressCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreHasAddressWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreHasAddressFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreHasAddressFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreHasAddressFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** The value, or null if the address has none. The caller owns the reference. */
QV_API QV_STRING *qvStoreValue( QV_STORE *store, QV_STRING *address );
QV_API QV_STRING *qvStoreValueAt( QV_STORE *store, QV_INT index );
QV_API QV_STRING *qvStoreValueCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_STRING *qvStoreValueWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_STRING *qvStoreValueFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_STRING *qvStoreValueFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_STRING *qvStoreValueFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** True if the address has a value, whatever its text. */
QV_API QV_BOOL qvStoreHasValue( QV_STORE *store, QV_STRING *address );
QV_API QV_BOOL qvStoreHasValueAt( QV_STORE *store, QV_INT index );
QV_API QV_BOOL qvStoreHasValueCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreHasValueFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreHasValueFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** Sets the value. A sub-store at the address stays. */
QV_API void qvStoreSetValue( QV_STORE **store, QV_STRING *address, QV_STRING *value );
QV_API void qvStoreSetValueAt( QV_STORE **store, QV_INT index, QV_STRING *value );
QV_API void qvStoreSetValueCstr( QV_STORE **store, const char *address, QV_INT length, QV_STRING *value );
QV_API void qvStoreSetValueWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_STRING *value );
QV_API void qvStoreSetValueFormat( QV_STORE **store, QV_STRING *format, QV_STRING *value, ... );
QV_API void qvStoreSetValueFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_STRING *value, ... );
QV_API void qvStoreSetValueFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_STRING *value, ... );
/** @} */

/** @{ */
/** Deletes the value, if there is one, and the address with it if it has no sub-store either. */
QV_API void qvStoreDelValue( QV_STORE **store, QV_STRING *address );
QV_API void qvStoreDelValueAt( QV_STORE **store, QV_INT index );
QV_API void qvStoreDelValueCstr( QV_STORE **store, const char *address, QV_INT length );
QV_API void qvStoreDelValueWcstr( QV_STORE **store, const wchar_t *address, QV_INT length );
QV_API void qvStoreDelValueFormat( QV_STORE **store, QV_STRING *format, ... );
QV_API void qvStoreDelValueFormatCstr( QV_STORE **store, const char *format, QV_INT length, ... );
QV_API void qvStoreDelValueFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** Reads a truth value: "true" or "false" in either case, or a number, of which zero is false. Returns true if there
    is a value that is one from end to end. Otherwise `*out` becomes false; `out` may be null. */
QV_API QV_BOOL qvStoreValueBool( QV_STORE *store, QV_BOOL *out, QV_STRING *address );
QV_API QV_BOOL qvStoreValueBoolAt( QV_STORE *store, QV_BOOL *out, QV_INT index );
QV_API QV_BOOL qvStoreValueBoolCstr( QV_STORE *store, QV_BOOL *out, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreValueBoolWcstr( QV_STORE *store, QV_BOOL *out, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreValueBoolFormat( QV_STORE *store, QV_BOOL *out, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreValueBoolFormatCstr( QV_STORE *store, QV_BOOL *out, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreValueBoolFormatWcstr( QV_STORE *store, QV_BOOL *out, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** True if the value is a truth value. */
QV_API QV_BOOL qvStoreHasValueBool( QV_STORE *store, QV_STRING *address );
QV_API QV_BOOL qvStoreHasValueBoolAt( QV_STORE *store, QV_INT index );
QV_API QV_BOOL qvStoreHasValueBoolCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueBoolWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueBoolFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreHasValueBoolFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreHasValueBoolFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** Sets the value to "true" or "false". */
QV_API void qvStoreSetValueBool( QV_STORE **store, QV_STRING *address, QV_BOOL value );
QV_API void qvStoreSetValueBoolAt( QV_STORE **store, QV_INT index, QV_BOOL value );
QV_API void qvStoreSetValueBoolCstr( QV_STORE **store, const char *address, QV_INT length, QV_BOOL value );
QV_API void qvStoreSetValueBoolWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_BOOL value );
QV_API void qvStoreSetValueBoolFormat( QV_STORE **store, QV_STRING *format, QV_BOOL value, ... );
QV_API void qvStoreSetValueBoolFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_BOOL value, ... );
QV_API void qvStoreSetValueBoolFormatWcstr(
    QV_STORE **store, const wchar_t *format, QV_INT length, QV_BOOL value, ... );
/** @} */

/** @{ */
/** Reads an integer, in base 10 or the one of its prefix. Returns true if there is a value that is one from end to end.
    Otherwise `*out` becomes 0; `out` may be null. */
QV_API QV_BOOL qvStoreValueInt( QV_STORE *store, QV_INT *out, QV_STRING *address );
QV_API QV_BOOL qvStoreValueIntAt( QV_STORE *store, QV_INT *out, QV_INT index );
QV_API QV_BOOL qvStoreValueIntCstr( QV_STORE *store, QV_INT *out, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreValueIntWcstr( QV_STORE *store, QV_INT *out, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreValueIntFormat( QV_STORE *store, QV_INT *out, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreValueIntFormatCstr( QV_STORE *store, QV_INT *out, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreValueIntFormatWcstr( QV_STORE *store, QV_INT *out, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** True if the value is an integer. */
QV_API QV_BOOL qvStoreHasValueInt( QV_STORE *store, QV_STRING *address );
QV_API QV_BOOL qvStoreHasValueIntAt( QV_STORE *store, QV_INT index );
QV_API QV_BOOL qvStoreHasValueIntCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueIntWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueIntFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreHasValueIntFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreHasValueIntFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** Sets the value to the integer in base 10. */
QV_API void qvStoreSetValueInt( QV_STORE **store, QV_STRING *address, QV_INT value );
QV_API void qvStoreSetValueIntAt( QV_STORE **store, QV_INT index, QV_INT value );
QV_API void qvStoreSetValueIntCstr( QV_STORE **store, const char *address, QV_INT length, QV_INT value );
QV_API void qvStoreSetValueIntWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_INT value );
QV_API void qvStoreSetValueIntFormat( QV_STORE **store, QV_STRING *format, QV_INT value, ... );
QV_API void qvStoreSetValueIntFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_INT value, ... );
QV_API void qvStoreSetValueIntFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_INT value, ... );
/** @} */

/** @{ */
/** Reads a number with an optional fraction, but no exponent. Returns true if there is a value that is one from end
    to end. Otherwise `*out` becomes 0.0; `out` may be null. */
QV_API QV_BOOL qvStoreValueReal( QV_STORE *store, QV_REAL *out, QV_STRING *address );
QV_API QV_BOOL qvStoreValueRealAt( QV_STORE *store, QV_REAL *out, QV_INT index );
QV_API QV_BOOL qvStoreValueRealCstr( QV_STORE *store, QV_REAL *out, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreValueRealWcstr( QV_STORE *store, QV_REAL *out, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreValueRealFormat( QV_STORE *store, QV_REAL *out, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreValueRealFormatCstr( QV_STORE *store, QV_REAL *out, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreValueRealFormatWcstr( QV_STORE *store, QV_REAL *out, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** True if the value is such a number. */
QV_API QV_BOOL qvStoreHasValueReal( QV_STORE *store, QV_STRING *address );
QV_API QV_BOOL qvStoreHasValueRealAt( QV_STORE *store, QV_INT index );
QV_API QV_BOOL qvStoreHasValueRealCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueRealWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreHasValueRealFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreHasValueRealFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreHasValueRealFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** Sets the value to the number in base 10 with six digits after the point, cut off. */
QV_API void qvStoreSetValueReal( QV_STORE **store, QV_STRING *address, QV_REAL value );
QV_API void qvStoreSetValueRealAt( QV_STORE **store, QV_INT index, QV_REAL value );
QV_API void qvStoreSetValueRealCstr( QV_STORE **store, const char *address, QV_INT length, QV_REAL value );
QV_API void qvStoreSetValueRealWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_REAL value );
QV_API void qvStoreSetValueRealFormat( QV_STORE **store, QV_STRING *format, QV_REAL value, ... );
QV_API void qvStoreSetValueRealFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_REAL value, ... );
QV_API void qvStoreSetValueRealFormatWcstr(
    QV_STORE **store, const wchar_t *format, QV_INT length, QV_REAL value, ... );
/** @} */

/** @{ */
/** The sub-store, or null if the address has none. The caller owns the reference; later changes of either store do not
    show in the other. */
QV_API QV_STORE *qvStoreStore( QV_STORE *store, QV_STRING *address );
QV_API QV_STORE *qvStoreStoreAt( QV_STORE *store, QV_INT index );
QV_API QV_STORE *qvStoreStoreCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_STORE *qvStoreStoreWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_STORE *qvStoreStoreFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_STORE *qvStoreStoreFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_STORE *qvStoreStoreFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** True if the address has a sub-store, which may be empty. */
QV_API QV_BOOL qvStoreHasStore( QV_STORE *store, QV_STRING *address );
QV_API QV_BOOL qvStoreHasStoreAt( QV_STORE *store, QV_INT index );
QV_API QV_BOOL qvStoreHasStoreCstr( QV_STORE *store, const char *address, QV_INT length );
QV_API QV_BOOL qvStoreHasStoreWcstr( QV_STORE *store, const wchar_t *address, QV_INT length );
QV_API QV_BOOL qvStoreHasStoreFormat( QV_STORE *store, QV_STRING *format, ... );
QV_API QV_BOOL qvStoreHasStoreFormatCstr( QV_STORE *store, const char *format, QV_INT length, ... );
QV_API QV_BOOL qvStoreHasStoreFormatWcstr( QV_STORE *store, const wchar_t *format, QV_INT length, ... );
/** @} */

/** @{ */
/** Sets the sub-store, which may be the store itself: then it is the store as it was. A value at the address stays. */
QV_API void qvStoreSetStore( QV_STORE **store, QV_STRING *address, QV_STORE *other );
QV_API void qvStoreSetStoreAt( QV_STORE **store, QV_INT index, QV_STORE *other );
QV_API void qvStoreSetStoreCstr( QV_STORE **store, const char *address, QV_INT length, QV_STORE *other );
QV_API void qvStoreSetStoreWcstr( QV_STORE **store, const wchar_t *address, QV_INT length, QV_STORE *other );
QV_API void qvStoreSetStoreFormat( QV_STORE **store, QV_STRING *format, QV_STORE *other, ... );
QV_API void qvStoreSetStoreFormatCstr( QV_STORE **store, const char *format, QV_INT length, QV_STORE *other, ... );
QV_API void qvStoreSetStoreFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, QV_STORE *other, ... );
/** @} */

/** @{ */
/** Deletes the sub-store, if there is one, and the address with it if it has no value either. */
QV_API void qvStoreDelStore( QV_STORE **store, QV_STRING *address );
QV_API void qvStoreDelStoreAt( QV_STORE **store, QV_INT index );
QV_API void qvStoreDelStoreCstr( QV_STORE **store, const char *address, QV_INT length );
QV_API void qvStoreDelStoreWcstr( QV_STORE **store, const wchar_t *address, QV_INT length );
QV_API void qvStoreDelStoreFormat( QV_STORE **store, QV_STRING *format, ... );
QV_API void qvStoreDelStoreFormatCstr( QV_STORE **store, const char *format, QV_INT length, ... );
QV_API void qvStoreDelStoreFormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, ... );
/** @} */

/* Text form ------------------------------------------------------------------------------------------------------ */

/** The lines of the text form: a new Vector of Strings. */
QV_API QV_VECTOR *qvStoreEncodeToStringVector( QV_STORE *store );

/** A new store of what the lines hold. Anything but Strings in `vec` ends the process. */
QV_API QV_STORE *qvStoreDecodeFromStringVector( QV_VECTOR *vec );

/** The text form in UTF-8, each line with a line feed: a new Buffer, empty for an empty store. */
QV_API QV_BUFFER *qvStoreEncodeToTextBuffer( QV_STORE *store );

/** A new store of what UTF-8 text holds. Lines end in any of the eight ways of qv_nlf.h, a byte order mark at
    the start is dropped, and what is no UTF-8 becomes U+FFFD. Null if the text cannot be read at all. */
QV_API QV_STORE *qvStoreTryDecodeFromTextBuffer( QV_BUFFER *buffer );

/*  Which lines are not understood: those that the reader skips, but for empty ones, those of white space and those
    whose first other character is `#`, which are there for people; those with content below 100 levels of sub-stores;
    and those that are no UTF-8, overlong forms and surrogates included. Lines are counted from 1, as an editor counts
    those that end in any of the eight ways of qv_nlf.h. */

/** @{ */
/** The same for text of which each line has to be understood. At the first line that is not the result is null, and the
    last error (qv_error.h) tells the line, the offset of its first byte or of the first that is no UTF-8, and as its
    subject the text of the line: QV_ERROR_BAD_DOCUMENT, QV_ERROR_TOO_DEEP or QV_ERROR_BAD_TEXT. */
QV_API QV_STORE *qvStoreTryDecodeFromTextBufferStrict( QV_BUFFER *buffer );
QV_API QV_STORE *qvStoreTryReadTextFileStrict( QV_STRING *fn );
/** @} */

/** @{ */
/** The store that qvStoreTryDecodeFromTextBuffer() makes, and all lines that are not understood: appends an Error like
    the one of the strict form for each of them, in their order, to the Vector in `*errors`, which the call may replace.
    Each takes some hundred bytes and the text of its line. Null, as `errors` or `*errors` too, ends the process. */
QV_API QV_STORE *qvStoreTryDecodeFromTextBufferWithErrors( QV_BUFFER *buffer, QV_VECTOR **errors );
QV_API QV_STORE *qvStoreTryReadTextFileWithErrors( QV_STRING *fn, QV_VECTOR **errors );
/** @} */

/** The store of a text file, as qvStoreTryDecodeFromTextBuffer() makes it. This and the forms for files above return
    null with the last error set where the file cannot be read, and all their errors bear its name. */
QV_API QV_STORE *qvStoreTryReadTextFile( QV_STRING *fn );

/* Binary form ---------------------------------------------------------------------------------------------------- */

/** Appends the binary form to what the encoder has. */
QV_API void qvStoreEncodeToEncoder( QV_STORE *store, QV_ENCODER *encoder );

/** The binary form in a new Buffer, owned by the caller. */
QV_API QV_BUFFER *qvStoreEncodeToBuffer( QV_STORE *store );

/** A new store, or null with the decoder's error set, and the last error (qv_error.h), which tells the offset: about
    where what is no document begins. With a store, the decoder is moved past it. */
QV_API QV_STORE *qvStoreTryDecodeFromDecoder( QV_DECODER *decoder );

/** @{ */
/** A new store, or null with the last error set likewise if the Buffer, or the file, holds anything but one whole
    store, or the file cannot be read. */
QV_API QV_STORE *qvStoreTryDecodeFromBuffer( QV_BUFFER *buffer );
QV_API QV_STORE *qvStoreTryReadBinaryFile( QV_STRING *fn );
/** @} */

#endif
