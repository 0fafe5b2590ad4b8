#include "morvane_decoder.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/charset/qv_charset.h"
#include "qv/sys/qv_int.h"
#include "qv/qv_tool_private.h"

#include <string.h>

namespace morvane
{
using qv::Ref;
using qv::utf8::REPLACEMENT;

namespace
{
bool isUtf16( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_16 && charset <= QV_CHARSET_UTF_16_LE;
}

bool isUtf32( QV_INT charset )
{
    return charset >= QV_CHARSET_UTF_32;
}

bool isSurrogate( QV_CHAR ch )
{
    return ( ch & 0xFFFFF800 ) == 0xD800;
}

// How many bytes a sequence of UTF-8 has that begins with this one; 0 if none does.
QV_INT sequenceLength( uint8_t byte )
{
    return qv::utf8::following( byte ) + 1;
}

// True for three bytes that begin a form that is longer than it has to be, or a surrogate.
bool isMalformed( uint8_t lead, uint8_t second )
{
    switch( lead )
    {
    case 0xC0:
    case 0xC1:
        return qv::utf8::follows( second );
    case 0xE0:
        return second >= 0x80 && second < 0xA0;
    case 0xED:
        return second >= 0xA0 && second < 0xC0;
    case 0xF0:
        return second >= 0x80 && second < 0x90;
    default:
        return false;
    }
}

// The byte order marks that an input may begin with, and the character set that each stands for.
const struct
{
    QV_INT  charset;
    QV_INT  length;
    uint8_t bytes[4];
    QV_INT  becomes;
} MARKS[] = {
    { QV_CHARSET_UTF_8, 3, { 0xEF, 0xBB, 0xBF }, QV_CHARSET_UTF_8 },
    { QV_CHARSET_UTF_16, 2, { 0xFE, 0xFF }, QV_CHARSET_UTF_16_BE },
    { QV_CHARSET_UTF_16, 2, { 0xFF, 0xFE }, QV_CHARSET_UTF_16_LE },
    { QV_CHARSET_UTF_32, 4, { 0xFF, 0xFE, 0, 0 }, QV_CHARSET_UTF_32_LE },
    { QV_CHARSET_UTF_32, 4, { 0, 0, 0xFE, 0xFF }, QV_CHARSET_UTF_32_BE },
};

bool hasSurrogates( QV_STRING *text )
{
    const QV_CHAR *chars  = qvStringBacking( text );
    QV_INT         length = qvStringLength( text );
    bool           found  = false;

    for( QV_INT i = 0; i < length; i++ )
        found |= isSurrogate( chars[i] );

    return found;
}

// Text without surrogates: they are left out, or replaced.
Ref< QV_STRING > withoutSurrogates( QV_STRING *text, bool skips )
{
    const QV_CHAR   *chars  = qvStringBacking( text );
    QV_INT           length = qvStringLength( text );
    QV_INT           begin  = 0;
    Ref< QV_STRING > result( qvStringCreate() );

    for( QV_INT i = 0; i < length; i++ )
    {
        if( !isSurrogate( chars[i] ) )
            continue;

        qvStringAppendInner( result.at(), text, begin, i - begin );
        begin = i + 1;

        if( !skips )
            qvStringAppendChar( result.at(), REPLACEMENT );
    }

    qvStringAppendInner( result.at(), text, begin, length - begin );
    return result;
}
} // namespace

Decoder::Decoder( QV_INT charset, QV_INT flags ) : charset_( charset ), flags_( flags )
{
    isStarted_ = flags & QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;
    flags_ |= QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK;
}

Ref< QV_STRING > Decoder::read( Streams *streams )
{
    QV_INT got = streams->read( bytes_ + count_ );
    count_ += got;
    end_ = got == 0;

    if( charset_ == QV_CHARSET_UTF_8 )
        skipTails();

    if( !isStarted_ && !skipMark() )
        return Ref< QV_STRING >( qvStringCreate() );

    if( charset_ == QV_CHARSET_UTF_8 )
        maskMalformed();

    return take( end_ ? count_ : completeBytes() );
}

QV_INT Decoder::lengthOf( QV_CHAR ch ) const
{
    if( charset_ == QV_CHARSET_UTF_8 )
        return qv::utf8::length( ch );

    if( isUtf16( charset_ ) )
        return ch < 0x10000 ? 2 : 4;

    return isUtf32( charset_ ) ? 4 : 1;
}

// Looks for a byte order mark. False as long as it may still become one.
bool Decoder::skipMark()
{
    for( const auto &mark : MARKS )
    {
        QV_INT count = qvIntMin( count_, mark.length );

        if( mark.charset != charset_ || memcmp( bytes_, mark.bytes, static_cast< size_t >( count ) ) != 0 )
            continue;

        if( count < mark.length && !end_ )
            return false;

        if( count == mark.length )
        {
            charset_ = mark.becomes;
            drop( mark.length );
            break;
        }
    }

    isStarted_ = true;
    return true;
}

// Drops the tail of a bad sequence, also if it began in the piece before.
void Decoder::skipTails()
{
    QV_INT tails = 0;

    while( isInBadTail_ && tails < count_ && qv::utf8::follows( bytes_[tails] ) )
        tails++;

    drop( tails );
    isInBadTail_ = isInBadTail_ && count_ == 0;
}

// Replaces the first byte of each malformed sequence that the codec would accept by one that it refuses.
void Decoder::maskMalformed()
{
    const QV_INT BLOCK = 128;

    for( QV_INT from = 0; from < count_; from += BLOCK )
    {
        QV_INT  to      = qvIntMin( from + BLOCK, count_ );
        uint8_t suspect = 0;

        // Most blocks have no byte that such a sequence can begin with.
        if( to - from == BLOCK )
            for( QV_INT i = 0; i < BLOCK; i++ )
            {
                uint8_t byte = bytes_[from + i];
                suspect |= ( ( byte & 0xFE ) == 0xC0 ) | ( byte == 0xE0 ) | ( byte == 0xED ) | ( byte == 0xF0 );
            }
        else
            suspect = 1;

        for( QV_INT i = from; suspect && i < to; i++ )
        {
            QV_INT length = sequenceLength( bytes_[i] );
            bool   whole  = length > 1 && i + length <= count_ && isMalformed( bytes_[i], bytes_[i + 1] );

            for( QV_INT k = 2; whole && k < length; k++ )
                whole = qv::utf8::follows( bytes_[i + k] );

            if( whole )
                bytes_[i] = 0xFF;
        }
    }
}

// How many of the bytes can be decoded without those that follow, if they are valid.
QV_INT Decoder::completeBytes() const
{
    if( isUtf16( charset_ ) )
    {
        QV_INT count = count_ & ~QV_INT( 1 );
        QV_INT high  = charset_ == QV_CHARSET_UTF_16_BE ? 2 : 1; // from the end: the half of a unit that tells its kind

        return count > 0 && ( bytes_[count - high] & 0xFC ) == 0xD8 ? count - 2 : count;
    }

    if( isUtf32( charset_ ) )
        return count_ & ~QV_INT( 3 );

    if( charset_ != QV_CHARSET_UTF_8 )
        return count_;

    for( QV_INT back = 1; back <= qvIntMin( count_, 3 ); back++ )
        if( QV_INT length = sequenceLength( bytes_[count_ - back] ) )
            return length > back ? count_ - back : count_;
        else if( !qv::utf8::follows( bytes_[count_ - back] ) )
            break;

    return count_;
}

// The same for invalid UTF-8: follows the sequences as the codec does.
QV_INT Decoder::followSequences()
{
    QV_INT missing = 0;
    QV_INT begin   = 0;

    for( QV_INT i = 0; i < count_; i++ )
    {
        if( missing > 0 )
        {
            // The byte that breaks a sequence is dropped with it.
            isInBadTail_ = !qv::utf8::follows( bytes_[i] );
            missing      = isInBadTail_ ? 0 : missing - 1;
        }
        else if( QV_INT length = sequenceLength( bytes_[i] ) )
        {
            isInBadTail_ = false;
            missing      = length - 1;
            begin        = i;
        }
        else
        {
            isInBadTail_ = true;
        }
    }

    return missing > 0 && !end_ ? begin : count_;
}

// True if the bytes at a place encode U+FFFD itself.
bool Decoder::isReplacement( QV_INT at, QV_INT count ) const
{
    static const struct
    {
        QV_INT  charset;
        uint8_t bytes[4];
    } FORMS[] = {
        { QV_CHARSET_UTF_8, { 0xEF, 0xBF, 0xBD } },     { QV_CHARSET_UTF_16, { 0xFD, 0xFF } },
        { QV_CHARSET_UTF_16_BE, { 0xFF, 0xFD } },       { QV_CHARSET_UTF_16_LE, { 0xFD, 0xFF } },
        { QV_CHARSET_UTF_32, { 0xFD, 0xFF, 0, 0 } },    { QV_CHARSET_UTF_32_BE, { 0, 0, 0xFF, 0xFD } },
        { QV_CHARSET_UTF_32_LE, { 0xFD, 0xFF, 0, 0 } },
    };

    QV_INT length = lengthOf( REPLACEMENT );

    for( const auto &form : FORMS )
        if( form.charset == charset_ )
            return at + length <= count && memcmp( bytes_ + at, form.bytes, static_cast< size_t >( length ) ) == 0;

    return false;
}

// The place of the first invalid one of `count` bytes.
QV_INT Decoder::firstInvalid( QV_INT count ) const
{
    Ref< QV_STRING > text   = decode( count, 0 );
    const QV_CHAR   *chars  = qvStringBacking( text );
    QV_INT           length = qvStringLength( text );
    QV_INT           at     = 0;

    for( QV_INT i = 0; i < length && !isSurrogate( chars[i] ); i++ )
    {
        if( chars[i] == REPLACEMENT && !isReplacement( at, count ) )
            break;

        at += lengthOf( chars[i] );
    }

    return at;
}

Ref< QV_STRING > Decoder::decode( QV_INT count, QV_INT flags ) const
{
    Ref< QV_BUFFER > bytes( qvBufferCreateFromBytesCopy( bytes_, count ) );

    return Ref< QV_STRING >(
        qvCharsetBufferToStringWithFlags( charset_, bytes, flags | QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ) );
}

// Decodes the first `count` bytes and drops them.
Ref< QV_STRING > Decoder::take( QV_INT count )
{
    Ref< QV_STRING > text = decode( count, QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER );

    if( text && !( isUtf16( charset_ ) || isUtf32( charset_ ) ) )
    {
        drop( count );
        return text;
    }

    if( !text || hasSurrogates( text ) )
    {
        if( flags_ & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
        {
            count      = firstInvalid( count );
            invalidAt_ = dropped_ + count;
            end_       = true;
        }
        else if( charset_ == QV_CHARSET_UTF_8 )
        {
            count = followSequences();
        }

        text = decode( count, flags_ );
    }

    if( hasSurrogates( text ) )
        text = withoutSurrogates( text, flags_ & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS );

    drop( count );
    return text;
}

void Decoder::drop( QV_INT count )
{
    count_ -= count;
    dropped_ += count;
    memmove( bytes_, bytes_ + count, static_cast< size_t >( count_ ) );
}
} // namespace morvane
