/** @file
    Error: why something failed, and where; and the last failure of each thread.

        QV_BUFFER *buf = qvFileReadBuffer( fn, 65536 );
        if( !buf && qvErrorLastCode() != QV_ERROR_NOT_FOUND )
        {
            QV_STRING *text = qvErrorLastText();                // "notes.conf: cannot be opened: Permission denied"
            qvPrint( text );
            qvStringRelease( text );
        }

    The last failure. A function whose comment says that it sets the last error does so when it returns the result that
    stands for a failure, for the thread that has called it. Ask for it at once: a call that succeeds does not clear the
    last error and may change it. Each thread has its own; starting the library leaves none. The last error is no
    object: it is kept in some memory of the thread, which is freed when the thread ends, or with the stop of the
    library for the thread that stops it. qvErrorLast() makes an object of it. A thread that the library does not know
    may fail too.

    What is told. The code is for programs, the reason for people: it goes on after the name of what failed ("cannot be
    opened: Permission denied"), in English; only the words of the system's loader about a module follow the locale of
    the process. The path is the name of the file as it was passed to the operating system, the line counts from 1, and
    the offset from 0 in bytes from the start of the file or stream. What is not known is null or -1.

    An Error never changes: any thread may read one without a lock. Two of them are equal only if they are the same
    object. Its text, of qvErrorToString(), is `path:line: reason`; without a line `path@offset: reason`, and without
    what is not known.

    Costs. Success costs nothing. A failure costs the length of its texts; so does each function here that returns a
    String or an Error. Null as an Error ends the process. Results belong to the caller. */

#ifndef QV_ERROR_H
#define QV_ERROR_H

#include "qv/sys/qv_types.h"

/** @{ */
/** What kind of failure it was. */
#define QV_ERROR_NONE          0 /**< no failure */
#define QV_ERROR_SYSTEM        1 /**< the operating system refused for a reason that has no code here */
#define QV_ERROR_NOT_FOUND     2 /**< there is nothing of that name */
#define QV_ERROR_NO_PERMISSION 3 /**< the user may not do this, or nobody may: the file system is read-only */
#define QV_ERROR_EXISTS        4 /**< there is something of that name already */
#define QV_ERROR_IS_DIRECTORY  5 /**< the name is that of a directory */
#define QV_ERROR_NOT_DIRECTORY 6 /**< the name, or what it has before a delimiter, is that of no directory */
#define QV_ERROR_NOT_EMPTY     7 /**< the directory has entries */
#define QV_ERROR_BAD_NAME      8 /**< no file can have the name: it is too long, contains U+0000 or leads in a circle */
#define QV_ERROR_NO_SPACE      9 /**< the device is full, or a quota is used up */
#define QV_ERROR_TOO_LONG      10 /**< there is more data than the caller, or the file system, allows */
#define QV_ERROR_NO_RESOURCES  11 /**< too many open files, or no memory in the operating system */
#define QV_ERROR_BUSY          12 /**< something else uses the file */
#define QV_ERROR_INPUT_OUTPUT  13 /**< the device failed, or nobody reads what is written to a pipe any more */
#define QV_ERROR_BAD_TEXT      14 /**< bytes that are no text in the charset, or a character that is not in it */
#define QV_ERROR_CUT_OFF       15 /**< the data ends early */
#define QV_ERROR_BAD_DOCUMENT  16 /**< the data, or a line of it, is no document */
#define QV_ERROR_TOO_DEEP      17 /**< a document is nested too deep */
#define QV_ERROR_BAD_MODULE    18 /**< the file is no module, or that of another one */
#define QV_ERROR_WRONG_VERSION 19 /**< the module is made for another product or version */
#define QV_ERROR_NO_DEPENDENCY 20 /**< a module or library that is needed is not there or cannot be loaded */
#define QV_ERROR_NO_SYMBOL     21 /**< a symbol that is needed is not there */
#define QV_ERROR_NOT_STARTED   22 /**< the start-up function of a module failed */
#define QV_ERROR_OTHER         23 /**< for failures of a program's own */
/** @} */

QV_FAMILY( Error, QV_ERROR )

/* The last failure ----------------------------------------------------------------------------------------------- */

/** The code of the last error of this thread as QV_ERROR_...; QV_ERROR_NONE if there is none. */
QV_API QV_INT qvErrorLastCode( void );

/** The last error of this thread in one line, as qvErrorToString() tells it: a new String, empty if there is none. */
QV_API QV_STRING *qvErrorLastText( void );

/** The last error of this thread as a new Error, or null if there is none. */
QV_API QV_ERROR *qvErrorLast( void );

/** Makes a copy of an Error the last error of this thread: to tell one again after calls that may have changed it, or
    from a function of the program that fails. The start-up function of a module that fails may tell why. */
QV_API void qvErrorSetLast( QV_ERROR *error );

/** Leaves this thread without a last error. Only needed where a result that stands for a failure stands for something
    else too, and the comment of the function says that it does not clear the last error. */
QV_API void qvErrorClear( void );

/* Errors --------------------------------------------------------------------------------------------------------- */

/** A new Error. `code` is QV_ERROR_..., but not QV_ERROR_NONE, `line` and `offset` are -1 where there is none, and
    `path` may be null. Any other code, and other negative numbers, end the process. */
QV_API QV_ERROR *qvErrorCreate( QV_INT code, QV_STRING *reason, QV_STRING *path, QV_INT line, QV_INT offset );

/** The code: QV_ERROR_... . */
QV_API QV_INT qvErrorCode( QV_ERROR *error );

/** The number that the operating system gave: an `errno` of the C library, or 0 if it was not the one that failed. */
QV_API QV_INT qvErrorSystemCode( QV_ERROR *error );

/** The reason, as a sentence for people continues after the name of what failed. */
QV_API QV_STRING *qvErrorReason( QV_ERROR *error );

/** The name of the file, or null. */
QV_API QV_STRING *qvErrorPath( QV_ERROR *error );

/** The line, from 1, or -1. */
QV_API QV_INT qvErrorLine( QV_ERROR *error );

/** The offset in bytes, from 0, or -1: of the line if the failure is about a whole line, else of what was wrong. */
QV_API QV_INT qvErrorOffset( QV_ERROR *error );

/** The text that the failure is about, like a line of a document, or null. What is no UTF-8 in it is U+FFFD. */
QV_API QV_STRING *qvErrorSubject( QV_ERROR *error );

#endif
