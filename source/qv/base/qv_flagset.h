/** @file
    Flagset: names for the bits of a flag word, both ways. A name is upper case (`QV_RUNTIME_FLAG_SYSTEM`), a flag's
    value has exactly one of the 64 bits.

        QV_FLAGSET *fs = qvFlagsetCreate();
        qvFlagsetSetFlagCstr( &fs, "PEN_DOWN", -1, 1 );
        qvFlagsetSetFlagCstr( &fs, "PEN_RED", -1, 2 );
        QV_STRING *names = qvFlagsetGenerate( fs, 3 );      // PEN_DOWN|PEN_RED
        QV_INT     flags = qvFlagsetParse( fs, names );     // 3
        qvStringRelease( names );
        qvFlagsetRelease( fs );

    Value and copy. A Flagset that others hold too is never changed: an operation that changes one takes the
    address of the caller's reference and replaces a shared Flagset by a private copy first.

    Costs. The look-up of a name is a binary search, that of a bit one read. Threads. Any thread may read a Flagset; a
    variable that is changed belongs to one thread at a time.

    Null ends the process, and so do a bad name and a value other than a single bit where one is entered. Reading text
    from outside never does. A Cstr is UTF-8 with a length in bytes, a Wcstr wide text with a length in units; a length
    of -1 means that it ends at its terminator. */

#ifndef QV_FLAGSET_H
#define QV_FLAGSET_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Flagset, QV_FLAGSET )

/** A new Flagset without names. */
QV_API QV_FLAGSET *qvFlagsetCreate( void );

/** A new Flagset with the names of another. */
QV_API QV_FLAGSET *qvFlagsetCreateFrom( QV_FLAGSET *source );

/** All names in their order, as a new Vector of Strings. */
QV_API QV_VECTOR *qvFlagsetFlagsVector( QV_FLAGSET *fs );

/** @{ */
/** The value of a name, or 0. */
QV_API QV_INT qvFlagsetFlag( QV_FLAGSET *fs, QV_STRING *name );
QV_API QV_INT qvFlagsetFlagCstr( QV_FLAGSET *fs, const char *cstr, QV_INT length );
QV_API QV_INT qvFlagsetFlagWcstr( QV_FLAGSET *fs, const wchar_t *wcstr, QV_INT length );
/** @} */

/** @{ */
/** True if there is such a name. */
QV_API QV_BOOL qvFlagsetHasFlag( QV_FLAGSET *fs, QV_STRING *name );
QV_API QV_BOOL qvFlagsetHasFlagCstr( QV_FLAGSET *fs, const char *cstr, QV_INT length );
QV_API QV_BOOL qvFlagsetHasFlagWcstr( QV_FLAGSET *fs, const wchar_t *wcstr, QV_INT length );
/** @} */

/** @{ */
/** Enters a name, or moves one to another bit. Of several names for one bit, qvFlagsetGenerate() returns the one
    entered last. */
QV_API void qvFlagsetSetFlag( QV_FLAGSET **fs, QV_STRING *name, QV_INT value );
QV_API void qvFlagsetSetFlagCstr( QV_FLAGSET **fs, const char *cstr, QV_INT length, QV_INT value );
QV_API void qvFlagsetSetFlagWcstr( QV_FLAGSET **fs, const wchar_t *wcstr, QV_INT length, QV_INT value );
/** @} */

/** @{ */
/** Removes a name. If qvFlagsetGenerate() returned it for its bit, that bit has no name any more. An unknown name
    changes nothing. */
QV_API void qvFlagsetDelFlag( QV_FLAGSET **fs, QV_STRING *name );
QV_API void qvFlagsetDelFlagCstr( QV_FLAGSET **fs, const char *cstr, QV_INT length );
QV_API void qvFlagsetDelFlagWcstr( QV_FLAGSET **fs, const wchar_t *wcstr, QV_INT length );
/** @} */

/** The names of the bits that are set, lowest first, with `|` between them, as a new text. A bit without a name ends
    the process. */
QV_API QV_STRING *qvFlagsetGenerate( QV_FLAGSET *fs, QV_INT flags );

/** The flags that a text from outside means: names and numbers (`0x1F`) in any order with `|` between them, white
    space around either. What is unknown has no effect; of a number, the bits without a name are dropped. */
QV_API QV_INT qvFlagsetParse( QV_FLAGSET *fs, QV_STRING *flags );

#endif
