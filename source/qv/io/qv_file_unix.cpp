#include "qv/io/qv_file_private.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_cstr_private.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_file.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_slab_private.h"

#include <algorithm>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <new>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
const QV_INT PIECE          = 1024;  // bytes that a Buffer grows by
const QV_INT STAGE          = 16384; // bytes that are read ahead, and of the array on the stack
const QV_INT READ_AT_ONCE   = 65536;
const QV_INT MOST_AT_ONCE   = QV_INT( 1 ) << 40; // bytes of a file that go into a block of their own
const mode_t FILE_MODE      = 0666;
const mode_t DIRECTORY_MODE = 0711;
const size_t MAX_EXECUTABLE = 4096;

// A name in the form that the operating system takes. A name that contains U+0000 would be cut there and mean another
// file; it becomes the empty name, which every call refuses.
class Name : public qv::Cstr
{
public:
    explicit Name( QV_STRING *fn ) : Cstr( fn )
    {
        if( qvStringFindChar( fn, 0, 0 ) >= 0 )
            *static_cast< char * >( *this ) = '\0';
    }
};

// A file that is read: bytes that were read ahead are stage[at] to stage[end - 1].
struct InFile
{
    explicit InFile( int opened ) : descriptor( opened )
    {
    }

    int     descriptor;
    bool    failed = false; // a call of the system has failed
    QV_INT  read   = 0;     // bytes that the system has delivered
    QV_INT  at     = 0;
    QV_INT  end    = 0;
    uint8_t stage[STAGE];
};

InFile *inFileOf( QV_OBJ *closure )
{
    return static_cast< InFile * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

FILE *outFileOf( QV_OBJ *closure )
{
    return static_cast< FILE * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

// One call of the system, which a signal does not end. 0 at the end of the data or after a failure.
QV_INT readOnce( InFile *file, uint8_t *bytes, QV_INT wanted )
{
    ssize_t got;

    do
        got = read( file->descriptor, bytes, static_cast< size_t >( wanted ) );
    while( got == -1 && errno == EINTR );

    if( got == -1 )
    {
        qv::setSystemError( "cannot be read", errno );
        file->failed = true;
        return 0;
    }

    file->read += got;
    return got;
}

// Reads up to `wanted` bytes. Fewer mean the end of the data or a failure. What the stage could not hold goes to its
// place at once.
QV_INT readPiece( InFile *file, uint8_t *bytes, QV_INT wanted )
{
    QV_INT got = 0;

    while( got < wanted )
    {
        QV_INT left = wanted - got;
        QV_ASSERT( file->at >= 0 && file->at <= file->end && file->end <= STAGE );

        if( file->at == file->end && left >= STAGE )
        {
            QV_INT more = readOnce( file, bytes + got, left );

            if( more == 0 )
                break;

            got += more;
            continue;
        }

        if( file->at == file->end )
        {
            file->at  = 0;
            file->end = readOnce( file, file->stage, STAGE );

            if( file->end == 0 )
                break;
        }

        QV_INT ready = std::min( left, file->end - file->at );
        memcpy( bytes + got, file->stage + file->at, static_cast< size_t >( ready ) );
        file->at += ready;
        got += ready;
    }

    return got;
}

// How much of a regular file is left to deliver, that in the stage included; 0 for another file.
QV_INT bytesLeft( const InFile *file )
{
    struct stat status;

    if( fstat( file->descriptor, &status ) != 0 || !S_ISREG( status.st_mode ) )
        return 0;

    return std::max< QV_INT >( static_cast< QV_INT >( status.st_size ) - file->read + file->end - file->at, 0 );
}

// Makes the first bytes of a file, at least 1, the contents of a Buffer without a block. If they fill the stage, reads
// the rest too, up to `most` bytes in all, as far as its size is known. Returns how many bytes the Buffer has then.
QV_INT takeBlock( InFile *file, QV_BUFFER **buf, const uint8_t *first, QV_INT firstCount, QV_INT most )
{
    QV_INT left = firstCount == STAGE ? std::min( bytesLeft( file ), most - firstCount ) : 0;

    if( left > MOST_AT_ONCE )
        left = 0;

    QV_INT   whole = firstCount + left;
    QV_INT   size  = qv::bufferBlockSize( whole );
    uint8_t *block = static_cast< uint8_t * >( qvMemAlloc( size ) );
    uint8_t *bytes = block + QV_BUFFER_FSPACE / 8;
    qv::useLargePages( block, size );

    memcpy( bytes, first, static_cast< size_t >( firstCount ) );
    QV_INT count = firstCount + readPiece( file, bytes + firstCount, left );

    // The file has become shorter, or its size isn't that of its data.
    if( count < whole )
        block = static_cast< uint8_t * >( qvMemRealloc( block, qv::bufferBlockSize( count ) ) );

    qv::useBufferBlock( buf, block, count, PIECE );
    return count;
}

// Appends up to `byteCount` bytes to a Buffer and returns how many. Fewer mean the end of the data or a failure.
QV_INT appendFrom( InFile *file, QV_BUFFER **buf, QV_INT byteCount )
{
    uint8_t bytes[STAGE];
    QV_INT  result = 0;

    while( result < byteCount )
    {
        QV_INT wanted = std::min( byteCount - result, STAGE );
        QV_INT got    = readPiece( file, bytes, wanted );

        if( got > 0 && !( *buf )->memory && !( *buf )->ref )
            result += takeBlock( file, buf, bytes, got, byteCount - result );
        else
        {
            for( QV_INT taken = 0; taken < got; taken += PIECE )
                qvBufferAppendBytes( buf, bytes + taken, std::min( got - taken, PIECE ) );

            result += got;
        }

        if( got < wanted )
            break;
    }

    return result;
}

QV_BOOL readFile( QV_OBJ *closure, QV_BUFFER **buf, QV_INT byteCount, QV_INT *bytesRead )
{
    QV_CHECK( byteCount > 0 );

    InFile *file = inFileOf( closure );
    *bytesRead   = appendFrom( file, buf, byteCount );

    return file->failed ? QV_FALSE : QV_TRUE;
}

QV_BOOL readFileBytes( QV_OBJ *closure, uint8_t *bytes, QV_INT byteCount, QV_INT *bytesRead )
{
    QV_CHECK( byteCount > 0 );

    InFile *file = inFileOf( closure );

    // The limit may be far above the size of the array if the caller knows that the data is shorter, and above what the
    // operating system reads in one call.
    while( *bytesRead < byteCount )
    {
        QV_INT wanted = std::min( byteCount - *bytesRead, READ_AT_ONCE );
        QV_INT got    = readPiece( file, bytes + *bytesRead, wanted );
        *bytesRead += got;

        if( got < wanted )
            break;
    }

    return file->failed ? QV_FALSE : QV_TRUE;
}

QV_BOOL skipFile( QV_OBJ *closure, QV_INT byteCount, QV_INT *bytesSkipped )
{
    QV_CHECK( byteCount > 0 );

    InFile *file = inFileOf( closure );
    uint8_t bytes[STAGE];

    while( *bytesSkipped < byteCount )
    {
        QV_INT wanted = std::min( byteCount - *bytesSkipped, STAGE );
        QV_INT got    = readPiece( file, bytes, wanted );
        *bytesSkipped += got;

        if( got < wanted )
            break;
    }

    return file->failed ? QV_FALSE : QV_TRUE;
}

QV_BOOL writeFile( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_CHECK( byteCount > 0 );

    QV_ASSERT( byteOffset >= 0 && byteCount <= qvBufferLength( buf ) - byteOffset );

    // All at once, from where the bytes are: they start on a whole byte and stand together.
    const uint8_t *bytes = qv::bytes( buf ) + byteOffset;
    return fwrite( bytes, static_cast< size_t >( byteCount ), 1, outFileOf( closure ) ) == 1
               ? QV_TRUE
               : qv::setSystemError( "cannot be written", errno );
}

QV_BOOL flushFile( QV_OBJ *closure )
{
    return fflush( outFileOf( closure ) ) == 0 ? QV_TRUE : qv::setSystemError( "cannot be written", errno );
}

// The result of a call of the operating system on a file. If it failed, `what` says so, and `errno` why.
QV_BOOL succeeded( int result, const char *what, QV_STRING *fn )
{
    return result == 0 ? QV_TRUE : qv::setSystemError( what, errno, fn );
}

QV_BOOL getStatus( QV_STRING *fn, struct stat *status )
{
    return succeeded( stat( Name( fn ), status ), "cannot be looked up", fn );
}

QV_STRING *fromCstr( const char *text )
{
    return qvStringCreateFromCstr( text, -1 );
}
} // namespace

/* Streams -------------------------------------------------------------------------------------------------------- */

namespace
{
// A new descriptor, or -1 with the last error set.
int openFile( QV_STRING *fn, int flags )
{
    int descriptor = open( Name( fn ), flags, FILE_MODE );

    if( descriptor == -1 )
        qv::setSystemError( "cannot be opened", errno, fn );

    return descriptor;
}
} // namespace

QV_BYTE_SOURCE *qv___FileOpenByteSource( QV_STRING *fn )
{
    int descriptor = openFile( fn, O_RDONLY );

    if( descriptor == -1 )
        return nullptr;

    InFile *file = new( qvMemAlloc( sizeof( InFile ) ) ) InFile( descriptor );

    qv::Ref< QV___BOXED_POINTER > opened( qv___BoxedPointerCreate(
        file,
        []( void *value )
        {
            close( static_cast< InFile * >( value )->descriptor );
            qvMemFree( value );
        } ) );

    return qv___ByteSourceCreateForBytes( readFile, readFileBytes, skipFile, qv::obj( opened.get() ) );
}

QV_BYTE_SINK *qv___FileOpenByteSink( QV_STRING *fn )
{
    FILE *fptr = fopen( Name( fn ), "wb" );

    if( !fptr )
    {
        qv::setSystemError( "cannot be opened", errno, fn );
        return nullptr;
    }

    qv::Ref< QV___BOXED_POINTER > opened(
        qv___BoxedPointerCreate( fptr, []( void *value ) { fclose( static_cast< FILE * >( value ) ); } ) );

    return qv___ByteSinkCreate( writeFile, flushFile, qv::obj( opened.get() ) );
}

/* Whole files ---------------------------------------------------------------------------------------------------- */

// No stream, whose objects would take as long as the calls of the system for a small file.
QV_BUFFER *qv___FileReadBuffer( QV_STRING *fn, QV_INT maxBytes )
{
    InFile file( openFile( fn, O_RDONLY | O_CLOEXEC ) );

    if( file.descriptor == -1 )
        return nullptr;

    QV_INT               limit = maxBytes == -1 ? QV_INT_MAX : maxBytes;
    qv::Ref< QV_BUFFER > result( qvBufferCreate() );

    // Reading one byte more tells a file of exactly `maxBytes` bytes from a longer one.
    uint8_t further;
    bool    tooLong = appendFrom( &file, result.at(), limit ) == limit && readPiece( &file, &further, 1 ) == 1;
    close( file.descriptor );

    if( tooLong )
        qv::setError( { .code = QV_ERROR_TOO_LONG, .reason = "longer than allowed", .path = qv::OwnUtf8( fn ) } );
    else if( file.failed )
        qv::addErrorPath( fn );
    else
        return result.give();

    return nullptr;
}

namespace
{
// Writes the bytes from `*written` on, also where a signal interrupts, and counts them there. Returns 0, or the `errno`
// of a system that took no more.
int writeRest( int descriptor, const uint8_t *bytes, QV_INT byteCount, QV_INT *written )
{
    while( *written < byteCount )
    {
        ssize_t step = write( descriptor, bytes + *written, static_cast< size_t >( byteCount - *written ) );

        if( step > 0 )
            *written += step;
        else if( step == 0 )
            return EIO; // a device that takes nothing tells no reason
        else if( errno != EINTR )
            return errno;
    }

    return 0;
}
} // namespace

// Opening doesn't empty the file: some file systems write out what comes then before the file is closed, which took
// most of the time. Here the old bytes stay until the new ones overwrite them, and the file is cut at the end: after a
// failure too, so that nothing old stands after what could be written.
QV_BOOL qv___FileWriteBuffer( QV_STRING *fn, QV_BUFFER *buf )
{
    int descriptor = openFile( fn, O_WRONLY | O_CREAT | O_CLOEXEC );

    if( descriptor == -1 )
        return QV_FALSE;

    const uint8_t *bytes     = qv::bytes( buf );
    QV_INT         byteCount = qvBufferLength( buf );
    QV_INT         written   = 0;
    int            problem   = writeRest( descriptor, bytes, byteCount, &written );

    // What has no end is not cut. A file that nothing is written to gets its new time by the cut. The status is only
    // asked for where something may be to cut: with it in each call, overwriting 4 KiB took up to twice as long.
    struct stat status;
    bool isCut = ( written == 0 || lseek( descriptor, 0, SEEK_END ) > written ) && fstat( descriptor, &status ) == 0
                 && S_ISREG( status.st_mode );

    if( isCut && ftruncate( descriptor, written ) != 0 )
        problem = problem == 0 ? errno : problem;
    else if(
        isCut && qv::codeOfSystem( problem ) == QV_ERROR_NO_SPACE && lseek( descriptor, written, SEEK_SET ) == written )
        problem = writeRest( descriptor, bytes, byteCount, &written ); // where the old bytes were, there is room now

    close( descriptor );
    return problem == 0 ? QV_TRUE : qv::setSystemError( "cannot be written", problem, fn );
}

/* Files and directories ------------------------------------------------------------------------------------------ */

QV_BOOL qv___FileExists( QV_STRING *fn )
{
    struct stat status;
    return getStatus( fn, &status );
}

QV_INT qv___FileSize( QV_STRING *fn )
{
    struct stat status;
    return getStatus( fn, &status ) ? static_cast< QV_INT >( status.st_size ) : -1;
}

QV_BOOL qv___FileIsDirectory( QV_STRING *fn )
{
    struct stat status;

    if( !getStatus( fn, &status ) )
        return QV_FALSE;

    return S_ISDIR( status.st_mode ) ? QV_TRUE : qv::setSystemError( "cannot be used as a directory", ENOTDIR, fn );
}

QV_BOOL qv___FileDelete( QV_STRING *fn )
{
    return succeeded( unlink( Name( fn ) ), "cannot be deleted", fn );
}

QV_BOOL qv___FileRename( QV_STRING *fn, QV_STRING *newFn )
{
    if( rename( Name( fn ), Name( newFn ) ) == 0 )
        return QV_TRUE;

    // The name that is bad, if one is.
    return qv::setSystemError( "cannot be renamed", errno, qvStringFindChar( newFn, 0, 0 ) >= 0 ? newFn : fn );
}

QV_BOOL qv___FileCreateDirectory( QV_STRING *fn )
{
    return succeeded( mkdir( Name( fn ), DIRECTORY_MODE ), "cannot be made", fn );
}

QV_BOOL qv___FileDeleteDirectory( QV_STRING *fn )
{
    return succeeded( rmdir( Name( fn ) ), "cannot be deleted", fn );
}

QV_BOOL qv___FileDeleteDirectoryRecursive( QV_STRING *fn )
{
    Name   name( fn );
    size_t length = strlen( name );

    // With a trailing delimiter, the name of a link would mean the directory that the link points to.
    while( length > 1 && name[length - 1] == '/' )
        name[--length] = '\0';

    // A directory that can never be deleted keeps its content too.
    const char *slash = strrchr( name, '/' );
    const char *last  = slash ? slash + 1 : static_cast< const char * >( name );

    if( *last == '\0' || strcmp( last, "." ) == 0 || strcmp( last, ".." ) == 0 )
    {
        qv::setError(
            { .code   = QV_ERROR_BAD_NAME,
              .reason = "cannot be deleted: not the name of a directory that could be deleted as a whole",
              .path   = qv::OwnUtf8( fn ) } );
        return QV_FALSE;
    }

    int directory = open( name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC );

    // If it cannot be opened, rmdir() still deletes it if it is an empty directory, and refuses links and files.
    bool isTold = false;
    bool ok     = directory == -1 || qv::deleteTreeContent( directory, name, &isTold );

    bool gone = rmdir( name ) == 0;

    if( !gone && !isTold )
        qv::setSystemError( "cannot be deleted", errno, fn );

    return gone && ok ? QV_TRUE : QV_FALSE;
}

namespace
{
bool isDirectory( QV_STRING *fn )
{
    struct stat status;
    return stat( Name( fn ), &status ) == 0 && S_ISDIR( status.st_mode );
}
} // namespace

QV_VECTOR *qv___DirectoryContent( QV_STRING *path, QV_BOOL skipDirectories, QV_STRING *suffix )
{
    qv::Ref< QV_VECTOR > result( qvVectorCreate() );
    qv::Ref< QV_STRING > prefix = qv::Ref< QV_STRING >::share( path );
    qv::Ref< QV_STRING > ending = qv::Ref< QV_STRING >::share( suffix );
    qvFilePathAppendDelimiter( prefix.at() );

    if( ending )
        qvStringToCaseFold( ending.at() );

    DIR *directory = opendir( Name( prefix ) );

    if( !directory )
    {
        qv::setSystemError( "cannot be read", errno, path );
        return result.give();
    }

    qvErrorClear();

    for( ;; )
    {
        errno               = 0; // what tells a failure from the end
        const dirent *entry = readdir( directory );

        if( !entry )
        {
            if( errno != 0 )
                qv::setSystemError( "cannot be read to its end", errno, path );

            break;
        }

        if( strcmp( entry->d_name, "." ) == 0 || strcmp( entry->d_name, ".." ) == 0 )
            continue;

        qv::Ref< QV_STRING > name = qv::Ref< QV_STRING >::share( prefix );
        qvStringAppendCstr( name.at(), entry->d_name, -1 );

        if( skipDirectories && isDirectory( name ) )
            continue;

        if( ending )
        {
            qv::Ref< QV_STRING > folded = qv::Ref< QV_STRING >::share( name );
            qvStringToCaseFold( folded.at() );

            if( !qvStringEndsWith( folded, ending ) )
                continue;
        }

        qvVectorAppendObj( result.at(), qvStringObj( name ) );
    }

    closedir( directory );
    return result.give();
}

/* The text of paths ---------------------------------------------------------------------------------------------- */

namespace
{
QV_CHAR charAt( QV_STRING *fn, QV_INT index )
{
    return qvStringCharAt( fn, index );
}

// The index after the last character before `end` that is a delimiter, or that is none. 0 if there is no such
// character.
QV_INT afterLast( QV_STRING *fn, QV_INT end, bool delimiter )
{
    while( end > 0 && ( charAt( fn, end - 1 ) == U'/' ) != delimiter )
        end--;

    return end;
}
} // namespace

// These follow dirname() and basename() of POSIX.
QV_STRING *qv___FileDirName( QV_STRING *fn )
{
    QV_INT base = afterLast( fn, afterLast( fn, qvStringLength( fn ), false ), true ); // where the base name starts
    QV_INT end  = afterLast( fn, base, false );

    if( end > 0 )
        return qvStringCreateFromLeading( fn, end );

    QV_INT slashes = 0;

    while( slashes < qvStringLength( fn ) && charAt( fn, slashes ) == U'/' )
        slashes++;

    // POSIX lets exactly two slashes at the start have a meaning of their own, so they stay.
    return fromCstr( slashes == 0 ? "." : slashes == 2 ? "//" : "/" );
}

QV_STRING *qv___FileBaseName( QV_STRING *fn )
{
    QV_INT end  = afterLast( fn, qvStringLength( fn ), false );
    QV_INT base = afterLast( fn, end, true );

    if( end > 0 )
        return qvStringCreateFromInner( fn, base, end - base );

    return fromCstr( qvStringLength( fn ) > 0 ? "/" : "." );
}

QV_CHAR qv___FilePathDelimiter( void )
{
    return U'/';
}

QV_BOOL qv___PathIsRelative( QV_STRING *pn )
{
    return qvStringLength( pn ) == 0 || qvStringCharAt( pn, 0 ) != U'/' ? QV_TRUE : QV_FALSE;
}

/* The process ---------------------------------------------------------------------------------------------------- */

QV_STRING *qv___CurrentDirectory( void )
{
    char *currentDir = getcwd( nullptr, 0 );
    QV_CHECK( currentDir );

    QV_STRING *result = fromCstr( currentDir );
    free( currentDir );

    return result;
}

QV_STRING *qv___GetExecutablePath( void )
{
    char    path[MAX_EXECUTABLE];
    ssize_t ret = readlink( "/proc/self/exe", path, sizeof( path ) );
    QV_CHECK( ret > 0 );

    return qvStringCreateFromCstr( path, static_cast< QV_INT >( ret ) );
}
