#include "qv/io/qv_file_private.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_cstr_private.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_file.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

#include <dirent.h>
#include <libgen.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
const QV_INT PIECE          = 1024; // bytes that go through the stack at a time
const mode_t DIRECTORY_MODE = 0711;
const size_t MAX_EXECUTABLE = 4096;

using Name = qv::Cstr;

FILE *file( QV_OBJ *closure )
{
    return static_cast< FILE * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

// Opens a file as an object that closes it when it ends; null on failure.
qv::Ref< QV___BOXED_POINTER > open( QV_STRING *fn, const char *mode )
{
    FILE *fptr = fopen( Name( fn ), mode );

    return qv::Ref< QV___BOXED_POINTER >(
        fptr ? qv___BoxedPointerCreate( fptr, []( void *value ) { fclose( static_cast< FILE * >( value ) ); } )
             : nullptr );
}

// Reads piece by piece until `byteCount` bytes have come or there are no more, and hands on each piece.
template< class Take >
QV_BOOL readPieces( FILE *fptr, QV_INT byteCount, QV_INT *bytesRead, Take take )
{
    QV_CHECK( byteCount > 0 );

    uint8_t bytes[PIECE];

    while( byteCount > 0 )
    {
        QV_INT wanted = qvIntMin( byteCount, PIECE );
        QV_INT got    = static_cast< QV_INT >( fread( bytes, 1, static_cast< size_t >( wanted ), fptr ) );

        if( got > 0 )
            take( bytes, got );

        *bytesRead += got;
        byteCount -= got;

        if( got < wanted )
            break;
    }

    return ferror( fptr ) ? QV_FALSE : QV_TRUE;
}

QV_BOOL readFile( QV_OBJ *closure, QV_BUFFER **buf, QV_INT byteCount, QV_INT *bytesRead )
{
    return readPieces(
        file( closure ), byteCount, bytesRead,
        [buf]( const uint8_t *bytes, QV_INT count ) { qvBufferAppendBytes( buf, bytes, count ); } );
}

QV_BOOL readFileBytes( QV_OBJ *closure, uint8_t *bytes, QV_INT byteCount, QV_INT *bytesRead )
{
    QV_CHECK( byteCount > 0 );

    FILE *fptr = file( closure );
    *bytesRead = static_cast< QV_INT >( fread( bytes, 1, static_cast< size_t >( byteCount ), fptr ) );

    return ferror( fptr ) ? QV_FALSE : QV_TRUE;
}

QV_BOOL skipFile( QV_OBJ *closure, QV_INT byteCount, QV_INT *bytesSkipped )
{
    return readPieces( file( closure ), byteCount, bytesSkipped, []( const uint8_t *, QV_INT ) {} );
}

QV_BOOL writeFile( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    QV_CHECK( byteCount > 0 );

    FILE   *fptr = file( closure );
    uint8_t bytes[PIECE];

    while( byteCount > 0 )
    {
        QV_INT count = qvIntMin( byteCount, PIECE );
        qvBufferReadBytes( buf, byteOffset, bytes, count );

        if( fwrite( bytes, static_cast< size_t >( count ), 1, fptr ) == 0 )
            return QV_FALSE;

        byteOffset += count;
        byteCount -= count;
    }

    return QV_TRUE;
}

QV_BOOL flushFile( QV_OBJ *closure )
{
    return fflush( file( closure ) ) == 0 ? QV_TRUE : QV_FALSE;
}

QV_BOOL succeeded( int result )
{
    return result == 0 ? QV_TRUE : QV_FALSE;
}

QV_STRING *fromCstr( const char *text )
{
    return qvStringCreateFromCstr( text, -1 );
}
} // namespace

/* Streams -------------------------------------------------------------------------------------------------------- */

QV_BYTE_SOURCE *qv___FileOpenByteSource( QV_STRING *fn )
{
    qv::Ref< QV___BOXED_POINTER > opened = open( fn, "rb" );

    return opened ? qv___ByteSourceCreateForBytes( readFile, readFileBytes, skipFile, qv::obj( opened.get() ) )
                  : nullptr;
}

QV_BYTE_SINK *qv___FileOpenByteSink( QV_STRING *fn )
{
    qv::Ref< QV___BOXED_POINTER > opened = open( fn, "wb" );

    return opened ? qv___ByteSinkCreate( writeFile, flushFile, qv::obj( opened.get() ) ) : nullptr;
}

/* Files and directories ------------------------------------------------------------------------------------------ */

QV_BOOL qv___FileExists( QV_STRING *fn )
{
    struct stat status;
    return succeeded( stat( Name( fn ), &status ) );
}

QV_INT qv___FileSize( QV_STRING *fn )
{
    struct stat status;
    return stat( Name( fn ), &status ) == 0 ? static_cast< QV_INT >( status.st_size ) : -1;
}

QV_BOOL qv___FileIsDirectory( QV_STRING *fn )
{
    struct stat status;
    return stat( Name( fn ), &status ) == 0 && S_ISDIR( status.st_mode ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qv___FileIsLink( QV_STRING *fn )
{
    Name        name( fn );
    size_t      length = strlen( name );
    struct stat status;

    // With a delimiter behind it the name would mean what the link leads to.
    while( length > 1 && name[length - 1] == '/' )
        name[--length] = '\0';

    return lstat( name, &status ) == 0 && S_ISLNK( status.st_mode ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qv___FileDelete( QV_STRING *fn )
{
    return succeeded( unlink( Name( fn ) ) );
}

QV_BOOL qv___FileRename( QV_STRING *fn, QV_STRING *newFn )
{
    return succeeded( rename( Name( fn ), Name( newFn ) ) );
}

QV_BOOL qv___FileCreateDirectory( QV_STRING *fn )
{
    return succeeded( mkdir( Name( fn ), DIRECTORY_MODE ) );
}

QV_BOOL qv___FileDeleteDirectory( QV_STRING *fn )
{
    return succeeded( rmdir( Name( fn ) ) );
}

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
        return result.give();

    while( const dirent *entry = readdir( directory ) )
    {
        if( strcmp( entry->d_name, "." ) == 0 || strcmp( entry->d_name, ".." ) == 0 )
            continue;

        qv::Ref< QV_STRING > name = qv::Ref< QV_STRING >::share( prefix );
        qvStringAppendCstr( name.at(), entry->d_name, -1 );

        if( skipDirectories && qvFileIsDirectory( name ) )
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

QV_STRING *qv___FileDirName( QV_STRING *fn )
{
    return fromCstr( dirname( Name( fn ) ) );
}

QV_STRING *qv___FileBaseName( QV_STRING *fn )
{
    return fromCstr( basename( Name( fn ) ) );
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
