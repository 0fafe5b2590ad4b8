#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_utf_private.h"
#include "qv/io/qv_char_sink_private.h"

#include <cstring>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

struct QV___CHARSET_UTF8_CHAR_SINK_CLOSURE : qv::CodecSink
{
};

QV___FAMILY(
    ___CharsetUtf8CharSinkClosure, QV___CHARSET_UTF8_CHAR_SINK_CLOSURE, qv::freeCodecSink, nullptr, nullptr )

namespace
{
using Sink = QV___CHARSET_UTF8_CHAR_SINK_CLOSURE;

QV_INT encodedLength( QV_CHAR ch )
{
    return ch < 0x80 ? 1 : ch < 0x800 ? 2 : ch < 0x10000 ? 3 : 4;
}

// Writes the bytes of one character and gives their number.
QV_INT encode( QV_CHAR ch, uint8_t *out )
{
    if( ch < 0x80 )
    {
        out[0] = static_cast< uint8_t >( ch );
        return 1;
    }

    if( ch < 0x800 )
    {
        out[0] = static_cast< uint8_t >( 0xC0 | ch >> 6 );
        out[1] = static_cast< uint8_t >( 0x80 | ( ch & 0x3F ) );
        return 2;
    }

    if( ch < 0x10000 )
    {
        out[0] = static_cast< uint8_t >( 0xE0 | ch >> 12 );
        out[1] = static_cast< uint8_t >( 0x80 | ( ch >> 6 & 0x3F ) );
        out[2] = static_cast< uint8_t >( 0x80 | ( ch & 0x3F ) );
        return 3;
    }

    out[0] = static_cast< uint8_t >( 0xF0 | ch >> 18 );
    out[1] = static_cast< uint8_t >( 0x80 | ( ch >> 12 & 0x3F ) );
    out[2] = static_cast< uint8_t >( 0x80 | ( ch >> 6 & 0x3F ) );
    out[3] = static_cast< uint8_t >( 0x80 | ( ch & 0x3F ) );
    return 4;
}

struct Progress
{
    const QV_CHAR *in;
    uint8_t       *out;
};

#ifdef __x86_64__

// What putSparse() takes, and the room behind the next character without which it stops.
const QV_INT STRETCH       = 64;
const QV_INT STRETCH_BYTES = STRETCH + 4;

// Narrows 64 characters to bytes. The bits of the result tell which of them are no ASCII; their bytes mean nothing.
uint64_t narrow( const QV_CHAR *in, uint8_t *bytes )
{
    uint64_t others = 0;

    for( int i = 0; i < STRETCH; i += 16 )
    {
        const __m128i *from = reinterpret_cast< const __m128i * >( in + i );

        // What is more than a byte can hold becomes 0xFF on its way.
        __m128i low  = _mm_packs_epi32( _mm_loadu_si128( from ), _mm_loadu_si128( from + 1 ) );
        __m128i high = _mm_packs_epi32( _mm_loadu_si128( from + 2 ), _mm_loadu_si128( from + 3 ) );
        __m128i all  = _mm_packus_epi16( low, high );

        _mm_storeu_si128( reinterpret_cast< __m128i * >( bytes + i ), all );
        others |= static_cast< uint64_t >( _mm_movemask_epi8( all ) ) << i;
    }

    return others;
}

// Encodes a stretch of 64 characters, or a part of it where three in a row are no ASCII, one takes 4 bytes or is
// invalid, or there may be no room. Where ASCII is mixed with other characters depends on the text, and branches for
// single characters or short blocks would be foreseen badly; here one is left for each stretch.
Progress putSparse( const QV_CHAR *in, uint8_t *out, const uint8_t *outEnd )
{
    uint8_t  bytes[2 * STRETCH]; // the second half is copied but not used
    uint64_t others = narrow( in, bytes );
    uint64_t dense  = others & others >> 1 & others >> 2;
    int      end    = dense ? __builtin_ctzll( dense ) : static_cast< int >( STRETCH );

    for( int at = 0;; at++ )
    {
        // The next one that is no ASCII, or the end.
        int next = others ? std::min( __builtin_ctzll( others ), end ) : end;

        memcpy( out, bytes + at, STRETCH / 2 );

        if( next - at > STRETCH / 2 )
            memcpy( out + STRETCH / 2, bytes + at + STRETCH / 2, STRETCH / 2 );

        out += next - at;
        at = next;

        if( at == end || in[at] > 0xFFFF || outEnd - out < STRETCH_BYTES )
            return { in + at, out };

        // Both forms, to choose one without a branch.
        uint32_t ch      = in[at];
        bool     isThree = ch > 0x7FF;
        uint32_t two     = 0x80C0 | ch >> 6 | ( ch & 0x3F ) << 8;
        uint32_t three   = 0x8080E0 | ch >> 12 | ( ch >> 6 & 0x3F ) << 8 | ( ch & 0x3F ) << 16;
        uint32_t form    = isThree ? three : two;

        memcpy( out, &form, 4 );
        out += isThree ? 3 : 2;
        others &= others - 1;
    }
}

// What putBlock() and putWide() take, and how many bytes they may write.
const QV_INT BLOCK       = 8;
const QV_INT BLOCK_BYTES = 3 * BLOCK + 1;

// Encodes 8 characters at once when none of them takes more than 2 bytes, and gives the end of the bytes, else null.
// In the text of most alphabets 1 and 2 bytes alternate at any time; a branch for each character would be foreseen
// badly.
uint8_t *putBlock( const QV_CHAR *in, uint8_t *out )
{
    const __m128i *from  = reinterpret_cast< const __m128i * >( in );
    __m128i        low   = _mm_loadu_si128( from );
    __m128i        high  = _mm_loadu_si128( from + 1 );
    __m128i        words = _mm_packs_epi32( low, high );
    __m128i        all   = _mm_or_si128( low, high );
    __m128i        zero  = _mm_setzero_si128();

    if( _mm_movemask_epi8( _mm_cmpeq_epi32( _mm_srli_epi32( all, 7 ), zero ) ) == 0xFFFF )
    {
        _mm_storel_epi64( reinterpret_cast< __m128i * >( out ), _mm_packus_epi16( words, words ) );
        return out + BLOCK;
    }

    if( _mm_movemask_epi8( _mm_cmpeq_epi32( _mm_srli_epi32( all, 11 ), zero ) ) != 0xFFFF )
        return nullptr;

    // Either form of every character, the first byte in the lower half.
    __m128i isPair = _mm_cmpgt_epi16( words, _mm_set1_epi16( 0x7F ) );
    __m128i tails  = _mm_slli_epi16( _mm_and_si128( words, _mm_set1_epi16( 0x3F ) ), 8 );
    __m128i leads  = _mm_or_si128( _mm_srli_epi16( words, 6 ), _mm_set1_epi16( static_cast< short >( 0x80C0 ) ) );
    __m128i pairs  = _mm_and_si128( isPair, _mm_or_si128( leads, tails ) );
    __m128i forms  = _mm_or_si128( pairs, _mm_andnot_si128( isPair, words ) );

    // The ends of all characters as sums over their lengths, so that no store has to wait for the one before.
    __m128i ends = _mm_sub_epi16( _mm_set1_epi16( 1 ), isPair );

    ends = _mm_add_epi16( ends, _mm_slli_si128( ends, 2 ) );
    ends = _mm_add_epi16( ends, _mm_slli_si128( ends, 4 ) );
    ends = _mm_add_epi16( ends, _mm_slli_si128( ends, 8 ) );

    uint8_t *next = out;

    for( int half = 0; half < 2; half++ )
    {
        // Shifting words out of a general register is cheaper than extracting each from the vector.
        uint64_t form = static_cast< uint64_t >( _mm_cvtsi128_si64( forms ) );
        uint64_t end  = static_cast< uint64_t >( _mm_cvtsi128_si64( ends ) );

        for( int i = 0; i < BLOCK / 2; i++ )
        {
            uint16_t bytes = static_cast< uint16_t >( form >> 16 * i );
            memcpy( next, &bytes, 2 );
            next = out + static_cast< uint16_t >( end >> 16 * i );
        }

        forms = _mm_unpackhi_epi64( forms, forms );
        ends  = _mm_unpackhi_epi64( ends, ends );
    }

    return next;
}

// Encodes 8 characters of up to 3 bytes, and gives the end of the bytes, else null. Blanks stand anywhere among the
// others, so every form is made and one is chosen without a branch.
uint8_t *putWide( const QV_CHAR *in, uint8_t *out )
{
    QV_CHAR all = 0;

    for( QV_INT i = 0; i < BLOCK; i++ )
        all |= in[i];

    if( all > 0xFFFF )
        return nullptr;

    for( QV_INT i = 0; i < BLOCK; i++ )
    {
        QV_CHAR  ch    = in[i];
        uint32_t two   = 0x80C0 | ch >> 6 | ( ch & 0x3F ) << 8;
        uint32_t three = 0x8080E0 | ch >> 12 | ( ch >> 6 & 0x3F ) << 8 | ( ch & 0x3F ) << 16;
        uint32_t form  = ch > 0x7FF ? three : ch > 0x7F ? two : ch;

        memcpy( out, &form, 4 );
        out += 1 + ( ch > 0x7F ) + ( ch > 0x7FF );
    }

    return out;
}

#else

const QV_INT STRETCH       = 64;
const QV_INT STRETCH_BYTES = 64;

// Encodes the leading ASCII of 64 characters.
Progress putSparse( const QV_CHAR *in, uint8_t *out, const uint8_t * )
{
    const QV_CHAR *end = in + STRETCH;

    while( in < end && *in < 0x80 )
        *out++ = static_cast< uint8_t >( *in++ );

    return { in, out };
}

const QV_INT BLOCK       = 8;
const QV_INT BLOCK_BYTES = 8;

// Encodes 8 characters at once when all are ASCII, and gives the end of the bytes, else null.
uint8_t *putBlock( const QV_CHAR *in, uint8_t *out )
{
    for( QV_INT i = 0; i < BLOCK; i++ )
    {
        if( in[i] >= 0x80 )
            return nullptr;

        out[i] = static_cast< uint8_t >( in[i] );
    }

    return out + BLOCK;
}

uint8_t *putWide( const QV_CHAR *, uint8_t * )
{
    return nullptr;
}

#endif

// Encodes until the characters end, something invalid comes or there may be no room for the next one.
Progress putChars( const QV_CHAR *in, const QV_CHAR *inEnd, uint8_t *out, const uint8_t *outEnd )
{
    while( in < inEnd && outEnd - out >= 4 )
    {
        while( inEnd - in >= STRETCH && outEnd - out >= STRETCH_BYTES )
        {
            Progress progress = putSparse( in, out, outEnd );
            bool     whole    = progress.in - in == STRETCH;

            in  = progress.in;
            out = progress.out;

            if( !whole )
                break;
        }

        while( inEnd - in >= BLOCK && outEnd - out >= BLOCK_BYTES )
        {
            uint8_t *behind = putBlock( in, out );

            if( !behind )
                behind = putWide( in, out );

            if( !behind )
                break;

            bool isAscii = behind == out + BLOCK;

            in += BLOCK;
            out = behind;

            if( isAscii )
                break;
        }

        // What the blocks leave, up to where ASCII follows ASCII or they can go on.
        while( in < inEnd && outEnd - out >= 4 )
        {
            QV_CHAR ch = *in;

            if( !QV_CHAR_OK( ch ) )
                return { in, out };

            out += encode( ch, out );
            in++;

            if( ch < 0x80 && in < inEnd && *in < 0x80 )
                break;
        }
    }

    return { in, out };
}

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink          *csc = static_cast< Sink * >( closure );
    const QV_CHAR *in  = chars;
    const QV_CHAR *end = chars + charCount;

    for( ;; )
    {
        Progress progress = putChars( in, end, csc->cache + csc->cacheLength, csc->cache + qv::CODEC_CACHE );
        in                = progress.in;
        csc->cacheLength  = progress.out - csc->cache;

        if( in == end )
            return QV_TRUE;

        QV_CHAR ch = *in++;

        // No String holds such a value; this guards the bytes against everything else that writes.
        if( !QV_CHAR_OK( ch ) )
        {
            if( csc->flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
                return QV_FALSE;

            if( csc->flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS )
                continue;

            ch = qv::REPLACEMENT;
        }

        if( csc->room() < encodedLength( ch ) && !qv::flushCache( csc ) )
            return QV_FALSE;

        csc->cacheLength += encode( ch, csc->cache + csc->cacheLength );
    }
}

QV_BOOL write( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeChars( closure, qv::chars( qvs ) + charOffset, charCount );
}
} // namespace

QV_CHAR_SINK *qv___CharsetUtf8CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags )
{
    QV_CHECK( byteSink );

    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetUtf8CharSinkClosureSort(), byteSink, flags ) );

    if( flags & QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK )
        csc->cacheLength = encode( 0xFEFF, csc->cache );

    return qv::createCharSink( write, writeChars, qv::flushCodecSink, csc.get() );
}
