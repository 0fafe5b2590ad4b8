#include "morvane_stream.h"

#include "morvane_progress.h"
#include "morvane_tool.h"

#include "qv/base/qv_buffer.h"
#include "qv/sys/qv_int.h"

#include <string.h>

namespace morvane
{
using qv::Ref;

namespace
{
Ref< QV_STRING > nameOr( QV_STRING *name, const char *standard )
{
    return isStandardStream( name ) ? Ref< QV_STRING >( qvStringCreateFromCstr( standard, -1 ) )
                                    : Ref< QV_STRING >::share( name );
}
} // namespace

Streams::~Streams()
{
    endProgress();
    closeInput( in_ );
}

bool Streams::open( const char *command, QV_STRING *in, QV_STRING *out )
{
    command_ = command;
    inName_  = nameOr( in, "standard input" );
    outName_ = nameOr( out, "standard output" );
    in_      = openInput( in, &inReason_ );

    if( !inReason_ )
        outReason_ = out_.begin( out );

    if( !failed() && out_.feeds( in_ ) )
        inReason_ = "the output goes to the same file";

    if( failed() )
        complain( command_, inReason_ ? inName_ : outName_, inReason_ ? inReason_ : outReason_ );

    if( !failed() && !( isStandardStream( out ) && isOutputTerminal() ) )
        beginProgress( inName_, bytesLeft( in_ ) );

    return !failed();
}

QV_INT Streams::read( uint8_t *bytes )
{
    if( given_ == read_ )
    {
        writeHeld();
        given_ = 0;
        read_  = failed() ? 0 : qvIntMax( readInput( in_, block_, BLOCK, &inReason_ ), 0 );
        addProgress( read_ );
    }

    QV_INT count = qvIntMin( read_ - given_, PIECE );
    memcpy( bytes, block_ + given_, static_cast< size_t >( count ) );
    given_ += count;

    return count;
}

void Streams::write( QV_BUFFER *buf )
{
    const uint8_t *bytes = static_cast< const uint8_t * >( qvBufferBacking( buf ) );
    QV_INT         left  = qvBufferLength( buf );

    while( left > 0 && !failed() )
    {
        if( held_ == BLOCK )
            writeHeld();

        QV_INT count = qvIntMin( left, BLOCK - held_ );
        memcpy( heldBytes_ + held_, bytes, static_cast< size_t >( count ) );
        held_ += count;
        bytes += count;
        left -= count;
    }
}

void Streams::writeHeld()
{
    if( !failed() && held_ > 0 )
        outReason_ = out_.write( heldBytes_, held_ );

    held_ = 0;
}

bool Streams::finish()
{
    writeHeld();

    if( !failed() )
        outReason_ = out_.commit();

    if( failed() )
        complain( command_, inReason_ ? inName_ : outName_, inReason_ ? inReason_ : outReason_ );

    return !failed();
}
} // namespace morvane
