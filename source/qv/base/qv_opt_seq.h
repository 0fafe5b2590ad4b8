/** @file
    OptSeq: walks the arguments of a command line and reports one option or plain argument at a time.

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
                    complain( qvOptSeqError( seq ) );           // takes the text over
            }

        qvOptSeqRelease( seq );

    `-x` is a short option, `-xyz` three of them or one with the argument `yz`, `--name` a long one, which may be
    abbreviated as long as it stays unique; `--name=value` and `--name value` are the same. `--` ends the options.
    Arguments may be any objects; only texts can be options. What a user does wrong is reported as a negative id with
    an error text, and the walk can go on.

    Order. A step reads the first element that remains. Where the definition says so, it passes over objects that are no
    texts, which are read when nothing else remains; then there are no options any more. After an option that is ignored
    the step leaves the element that comes next, or what remains of a text like `-xyz`, for a later step, and goes on
    after it. A step that reaches the end in this way reports QV_OPT_SEQ_NOTHING.

    Costs. All steps together cost the length of the arguments, however many are passed over and however many options a
    text holds. Each abbreviation costs a walk over all long names in addition. Asking for what remains costs its
    length.

    Threads. An OptSeq belongs to one thread at a time.

    Null as an object ends the process. */

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
#define QV_OPT_SEQ_ARGUMENT_DISALLOWED_ALONE ( (QV_INT)-7 ) /**< a plain argument where none is allowed */
#define QV_OPT_SEQ_NOTHING                   ( (QV_INT)-8 ) /**< ignored options only; no error */

/** A new OptSeq at the first of the arguments. It keeps references to them and to the definition, and changes
    neither. */
QV_API QV_OPT_SEQ *qvOptSeqCreate( QV_OPT_DEF *def, QV_VECTOR *argv );

/** The arguments that are left to be read: a new reference. */
QV_API QV_VECTOR *qvOptSeqRemainingArgv( QV_OPT_SEQ *seq );

/** True if arguments are left to be read. */
QV_API QV_BOOL qvOptSeqHasNext( QV_OPT_SEQ *seq );

/** Takes one step and returns its id: that of an option, that for plain arguments, or one of the values above. Ends the
    process if nothing is left to be read. */
QV_API QV_INT qvOptSeqNext( QV_OPT_SEQ *seq );

/** @{ */
/** The id of the last step, QV_OPT_SEQ_NOTHING before the first one; both functions return the same. */
QV_API QV_INT qvOptSeqId( QV_OPT_SEQ *seq );
QV_API QV_INT qvOptSeqIdSecondary( QV_OPT_SEQ *seq );
/** @} */

/** True if the last step read an option. */
QV_API QV_BOOL qvOptSeqHasOpt( QV_OPT_SEQ *seq );

/** The option of the last step as it was written, without its argument: a new reference, or null. */
QV_API QV_STRING *qvOptSeqOpt( QV_OPT_SEQ *seq );

/** True if the last step read an argument. */
QV_API QV_BOOL qvOptSeqHasArg( QV_OPT_SEQ *seq );

/** The argument of the last step: a new reference, or null. */
QV_API QV_OBJ *qvOptSeqArgObj( QV_OPT_SEQ *seq );

/** The text of the argument of the last step: a new reference, or null. */
QV_API QV_STRING *qvOptSeqArgString( QV_OPT_SEQ *seq );

/** @{ */
/** Whether the argument of the last step is a number, and the number, 0 if it is none. Numbers are boxed numbers, and
    texts that are a number from end to end, in base 10 or the one of their prefix; no other object, whatever its text.
    As an integer, a boxed real is cut as qvRealToInt() does. */
QV_API QV_BOOL qvOptSeqArgIsReal( QV_OPT_SEQ *seq );
QV_API QV_REAL qvOptSeqArgReal( QV_OPT_SEQ *seq );
QV_API QV_BOOL qvOptSeqArgIsInt( QV_OPT_SEQ *seq );
QV_API QV_INT  qvOptSeqArgInt( QV_OPT_SEQ *seq );
/** @} */

/** @{ */
/** Whether the argument of the last step is a truth value, and the value, false if it is none. Truth values are boxed
    ones, and texts that are one from end to end; with `allowNumeric` numbers too, of which 0 is false. */
QV_API QV_BOOL qvOptSeqArgIsBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric );
QV_API QV_BOOL qvOptSeqArgBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric );
/** @} */

/** True if something was wrong in the last step. */
QV_API QV_BOOL qvOptSeqHasError( QV_OPT_SEQ *seq );

/** What was wrong in the last step, as a text for the user: a new reference, or null. */
QV_API QV_STRING *qvOptSeqError( QV_OPT_SEQ *seq );

#endif
