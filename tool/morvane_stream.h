/** @file
    Both ends of a tool that works on a stream: files, or the standard streams where none is named. */

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
    static const QV_INT PIECE = 8192; // bytes that are in work at a time, at most

    Streams() = default;
    ~Streams();

    Streams( const Streams & )            = delete;
    Streams &operator=( const Streams & ) = delete;

    /** Opens both ends. False, with a line on the standard error stream, if one cannot be opened. */
    bool open( const char *command, QV_STRING *in, QV_STRING *out );

    /** Reads up to PIECE bytes, what there is at the moment but at least one. 0 at the end and for a failure. What has
        been written is out before it waits for more. */
    QV_INT read( uint8_t *bytes );
    void   write( QV_BUFFER *bytes );

    /** How the input is called. */
    QV_STRING *inName() const
    {
        return inName_;
    }

    /** True when reading or writing has failed. */
    bool failed() const
    {
        return inReason_ || outReason_;
    }

    /** Puts the output in place when all went well. False, with a line on the standard error stream, if reading or
        writing has failed; a file that was to be replaced is as it was then. */
    bool finish();

private:
    void writeHeld();

    static const QV_INT BLOCK = 65536; // bytes that go through the operating system at a time

    const char          *command_ = nullptr;
    qv::Ref< QV_STRING > inName_;
    qv::Ref< QV_STRING > outName_;
    int                  in_ = -1;
    FileReplacement      out_;
    const char          *inReason_  = nullptr;
    const char          *outReason_ = nullptr;
    QV_INT               read_      = 0; // bytes of the block, of which so many are
    QV_INT               given_     = 0; // given already
    QV_INT               held_      = 0; // bytes that have been written but are not out
    uint8_t              block_[BLOCK];
    uint8_t              heldBytes_[BLOCK];
};
} // namespace morvane

#endif
