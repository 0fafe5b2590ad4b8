/** @file
    Where a tool that works on a stream reads and writes: files, or the standard streams where none is named. */

#ifndef MORVANE_STREAM_H
#define MORVANE_STREAM_H

#include "morvane_replace_file.h"

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_types.h"

namespace morvane
{
/** Keeps the places of standard streams that are closed, so that no file that is opened later is taken for one. Using
    them goes on failing. */
void holdStandardStreams();

/** Both ends of one run. The sources and sinks that it gives out must not outlive it. */
class Streams
{
public:
    static const QV_INT PIECE   = 65536; // bytes that go through the operating system at a time
    static const QV_INT HISTORY = 65536; // bytes of the input that stay at hand

    Streams() = default;
    ~Streams();

    Streams( const Streams & ) = delete;
    Streams &operator=( const Streams & ) = delete;

    /** Opens both ends: null as a name stands for the standard input and output. False, with a line on the standard
        error stream, if one cannot be opened. */
    bool open( const char *command, QV_STRING *in, QV_STRING *out );

    qv::Ref< QV_BYTE_SOURCE > source();
    qv::Ref< QV_BYTE_SINK >   sink();

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

    /** How many bytes of the input have been read, and those of them from `offset` on, as far as they stand in a row.
        What lies farther than HISTORY behind the last one that the source has given is gone. */
    QV_INT         bytesRead() const;
    const uint8_t *bytesFrom( QV_INT offset, QV_INT *count ) const;

    /** Puts the output in place when all went well. False, with a line on the standard error stream, if reading or
        writing has failed; a file that was to be written is as it was then. */
    bool finish();

private:
    static QV_BOOL read( QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead );
    static QV_BOOL readBytes( QV_OBJ *closure, uint8_t *dest, QV_INT maxByteCount, QV_INT *bytesRead );
    static QV_BOOL write( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount );
    static QV_BOOL writeBytes( QV_OBJ *closure, const uint8_t *bytes, QV_INT byteCount );
    static QV_BOOL flush( QV_OBJ *closure );

    template< class Take >
    QV_INT give( QV_INT wanted, Take take );

    bool readPiece();
    bool writePieces();

    static const QV_INT RING = HISTORY + PIECE;

    const char          *command_ = nullptr;
    qv::Ref< QV_STRING > inName_;
    qv::Ref< QV_STRING > outName_; // nothing for the standard output
    int                  in_ = -1;
    FileReplacement      out_;
    const char          *inReason_  = nullptr;
    const char          *outReason_ = nullptr;
    QV_INT               bytesRead_  = 0;
    QV_INT               bytesGiven_ = 0; // of those, by the source
    QV_INT               held_       = 0;
    uint8_t              ring_[RING]; // a byte of the input stands at its offset, modulo the size
    uint8_t              bytes_[PIECE];
};
} // namespace morvane

#endif
