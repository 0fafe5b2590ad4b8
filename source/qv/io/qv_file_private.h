#ifndef QV_FILE_PRIVATE_H
#define QV_FILE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** What each platform implements for qv_file.h. Null names are refused above; everything else is told there. */
QV_API QV_BYTE_SOURCE *qv___FileOpenByteSource( QV_STRING *fn );
QV_API QV_BYTE_SINK   *qv___FileOpenByteSink( QV_STRING *fn );
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
/** Deletes what the directory of an open descriptor holds, with everything below it, and closes the descriptor. Links
    go; what they lead to stays. Neither the depth nor the length of the names counts: three descriptors are open at
    most, and each entry is looked at once. False if a directory below is left; other files that are left do not show.
    */
bool deleteTreeContent( int directory );
} // namespace qv
#endif

#endif
