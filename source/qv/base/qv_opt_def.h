/** @file
    OptDef: which options a command line may have, and what each of them requires.

        QV_OPT_DEF *def = qvOptDefCreate();
        qvOptDefSetShortOpt( &def, U'o', OPT_OUTPUT );
        qvOptDefSetLongOptCstr( &def, "output", -1, OPT_OUTPUT );
        qvOptDefSetFlags( &def, OPT_OUTPUT, QV_OPT_FLAG_ARGUMENT | QV_OPT_FLAG_ONCE );
        qvOptDefSetArgOnly( &def, OPT_FILE );                           // plain words are files
        QV_OPT_SEQ *seq = qvOptSeqCreate( def, argv );                  // qv_opt_seq.h reads with it

    An option is an id of 0 or above, chosen by the caller, with any number of short and long names. A definition is a
    value with copy on write: setters take the address of the caller's reference and replace it where others hold the
    object. Any thread may read one. Null as an object ends the process. Names are found by bisection; an abbreviation
    costs a walk over all long names. */

#ifndef QV_OPT_DEF_H
#define QV_OPT_DEF_H

#include "qv/sys/qv_types.h"

QV_FAMILY( OptDef, QV_OPT_DEF )

#define QV_OPT_FLAG_ARGUMENT  1 /**< the option takes an argument */
#define QV_OPT_FLAG_IGNORE    2 /**< the option is consumed and not reported */
#define QV_OPT_FLAG_ONCE      4 /**< the option may appear once */
#define QV_OPT_FLAG_NO_ABBREV 8 /**< a long name must be given in full */

/** The names of the flags that are set, lowest first, with `|` between them, as `ARGUMENT|ONCE`: a new text. */
QV_API QV_STRING *qvOptFlagsToString( QV_INT flags );

/** @{ */
/** A new definition without options. Plain words are errors, objects are not passed over, nothing is turned into
    text. */
QV_API QV_OPT_DEF *qvOptDefCreate( void );
QV_API QV_OPT_DEF *qvOptDefCreateFrom( QV_OPT_DEF *def );
/** @} */

/** @{ */
/** Whether arguments that are no texts are passed over as long as options may follow, and read behind them. */
QV_API QV_BOOL qvOptDefReorder( QV_OPT_DEF *def );
QV_API void    qvOptDefSetReorder( QV_OPT_DEF **def, QV_BOOL value );
/** @} */

/** @{ */
/** Whether all arguments are turned into texts before they are read. */
QV_API QV_BOOL qvOptDefStringize( QV_OPT_DEF *def );
QV_API void    qvOptDefSetStringize( QV_OPT_DEF **def, QV_BOOL value );
/** @} */

/** @{ */
/** The QV_OPT_FLAG bits of an id; 0 if none were set. A negative id ends the process. */
QV_API QV_INT qvOptDefFlags( QV_OPT_DEF *def, QV_INT optId );
QV_API void   qvOptDefSetFlags( QV_OPT_DEF **def, QV_INT optId, QV_INT flags );
/** @} */

/** @{ */
/** The id of a short option, or -1. A character of 0x110000 or above ends the process. */
QV_API QV_INT qvOptDefShortOpt( QV_OPT_DEF *def, QV_CHAR optChar );
QV_API void   qvOptDefSetShortOpt( QV_OPT_DEF **def, QV_CHAR optChar, QV_INT optId );
/** @} */

/** @{ */
/** The id of a long option, -1 if there is none, or -2 if `optString` abbreviates several. `abbreviated` may be null
    and is set to true where the name was not given in full. An empty name ends the process. */
QV_API QV_INT qvOptDefLongOpt( QV_OPT_DEF *def, QV_STRING *optString, QV_BOOL allowAbbreviated, QV_BOOL *abbreviated );
QV_API void   qvOptDefSetLongOpt( QV_OPT_DEF **def, QV_STRING *optString, QV_INT optId );
QV_API void   qvOptDefSetLongOptCstr( QV_OPT_DEF **def, const char *cstr, QV_INT length, QV_INT optId );
QV_API void   qvOptDefSetLongOptWcstr( QV_OPT_DEF **def, const wchar_t *wcstr, QV_INT length, QV_INT optId );
/** @} */

/** @{ */
/** The id that is reported for arguments that are no options; below 0 they are errors. */
QV_API QV_INT qvOptDefArgOnly( QV_OPT_DEF *def );
QV_API void   qvOptDefSetArgOnly( QV_OPT_DEF **def, QV_INT optId );
/** @} */

#endif
