#ifndef QV_ENCODER_PRIVATE_H
#define QV_ENCODER_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv
{
/** Appends entries of a store to an encoder: what its Buffer declares becomes what single appends would make it, though
    it gets some kilobytes at once. While it lasts nothing else appends to the encoder. */
class EntryWriter
{
public:
    explicit EntryWriter( QV_ENCODER *enc );
    ~EntryWriter();

    EntryWriter( const EntryWriter & )            = delete;
    EntryWriter &operator=( const EntryWriter & ) = delete;

    void writeInt( QV_INT value );

    /** The address, the optional value, and whether a store follows. */
    void writeEntry( QV_STRING *address, QV_STRING *value, bool hasStore );

private:
    void flush();
    void took( QV_INT bytes );

    static const QV_INT SIZE = 4096;

    QV_ENCODER *enc_;
    bool        isDirect_; // something else than whole bytes has been written before: each append goes there at once
    bool        isOwn_   = false; // there has been an append
    QV_INT      spare_   = 0;     // bytes that the Buffer declares free, as if it had all
    QV_INT      length_  = 0;     // of the block
    QV_INT      grownAt_ = 0;     // up to where in the block the Buffer has to grow
    uint8_t     block_[SIZE];
};

class ObjBatch;

/** Sets the batch in which a decoder creates Strings, or null, and returns the one before. */
ObjBatch *setDecoderBatch( QV_DECODER *dec, ObjBatch *strings );

/** The bytes that are still to be decoded, none after an error; and moves on to a place among them. */
struct DecoderRest
{
    const uint8_t *begin;
    const uint8_t *end;
};

DecoderRest restOf( QV_DECODER *dec );
void        moveDecoder( QV_DECODER *dec, const uint8_t *to );

/** Where in its bytes the decoder is; after an error, where what could not be read begins. */
QV_INT decoderOffset( QV_DECODER *dec );
} // namespace qv

#endif
