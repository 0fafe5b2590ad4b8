#ifndef QV_ENCODER_PRIVATE_H
#define QV_ENCODER_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv
{
/** Appends an entry of a document up to its sub-store: the address as a String, which is ASCII, the value as an
    OptionalString, and whether a sub-store follows as a Bool. */
void encodeEntry( QV_ENCODER *enc, QV_STRING *address, QV_STRING *value, bool hasStore );

class ObjBatch;

/** Has Strings that are decoded from now on created in a batch, which may be null; gives the one before. */
ObjBatch *setDecoderBatch( QV_DECODER *dec, ObjBatch *strings );
} // namespace qv

#endif
