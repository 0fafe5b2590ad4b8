#include "morvane_replace_file.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/sys/qv_mem.h"

#include <errno.h>
#include <fcntl.h>
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

bool writeAll( int file, QV_BUFFER *content )
{
    const char *bytes  = static_cast< const char * >( static_cast< const void * >( qvBufferBacking( content ) ) );
    QV_INT      length = qvBufferLength( content );

    while( length > 0 )
    {
        ssize_t written = write( file, bytes, static_cast< size_t >( length ) );

        if( written < 0 && errno == EINTR )
            continue;

        if( written <= 0 )
            return false;

        bytes += written;
        length -= written;
    }

    return true;
}

const char *writeDirectly( const char *name, QV_BUFFER *content )
{
    int file = open( name, O_WRONLY | O_CLOEXEC );

    if( file < 0 )
        return strerror( errno );

    bool ok = writeAll( file, content );
    ok      = close( file ) == 0 && ok;

    return ok ? nullptr : strerror( errno );
}

// The rights that a new file gets.
mode_t newFileMode()
{
    mode_t mask = umask( 0 );
    umask( mask );

    return 0666 & ~mask;
}

// Fills the file beside and puts it in place of the other. `errno` tells of a failure.
bool fillAndRename( int file, const char *beside, const char *target, const struct stat *old, QV_BUFFER *content )
{
    // The owner first, since a change of it clears special rights. Who may not set it keeps the file as its own.
    if( old && fchown( file, old->st_uid, old->st_gid ) != 0 && errno != EPERM )
        return false;

    mode_t mode = old ? old->st_mode & 07777 : newFileMode();

    return fchmod( file, mode ) == 0 && writeAll( file, content ) && fsync( file ) == 0
           && rename( beside, target ) == 0;
}
} // namespace

const char *replaceFile( QV_STRING *fn, QV_BUFFER *content )
{
    Name        name( fn );
    struct stat old;
    bool        exists = stat( name.text(), &old ) == 0;

    if( exists && S_ISDIR( old.st_mode ) )
        return strerror( EISDIR );

    if( exists && !S_ISREG( old.st_mode ) )
        return writeDirectly( name.text(), content );

    char *resolved = exists ? realpath( name.text(), nullptr ) : strdup( name.text() );
    char *beside   = nullptr;

    if( !resolved || asprintf( &beside, "%s.XXXXXX", resolved ) < 0 )
    {
        free( resolved );
        return strerror( errno );
    }

    // A limit on the size of files is an error of the write then, and no end that leaves the file beside.
    signal( SIGXFSZ, SIG_IGN );

    const char *reason = nullptr;
    int         file   = mkstemp( beside );

    if( file < 0 )
    {
        reason = strerror( errno );
    }
    else
    {
        if( !fillAndRename( file, beside, resolved, exists ? &old : nullptr, content ) )
        {
            reason = strerror( errno );
            unlink( beside );
        }

        close( file );
    }

    free( beside );
    free( resolved );

    return reason;
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
} // namespace morvane
