/** @file
    OptDef: which options a command line may have, and what each of them requires.

        QV_OPT_DEF *def = qvOptDefCreate();
        qvOptDefSetShortOpt( &def, U'o', OPT_OUTPUT );
        qvOptDefSetLongOptCstr( &def, "output", -1, OPT_OUTPUT );
        qvOptDefSetFlags( &def, OPT_OUTPUT, QV_OPT_FLAG_ARGUMENT | QV_OPT_FLAG_ONCE );
        qvOptDefSetArgOnly( &def, OPT_FILE );                           // plain words are files
        QV_OPT_SEQ *seq = qvOptSeqCreate( def, argv );                  // qv_opt_seq.h reads with it

    An option is an id of 0 or above, chosen by the caller, with any number of short and long names.

    Value and copy. A definition that others hold too is never changed: a setter takes the address of the caller's
    reference and replaces a shared definition by a private copy first.

    Costs. Names are found by bisection; an abbreviation costs a walk over all long names. Threads. Any thread may read
    a definition; a variable that is changed belongs to one thread at a time.

    Arguments are borrowed. Null as an object ends the process. */

#ifndef QV_OPT_DEF_H
#define QV_OPT_DEF_H

#include "qv/sys/qv_types.h"

QV_FAMILY( OptDef, QV_OPT_DEF )

#define QV_OPT_FLAG_ARGUMENT  1 /**< the option takes an argument */
#define QV_OPT_FLAG_IGNORE    2 /**< the option is consumed and not reported */
#define QV_OPT_FLAG_ONCE      4 /**< the option may appear once */
#define QV_OPT_FLAG_NO_ABBREV 8 /**< a long name must be given in full */

/** The names of the flags that are set, lowest first, with `|` between them, as `ARGUMENT|ONCE`: a new String. Unknown
    bits are left out. */
QV_API QV_STRING *qvOptFlagsToString( QV_INT flags );

/** A new definition without options: plain words are errors, and the two switches below are off. */
QV_API QV_OPT_DEF *qvOptDefCreate( void );

/** A new definition with the content of another. Constant time: the two share their tables until one is changed. */
QV_API QV_OPT_DEF *qvOptDefCreateFrom( QV_OPT_DEF *def );

/** @{ */
/** Reads or sets whether arguments that are no texts are passed over while options may follow, and read after those. */
QV_API QV_BOOL qvOptDefReorder( QV_OPT_DEF *def );
QV_API void    qvOptDefSetReorder( QV_OPT_DEF **def, QV_BOOL value );
/** @} */

/** @{ */
/** Reads or sets whether all arguments are turned into texts before they are read. */
QV_API QV_BOOL qvOptDefStringize( QV_OPT_DEF *def );
QV_API void    qvOptDefSetStringize( QV_OPT_DEF **def, QV_BOOL value );
/** @} */

/** @{ */
/** Reads or sets the QV_OPT_FLAG bits of an id, which are 0 at first. A negative id ends the process. */
QV_API QV_INT qvOptDefFlags( QV_OPT_DEF *def, QV_INT optId );
QV_API void   qvOptDefSetFlags( QV_OPT_DEF **def, QV_INT optId, QV_INT flags );
/** @} */

/** @{ */
/** Reads or sets the id of a short option; -1 if there is none. A character of 0x110000 or above ends the process. */
QV_API QV_INT qvOptDefShortOpt( QV_OPT_DEF *def, QV_CHAR optChar );
QV_API void   qvOptDefSetShortOpt( QV_OPT_DEF **def, QV_CHAR optChar, QV_INT optId );
/** @} */

/** The id of a long option, or -1. With `allowAbbreviated` the beginning of a name is enough; -2 if several names have
    it. `*abbreviated` becomes true if `optString` is no whole name but the beginning of one, else false; `abbreviated`
    may be null. An empty name ends the process. */
QV_API QV_INT qvOptDefLongOpt( QV_OPT_DEF *def, QV_STRING *optString, QV_BOOL allowAbbreviated, QV_BOOL *abbreviated );

/** @{ */
/** Sets the id of a long option, whose name is a String, UTF-8 with a length in bytes or wide text with a length in
    units; a length of -1 means up to the terminator. */
QV_API void qvOptDefSetLongOpt( QV_OPT_DEF **def, QV_STRING *optString, QV_INT optId );
QV_API void qvOptDefSetLongOptCstr( QV_OPT_DEF **def, const char *cstr, QV_INT length, QV_INT optId );
QV_API void qvOptDefSetLongOptWcstr( QV_OPT_DEF **def, const wchar_t *wcstr, QV_INT length, QV_INT optId );
/** @} */

/** @{ */
/** Reads or sets the id that is reported for arguments that are no options; below 0 they are errors. */
QV_API QV_INT qvOptDefArgOnly( QV_OPT_DEF *def );
QV_API void   qvOptDefSetArgOnly( QV_OPT_DEF **def, QV_INT optId );
/** @} */

#endif
