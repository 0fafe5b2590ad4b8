/** @file
    Files, directories and the text of paths.

        QV_BUFFER *buf = qvFileReadBuffer( fn, 65536 );         // null: missing, unreadable or longer
        QV_LINE_SINK *sink = qvFileOpenLineSink( fn, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );

    Names are Strings and reach the operating system as UTF-8. What the operating system refuses gives null, QV_FALSE,
    -1 or an empty Vector, and no reason is kept; so does a name with U+0000 in it, which is never cut. Null as a name
    ends the process. Results belong to the caller.

    Streams go through a `FILE` of the C library, which is closed when the last stream on it is released; the stream
    of a layered open owns the whole chain. An error of closing is seen by nobody: flush the byte sink first. A signal
    that interrupts a read does not end it; one that interrupts a write may fail the sink. A stream belongs to one
    thread at a time; all other functions may be called from any thread and block it for as long as the operating system
    needs. */

#ifndef QV_FILE_H
#define QV_FILE_H

#include "qv/sys/qv_types.h"

/* Streams -------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Opens a file for reading: a new stream, or null. Skipping reads and discards, so pipes and special files will do. A
    charset that is none ends the process before any file is touched. */
QV_API QV_BYTE_SOURCE *qvFileOpenByteSource( QV_STRING *fn );
QV_API QV_CHAR_SOURCE *qvFileOpenCharSource( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SOURCE *qvFileOpenLineSource( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/** @{ */
/** Opens a file for writing: a new stream, or null. The file is created, or cut to no length at once, if the charset is
    one; else the process ends before that. */
QV_API QV_BYTE_SINK *qvFileOpenByteSink( QV_STRING *fn );
QV_API QV_CHAR_SINK *qvFileOpenCharSink( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SINK *qvFileOpenLineSink( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/* Whole files ---------------------------------------------------------------------------------------------------- */

/** The bytes of a file as a new Buffer; null if it cannot be read or is longer than `maxBytes`. -1 means no limit,
    less ends the process. */
QV_API QV_BUFFER *qvFileReadBuffer( QV_STRING *fn, QV_INT maxBytes );

/** Replaces the content of a file, or creates it. False as soon as anything failed; the file may be cut then. */
QV_API QV_BOOL qvFileWriteBuffer( QV_STRING *fn, QV_BUFFER *buf );

/* Files and directories ------------------------------------------------------------------------------------------ */

/** True for anything that can be reached under the name, a directory too. Links are followed. */
QV_API QV_BOOL qvFileExists( QV_STRING *fn );

/** The size in bytes, or -1. Links are followed. */
QV_API QV_INT qvFileSize( QV_STRING *fn );

/** True for a directory and for a link to one. */
QV_API QV_BOOL qvFileIsDirectory( QV_STRING *fn );

/** Deletes a file. A link goes, what it leads to stays. */
QV_API QV_BOOL qvFileDelete( QV_STRING *fn );

/** Gives a file or directory another name in the same file system, replacing a file there. */
QV_API QV_BOOL qvFileRename( QV_STRING *fn, QV_STRING *newFn );

/** Makes a directory with the access rights 0711. Its parent must exist. */
QV_API QV_BOOL qvFileCreateDirectory( QV_STRING *fn );

/** Deletes an empty directory. */
QV_API QV_BOOL qvFileDeleteDirectory( QV_STRING *fn );

/** Deletes a directory with everything in it, as far as it can be deleted; true if nothing is left. Links in it go,
    what they lead to stays. A link itself, with or without a delimiter behind it, the empty name, and what can never be
    deleted, `/` and names that end in `.` or `..`, give QV_FALSE, and nothing is touched. Neither depth nor the length
    of the names inside matters; each entry is looked at once. Other changes to the tree in the meantime may leave a
    part of it. */
QV_API QV_BOOL qvFileDeleteDirectoryRecursive( QV_STRING *fn );

/** What a directory holds, without `.` and `..`: full names in a new Vector, in the order of the operating system.
    Empty if it cannot be read. `skipDirectories` leaves directories out; `suffix`, which may be null, keeps the names
    that end with it, whatever their case. */
QV_API QV_VECTOR *qvDirectoryContent( QV_STRING *path, QV_BOOL skipDirectories, QV_STRING *suffix );

/* The text of paths ---------------------------------------------------------------------------------------------- */

/** @{ */
/** The parts of a name as new Strings. `/usr/lib/` has the dir name `/usr` and the base name `lib`, `x` the dir name
    `.`; `/` has `/` for both and the empty name `.` for both. */
QV_API QV_STRING *qvFileDirName( QV_STRING *fn );
QV_API QV_STRING *qvFileBaseName( QV_STRING *fn );
/** @} */

/** The base name from its last full stop on, which is part of the result: `.gz`. Empty without one. */
QV_API QV_STRING *qvFileExtensionName( QV_STRING *fn );

/** The solidus. */
QV_API QV_CHAR qvFilePathDelimiter( void );

/** Appends the solidus unless `*pn` ends with it. */
QV_API void qvFilePathAppendDelimiter( QV_STRING **pn );

/** True unless the name starts with the solidus. */
QV_API QV_BOOL qvPathIsRelative( QV_STRING *pn );

/* The process ---------------------------------------------------------------------------------------------------- */

/** @{ */
/** The current directory, and the file of the running program. Where the operating system does not know, the process
    ends. */
QV_API QV_STRING *qvCurrentDirectory( void );
QV_API QV_STRING *qvGetExecutablePath( void );
/** @} */

#endif
