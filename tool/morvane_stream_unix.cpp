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

    return Ref< QV_BYTE_SOURCE >( qv___ByteSourceCreate( read, nullptr, qv::obj( closure.get() ) ) );
}

Ref< QV_BYTE_SINK > Streams::sink()
{
    Ref< QV___BOXED_POINTER > closure( qv___BoxedPointerCreate( this, nullptr ) );

    return Ref< QV_BYTE_SINK >( qv___ByteSinkCreate( write, flush, qv::obj( closure.get() ) ) );
}

QV_BOOL Streams::read( QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead )
{
    Streams *self = streams( closure );

    while( *bytesRead < maxByteCount )
    {
        char    piece[4096];
        QV_INT  wanted = qvIntMin( maxByteCount - *bytesRead, sizeof( piece ) );
        ssize_t got    = ::read( self->in_, piece, static_cast< size_t >( wanted ) );

        if( got < 0 && errno == EINTR )
            continue;

        if( got < 0 )
        {
            self->inReason_ = strerror( errno );
            return QV_FALSE;
        }

        if( got == 0 )
            break;

        qvBufferAppendBytes( buf, piece, got );
        *bytesRead += got;
    }

    return QV_TRUE;
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
    Streams *self = streams( closure );

    while( byteCount > 0 )
    {
        if( self->held_ == PIECE && !self->writePieces() )
            return QV_FALSE;

        QV_INT count = qvIntMin( byteCount, PIECE - self->held_ );
        qvBufferReadBytes( buf, byteOffset, self->bytes_ + self->held_, count );
        self->held_ += count;
        byteOffset += count;
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
