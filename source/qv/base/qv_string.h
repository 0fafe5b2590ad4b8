/** @file
    String: text, a sequence of code points of 32 bits each.

        QV_STRING *qvs = qvStringCreateFromCstr( "port", -1 );
        qvStringAppendFormatCstr( &qvs, "=%i", -1, (QV_INT)8080 );
        qvStringPrependChar( &qvs, U'a' );                      // aport=8080
        QV_INT at = qvStringFindChar( qvs, 0, U'=' );           // 5
        qvStringDelLeading( &qvs, at + 1 );                     // 8080
        qvStringRelease( qvs );

    Value and copy. A String that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the String is shared, replaces it by a private copy first. So retaining is copying.

    Ranges. Indexes and counts are in characters and count from 0. Leading is the first `count` characters, Trailing
    the last, Inner the `count` from `offset`, Outer everything but those. -1 as a result means not found, -1 as a
    limit none.

    Texts. A Cstr is UTF-8 with a length in bytes, a Wcstr wide text with a length in units, Chars an array of QV_CHAR
    with its length; -1 as the length of a Cstr or Wcstr means that it ends at its terminator. What cannot be decoded
    becomes U+FFFD. Characters of 0x110000 and above end the process.

    Costs. Both ends have free places, 32 in a new block: appending and prepending move the text once every 32
    characters, deleting from an end moves nothing. Insertion inside moves the shorter of what it must. A block gives
    memory back when an end has more than 64 free places. Reading costs what it reads.

    Threads. Any thread may read a String, also one that others hold. A variable that mutators work on belongs to one
    thread at a time.

    Null as a String or as `*dest`, and an index or range outside the text, end the process. */

#ifndef QV_STRING_H
#define QV_STRING_H

#include "qv/sys/qv_types.h"

QV_FAMILY( String, QV_STRING )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** The empty String. Constant time: there is one, which everybody shares. */
QV_API QV_STRING *qvStringCreate( void );

/** A new String with its own copy of `src` or of a part of it. */
QV_API QV_STRING *qvStringCreateFrom( QV_STRING *src );
QV_API QV_STRING *qvStringCreateFromLeading( QV_STRING *src, QV_INT count );
QV_API QV_STRING *qvStringCreateFromTrailing( QV_STRING *src, QV_INT count );
QV_API QV_STRING *qvStringCreateFromInner( QV_STRING *src, QV_INT offset, QV_INT count );
QV_API QV_STRING *qvStringCreateFromOuter( QV_STRING *src, QV_INT offset, QV_INT count );

/** A new String that takes over `chars`, a block from qvMemAlloc(). With a length of 0 the block stays the
    caller's. */
QV_API QV_STRING *qvStringCreateFromCharsUse( QV_CHAR *chars, QV_INT length );

/** A new String with a copy of the array. */
QV_API QV_STRING *qvStringCreateFromCharsCopy( const QV_CHAR *chars, QV_INT length );

/** A new String of decoded text. */
QV_API QV_STRING *qvStringCreateFromAscii( const char *text, QV_INT length );
QV_API QV_STRING *qvStringCreateFromCstr( const char *text, QV_INT length );
QV_API QV_STRING *qvStringCreateFromUtf8( const char *text, QV_INT length );
QV_API QV_STRING *qvStringCreateFromWcstr( const wchar_t *text, QV_INT length );

/** A new String of formatted text; qv_format.h tells the language. A format without a conversion ends the process. */
QV_API QV_STRING *qvStringCreateFromFormat( QV_STRING *fmt, ... );
QV_API QV_STRING *qvStringCreateFromFormatArgList( QV_STRING *fmt, va_list *argList );
QV_API QV_STRING *qvStringCreateFromFormatCstr( const char *fmt, QV_INT fmtLength, ... );
QV_API QV_STRING *qvStringCreateFromFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API QV_STRING *qvStringCreateFromFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API QV_STRING *qvStringCreateFromFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList );

/* Reading -------------------------------------------------------------------------------------------------------- */

/** How many characters there are. */
QV_API QV_INT qvStringLength( QV_STRING *qvs );

/** The first character, valid until the String is changed or released. May be null for an empty String. */
QV_API const QV_CHAR *qvStringBacking( QV_STRING *qvs );

QV_API QV_CHAR qvStringCharAt( QV_STRING *qvs, QV_INT idx );

/** True for a String without characters other than white space. */
QV_API QV_BOOL qvStringIsBlank( QV_STRING *qvs );

/* Inserting ------------------------------------------------------------------------------------------------------ */

/** Inserts in front of the character at `idx`, or at the end where `idx` is the length. */
QV_API void qvStringInsert( QV_STRING **dest, QV_INT idx, QV_STRING *src );
QV_API void qvStringInsertInner( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringInsertChars( QV_STRING **qvs, QV_INT idx, const QV_CHAR *chs, QV_INT chsLength );

/** Inserts at the end. */
QV_API void qvStringAppend( QV_STRING **dest, QV_STRING *src );
QV_API void qvStringAppendInner( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringAppendChars( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvStringAppendChar( QV_STRING **dest, QV_CHAR ch );
QV_API void qvStringAppendCstr( QV_STRING **dest, const char *text, QV_INT length );
QV_API void qvStringAppendObj( QV_STRING **dest, QV_OBJ *obj );

/* Deleting ------------------------------------------------------------------------------------------------------- */

/** Makes `*qvs` the empty String. */
QV_API void qvStringClear( QV_STRING **qvs );

/** Deletes the range, or with Outer everything but the range. */
QV_API void qvStringDelLeading( QV_STRING **qvs, QV_INT count );
QV_API void qvStringDelTrailing( QV_STRING **qvs, QV_INT count );
QV_API void qvStringDelInner( QV_STRING **qvs, QV_INT offset, QV_INT count );
QV_API void qvStringDelOuter( QV_STRING **qvs, QV_INT offset, QV_INT count );

#endif
