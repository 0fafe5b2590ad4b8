/** @file
    OptSeq: walks the arguments of a command line and gives one option or plain argument at a time.

        QV_VECTOR  *files = qvVectorCreate();
        QV_OPT_SEQ *seq   = qvOptSeqCreate( def, argv );
        QV_OBJ     *arg   = NULL;

        while( qvOptSeqHasNext( seq ) )
            switch( qvOptSeqNext( seq ) )
            {
                case OPT_VERBOSE:
                    verbose = QV_TRUE;
                    break;

                case OPT_FILE:                                  // what plain arguments are reported as
                    arg = qvOptSeqArgObj( seq );
                    qvVectorAppendObj( &files, arg );
                    qvObjRelease( arg );
                    break;

                case QV_OPT_SEQ_NOTHING:                        // ignored options only
                    break;

                default:
                    complain( qvOptSeqError( seq ) );           // who takes the text over
            }

        qvOptSeqRelease( seq );

    `-x` is a short option, `-xyz` three of them or one with the argument `yz`, `--name` a long one, which may be
    abbreviated as long as it stays unique; `--name=value` and `--name value` are the same. `--` ends the options.
    Arguments may be any objects; only texts can be options. What a user does wrong gives a negative id with an error
    text, and the walk can go on.

    Order. A step reads the first element that remains. Where the definition says so, it passes over objects that are no
    texts, which are read when nothing else remains; then there are no options any more. After an option that is ignored
    the step leaves the element that comes next, or what remains of a text like `-xyz`, for a later step, and goes on
    after it. A step that reaches the end in this way gives QV_OPT_SEQ_NOTHING.

    Costs. All steps together cost what the arguments are long, how many are passed over and however many options a text
    holds, but for abbreviations, which cost a walk over all long names each. Asking for what remains costs its length.

    A cursor belongs to one thread at a time. Null as an object ends the process. */

#ifndef QV_OPT_SEQ_H
#define QV_OPT_SEQ_H

#include "qv/sys/qv_types.h"

QV_FAMILY( OptSeq, QV_OPT_SEQ )

#define QV_OPT_SEQ_UNDEFINED                 ( (QV_INT)-1 ) /**< no such option */
#define QV_OPT_SEQ_AMBIGUOUS                 ( (QV_INT)-2 ) /**< the abbreviation fits several options */
#define QV_OPT_SEQ_ARGUMENT_MISSING          ( (QV_INT)-3 ) /**< the option takes an argument and has none */
#define QV_OPT_SEQ_ARGUMENT_DISALLOWED       ( (QV_INT)-4 ) /**< `--name=value` for one that takes none */
#define QV_OPT_SEQ_MULTIPLE                  ( (QV_INT)-5 ) /**< an option that may appear once, again */
#define QV_OPT_SEQ_ABBREVIATED               ( (QV_INT)-6 ) /**< abbreviated, though it must be given in full */
#define QV_OPT_SEQ_ARGUMENT_DISALLOWED_ALONE ( (QV_INT)-7 ) /**< a plain argument where none may stand */
#define QV_OPT_SEQ_NOTHING                   ( (QV_INT)-8 ) /**< ignored options only; no error */

/** A new cursor over the arguments, the first of which is the first to be read. It keeps references to them and to the
    definition, and changes neither. */
QV_API QV_OPT_SEQ *qvOptSeqCreate( QV_OPT_DEF *def, QV_VECTOR *argv );

/** What is left to be read: a new reference. */
QV_API QV_VECTOR *qvOptSeqRemainingArgv( QV_OPT_SEQ *seq );

/** True if anything is. */
QV_API QV_BOOL qvOptSeqHasNext( QV_OPT_SEQ *seq );

/** Takes one step and gives its id: that of an option, that for plain arguments, or one of the values above. Without
    anything left the process ends. */
QV_API QV_INT qvOptSeqNext( QV_OPT_SEQ *seq );

/** @{ */
/** The id of the last step; both are the same. */
QV_API QV_INT qvOptSeqId( QV_OPT_SEQ *seq );
QV_API QV_INT qvOptSeqIdSecondary( QV_OPT_SEQ *seq );
/** @} */

/** @{ */
/** The option of the last step as it was written, without its argument: a new reference, or null. */
QV_API QV_BOOL    qvOptSeqHasOpt( QV_OPT_SEQ *seq );
QV_API QV_STRING *qvOptSeqOpt( QV_OPT_SEQ *seq );
/** @} */

/** @{ */
/** The argument of the last step: a new reference, or null; and its text, new or null. */
QV_API QV_BOOL    qvOptSeqHasArg( QV_OPT_SEQ *seq );
QV_API QV_OBJ    *qvOptSeqArgObj( QV_OPT_SEQ *seq );
QV_API QV_STRING *qvOptSeqArgString( QV_OPT_SEQ *seq );
/** @} */

/** @{ */
/** The argument as a number: boxed numbers, and texts that are a number as a whole, in any base with its prefix; no
    other object, whatever its text. 0 where it is none. As an integer, a boxed real is cut as qvRealToInt() does. */
QV_API QV_BOOL qvOptSeqArgIsReal( QV_OPT_SEQ *seq );
QV_API QV_REAL qvOptSeqArgReal( QV_OPT_SEQ *seq );
QV_API QV_BOOL qvOptSeqArgIsInt( QV_OPT_SEQ *seq );
QV_API QV_INT  qvOptSeqArgInt( QV_OPT_SEQ *seq );
/** @} */

/** @{ */
/** The argument as a truth value: a boxed one, or a text that is one as a whole; with `allowNumeric` numbers too, of
    which 0 is false. False where it is none. */
QV_API QV_BOOL qvOptSeqArgIsBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric );
QV_API QV_BOOL qvOptSeqArgBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric );
/** @} */

/** @{ */
/** What was wrong in the last step, as a text for the user: a new reference, or null. */
QV_API QV_BOOL    qvOptSeqHasError( QV_OPT_SEQ *seq );
QV_API QV_STRING *qvOptSeqError( QV_OPT_SEQ *seq );
/** @} */

#endif
