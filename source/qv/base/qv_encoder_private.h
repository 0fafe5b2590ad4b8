#ifndef QV_ENCODER_PRIVATE_H
#define QV_ENCODER_PRIVATE_H

#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_types.h"
#include "qv/sys/qv_vectors_line_private.h"

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
    void writeEntry( QV_STRING *address, QV_STRING *value, bool hasStore )
    {
        writeEntry( mark_, address, value, hasStore );
    }

    /** All entries of a table of values. */
    void writeValues( QV_DICT *values )
    {
        const QV_INT AHEAD = 16; // items

        DictIterator ahead( values, AHEAD );
        Mark         mark = mark_; // what no byte that is written can change, as the compiler knows

        for( const QV___DICT_ITEM &item : dictItems( values ) )
        {
            if( ahead )
            {
                fetchString( ahead->key );
                fetchString( ahead->val );
                ++ahead;
            }

            writeEntry( mark, static_cast< QV_STRING * >( item.key ), static_cast< QV_STRING * >( item.val ), false );
        }

        mark_ = mark;
    }

private:
    // What is in the block.
    struct Mark
    {
        QV_INT length;  // bytes
        QV_INT spare;   // bytes that the Buffer declares free, as if it had all
        QV_INT grownAt; // up to where the Buffer has to grow
    };

    [[gnu::always_inline]] void writeEntry( Mark &mark, QV_STRING *address, QV_STRING *value, bool hasStore )
    {
        if( !writeShort( mark, address, value, hasStore ) )
        {
            mark_ = mark;
            writeAny( address, value, hasStore );
            mark = mark_;
        }
    }

    void writeAny( QV_STRING *address, QV_STRING *value, bool hasStore );
    void flush();

    // Writes an entry if there is room for it in the block and its texts are ASCII, of 255 characters at most; else false,
    // and nothing is written.
    [[gnu::always_inline]] bool writeShort( Mark &mark, QV_STRING *address, QV_STRING *value, bool hasStore )
    {
        const QV_INT MOST = 7; // bytes besides the texts

        // Once each: after a byte was written the compiler would read all of them anew.
        const QV_CHAR *addressChars = chars( address ), *valueChars = value ? chars( value ) : nullptr;
        QV_INT         addressLength = address->length, valueLength = value ? value->length : 0;

        if( !isOwn_ || ( addressLength | valueLength ) > 0xFF
            || mark.length + addressLength + valueLength + MOST > SIZE )
            return false;

        uint8_t *start   = block_ + mark.length;
        uint8_t *to      = putShortLength( start, addressLength );
        bool     isPlain = narrowIfAscii( to, addressChars, addressLength );
        to += addressLength;
        *to++ = value ? 1 : 0;

        if( value )
        {
            to      = putShortLength( to, valueLength );
            isPlain = narrowIfAscii( to, valueChars, valueLength ) && isPlain;
            to += valueLength;
        }

        *to++ = hasStore ? 1 : 0;

        if( isPlain )
            took( mark, to - start );

        return isPlain;
    }

    // The length of a text that is an Int of two bytes at most.
    static uint8_t *putShortLength( uint8_t *to, QV_INT length )
    {
        to[0] = length > 0;
        to[1] = static_cast< uint8_t >( length );

        return to + 1 + ( length > 0 );
    }

    // What a first append makes the Buffer declare depends on more than its free bytes: it goes there at once, and then
    // the Buffer is the encoder's own. Later ones use these as long as they last, and then leave QV_BUFFER_BSPACE free.
    static void took( Mark &mark, QV_INT bytes )
    {
        bool grows = mark.spare < bytes;
        mark.length += bytes;
        mark.spare   = grows ? QV_BUFFER_BSPACE / 8 : mark.spare - bytes;
        mark.grownAt = grows ? mark.length : mark.grownAt;
    }

    static const QV_INT SIZE = 4096;

    QV_ENCODER *enc_;
    bool        isDirect_; // something else than whole bytes has been written before: each append goes there at once
    bool        isOwn_ = false; // there has been an append, and the next ones may wait in the block
    Mark        mark_  = {};
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
