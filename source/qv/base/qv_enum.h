/** @file
    Enum: names for enumerated values, both ways. A name is upper case (`QV_RUNTIME_OS_WINDOWS`), a value 0 or above.

        QV_ENUM *en = qvEnumCreate();
        qvEnumSetEnumerantCstr( &en, "COLOUR_RED", -1, 0 );
        qvEnumSetEnumerantCstr( &en, "COLOUR_BLUE", -1, 1 );
        QV_INT     blue = qvEnumEnumerantCstr( en, "COLOUR_BLUE", -1 );  // 1
        QV_STRING *name = qvEnumGenerate( en, blue );                    // COLOUR_BLUE
        qvStringRelease( name );
        qvEnumRelease( en );

    Value and copy. An Enum that others hold too is never changed: an operation that changes one takes the address
    of the caller's reference and replaces a shared Enum by a private copy first.

    Costs. Look-ups are binary searches by name or value. Threads. Any thread may read an Enum; a variable that is
    changed belongs to one thread at a time.

    Null ends the process, and so do a bad name and a negative value where one is entered. Reading text from outside
    never does. A Cstr is UTF-8 with a length in bytes, a Wcstr wide text with a length in units; a length of -1 means
    that it ends at its terminator. */

#ifndef QV_ENUM_H
#define QV_ENUM_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Enum, QV_ENUM )

/** A new Enum without names. */
QV_API QV_ENUM *qvEnumCreate( void );

/** A new Enum with the names of another. Constant time: the two share their tables until one is changed. */
QV_API QV_ENUM *qvEnumCreateFrom( QV_ENUM *source );

/** All names in their order, as a new Vector of Strings. */
QV_API QV_VECTOR *qvEnumEnumerantsVector( QV_ENUM *en );

/** @{ */
/** The value of a name, or -1. */
QV_API QV_INT qvEnumEnumerant( QV_ENUM *en, QV_STRING *name );
QV_API QV_INT qvEnumEnumerantCstr( QV_ENUM *en, const char *cstr, QV_INT length );
QV_API QV_INT qvEnumEnumerantWcstr( QV_ENUM *en, const wchar_t *wcstr, QV_INT length );
/** @} */

/** @{ */
/** True if there is such a name. */
QV_API QV_BOOL qvEnumHasEnumerant( QV_ENUM *en, QV_STRING *name );
QV_API QV_BOOL qvEnumHasEnumerantCstr( QV_ENUM *en, const char *cstr, QV_INT length );
QV_API QV_BOOL qvEnumHasEnumerantWcstr( QV_ENUM *en, const wchar_t *wcstr, QV_INT length );
/** @} */

/** @{ */
/** Enters a name, or moves one to another value. Of several names with one value, qvEnumGenerate() returns the one
    entered last. */
QV_API void qvEnumSetEnumerant( QV_ENUM **en, QV_STRING *name, QV_INT value );
QV_API void qvEnumSetEnumerantCstr( QV_ENUM **en, const char *cstr, QV_INT length, QV_INT value );
QV_API void qvEnumSetEnumerantWcstr( QV_ENUM **en, const wchar_t *wcstr, QV_INT length, QV_INT value );
/** @} */

/** @{ */
/** Removes a name. If qvEnumGenerate() returned it for its value, that value has no name any more. An unknown name
    changes nothing. */
QV_API void qvEnumDelEnumerant( QV_ENUM **en, QV_STRING *name );
QV_API void qvEnumDelEnumerantCstr( QV_ENUM **en, const char *cstr, QV_INT length );
QV_API void qvEnumDelEnumerantWcstr( QV_ENUM **en, const wchar_t *wcstr, QV_INT length );
/** @} */

/** The name of a value as a new reference, or null if it has none. */
QV_API QV_STRING *qvEnumGenerate( QV_ENUM *en, QV_INT value );

/** The value that a text from outside means: an enumerant's name, or the number of one with an optional prefix of its
    base (`0x1F`), either with white space around it. -1 for everything else. */
QV_API QV_INT qvEnumParse( QV_ENUM *en, QV_STRING *name );

#endif
