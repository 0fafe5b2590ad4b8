#ifndef MORVANE_REPLACE_FILE_H
#define MORVANE_REPLACE_FILE_H

#include "qv/sys/qv_types.h"

namespace morvane
{
/** New content for a file, or a new file, piece by piece, so that whatever happens either the old content or the new one
    is there as a whole: the new one is written beside it and renamed. Where the file system can do that, it bears no name
    until then, so that nothing stays beside when the process is killed. Permissions are kept; a link stays one and the
    file that it leads to changes, but one that leads nowhere is replaced. What is no regular file, as a terminal, is
    written directly. The functions give null, or a static text of what went wrong; then, and without a commit, nothing
    has changed. */
class FileReplacement
{
public:
    FileReplacement() = default;
    ~FileReplacement();

    FileReplacement( const FileReplacement & ) = delete;
    FileReplacement &operator=( const FileReplacement & ) = delete;

    const char *begin( QV_STRING *fn );
    const char *write( const void *bytes, QV_INT count );
    const char *commit();

private:
    int   file_   = -1;
    char *target_ = nullptr; // what the new content is for, all links resolved; null for what is written directly
    char *beside_ = nullptr; // where it is written; null while that has no name
};

/** The same with all the content at hand. */
const char *replaceFile( QV_STRING *fn, QV_BUFFER *content );

/** Writes to a file descriptor until all is written. False for a failure, of which `errno` tells. */
bool writeAll( int file, const void *bytes, QV_INT count );

/** Why a file cannot be read, as a static text. */
const char *unreadableReason( QV_STRING *fn );

/** Why a file cannot be read and then replaced: it is no regular one. Null where it is, and where there is none. */
const char *irreplaceableReason( QV_STRING *fn );
} // namespace morvane

#endif
