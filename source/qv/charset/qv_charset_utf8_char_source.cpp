#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_source_private.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

struct QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE : qv::CodecSource
{
    QV_INT  state;
    QV_BOOL firstCharDone;
    QV_CHAR value;   // of the sequence so far
    QV_INT  missing; // bytes of it that have not come yet
};

QV___FAMILY(
    ___CharsetUtf8CharSourceClosure, QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
using Source = QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE;

const QV_INT OUTSIDE         = 0; // of a sequence
const QV_INT INSIDE          = 1;
const QV_INT RESYNCHRONISING = 2; // behind a bad sequence, up to its end

bool isTail( uint8_t byte )
{
    return ( byte & 0xC0 ) == 0x80;
}

const QV_INT BLOCK = 16;

// Widens the leading ASCII of 16 bytes and gives its length; all 16 places at `out` may be written. Text of any
// language is full of short runs of it; a count leaves fewer branches that depend on the text than a look at each byte.
QV_INT widenAscii( const uint8_t *in, QV_CHAR *out )
{
#ifdef __SSE2__
    __m128i  bytes = _mm_loadu_si128( reinterpret_cast< const __m128i * >( in ) );
    __m128i  zero  = _mm_setzero_si128();
    __m128i  low   = _mm_unpacklo_epi8( bytes, zero );
    __m128i  high  = _mm_unpackhi_epi8( bytes, zero );
    __m128i *dest  = reinterpret_cast< __m128i * >( out );

    _mm_storeu_si128( dest, _mm_unpacklo_epi16( low, zero ) );
    _mm_storeu_si128( dest + 1, _mm_unpackhi_epi16( low, zero ) );
    _mm_storeu_si128( dest + 2, _mm_unpacklo_epi16( high, zero ) );
    _mm_storeu_si128( dest + 3, _mm_unpackhi_epi16( high, zero ) );

    return __builtin_ctz( static_cast< unsigned >( _mm_movemask_epi8( bytes ) ) | 0x10000 );
#else
    QV_INT count = 0;

    for( ; count < BLOCK && in[count] < 0x80; count++ )
        out[count] = in[count];

    return count;
#endif
}

struct Progress
{
    const uint8_t *in;
    QV_CHAR       *out;
};

// Decodes whole, good sequences until the bytes or the room end, or something comes that is left to takeByte().
Progress takeSequences( const uint8_t *in, const uint8_t *inEnd, QV_CHAR *out, const QV_CHAR *outEnd )
{
    while( in < inEnd && out < outEnd )
    {
        while( inEnd - in >= BLOCK && outEnd - out >= BLOCK )
        {
            QV_INT count = widenAscii( in, out );

            if( count < BLOCK )
            {
                in += count;
                out += count;
                break;
            }

            in += BLOCK;
            out += BLOCK;
        }

        if( inEnd - in < BLOCK || outEnd - out < BLOCK )
            while( in < inEnd && out < outEnd && *in < 0x80 )
                *out++ = *in++;

        // A run of sequences. Text that isn't ASCII mostly stays at one length, so this predicts well; single blanks
        // and the like do not end the run.
        while( inEnd - in >= 4 && out < outEnd && ( *in >= 0x80 || in[1] >= 0x80 ) )
        {
            QV_CHAR lead = in[0];

            if( lead < 0x80 )
            {
                *out++ = lead;
                in++;
            }
            else if( lead >= 0xC0 && lead < 0xE0 && isTail( in[1] ) )
            {
                *out++ = ( lead & 0x1F ) << 6 | ( in[1] & 0x3F );
                in += 2;
            }
            else if( lead >= 0xE0 && lead < 0xF0 && isTail( in[1] ) && isTail( in[2] ) )
            {
                *out++ = ( lead & 0xF ) << 12 | ( in[1] & 0x3F ) << 6 | ( in[2] & 0x3F );
                in += 3;
            }
            else if( lead >= 0xF0 && lead < 0xF8 && isTail( in[1] ) && isTail( in[2] ) && isTail( in[3] ) )
            {
                QV_CHAR ch = ( lead & 0x7 ) << 18 | ( in[1] & 0x3F ) << 12 | ( in[2] & 0x3F ) << 6 | ( in[3] & 0x3F );

                if( !QV_CHAR_OK( ch ) )
                    return { in, out };

                *out++ = ch;
                in += 4;
            }
            else
                return { in, out };
        }

        if( inEnd - in < 4 && in < inEnd && *in >= 0x80 )
            return { in, out };
    }

    return { in, out };
}

// The character of a sequence, or the byte order mark.
void putChar( Source *csc, QV_CHAR ch, bool fromSequence, QV_CHAR *&out )
{
    bool mark = fromSequence && ch == 0xFEFF && !csc->firstCharDone &&
                !( csc->flags & QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK );

    csc->firstCharDone = QV_TRUE;

    if( !mark )
        *out++ = ch;
}

// Invalid input, which leads to a state; false when the read has to fail.
bool takeInvalid( Source *csc, QV_INT state, QV_CHAR *&out )
{
    QV_CHAR *before = out;

    csc->state = state;

    if( !qv::putInvalid( csc, &out ) )
        return false;

    if( out != before )
        csc->firstCharDone = QV_TRUE;

    return true;
}

// Takes one byte in whatever state, and gives at most one character; false when the read has to fail.
bool takeByte( Source *csc, uint8_t byte, QV_CHAR *&out )
{
    if( csc->state == INSIDE )
    {
        // What breaks a sequence goes with it.
        if( !isTail( byte ) )
            return takeInvalid( csc, RESYNCHRONISING, out );

        csc->value = csc->value << 6 | ( byte & 0x3F );

        if( --csc->missing > 0 )
            return true;

        if( !QV_CHAR_OK( csc->value ) )
            return takeInvalid( csc, OUTSIDE, out );

        csc->state = OUTSIDE;
        putChar( csc, csc->value, true, out );

        return true;
    }

    if( byte < 0x80 )
    {
        csc->state = OUTSIDE;
        putChar( csc, byte, false, out );

        return true;
    }

    if( byte >= 0xC0 && byte < 0xF8 )
    {
        csc->state   = INSIDE;
        csc->missing = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
        csc->value   = byte & ( 0x3F >> csc->missing );

        return true;
    }

    // The tail of a bad sequence has been paid for already.
    if( csc->state == RESYNCHRONISING && isTail( byte ) )
        return true;

    return takeInvalid( csc, RESYNCHRONISING, out );
}

QV_BOOL readChars( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
{
    Source *csc = static_cast< Source * >( closure );
    QV_BOOL ok  = QV_TRUE;

    while( ok && *charsRead < maxCharCount )
    {
        QV_CHAR *out = chars + *charsRead;

        if( csc->left() == 0 && !qv::refillCache( csc ) )
        {
            ok         = csc->state == INSIDE && !takeInvalid( csc, OUTSIDE, out ) ? QV_FALSE : qv::endOfBytes( csc );
            *charsRead = out - chars;
            break;
        }

        // A byte gives one character at most.
        const uint8_t *in     = csc->cache + csc->cachePos;
        const uint8_t *inEnd  = csc->cache + csc->cacheLength;
        const QV_CHAR *outEnd = out + std::min( maxCharCount - *charsRead, csc->left() );

        if( csc->state == OUTSIDE && csc->firstCharDone )
        {
            Progress progress = takeSequences( in, inEnd, out, outEnd );
            in                = progress.in;
            out               = progress.out;
        }

        if( in < inEnd && out < outEnd )
            ok = takeByte( csc, *in++, out );

        csc->cachePos = in - csc->cache;
        *charsRead    = out - chars;
    }

    return ok;
}
} // namespace

QV_CHAR_SOURCE *qv___CharsetUtf8CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    QV_CHECK( byteSource );

    qv::Ref< Source > csc(
        qv::createCodecSource< Source >( qv___CharsetUtf8CharSourceClosureSort(), byteSource, flags ) );
    csc->state         = OUTSIDE;
    csc->firstCharDone = QV_FALSE;
    csc->value         = 0;
    csc->missing       = 0;

    return qv::createCharSource( qv::readString< readChars, 1 >, readChars, csc.get() );
}
