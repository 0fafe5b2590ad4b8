/** @file
    How the tools read and write files. A file name `-` stands for the standard input or output, and so does null. What
    goes wrong is told as a static text, null where all went well. */

#ifndef MORVANE_FILE_H
#define MORVANE_FILE_H

#include "qv/sys/qv_types.h"

namespace morvane
{
/** True for what stands for the standard input or output. */
bool isStandardStream( QV_STRING *fn );

/** Opens a file to read, or the standard input, whose number is that of its place; -1 with a reason in `*reason`. */
int openInput( QV_STRING *fn, const char **reason );

void closeInput( int file );

/** Reads up to `count` bytes, what there is at the moment but at least one: 0 at the end, -1 with a reason for a
    failure. */
QV_INT readInput( int file, void *bytes, QV_INT count, const char **reason );

/** Appends the content of a file, as it is by the time of the call, to a Buffer. */
const char *readFile( QV_STRING *fn, QV_BUFFER **bytes );

/** New content for a file, or a new file, piece by piece, so that whatever happens either the old content or the new
    one is there as a whole: the new one is written beside it, brought to the disk and renamed. Where the file system
    can do that, it bears no name until then, so that nothing stays beside when the process is killed; what may stay
    is cleared away by the next replacement.

    Owner, group, permissions, access control list and extended attributes are kept. Where the group cannot be kept its
    rights are cleared, and nobody gets rights that he did not have. A link stays one and the file that it leads to
    changes, but one that leads nowhere is replaced.

    What is no regular file, as a terminal, is written directly. So is a file that the process was started with open for
    writing, by that descriptor and from its place on. Where such a file is to become new as a whole, or is open for
    reading only, it is overwritten at the end, by content that is complete then.

    Without a commit nothing has changed, save for what is written directly. */
class FileReplacement
{
public:
    FileReplacement() = default;
    ~FileReplacement();

    FileReplacement( const FileReplacement & )            = delete;
    FileReplacement &operator=( const FileReplacement & ) = delete;

    /** For a caller that reads a file and replaces it by what becomes of it: waits until no other such run is under
        way on it, up to a minute. Files that cannot be locked are not. What is no regular file cannot be replaced. */
    const char *lock( QV_STRING *fn );

    const char *begin( QV_STRING *fn );
    const char *write( const void *bytes, QV_INT count );
    const char *commit();

    /** True if what is read from `input` would be what has just been written, without an end. */
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
    bool  isRead_ = false;   // before it is replaced, as a whole
    int   file_   = -1;      // that is written
    int   locked_ = -1;      // the file that is to be replaced, while it is locked
    char *target_ = nullptr; // what the new content is for, all links resolved; null for what is written directly
    char *beside_ = nullptr; // the name of what is written; null while it has none
};

/** The same with all the content at hand. */
const char *replaceFile( FileReplacement *replacement, QV_STRING *fn, QV_BUFFER *content );

/** Gives the new file at a descriptor the owner, group, rights and attributes of the old one at a name, as far as they
    can be kept, and no rights to anybody who had none. False for a failure, of which `errno` tells. */
bool takeOverRights( int file, const char *old );

/** True if somebody may look at the standard output as it comes. */
bool isOutputTerminal();

/** Writes bytes to the standard output. False for a failure, of which `errno` tells. */
bool writeOutput( const void *bytes, QV_INT count );

/** False, with the reason in `errno`, if what has been written to the standard output cannot be stored, as some systems
    tell not before it is closed. It stays open. */
bool hasOutputArrived();

/** Ends the process as writing to a pipe that nobody reads any more does, without a word. */
[[noreturn]] void endByBrokenPipe();

/** Keeps the places of standard streams that are closed, so that no file that is opened later is taken for one. Using
    them goes on failing. */
void holdStandardStreams();
} // namespace morvane

#endif
