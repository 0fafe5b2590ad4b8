/** @file
    How the tools read and write files. A file name `-` stands for the standard input or output, and so does null.
    Functions that return a `const char *` return null, or a static text with the reason of a failure. */

#ifndef MORVANE_FILE_H
#define MORVANE_FILE_H

#include "qv/sys/qv_types.h"

namespace morvane
{
/** True for the names of the standard input and output. */
bool isStandardStream( QV_STRING *fn );

/** Opens a file, or the standard input, for reading. Returns its descriptor; -1 for a failure, with the reason in
    `*reason`. */
int openInput( QV_STRING *fn, const char **reason );

/** Closes what openInput() has returned; the standard input stays open. */
void closeInput( int file );

/** Reads up to `count` bytes: those that are available, but waits for at least one. Returns their number, 0 at the end,
    and -1 for a failure, with the reason in `*reason`. */
QV_INT readInput( int file, void *bytes, QV_INT count, const char **reason );

/** The number of bytes between the position of an open file and its end; -1 if that is not known. */
QV_INT bytesLeft( int file );

/** Appends the content of a file to a Buffer. */
const char *readFile( QV_STRING *fn, QV_BUFFER **bytes );

/** Makes an empty file if there is none of the name. Standard streams are there. */
const char *createFile( QV_STRING *fn );

/** Writes a new file, or new content for a file, piece by piece and so that at any time the file has either its old or
    its new content as a whole: a new file in the same folder is written, synchronised with the disk and renamed. Where
    the file system supports that, the new file has no name before, so that nothing is left of it when the process is
    killed; otherwise the next replacement deletes what was left.

    Owner, group, permissions, access control list and extended attributes are kept. Where the group cannot be kept its
    rights are cleared, and no user gets rights that they did not have. A symbolic link is kept, and the file that it
    leads to gets the content; a link that leads nowhere is replaced.

    What is not a regular file, as a terminal, is written directly. So is a file that the process was started with open
    for writing, by that descriptor and from its position on. If the content of such a file is to be replaced as a
    whole, or if it is open for reading only, it is overwritten at the commit, when the new content is complete.

    Without a commit nothing has changed, except what is written directly. */
class FileReplacement
{
public:
    FileReplacement() = default;
    ~FileReplacement();

    FileReplacement( const FileReplacement & )            = delete;
    FileReplacement &operator=( const FileReplacement & ) = delete;

    /** For a caller that reads a file and then replaces it: locks the file, after waiting up to a minute for other
        processes that do the same. Files that cannot be locked are not. Fails for what is not a regular file. */
    const char *lock( QV_STRING *fn );

    /** Starts, appends to and completes the new content. */
    const char *begin( QV_STRING *fn );
    const char *write( const void *bytes, QV_INT count );
    const char *commit();

    /** True if `input` is what is written, so that a copy would read its own output without end. */
    bool feeds( int input ) const;

private:
    const char *prepareBeside( const char *name, bool exists );
    const char *commitBeside();
    const char *overwrite();

    enum Way
    {
        DIRECTLY,
        OVER,
        BESIDE
    };

    Way   way_    = DIRECTLY;
    bool  isRead_ = false;   // lock() was called: the content is replaced as a whole
    int   file_   = -1;      // the descriptor that is written to
    int   locked_ = -1;      // the locked file that is to be replaced
    char *target_ = nullptr; // the name of the file to be replaced, all links resolved; null if written directly
    char *beside_ = nullptr; // the name of the new file; null while it has none
};

/** Replaces a file by the content of a Buffer. `replacement` may have locked it. */
const char *replaceFile( FileReplacement *replacement, QV_STRING *fn, QV_BUFFER *content );

/** Copies owner, group, rights and attributes of the file `old` to the open file, as far as they can be kept, and no
    rights to users that had none. False for a failure, with the reason in `errno`. */
bool takeOverRights( int file, const char *old );

/** @{ */
/** True if the standard output, or the standard error stream, is a terminal. */
bool isOutputTerminal();
bool isErrorTerminal();
/** @} */

/** Writes bytes to the standard output. False for a failure, with the reason in `errno`. */
bool writeOutput( const void *bytes, QV_INT count );

/** False, with the reason in `errno`, if what has been written to the standard output could not be stored, which some
    systems report only when a file is closed. It stays open. */
bool hasOutputArrived();

/** Ends the process by the signal of a write to a pipe without a reader, without a message. */
[[noreturn]] void endByBrokenPipe();

/** Occupies the descriptors of standard streams that are closed, so that no file that is opened later becomes one.
    Using them still fails. */
void holdStandardStreams();
} // namespace morvane

#endif
