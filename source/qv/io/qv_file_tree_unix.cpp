#include "qv/io/qv_file_private.h"

#include "qv/base/qv_error_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

/* A tree is deleted with one directory open at a time. The way back up is the entry `..`; its device and inode are
   compared with those noted on the way down. The names of the entries wait on a stack, so that each directory is read
   once, also if some of its entries cannot be deleted. */

namespace
{
// A stack of bytes or of records that grows by doubling.
template< class T >
class Stack
{
public:
    Stack() = default;

    ~Stack()
    {
        qvMemFree( items_ );
    }

    Stack( const Stack & )            = delete;
    Stack &operator=( const Stack & ) = delete;

    void push( const T *items, QV_INT count )
    {
        if( capacity_ - length_ < count )
        {
            QV_CHECK( QV_INT_ADD_OK( capacity_, capacity_ ) );
            QV_CHECK( QV_INT_ADD_OK( 2 * capacity_, count ) );
            capacity_ = 2 * capacity_ + count;
            items_    = static_cast< T * >( qvMemReallocN( items_, capacity_, sizeof( T ) ) );
        }

        qvMemCopyN( items_ + length_, items, count, sizeof( T ) );
        length_ += count;
    }

    void cut( QV_INT length )
    {
        QV_ASSERT( length >= 0 && length <= length_ );
        length_ = length;
    }

    QV_INT length() const
    {
        return length_;
    }

    T &operator[]( QV_INT index )
    {
        QV_ASSERT( index >= 0 && index < length_ );
        return items_[index];
    }

private:
    T     *items_    = nullptr;
    QV_INT length_   = 0;
    QV_INT capacity_ = 0;
};

// One of the directories from the outermost to the current one.
struct Level
{
    dev_t  device;
    ino_t  inode;
    QV_INT names; // offset of its entries' names in the stack of names
};

class TreeWalk
{
public:
    TreeWalk( int directory, const char *path, bool *isTold ) :
        directory_( directory ), path_( path ), isTold_( isTold )
    {
    }

    ~TreeWalk()
    {
        if( directory_ != -1 )
            close( directory_ );
    }

    TreeWalk( const TreeWalk & )            = delete;
    TreeWalk &operator=( const TreeWalk & ) = delete;

    bool run()
    {
        struct stat status;

        if( fstat( directory_, &status ) != 0 )
            return tell( errno );

        enter( status );

        for( ;; )
        {
            if( names_.length() > level().names )
            {
                takeEntry();
            }
            else if( levels_.length() == 1 )
            {
                return ok_;
            }
            else if( !leave() )
            {
                return false;
            }
        }
    }

private:
    Level &level()
    {
        return levels_[levels_.length() - 1];
    }

    // Pushes the current directory and the names of its entries.
    void enter( const struct stat &status )
    {
        Level level = { status.st_dev, status.st_ino, names_.length() };
        levels_.push( &level, 1 );

        int  copy = fcntl( directory_, F_DUPFD_CLOEXEC, 0 );
        DIR *dir  = copy == -1 ? nullptr : fdopendir( copy );

        if( !dir )
        {
            if( copy != -1 )
                close( copy );

            return; // if it has entries, its own deletion will fail
        }

        while( const dirent *entry = readdir( dir ) )
            if( strcmp( entry->d_name, "." ) != 0 && strcmp( entry->d_name, ".." ) != 0 )
                names_.push( entry->d_name, static_cast< QV_INT >( strlen( entry->d_name ) ) + 1 );

        closedir( dir );
    }

    // The offset of the last name on the stack.
    QV_INT lastName()
    {
        QV_INT at = names_.length() - 1;

        while( at > level().names && names_[at - 1] != '\0' )
            at--;

        return at;
    }

    void forgetEntry()
    {
        names_.cut( lastName() );
    }

    // Deletes the last entry, or enters it if it is a directory.
    void takeEntry()
    {
        const char *name = &names_[lastName()];
        struct stat status;

        if( fstatat( directory_, name, &status, AT_SYMLINK_NOFOLLOW ) != 0 || !S_ISDIR( status.st_mode ) )
        {
            // The deletion of the directory will fail too, unless something else has deleted the entry.
            if( unlinkat( directory_, name, 0 ) != 0 && errno != ENOENT )
                tell( errno );

            forgetEntry();
            return;
        }

        int         next  = openat( directory_, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC );
        int         error = next == -1 ? errno : 0;
        struct stat back;

        // Without a way back nothing in it could be deleted: it can only go as an empty directory.
        if( next == -1 || fstatat( next, "..", &back, 0 ) != 0 || back.st_dev != level().device
            || back.st_ino != level().inode )
        {
            if( next != -1 )
                close( next );

            deleteEntry( error );
            return;
        }

        close( directory_ );
        directory_ = next;
        enter( status );
    }

    // Deletes the last entry, a directory. `error` tells why it could not be entered, or is 0.
    void deleteEntry( int error )
    {
        if( unlinkat( directory_, &names_[lastName()], AT_REMOVEDIR ) != 0 )
            ok_ = tell( error ? error : errno );

        forgetEntry();
    }

    // Goes up to the parent and deletes the directory that it has left.
    bool leave()
    {
        levels_.cut( levels_.length() - 1 );

        int         up    = openat( directory_, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC );
        int         error = errno;
        struct stat status;

        close( directory_ );
        directory_ = up;

        if( up == -1 || fstat( up, &status ) != 0 )
            return tell( up == -1 ? error : errno );

        // It has been moved.
        if( status.st_dev != level().device || status.st_ino != level().inode )
            return tell( EBUSY );

        deleteEntry( 0 );
        return true;
    }

    // Makes the first failure the last error, with the name of the last entry on the stack. Returns false.
    bool tell( int error )
    {
        if( *isTold_ )
            return false;

        // On each level the last name is that of the directory below or, on the last one, of the entry.
        Stack< char > path;
        path.push( path_, static_cast< QV_INT >( strlen( path_ ) ) );

        for( QV_INT i = 1; i <= levels_.length(); i++ )
        {
            QV_INT end = i < levels_.length() ? levels_[i].names : names_.length();
            QV_INT at  = end - 1;

            while( at > 0 && names_[at - 1] != '\0' )
                at--;

            path.push( "/", 1 );
            path.push( &names_[at], end - at - 1 );
        }

        qv::setSystemError( "cannot be deleted", error, qv::Utf8( &path[0], path.length() ) );
        *isTold_ = true;

        return false;
    }

    int            directory_; // the current one
    const char    *path_;
    bool          *isTold_;
    bool           ok_ = true;
    Stack< Level > levels_;
    Stack< char >  names_; // of all levels, each with its terminator
};
} // namespace

bool qv::deleteTreeContent( int directory, const char *path, bool *isTold )
{
    return TreeWalk( directory, path, isTold ).run();
}
