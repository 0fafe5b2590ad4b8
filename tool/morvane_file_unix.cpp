#include "morvane_file.h"

#include "morvane_tool.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/sys/qv_mem.h"
#include "qv/qv_tool_private.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <libgen.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace morvane
{
namespace
{
const char OWN_FILES[] = "/proc/self/fd"; // the open files of a process by their numbers

const QV_INT PIECE = 65536; // bytes of one system call

// A lock that another process holds is tried repeatedly, so that two processes that wait for each other do not wait for
// ever.
const long LOCK_PAUSE_NANOSECONDS = 5000000;
const int  LOCK_PAUSES            = 12000; // a minute

// The most names beside a file that are tried. Those that other processes use or that cannot be deleted are skipped.
const unsigned BESIDE_NAMES = 1000;

// Repeats a system call as long as it is interrupted. -1 for a failure.
template< class Call >
auto uninterrupted( Call call )
{
    decltype( call() ) result;

    do
        result = call();
    while( result < 0 && errno == EINTR );

    return result;
}

int openFile( const char *name, int flags, mode_t mode = 0 )
{
    return uninterrupted( [=] { return open( name, flags | O_CLOEXEC, mode ); } );
}

bool lockExclusively( int file, int flags = 0 )
{
    return uninterrupted( [=] { return flock( file, LOCK_EX | flags ); } ) == 0;
}

bool cutTo( int file, off_t size )
{
    return uninterrupted( [=] { return ftruncate( file, size ); } ) == 0;
}

// A name of the operating system, freed at the end of the scope.
class Name
{
public:
    explicit Name( QV_STRING *fn ) : text_( qvStringConvertToCstr( fn, QV_TRUE, nullptr ) )
    {
    }

    ~Name()
    {
        qvMemFree( text_ );
    }

    Name( const Name & )            = delete;
    Name &operator=( const Name & ) = delete;

    const char *text() const
    {
        return text_;
    }

private:
    char *text_;
};

bool isSame( const struct stat &a, const struct stat &b )
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// True if a name is still that of an open file.
bool isNameOf( const char *name, int file )
{
    struct stat byName, open;

    return stat( name, &byName ) == 0 && fstat( file, &open ) == 0 && isSame( byName, open );
}

// Keeps in `*found` the number of a descriptor of a file if the process was started with it; one for writing is better
// than one that is not. The process's own descriptors are closed on execution, so none that it was started with is.
void considerDescriptor( int number, const struct stat &file, int *found, bool *writable )
{
    struct stat status;
    int         flags = fcntl( number, F_GETFD );

    if( flags < 0 || ( flags & FD_CLOEXEC ) || fstat( number, &status ) != 0 || !isSame( status, file ) )
        return;

    int access = fcntl( number, F_GETFL );

    if( access < 0 || ( access & O_PATH ) )
        return;

    bool writes = ( access & O_ACCMODE ) != O_RDONLY;

    if( *found < 0 || ( writes && !*writable ) )
    {
        *found    = number;
        *writable = writes;
    }
}

// The number of a descriptor of a file that the process was started with, or -1.
int inheritedDescriptor( const struct stat &file, bool *writable )
{
    int found = -1;
    *writable = false;

    DIR *folder = opendir( OWN_FILES );

    for( int number = STDIN_FILENO; number <= STDERR_FILENO && !folder; number++ )
        considerDescriptor( number, file, &found, writable );

    if( !folder )
        return found;

    while( const dirent *entry = readdir( folder ) )
        if( entry->d_name[0] != '.' )
            considerDescriptor( atoi( entry->d_name ), file, &found, writable );

    closedir( folder );
    return found;
}

// The name of a file with its links resolved, to be freed; null for a failure, with the reason in `errno`. What is not
// a link keeps its name, since resolving it may need rights to the folders above.
char *resolved( const char *name )
{
    struct stat status;

    return lstat( name, &status ) == 0 && !S_ISLNK( status.st_mode ) ? strdup( name ) : realpath( name, nullptr );
}

// The folder of a file, to be freed.
char *folderOf( const char *target )
{
    char *copy   = strdup( target );
    char *folder = copy ? strdup( dirname( copy ) ) : nullptr;
    free( copy );

    return folder;
}

// Opens a file without a name in the folder of `target`, of which nothing is left when the process is killed. -1 if the
// file system has no such files, or if the file could not be named later.
int openNameless( const char *target, mode_t mode )
{
    char *folder = folderOf( target );
    int   file   = -1;

    if( folder && access( OWN_FILES, X_OK ) == 0 )
        file = openFile( folder, O_TMPFILE | O_RDWR, mode );

    free( folder );
    return file;
}

// A name beside `target`, to be freed: its own, cut between two characters if it would get too long, followed by a
// number.
char *besideName( const char *target, unsigned number )
{
    char suffix[32];
    int  suffixLength = snprintf( suffix, sizeof( suffix ), ".morvane~%u", number );

    const char *slash  = strrchr( target, '/' );
    size_t      folder = slash ? static_cast< size_t >( slash + 1 - target ) : 0;
    size_t      length = strlen( target + folder );
    size_t      room   = static_cast< size_t >( NAME_MAX - suffixLength );

    if( length > room )
        for( length = room; length > 0 && qv::utf8::follows( static_cast< uint8_t >( target[folder + length] ) ); )
            length--;

    char *name = nullptr;

    return asprintf( &name, "%.*s%s", static_cast< int >( folder + length ), target, suffix ) < 0 ? nullptr : name;
}

// Locks a file against other runs. The lock is not that of flock(1), under which this may run. A file that is open for
// reading only can have no more of it than what keeps those out that may write; flock keeps out the others.
bool tryLock( int file, bool isWritable )
{
    struct flock whole = {};
    whole.l_type       = isWritable ? F_WRLCK : F_RDLCK;
    whole.l_whence     = SEEK_SET;

    return fcntl( file, F_OFD_SETLK, &whole ) == 0 && ( isWritable || lockExclusively( file, LOCK_NB ) );
}

// Deletes what a killed process has left under a name beside a file. A live process holds the lock of its file.
bool clearAway( const char *name )
{
    int  file    = openFile( name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK );
    bool cleared = file >= 0 && lockExclusively( file, LOCK_NB ) && isNameOf( name, file ) && unlink( name ) == 0;

    if( file >= 0 )
        close( file );

    return cleared;
}

// The first name beside `target` for which `take` succeeds, to be freed; null for a failure, with the reason in
// `errno`. `take` fails with EEXIST for a name that exists.
template< class Take >
char *takeName( const char *target, Take take )
{
    for( unsigned i = 0; i < BESIDE_NAMES; )
    {
        char *name = besideName( target, i );

        if( !name || take( name ) )
            return name;

        int  error   = errno;
        bool cleared = error == EEXIST && clearAway( name );
        free( name );

        if( error != EEXIST )
        {
            errno = error;
            return nullptr;
        }

        i += !cleared;
    }

    errno = EEXIST;
    return nullptr;
}

// Names a file without a name.
char *nameBeside( int file, const char *target )
{
    char own[64];
    snprintf( own, sizeof( own ), "%s/%d", OWN_FILES, file );
    lockExclusively( file );

    return takeName(
        target,
        [&own]( const char *name ) { return linkat( AT_FDCWD, own, AT_FDCWD, name, AT_SYMLINK_FOLLOW ) == 0; } );
}

// Makes a file with a name.
char *createBeside( int *file, const char *target, mode_t mode )
{
    return takeName(
        target,
        [file, mode]( const char *name )
        {
            *file = openFile( name, O_RDWR | O_CREAT | O_EXCL, mode );

            if( *file < 0 )
                return false;

            // Until it is locked another run may clear it away.
            lockExclusively( *file );

            if( isNameOf( name, *file ) )
                return true;

            close( *file );
            *file = -1;
            errno = EEXIST;
            return false;
        } );
}

// Synchronises a file or folder with the disk. Succeeds for what cannot be synchronised.
bool isSynced( int file )
{
    return uninterrupted( [=] { return fsync( file ); } ) == 0 || errno == EINVAL || errno == EROFS;
}

bool isFolderSynced( const char *target )
{
    char *name   = folderOf( target );
    int   folder = name ? openFile( name, O_RDONLY | O_DIRECTORY ) : -1;
    free( name );

    // A folder may be writable without being readable.
    if( folder < 0 )
        return true;

    bool synced = isSynced( folder );
    int  error  = errno;
    close( folder );
    errno = error;

    return synced;
}

bool writeAll( int file, const void *bytes, QV_INT count )
{
    const char *from = static_cast< const char * >( bytes );

    while( count > 0 )
    {
        ssize_t written = uninterrupted( [=] { return write( file, from, static_cast< size_t >( count ) ); } );

        if( written <= 0 )
        {
            if( written == 0 )
                errno = EIO;

            return false;
        }

        from += written;
        count -= written;
    }

    return true;
}

// Allocates disk space after the end of a file, and returns an error number or 0. Not for the part before the end: if
// the file system has no such call the C library reads it, and the file may be open for writing only.
int reserve( int file, off_t from, off_t to )
{
    int error;

    do
        error = to > from ? posix_fallocate( file, from, to - from ) : 0;
    while( error == EINTR );

    return error == EOPNOTSUPP || error == EINVAL ? 0 : error;
}

// Copies all of one file over another one. The space is allocated first, so that a full disk leaves the old content.
bool copyOver( int from, int to )
{
    struct stat source, target;

    if( fstat( from, &source ) != 0 || fstat( to, &target ) != 0 || lseek( from, 0, SEEK_SET ) != 0 )
        return false;

    if( int error = reserve( to, target.st_size, source.st_size ) )
    {
        if( cutTo( to, target.st_size ) )
            errno = error;

        return false;
    }

    char    bytes[4096];
    ssize_t count;

    while( ( count = uninterrupted( [&] { return read( from, bytes, sizeof( bytes ) ); } ) ) != 0 )
        if( count < 0 || !writeAll( to, bytes, count ) )
            return false;

    return cutTo( to, source.st_size ) && isSynced( to );
}
} // namespace

void holdStandardStreams()
{
    // The next file that is opened has the lowest free number. One that is opened for its path only can be neither read
    // nor written.
    for( int file = STDIN_FILENO; file <= STDERR_FILENO; file++ )
        if( fcntl( file, F_GETFD ) < 0 && open( "/", O_PATH ) < 0 )
            _exit( FAILURE );
}

void endByBrokenPipe()
{
    sigset_t pipe;
    sigemptyset( &pipe );
    sigaddset( &pipe, SIGPIPE );
    signal( SIGPIPE, SIG_DFL );
    raise( SIGPIPE );
    sigprocmask( SIG_UNBLOCK, &pipe, nullptr );
    _exit( 128 + SIGPIPE );
}

bool isOutputTerminal()
{
    return isatty( STDOUT_FILENO ) != 0;
}

bool isErrorTerminal()
{
    return isatty( STDERR_FILENO ) != 0;
}

bool writeOutput( const void *bytes, QV_INT count )
{
    return writeAll( STDOUT_FILENO, bytes, count );
}

bool hasOutputArrived()
{
    int copy = fcntl( STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1 );

    return copy < 0 || close( copy ) == 0;
}

bool isStandardStream( QV_STRING *fn )
{
    return !fn || qvStringEqualsCstr( fn, "-", -1 );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

int openInput( QV_STRING *fn, const char **reason )
{
    if( isStandardStream( fn ) )
        return STDIN_FILENO;

    int file = openFile( Name( fn ).text(), O_RDONLY );

    if( file < 0 )
        *reason = strerror( errno );

    return file;
}

void closeInput( int file )
{
    if( file > STDIN_FILENO )
        close( file );
}

QV_INT readInput( int file, void *bytes, QV_INT count, const char **reason )
{
    ssize_t got = uninterrupted( [=] { return read( file, bytes, static_cast< size_t >( count ) ); } );

    if( got < 0 )
        *reason = strerror( errno );

    return got;
}

QV_INT bytesLeft( int file )
{
    struct stat status;
    off_t       at = lseek( file, 0, SEEK_CUR );

    return at >= 0 && fstat( file, &status ) == 0 && S_ISREG( status.st_mode ) && status.st_size >= at
               ? status.st_size - at
               : -1;
}

const char *readFile( QV_STRING *fn, QV_BUFFER **bytes )
{
    const char *reason = nullptr;
    int         file   = openInput( fn, &reason );
    QV_INT      count  = 0;
    uint8_t     piece[PIECE];

    while( !reason && ( count = readInput( file, piece, PIECE, &reason ) ) > 0 )
        qvBufferAppendBytes( bytes, piece, count );

    closeInput( file );
    return reason;
}

const char *createFile( QV_STRING *fn )
{
    int file = isStandardStream( fn ) ? STDIN_FILENO : openFile( Name( fn ).text(), O_WRONLY | O_CREAT | O_EXCL, 0666 );

    if( file < 0 )
        return errno == EEXIST ? nullptr : strerror( errno );

    closeInput( file );
    return nullptr;
}

/* Writing -------------------------------------------------------------------------------------------------------- */

FileReplacement::~FileReplacement()
{
    if( file_ >= 0 )
        close( file_ );

    if( beside_ )
        unlink( beside_ );

    if( locked_ >= 0 )
        close( locked_ );

    free( beside_ );
    free( target_ );
}

const char *FileReplacement::lock( QV_STRING *fn )
{
    if( isStandardStream( fn ) )
        return nullptr;

    struct stat status;
    Name        name( fn );
    isRead_ = true;

    // A device or a pipe may have no end, and cannot be written back. A missing file is reported by the reader.
    if( stat( name.text(), &status ) != 0 )
        return nullptr;

    if( !S_ISREG( status.st_mode ) )
        return S_ISDIR( status.st_mode ) ? strerror( EISDIR ) : "not a regular file; it could not be replaced";

    for( int pauses = 0; pauses < LOCK_PAUSES; )
    {
        const int FLAGS      = O_NONBLOCK | O_NOCTTY;
        bool      isWritable = ( locked_ = openFile( name.text(), O_RDWR | FLAGS ) ) >= 0;

        if( !isWritable && ( locked_ = openFile( name.text(), O_RDONLY | FLAGS ) ) < 0 )
            return nullptr;

        while( !tryLock( locked_, isWritable ) )
        {
            if( errno != EAGAIN && errno != EACCES && errno != EINTR )
                return nullptr;

            struct timespec pause = { 0, LOCK_PAUSE_NANOSECONDS };
            nanosleep( &pause, nullptr );

            if( ++pauses == LOCK_PAUSES )
                return "locked by another process";
        }

        // The locked file may have been replaced meanwhile.
        if( isNameOf( name.text(), locked_ ) )
            return nullptr;

        close( locked_ );
        locked_ = -1;
        pauses++;
    }

    return "locked by another process";
}

const char *FileReplacement::begin( QV_STRING *fn )
{
    // Then a write beyond the limit for file sizes fails, and does not end the process with the new file left.
    signal( SIGXFSZ, SIG_IGN );

    if( isStandardStream( fn ) )
    {
        file_ = fcntl( STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1 );
        return file_ < 0 ? strerror( errno ) : nullptr;
    }

    Name        name( fn );
    struct stat old;
    bool        exists = stat( name.text(), &old ) == 0;

    if( !exists && errno != ENOENT )
        return strerror( errno );

    if( exists && S_ISDIR( old.st_mode ) )
        return strerror( EISDIR );

    bool isWritable = false;
    int  inherited  = exists ? inheritedDescriptor( old, &isWritable ) : -1;

    if( inherited >= 0 && isWritable && !isRead_ )
        file_ = fcntl( inherited, F_DUPFD_CLOEXEC, STDERR_FILENO + 1 );
    else if( exists && !S_ISREG( old.st_mode ) )
        file_ = openFile( name.text(), O_WRONLY | O_NOCTTY );
    else if( inherited >= 0 )
    {
        way_    = OVER;
        target_ = strdup( name.text() );
        file_   = target_ ? openNameless( target_, 0600 ) : -1;

        if( FILE *elsewhere = file_ < 0 && target_ ? tmpfile() : nullptr )
        {
            file_ = fcntl( fileno( elsewhere ), F_DUPFD_CLOEXEC, STDERR_FILENO + 1 );
            fclose( elsewhere );
        }
    }
    else
        return prepareBeside( name.text(), exists );

    return file_ < 0 ? strerror( errno ) : nullptr;
}

// Opens the file that is to be written beside another one. A new file gets the rights of all new files in its folder;
// one that is to replace another is private until it gets the other's rights.
const char *FileReplacement::prepareBeside( const char *name, bool exists )
{
    mode_t mode = exists ? 0600 : 0666;

    way_    = BESIDE;
    target_ = exists ? resolved( name ) : strdup( name );
    file_   = target_ ? openNameless( target_, mode ) : -1;

    if( file_ < 0 && target_ )
        beside_ = createBeside( &file_, target_, mode );

    return file_ < 0 ? strerror( errno ) : nullptr;
}

const char *FileReplacement::write( const void *bytes, QV_INT count )
{
    if( writeAll( file_, bytes, count ) )
        return nullptr;

    if( errno == EPIPE && way_ == DIRECTLY )
        endByBrokenPipe();

    return strerror( errno );
}

const char *FileReplacement::commit()
{
    if( way_ == BESIDE )
        return commitBeside();

    if( way_ == OVER )
        return overwrite();

    bool closed = close( file_ ) == 0;
    file_       = -1;

    return closed ? nullptr : strerror( errno );
}

const char *FileReplacement::commitBeside()
{
    struct stat old;
    bool        exists = stat( target_, &old ) == 0;

    if( !exists && errno != ENOENT )
        return strerror( errno );

    // The rights of the old file may have changed since the beginning.
    if( exists && !takeOverRights( file_, target_ ) )
        return strerror( errno );

    if( !isSynced( file_ ) )
        return strerror( errno );

    if( !beside_ )
        beside_ = nameBeside( file_, target_ );

    if( !beside_ || rename( beside_, target_ ) != 0 )
        return strerror( errno );

    free( beside_ );
    beside_ = nullptr;

    return isFolderSynced( target_ ) ? nullptr : strerror( errno );
}

const char *FileReplacement::overwrite()
{
    int         target = openFile( target_, O_WRONLY );
    const char *reason = target < 0 || !copyOver( file_, target ) ? strerror( errno ) : nullptr;

    if( target >= 0 && close( target ) != 0 && !reason )
        reason = strerror( errno );

    return reason;
}

bool FileReplacement::feeds( int input ) const
{
    struct stat in, out;

    return way_ == DIRECTLY && fstat( input, &in ) == 0 && fstat( file_, &out ) == 0 && S_ISREG( in.st_mode )
           && isSame( in, out ) && in.st_size > 0;
}

const char *replaceFile( FileReplacement *replacement, QV_STRING *fn, QV_BUFFER *content )
{
    const char *reason = replacement->begin( fn );

    if( !reason )
        reason = replacement->write( qvBufferBacking( content ), qvBufferLength( content ) );

    return reason ? reason : replacement->commit();
}
} // namespace morvane
