#include "qv/runtime/qv_runtime_platform_private.h"

#include "qv/base/qv_error.h"

#include <fcntl.h>
#include <link.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
template< class T >
bool readAt( int file, uint64_t offset, T *value )
{
    return pread( file, value, sizeof( T ), static_cast< off_t >( offset ) ) == static_cast< ssize_t >( sizeof( T ) );
}

// Whether all that the loader is going to map lies within the file. The loader checks everything else itself, also that
// the file is one of its format.
bool holdsItsSegments( int file, uint64_t size )
{
    ElfW( Ehdr ) head;
    ElfW( Phdr ) segment;

    if( !readAt( file, 0, &head ) || memcmp( head.e_ident, ELFMAG, SELFMAG ) != 0
        || head.e_phentsize != sizeof( segment ) )
        return true;

    for( uint64_t i = 0; i < head.e_phnum; i++ )
    {
        if( !readAt( file, head.e_phoff + i * sizeof( segment ), &segment ) )
            return false;

        if( segment.p_type == PT_LOAD && ( segment.p_filesz > size || segment.p_offset > size - segment.p_filesz ) )
            return false;
    }

    return true;
}
} // namespace

bool qv::isFitToLoad( const char *path, ErrorDetails *why )
{
    int file = open( path, O_RDONLY | O_CLOEXEC | O_NONBLOCK );

    if( file < 0 )
        return true;

    struct stat status;
    bool        isFile  = fstat( file, &status ) == 0 && S_ISREG( status.st_mode );
    bool        isWhole = isFile && holdsItsSegments( file, static_cast< uint64_t >( status.st_size ) );
    close( file );

    why->code = isFile ? QV_ERROR_CUT_OFF : QV_ERROR_BAD_MODULE;
    why->reason =
        isFile ? "the file cannot be loaded: it is cut off" : "the file cannot be loaded: it is not a regular one";

    return isWhole;
}
