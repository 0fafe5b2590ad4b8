#ifndef QV_FILE_PRIVATE_H
#define QV_FILE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** The functions of qv_file.h as each platform implements them. qv_file.cpp has checked that no name is null; otherwise
    the comments of qv_file.h apply. */
QV_API QV_BYTE_SOURCE *qv___FileOpenByteSource( QV_STRING *fn );
QV_API QV_BYTE_SINK   *qv___FileOpenByteSink( QV_STRING *fn );
QV_API QV_BUFFER      *qv___FileReadBuffer( QV_STRING *fn, QV_INT maxBytes );
QV_API QV_BOOL         qv___FileWriteBuffer( QV_STRING *fn, QV_BUFFER *buf );
QV_API QV_BOOL         qv___FileExists( QV_STRING *fn );
QV_API QV_INT          qv___FileSize( QV_STRING *fn );
QV_API QV_BOOL         qv___FileIsDirectory( QV_STRING *fn );
QV_API QV_BOOL         qv___FileDelete( QV_STRING *fn );
QV_API QV_BOOL         qv___FileRename( QV_STRING *fn, QV_STRING *newFn );
QV_API QV_BOOL         qv___FileCreateDirectory( QV_STRING *fn );
QV_API QV_BOOL         qv___FileDeleteDirectory( QV_STRING *fn );
QV_API QV_BOOL         qv___FileDeleteDirectoryRecursive( QV_STRING *fn );
QV_API QV_VECTOR      *qv___DirectoryContent( QV_STRING *path, QV_BOOL skipDirectories, QV_STRING *suffix );
QV_API QV_STRING      *qv___FileDirName( QV_STRING *fn );
QV_API QV_STRING      *qv___FileBaseName( QV_STRING *fn );
QV_API QV_CHAR         qv___FilePathDelimiter( void );
QV_API QV_BOOL         qv___PathIsRelative( QV_STRING *pn );
QV_API QV_STRING      *qv___CurrentDirectory( void );
QV_API QV_STRING      *qv___GetExecutablePath( void );

#ifdef __cplusplus
namespace qv
{
/** Deletes everything in the directory of an open descriptor, and closes the descriptor. Links are deleted themselves;
    what they point to stays. Depth and length of the names are not limited: at most three descriptors are open, and
    each entry is looked at once. False if a directory below is left. A file that is left does not make the result
    false: the directory that holds it cannot be deleted, and that shows. The first entry that is left becomes the last
    error, with `path` before its own, and `*isTold` true. */
bool deleteTreeContent( int directory, const char *path, bool *isTold );
} // namespace qv
#endif

#endif
