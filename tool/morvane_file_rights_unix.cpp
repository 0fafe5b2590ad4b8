#include "morvane_file.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace morvane
{
namespace
{
const char ACCESS_LIST[] = "system.posix_acl_access"; // the attribute that holds the access control list

// An attribute of a file, or the list of their names, freed at the end of the scope.
class Attribute
{
public:
    // `get` fills a block of a given size and returns the length of the content, as the system calls do.
    template< class Get >
    explicit Attribute( Get get )
    {
        // The content may become longer between two calls.
        do
        {
            ssize_t size = get( nullptr, 0 );
            free( bytes_ );
            bytes_  = size > 0 ? static_cast< char * >( malloc( static_cast< size_t >( size ) ) ) : nullptr;
            length_ = bytes_ ? get( bytes_, static_cast< size_t >( size ) ) : size > 0 ? -1 : size;
        } while( length_ < 0 && errno == ERANGE );
    }

    ~Attribute()
    {
        free( bytes_ );
    }

    Attribute( const Attribute & )            = delete;
    Attribute &operator=( const Attribute & ) = delete;

    const char *bytes() const
    {
        return bytes_;
    }

    // -1 if there is none, or if it cannot be read, with the reason in `errno`.
    ssize_t length() const
    {
        return length_;
    }

private:
    char   *bytes_  = nullptr;
    ssize_t length_ = -1;
};

Attribute attributeOf( const char *file, const char *name )
{
    return Attribute( [=]( char *bytes, size_t size ) { return getxattr( file, name, bytes, size ); } );
}

bool copyAttribute( int file, const char *name, const Attribute &attribute )
{
    return fsetxattr( file, name, attribute.bytes(), static_cast< size_t >( attribute.length() ), 0 ) == 0;
}

// Those that cannot be copied are left out.
void copyAttributes( int file, const char *old )
{
    Attribute names( [old]( char *bytes, size_t size ) { return listxattr( old, bytes, size ); } );

    for( ssize_t i = 0; i < names.length(); i += static_cast< ssize_t >( strlen( names.bytes() + i ) ) + 1 )
    {
        const char *name = names.bytes() + i;

        if( strcmp( name, ACCESS_LIST ) == 0 )
            continue;

        Attribute attribute = attributeOf( old, name );

        if( attribute.length() >= 0 )
            copyAttribute( file, name, attribute );
    }
}

// True for the errors of a file without a list, or on a file system without lists.
bool isAbsence( int error )
{
    return error == ENODATA || error == EOPNOTSUPP || error == ENOSYS;
}
} // namespace

bool takeOverRights( int file, const char *old )
{
    struct stat was, is;

    if( stat( old, &was ) != 0 )
        return false;

    // A user that may not set the owner may still set a group of theirs. What counts is the state afterwards.
    const uid_t SAME = static_cast< uid_t >( -1 );

    if( fchown( file, was.st_uid, was.st_gid ) != 0 && fchown( file, SAME, was.st_gid ) != 0 && errno == EIO )
        return false;

    if( fstat( file, &is ) != 0 )
        return false;

    copyAttributes( file, old );

    Attribute list    = attributeOf( old, ACCESS_LIST );
    bool      hasList = list.length() >= 0;

    if( !hasList && !isAbsence( errno ) )
        return false;

    bool   hasGroup = is.st_gid == was.st_gid;
    bool   keepsAll = hasList && hasGroup && copyAttribute( file, ACCESS_LIST, list );
    mode_t mode     = was.st_mode & 07777;

    // The folder may have given the new file a list that the old one does not have.
    if( !keepsAll && fremovexattr( file, ACCESS_LIST ) != 0 && !isAbsence( errno ) )
        return false;

    // Without the list, or in another group, the users that these distinguished count as others: others get no more
    // rights than each of them had.
    if( hasList && !keepsAll )
        mode &= ~static_cast< mode_t >( 077 );
    else if( !hasGroup )
        mode &= ~( 070 | ( ~mode >> 3 & 07 ) );

    if( is.st_uid != was.st_uid )
        mode &= ~static_cast< mode_t >( S_ISUID );

    if( !hasGroup )
        mode &= ~static_cast< mode_t >( S_ISGID );

    return fchmod( file, mode ) == 0;
}
} // namespace morvane
