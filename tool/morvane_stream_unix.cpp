#include "morvane_stream.h"

#include "morvane_tool.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

namespace morvane
{
using qv::Ref;

namespace
{
Streams *streams( QV_OBJ *closure )
{
    return static_cast< Streams * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

Ref< QV_STRING > nameOr( QV_STRING *name, const char *standard )
{
    return name ? Ref< QV_STRING >::share( name ) : Ref< QV_STRING >( qvStringCreateFromCstr( standard, -1 ) );
}
} // namespace

void holdStandardStreams()
{
    // The lowest free place is the next that is opened. Each is opened for what it isn't used for.
    for( int file = STDIN_FILENO; file <= STDERR_FILENO; file++ )
        if( fcntl( file, F_GETFD ) < 0 && ::open( "/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY ) < 0 )
            _exit( FAILURE );
}

Streams::~Streams()
{
    if( in_ > STDIN_FILENO )
        close( in_ );
}

bool Streams::open( const char *command, QV_STRING *in, QV_STRING *out )
{
    command_ = command;
    inName_  = nameOr( in, "standard input" );
    outName_ = Ref< QV_STRING >::share( out );
    in_      = STDIN_FILENO;

    // Where nobody reads any more is an error of the write then.
    signal( SIGPIPE, SIG_IGN );

    if( in )
    {
        char *name = qvStringConvertToCstr( in, QV_TRUE, nullptr );
        in_        = ::open( name, O_RDONLY | O_CLOEXEC );
        inReason_  = in_ < 0 ? strerror( errno ) : nullptr;
        qvMemFree( name );
    }

    if( inReason_ )
    {
        complain( command_, inName_, inReason_ );
        return false;
    }

    if( out )
        outReason_ = out_.begin( out );

    if( outReason_ )
        complain( command_, out, outReason_ );

    return !outReason_;
}

Ref< QV_BYTE_SOURCE > Streams::source()
{
    Ref< QV___BOXED_POINTER > closure( qv___BoxedPointerCreate( this, nullptr ) );

    return Ref< QV_BYTE_SOURCE >( qv___ByteSourceCreateForBytes( read, readBytes, nullptr, qv::obj( closure.get() ) ) );
}

Ref< QV_BYTE_SINK > Streams::sink()
{
    Ref< QV___BOXED_POINTER > closure( qv___BoxedPointerCreate( this, nullptr ) );

    return Ref< QV_BYTE_SINK >( qv___ByteSinkCreateForBytes( write, writeBytes, flush, qv::obj( closure.get() ) ) );
}

QV_INT Streams::bytesRead() const
{
    return bytesRead_;
}

const uint8_t *Streams::bytesFrom( QV_INT offset, QV_INT *count ) const
{
    *count = qvIntMin( bytesRead_ - offset, RING - offset % RING );

    return ring_ + offset % RING;
}

// Reads on. False at the end and for a failure.
bool Streams::readPiece()
{
    QV_INT  place  = bytesRead_ % RING;
    size_t  wanted = static_cast< size_t >( qvIntMin( PIECE, RING - place ) );
    ssize_t got;

    do
        got = ::read( in_, ring_ + place, wanted );
    while( got < 0 && errno == EINTR );

    if( got < 0 )
        inReason_ = strerror( errno );
    else
        bytesRead_ += got;

    return got > 0;
}

// Hands over up to `wanted` bytes run by run and tells how many there were.
template< class Take >
QV_INT Streams::give( QV_INT wanted, Take take )
{
    QV_INT given = 0;

    while( given < wanted )
    {
        if( bytesGiven_ == bytesRead_ && !readPiece() )
            break;

        QV_INT         count;
        const uint8_t *bytes = bytesFrom( bytesGiven_, &count );

        count = qvIntMin( count, wanted - given );
        take( bytes, given, count );
        bytesGiven_ += count;
        given += count;
    }

    return given;
}

QV_BOOL Streams::read( QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead )
{
    Streams *self = streams( closure );
    *bytesRead    = self->give(
        maxByteCount,
        [buf]( const uint8_t *bytes, QV_INT, QV_INT count ) { qvBufferAppendBytes( buf, bytes, count ); } );

    return self->inReason_ ? QV_FALSE : QV_TRUE;
}

QV_BOOL Streams::readBytes( QV_OBJ *closure, uint8_t *dest, QV_INT maxByteCount, QV_INT *bytesRead )
{
    Streams *self = streams( closure );
    *bytesRead    = self->give(
        maxByteCount,
        [dest]( const uint8_t *bytes, QV_INT at, QV_INT count )
        { memcpy( dest + at, bytes, static_cast< size_t >( count ) ); } );

    return self->inReason_ ? QV_FALSE : QV_TRUE;
}

bool Streams::writePieces()
{
    if( outName_ )
        outReason_ = out_.write( bytes_, held_ );
    else if( !writeAll( STDOUT_FILENO, bytes_, held_ ) )
        outReason_ = strerror( errno );

    held_ = 0;
    return !outReason_;
}

QV_BOOL Streams::write( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
{
    const uint8_t *bytes = static_cast< const uint8_t * >( qvBufferBacking( buf ) );

    return writeBytes( closure, bytes + byteOffset, byteCount );
}

QV_BOOL Streams::writeBytes( QV_OBJ *closure, const uint8_t *bytes, QV_INT byteCount )
{
    Streams *self = streams( closure );

    while( byteCount > 0 )
    {
        if( self->held_ == PIECE && !self->writePieces() )
            return QV_FALSE;

        QV_INT count = qvIntMin( byteCount, PIECE - self->held_ );
        memcpy( self->bytes_ + self->held_, bytes, static_cast< size_t >( count ) );
        self->held_ += count;
        bytes += count;
        byteCount -= count;
    }

    return QV_TRUE;
}

QV_BOOL Streams::flush( QV_OBJ *closure )
{
    Streams *self = streams( closure );

    return self->outReason_ || !self->writePieces() ? QV_FALSE : QV_TRUE;
}

bool Streams::finish()
{
    if( inReason_ )
    {
        complain( command_, inName_, inReason_ );
        return false;
    }

    if( !outReason_ && writePieces() && outName_ )
        outReason_ = out_.commit();

    if( outReason_ )
        complain( command_, nameOr( outName_, "standard output" ), outReason_ );

    return !outReason_;
}
} // namespace morvane
