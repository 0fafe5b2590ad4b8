/** @file
    Files, directories and the text of paths.

        QV_BUFFER *buf = qvFileReadBuffer( fn, 65536 );         // null: missing, unreadable or longer
        QV_LINE_SINK *sink = qvFileOpenLineSink( fn, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );

    Names are Strings and are passed to the operating system as UTF-8. If the operating system refuses a call, the
    result is null, QV_FALSE, -1 or an empty Vector, and each of these sets the last error (qv_error.h) with the name
    and the reason of the operating system. A name that contains U+0000 has the same result; it is never cut. Null as a
    name ends the process. Results belong to the caller.

    Streams use a `FILE` of the C library, which is closed when the last stream on it is released; a char or line stream
    that is opened here owns the streams below it. An error of closing is lost: flush the byte sink first. A signal that
    interrupts a read does not end it; one that interrupts a write may make the sink fail. A failure of a stream that
    was opened here sets the last error with the name of its file. One thread at a time may use a stream. All other
    functions may be called from any thread, and block it for as long as the operating system needs. */

#ifndef QV_FILE_H
#define QV_FILE_H

#include "qv/sys/qv_types.h"

/* Streams -------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Opens a file for reading. Returns a new stream of bytes, characters or lines, or null with the last error set.
    Skipping reads and discards, so that pipes and special files can be skipped in too. A `charset` that is none of
    QV_CHARSET_... ends the process before the file is touched. `charsetFlags` are QV_CHARSET_FLAG_... and `nlfFlags`
    QV_NLF_FLAG_..., or 0. */
QV_API QV_BYTE_SOURCE *qvFileOpenByteSource( QV_STRING *fn );
QV_API QV_CHAR_SOURCE *qvFileOpenCharSource( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SOURCE *qvFileOpenLineSource( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/** @{ */
/** Opens a file for writing, with the same arguments. Returns a new stream of bytes, characters or lines, or null
    with the last error set. The file is created, or emptied at once. */
QV_API QV_BYTE_SINK *qvFileOpenByteSink( QV_STRING *fn );
QV_API QV_CHAR_SINK *qvFileOpenCharSink( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags );
QV_API QV_LINE_SINK *qvFileOpenLineSink( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags );
/** @} */

/* Whole files ---------------------------------------------------------------------------------------------------- */

/** The bytes of a file as a new Buffer, or null if the file cannot be read or is longer than `maxBytes`, which sets the
    last error: QV_ERROR_TOO_LONG for the latter. -1 means no limit; anything below ends the process. */
QV_API QV_BUFFER *qvFileReadBuffer( QV_STRING *fn, QV_INT maxBytes );

/** Replaces the content of a file, or creates it. Returns true for success; a failure sets the last error, and after it
    the file has what could be written. The new bytes overwrite the old ones, and the file is cut at the end: a process
    that ends meanwhile may leave old bytes after new ones. A signal does not end the write. Null as the Buffer ends the
    process. */
QV_API QV_BOOL qvFileWriteBuffer( QV_STRING *fn, QV_BUFFER *buf );

/* Files and directories ------------------------------------------------------------------------------------------ */

/** True if there is something under the name: a file, a directory or anything else. Links are followed. False
    sets the last error: where it is not QV_ERROR_NOT_FOUND, it could not be found out. */
QV_API QV_BOOL qvFileExists( QV_STRING *fn );

/** The size in bytes, or -1 if there is nothing under the name, which sets the last error. Links are followed. */
QV_API QV_INT qvFileSize( QV_STRING *fn );

/** True for a directory and for a link to one. False sets the last error: QV_ERROR_NOT_DIRECTORY for anything else. */
QV_API QV_BOOL qvFileIsDirectory( QV_STRING *fn );

/** Deletes a file. Of a link, the link itself is deleted. Returns true for success; a failure sets the last error. */
QV_API QV_BOOL qvFileDelete( QV_STRING *fn );

/** Renames a file or directory within its file system. A file that has the new name already is replaced. Returns true
    for success; a failure sets the last error, with the old name unless only the new one is at fault. */
QV_API QV_BOOL qvFileRename( QV_STRING *fn, QV_STRING *newFn );

/** Creates a directory with the access rights 0711, less those that the umask of the process takes away. Its parent
    must exist. Returns true for success; a failure sets the last error. */
QV_API QV_BOOL qvFileCreateDirectory( QV_STRING *fn );

/** Deletes an empty directory. Returns true for success; a failure sets the last error. */
QV_API QV_BOOL qvFileDeleteDirectory( QV_STRING *fn );

/** Deletes a directory and everything in it, as far as possible. Returns true if nothing is left. Links in it are
    deleted themselves; what they point to stays. Returns QV_FALSE and touches nothing if the name is that of a link,
    with or without a trailing delimiter, is empty, is "/", or ends in "." or "..", which can never be deleted. The
    depth and the length of the names inside are not limited; the time grows with the number of entries. If the tree is
    changed meanwhile, a part of it may be left. A failure sets the last error, for the first entry that was left. */
QV_API QV_BOOL qvFileDeleteDirectoryRecursive( QV_STRING *fn );

/** The entries of a directory without "." and "..", as a new Vector of full names in the order of the operating system.
    It is empty if the directory cannot be read. If `skipDirectories` is true, it has no directories. If `suffix` is not
    null, it has only the names that end with it, regardless of case. The last error is cleared if the directory was read
    to its end; else it is set, and the result has the entries that were read before. */
QV_API QV_VECTOR *qvDirectoryContent( QV_STRING *path, QV_BOOL skipDirectories, QV_STRING *suffix );

/* The text of paths ---------------------------------------------------------------------------------------------- */

/** @{ */
/** The part of a name before its last component, and that component, as new Strings. Delimiters at the end do not
    count: "/usr/lib/" has the dir name "/usr" and the base name "lib". A name of one component has the dir name ".". Of
    "/" both are "/", of the empty name both are ".". The file need not exist. */
QV_API QV_STRING *qvFileDirName( QV_STRING *fn );
QV_API QV_STRING *qvFileBaseName( QV_STRING *fn );
/** @} */

/** The base name from its last full stop on, like ".gz", as a new String. It is empty if there is no full stop. */
QV_API QV_STRING *qvFileExtensionName( QV_STRING *fn );

/** The delimiter between the components of a name: the solidus, "/". */
QV_API QV_CHAR qvFilePathDelimiter( void );

/** Appends the delimiter to the String in `*pn`, which the call may replace, unless it ends with one. Null as `pn` or
    `*pn` ends the process. */
QV_API void qvFilePathAppendDelimiter( QV_STRING **pn );

/** True unless the name begins with the delimiter. */
QV_API QV_BOOL qvPathIsRelative( QV_STRING *pn );

/* The process ---------------------------------------------------------------------------------------------------- */

/** @{ */
/** The full name of the current directory, and of the file of the running program, as new Strings. If the operating
    system cannot tell, the process ends. */
QV_API QV_STRING *qvCurrentDirectory( void );
QV_API QV_STRING *qvGetExecutablePath( void );
/** @} */

#endif
