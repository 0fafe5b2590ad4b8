/** @file Decodes the bytes of a character set piece by piece. The pieces may end anywhere: an incomplete character is
    kept for the next piece, so that the text is that of all bytes at once. */

#ifndef MORVANE_DECODER_H
#define MORVANE_DECODER_H

#include "morvane_stream.h"

namespace morvane
{
class Decoder
{
public:
    /** For a character set and QV_CHARSET flags. A byte order mark at the start of UTF-8, UTF-16 and UTF-32 is skipped,
        unless `flags` have QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK. Surrogates without their other half, and overlong
        forms of UTF-8, are invalid. */
    Decoder( QV_INT charset, QV_INT flags );

    /** The next piece of the input as text, which may be empty. If the flags ask for a failure, the text ends before
        the first invalid byte. */
    qv::Ref< QV_STRING > read( Streams *streams );

    /** True when there is no more text: at the end of the input, and after a failed read or an invalid byte. */
    bool end() const
    {
        return end_;
    }

    /** The place in the input where the text of the last read ends, in bytes. */
    QV_INT offset() const
    {
        return dropped_;
    }

    /** The place of the first invalid byte, or -1. */
    QV_INT invalidOffset() const
    {
        return invalidAt_;
    }

    /** The number of bytes of a character in the character set. */
    QV_INT lengthOf( QV_CHAR ch ) const;

private:
    static const QV_INT HELD = 8; // bytes that may be kept for the next piece

    bool                 skipMark();
    void                 skipTails();
    void                 maskMalformed();
    QV_INT               completeBytes() const;
    QV_INT               followSequences();
    bool                 isReplacement( QV_INT at, QV_INT count ) const;
    QV_INT               firstInvalid( QV_INT count ) const;
    qv::Ref< QV_STRING > decode( QV_INT count, QV_INT flags ) const;
    qv::Ref< QV_STRING > take( QV_INT count );
    void                 drop( QV_INT count );

    QV_INT  charset_;
    QV_INT  flags_;
    bool    isStarted_   = false; // a byte order mark has been looked for
    bool    isInBadTail_ = false; // the bytes before were those of a bad sequence of UTF-8
    bool    end_         = false;
    QV_INT  dropped_     = 0; // bytes of the input before those in `bytes_`
    QV_INT  invalidAt_   = -1;
    QV_INT  count_       = 0; // bytes in `bytes_`
    uint8_t bytes_[HELD + Streams::PIECE];
};
} // namespace morvane

#endif
