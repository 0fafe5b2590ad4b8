#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/sys/qv_utf8_private.h"

struct QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE : qv::CodecSource
{
    QV_INT  state;
    QV_BOOL firstCharDone;
    QV_CHAR value;   // the bits of the sequence so far
    QV_INT  missing; // how many bytes it still lacks
};

QV___FAMILY(
    ___CharsetUtf8CharSourceClosure, QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
using Source = QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE;

// Where the next byte is.
const QV_INT OUTSIDE         = 0; // not inside a sequence
const QV_INT INSIDE          = 1;
const QV_INT RESYNCHRONISING = 2; // after a bad sequence, where further bytes of it are skipped

// Stores a character, unless it is the byte order mark.
void putChar( Source *csc, QV_CHAR ch, bool fromSequence, QV_CHAR *&out )
{
    bool mark =
        fromSequence && ch == 0xFEFF && !csc->firstCharDone && !( csc->flags & QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK );

    csc->firstCharDone = QV_TRUE;

    if( !mark )
        *out++ = ch;
}

// Treats input as invalid and goes to a state. False if the read has to fail.
bool takeInvalid( Source *csc, QV_INT state, QV_CHAR *&out )
{
    QV_CHAR *before = out;

    csc->state = state;

    if( !( csc->left() == 0 ? qv::putCutOff( csc, &out ) : qv::putInvalid( csc, &out, 0 ) ) )
        return false;

    if( out != before )
        csc->firstCharDone = QV_TRUE;

    return true;
}

// Reads one byte, in any state, and stores at most one character. False if the read has to fail.
bool takeByte( Source *csc, uint8_t byte, QV_CHAR *&out )
{
    if( csc->state == INSIDE )
    {
        // The byte that breaks a sequence is lost with it.
        if( !qv::utf8::follows( byte ) )
            return takeInvalid( csc, RESYNCHRONISING, out );

        csc->value = qv::utf8::nextBits( csc->value, byte );

        if( --csc->missing > 0 )
            return true;

        if( !QV_CHAR_OK( csc->value ) )
            return takeInvalid( csc, OUTSIDE, out );

        csc->state = OUTSIDE;
        putChar( csc, csc->value, true, out );

        return true;
    }

    int following = qv::utf8::following( byte );

    if( following == 0 )
    {
        csc->state = OUTSIDE;
        putChar( csc, byte, false, out );

        return true;
    }

    if( following > 0 )
    {
        csc->state   = INSIDE;
        csc->missing = following;
        csc->value   = qv::utf8::firstBits( byte, following );

        return true;
    }

    // The bad sequence has been replaced already, and this byte belongs to it.
    if( csc->state == RESYNCHRONISING && qv::utf8::follows( byte ) )
        return true;

    return takeInvalid( csc, RESYNCHRONISING, out );
}

QV_BOOL readUtf8( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
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

        // A byte becomes one character at most.
        const uint8_t *in     = csc->cache + csc->cachePos;
        const uint8_t *inEnd  = csc->cache + csc->cacheLength;
        QV_CHAR       *outEnd = out + std::min( maxCharCount - *charsRead, csc->left() );

        if( csc->state == OUTSIDE && csc->firstCharDone )
        {
            qv::utf8::Decoded done = qv::utf8::decode( in, inEnd, out, outEnd );
            in                     = done.in;
            out                    = done.out;
        }

        csc->cachePos = in - csc->cache;

        if( in < inEnd && out < outEnd )
        {
            ok = takeByte( csc, *in, out );
            csc->cachePos++;
        }

        *charsRead = out - chars;
        QV_ASSERT( csc->state != INSIDE || ( csc->missing >= 1 && csc->missing < qv::utf8::LONGEST ) );
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

    return qv::createCharSource( qv::readString< readUtf8, 1 >, readUtf8, csc.get() );
}
