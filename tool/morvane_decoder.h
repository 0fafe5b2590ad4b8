/** @file
    Bytes of a character set become text piece by piece, as they come, whatever the pieces are: a character that is not
    complete waits for its rest, so that what comes out is that of all bytes at once. */

#ifndef MORVANE_DECODER_H
#define MORVANE_DECODER_H

#include "morvane_stream.h"

namespace morvane
{
class Decoder
{
public:
    /** For a character set and QV_CHARSET flags. A byte order mark in front of UTF-8, UTF-16 and UTF-32 is no text,
        unless `flags` have QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK. Surrogates that are no pair, and forms of UTF-8
        that are longer than they have to be, are invalid as anything else is that is no character. */
    Decoder( QV_INT charset, QV_INT flags );

    /** The next piece of the input as text, which may be empty. Where the flags want a failure, the text ends before
        what is invalid. */
    qv::Ref< QV_STRING > read( Streams *streams );

    /** True when there is no more text: at the end of the input, for a failure of it, and where it is invalid. */
    bool end() const
    {
        return end_;
    }

    /** Where in the input the text of the last read ends. */
    QV_INT offset() const
    {
        return dropped_;
    }

    /** Where it is invalid, or -1. */
    QV_INT invalidOffset() const
    {
        return invalidAt_;
    }

    /** How many bytes of a valid input the character is. */
    QV_INT lengthOf( QV_CHAR ch ) const;

private:
    static const QV_INT HELD = 8; // bytes that can wait

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
    QV_INT  dropped_     = 0; // bytes of the input in front of those that are here
    QV_INT  invalidAt_   = -1;
    QV_INT  count_       = 0; // bytes that are here
    uint8_t bytes_[HELD + Streams::PIECE];
};
} // namespace morvane

#endif
