#include "morvane_replace_file.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/sys/qv_mem.h"

#include <errno.h>
#include <fcntl.h>
#include <libgen.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane
{
namespace
{
const char OWN_FILES[] = "/proc/self/fd"; // the open files of a process by their numbers

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

    Name( const Name & ) = delete;
    Name &operator=( const Name & ) = delete;

    const char *text() const
    {
        return text_;
    }

private:
    char *text_;
};

// The rights that a new file gets.
mode_t newFileMode()
{
    mode_t mask = umask( 0 );
    umask( mask );

    return 0666 & ~mask;
}

// Opens a file without a name in the folder of `target`, so that nothing is left of it when the process is killed. -1
// where there are no such files, or where they could not be named later.
int openNameless( const char *target )
{
    char *folder = strdup( target ); // or what becomes of it
    int   file   = -1;

    if( folder && access( OWN_FILES, X_OK ) == 0 )
        file = open( dirname( folder ), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600 );

    free( folder );
    return file;
}

// Names a file without a name after `target`; null for a failure, of which `errno` tells.
char *nameBeside( int file, const char *target )
{
    char own[64];
    snprintf( own, sizeof( own ), "%s/%d", OWN_FILES, file );

    for( unsigned i = 0;; i++ )
    {
        char *name = nullptr;

        if( asprintf( &name, "%s.%d.%u", target, static_cast< int >( getpid() ), i ) < 0 )
            return nullptr;

        if( linkat( AT_FDCWD, own, AT_FDCWD, name, AT_SYMLINK_FOLLOW ) == 0 )
            return name;

        free( name );

        if( errno != EEXIST )
            return nullptr;
    }
}

// Gives the new file the owner and the rights of the old one. `errno` tells of a failure.
bool takeOver( int file, const struct stat *old )
{
    // The owner first, since a change of it clears special rights. Who may not set it keeps the file as its own.
    if( old && fchown( file, old->st_uid, old->st_gid ) != 0 && errno != EPERM )
        return false;

    return fchmod( file, old ? old->st_mode & 07777 : newFileMode() ) == 0;
}
} // namespace

bool writeAll( int file, const void *bytes, QV_INT count )
{
    const char *from = static_cast< const char * >( bytes );

    while( count > 0 )
    {
        ssize_t written = write( file, from, static_cast< size_t >( count ) );

        if( written < 0 && errno == EINTR )
            continue;

        if( written <= 0 )
            return false;

        from += written;
        count -= written;
    }

    return true;
}

FileReplacement::~FileReplacement()
{
    if( file_ >= 0 )
    {
        close( file_ );

        if( beside_ )
            unlink( beside_ );
    }

    free( beside_ );
    free( target_ );
}

const char *FileReplacement::begin( QV_STRING *fn )
{
    Name        name( fn );
    struct stat old;
    bool        exists = stat( name.text(), &old ) == 0;

    // A limit on the size of files is an error of the write then, and no end that leaves the file beside.
    signal( SIGXFSZ, SIG_IGN );

    if( exists && S_ISDIR( old.st_mode ) )
        return strerror( EISDIR );

    if( exists && !S_ISREG( old.st_mode ) )
    {
        file_ = open( name.text(), O_WRONLY | O_CLOEXEC );
        return file_ < 0 ? strerror( errno ) : nullptr;
    }

    target_ = exists ? realpath( name.text(), nullptr ) : strdup( name.text() );

    if( !target_ )
        return strerror( errno );

    file_ = openNameless( target_ );

    if( file_ < 0 )
    {
        if( asprintf( &beside_, "%s.XXXXXX", target_ ) < 0 )
        {
            beside_ = nullptr;
            return strerror( errno );
        }

        file_ = mkstemp( beside_ );
    }

    return file_ < 0 || !takeOver( file_, exists ? &old : nullptr ) ? strerror( errno ) : nullptr;
}

const char *FileReplacement::write( const void *bytes, QV_INT count )
{
    return writeAll( file_, bytes, count ) ? nullptr : strerror( errno );
}

const char *FileReplacement::commit()
{
    if( target_ && fsync( file_ ) != 0 )
        return strerror( errno );

    if( target_ && !beside_ )
        beside_ = nameBeside( file_, target_ );

    if( target_ && ( !beside_ || rename( beside_, target_ ) != 0 ) )
        return strerror( errno );

    bool closed = close( file_ ) == 0;
    file_       = -1;

    return closed || target_ ? nullptr : strerror( errno );
}

const char *replaceFile( QV_STRING *fn, QV_BUFFER *content )
{
    FileReplacement replacement;
    const char     *reason = replacement.begin( fn );

    if( !reason )
        reason = replacement.write( qvBufferBacking( content ), qvBufferLength( content ) );

    return reason ? reason : replacement.commit();
}

const char *unreadableReason( QV_STRING *fn )
{
    Name        name( fn );
    struct stat status;

    if( stat( name.text(), &status ) != 0 )
        return strerror( errno );

    if( S_ISDIR( status.st_mode ) )
        return strerror( EISDIR );

    int file = open( name.text(), O_RDONLY | O_CLOEXEC );

    if( file < 0 )
        return strerror( errno );

    close( file );
    return "it could not be read";
}

const char *irreplaceableReason( QV_STRING *fn )
{
    struct stat status;

    if( stat( Name( fn ).text(), &status ) != 0 || S_ISREG( status.st_mode ) )
        return nullptr;

    return S_ISDIR( status.st_mode ) ? strerror( EISDIR ) : "not a regular file; it could not be replaced";
}
} // namespace morvane
