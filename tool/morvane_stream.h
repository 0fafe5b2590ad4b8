/** @file
    The input and the output of a tool that works on a stream: files, or the standard streams where none is named. */

#ifndef MORVANE_STREAM_H
#define MORVANE_STREAM_H

#include "morvane_file.h"

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_types.h"

namespace morvane
{
class Streams
{
public:
    static const QV_INT PIECE = 16384; // most bytes that a read returns

    Streams() = default;
    ~Streams();

    Streams( const Streams & )            = delete;
    Streams &operator=( const Streams & ) = delete;

    /** Opens both. False, with a line on the standard error stream, if one cannot be opened. */
    bool open( const char *command, QV_STRING *in, QV_STRING *out );

    /** Reads up to PIECE bytes, what there is at the moment but at least one. 0 at the end and for a failure. What has
        been written is out before it waits for more. */
    QV_INT read( uint8_t *bytes );
    void   write( QV_BUFFER *buf );

    /** The name of the input for messages. */
    QV_STRING *inName() const
    {
        return inName_;
    }

    /** True when reading or writing has failed. */
    bool failed() const
    {
        return inReason_ || outReason_;
    }

    /** Completes the output. False, with a line on the standard error stream, if reading or writing has failed; a file
        that was to be replaced is unchanged then. */
    bool finish();

private:
    void writeHeld();

    static const QV_INT BLOCK = 65536; // bytes of one system call

    const char          *command_ = nullptr;
    qv::Ref< QV_STRING > inName_;
    qv::Ref< QV_STRING > outName_;
    int                  in_ = -1;
    FileReplacement      out_;
    const char          *inReason_  = nullptr;
    const char          *outReason_ = nullptr;
    QV_INT               read_      = 0; // bytes in the block of the input
    QV_INT               given_     = 0; // of them, those that have been returned
    QV_INT               held_      = 0; // bytes in the block of the output
    uint8_t              block_[BLOCK];
    uint8_t              heldBytes_[BLOCK];
};
} // namespace morvane

#endif
