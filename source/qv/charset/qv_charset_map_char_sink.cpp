#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <cstring>

// Windows of 128 characters each that the text has lately been in, for the vectors of 64 bytes.
struct Windows
{
    qv::vectors::CharBytes of[qv::vectors::CHAR_WINDOWS];
    uint8_t                next;   // which of them is filled next
    uint8_t                missed; // the block of the last character that was in none
    uint32_t               misses; // since a window was filled
    uint32_t               needed; // until one is filled again
};

struct QV___CHARSET_MAP_CHAR_SINK_CLOSURE : qv::CodecSink
{
    QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc;
    QV_UNICODE_NORMALIZER         *normalizer;
    bool                           hasAscii;   // each ASCII character is the byte of the same value
    uint32_t                       memo[2048]; // results of the function, indexed by the lower bits of the character
    alignas( QV_INT ) Windows windows;         // not declared
};

namespace
{
using Sink = QV___CHARSET_MAP_CHAR_SINK_CLOSURE;

const QV_INT STRETCH = 8192; // characters checked before they are mapped, which the processor's cache still holds then
const QV_INT PIECE   = 1024; // characters that are read from the normalizer at a time
const QV_INT BLOCK   = 8;
const QV_INT RUN     = 32;  // characters that a run taken by the vectors should have
const QV_INT PAUSE   = 256; // characters after a shorter one in which no run is looked for

const uint32_t FIRST_NEEDED = 2; // characters outside of the windows before one is filled

const QV_INT MOST_SINGLY = 64; // characters that are looked at one by one

// So many places that the letters of an alphabet and ASCII do not share one.
const QV_CHAR MEMO_MASK = 2047;

// An empty place has all bits set, which no character has.
uint32_t memoOf( QV_CHAR ch, uint8_t byte )
{
    return ch << 8 | byte;
}

void freeMapCharSinkClosure( QV_OBJ *thisObj )
{
    qv::freeCodecSink( thisObj );
    qv::drop( static_cast< Sink * >( thisObj )->normalizer );
}
} // namespace

QV___FAMILY(
    ___CharsetMapCharSinkClosure, QV___CHARSET_MAP_CHAR_SINK_CLOSURE, freeMapCharSinkClosure, nullptr, nullptr )

namespace
{
// The byte that replaces a character without a byte.
uint8_t replacementByte( Sink *csc )
{
    uint8_t byte = 0;

    if( !csc->mapFunc( qv::utf8::REPLACEMENT, &byte ) && !csc->mapFunc( U'?', &byte ) )
        byte = 0;

    return byte;
}

// Maps 8 characters at once. False if one of them is not in the memo; what is at `out` is undefined then.
bool putBlock( const uint32_t *memo, const QV_CHAR *in, uint8_t *out )
{
    uint32_t unknown = 0;

    for( QV_INT i = 0; i < BLOCK; i++ )
    {
        uint32_t told = memo[in[i] & MEMO_MASK];
        out[i]        = static_cast< uint8_t >( told );
        unknown |= told ^ memoOf( in[i], 0 );
    }

    return unknown <= 0xFF;
}

// Appends a byte to the cache, which is flushed as soon as it is full.
bool putByte( Sink *csc, uint8_t byte )
{
    csc->cache[csc->cacheLength++] = byte;

    return csc->room() > 0 || qv::flushCache( csc );
}

// Treats a character without a byte as the flags say. False if the write has to fail.
bool putInvalid( Sink *csc, QV_CHAR ch )
{
    qv::Invalid invalid = qv::onInvalid( csc->flags );

    if( invalid == qv::Invalid::REPLACE )
        return putByte( csc, replacementByte( csc ) );

    if( invalid == qv::Invalid::FAIL )
        qv::setCharError( ch );

    return invalid == qv::Invalid::LEAVE_OUT;
}

// Fills a window with the block of a character that no window has a byte for, if its block is in none yet. The first
// blocks, one for each window, are taken at once where much text follows. Any other is taken if the last such character was
// of the same block, and there were twice as many of them as before the window that was filled last, so that a text of
// characters from everywhere does not fill them again and again. False if nothing was filled.
bool learn( Sink *csc, QV_CHAR ch, QV_INT following )
{
    const QV_INT MUCH = 1024;

    Windows *windows = &csc->windows;
    QV_CHAR  block   = ch >> 7;

    for( const qv::vectors::CharBytes &window : windows->of )
        if( window.block == block )
            return false;

    bool isNear     = block == windows->missed;
    bool isSoon     = windows->needed < FIRST_NEEDED << qv::vectors::CHAR_WINDOWS && following >= MUCH;
    windows->missed = static_cast< uint8_t >( std::min( block, QV_CHAR( 255 ) ) );

    if( ( ( ++windows->misses < windows->needed || !isNear ) && !isSoon ) || block >= 255 )
        return false;

    qv::vectors::CharBytes *window = &windows->of[windows->next];
    window->block                  = static_cast< uint8_t >( block );

    for( QV_CHAR i = 0; i < 128; i++ )
        if( !csc->mapFunc( block << 7 | i, &window->bytes[i] ) )
            window->bytes[i] = 0;

    windows->next   = ( windows->next + 1 ) % qv::vectors::CHAR_WINDOWS;
    windows->misses = 0;
    windows->needed = 2 * std::min( windows->needed, UINT32_MAX / 2 );

    return true;
}

[[maybe_unused]] bool areMapped( Sink *csc, const QV_CHAR *in, QV_INT count, const uint8_t *out )
{
    uint8_t byte;

    for( QV_INT i = 0; i < count; i++ )
        if( !csc->mapFunc( in[i], &byte ) || byte != out[i] )
            return false;

    return true;
}

// Maps the characters of a run for which no look at each of them is needed: ASCII, and what is in the windows.
QV_INT mapRun( Sink *csc, const QV_CHAR *in, QV_INT count, uint8_t *out )
{
    QV_INT done = qv::vectors::has64() ? qv::encodeBytes64( csc->windows.of, in, count, out )
                                       : qv::utf8::encodeLeadingAscii( out, in, count );

    QV_ASSERT( areMapped( csc, in, done, out ) );
    return done;
}

// Maps composed characters, which must all be below 0x110000, since an empty place of the memo looks like one above.
bool mapChars( Sink *csc, const QV_CHAR *in, QV_INT count )
{
    QV_ASSERT( qv::allCharsOk( in, count ) );

    const QV_CHAR *end = in + count;
    const QV_CHAR *run = csc->hasAscii ? in : end; // where one is looked for next

    while( in < end )
    {
        // The cache is flushed as soon as it is full, so a block must leave a place free.
        if( in >= run && end - in >= 2 * BLOCK && csc->room() > 2 * BLOCK )
        {
            uint8_t *out  = csc->cache + csc->cacheLength;
            QV_INT   most = std::min( QV_INT( end - in ), csc->room() - 1 );
            QV_INT   done = mapRun( csc, in, most, out );
            csc->cacheLength += done;
            in += done;

            if( done == most )
                continue;

            bool isNew = qv::vectors::has64() && learn( csc, *in, end - in );
            run        = isNew || done >= RUN ? in : in + PAUSE;
        }

        if( end - in >= BLOCK && csc->room() > BLOCK && putBlock( csc->memo, in, csc->cache + csc->cacheLength ) )
        {
            csc->cacheLength += BLOCK;
            in += BLOCK;
            continue;
        }

        QV_CHAR ch = *in++;
        uint8_t byte;

        if( !csc->mapFunc( ch, &byte ) )
        {
            if( !putInvalid( csc, ch ) )
                return false;

            continue;
        }

        csc->memo[ch & MEMO_MASK] = memoOf( ch, byte );

        if( !putByte( csc, byte ) )
            return false;
    }

    return true;
}

// Maps all that the normalizer has finished.
bool mapReadable( Sink *csc )
{
    QV_CHAR chars[PIECE];

    while( QV_INT count = qvUnicodeNormalizerReadChars( csc->normalizer, chars, PIECE ) )
        if( !mapChars( csc, chars, count ) )
            return false;

    return true;
}

// True for a character that stays as it is and does not join the one before it.
bool isInert( QV_CHAR ch )
{
    using namespace qv::unicode;

    return ch < 0x300 || ( QV_CHAR_OK( ch ) && composedQuickCheck( ch, false ) == 0 );
}

// The ranges that nearly all text in Latin, Greek and Cyrillic letters is made of: letters, punctuation and currencies. All
// characters in them are inert.
constexpr qv::vectors::Range COMMON[] = { { 0, 0x300 }, { 0x388, 0x483 }, { 0x2002, 0x20D0 } };

[[maybe_unused]] bool areInert( const QV_CHAR *in, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
        if( !isInert( in[i] ) )
            return false;

    return true;
}

// Where the vectors take few characters, more and more are looked at one by one before they are asked again.
const QV_CHAR *skipInert( const QV_CHAR *in, const QV_CHAR *end )
{
    for( QV_INT singly = BLOCK;; )
    {
        const QV_CHAR *start = in;
        in += qv::groupsBelow( in, end - in, 0x100 );

        QV_INT common =
            qv::vectors::has64() ? qv::charsIn64( in, end - in, COMMON ) : qv::groupsIn( in, end - in, COMMON );
        QV_ASSERT( areInert( in, common ) );
        in += common;
        singly = in - start >= 2 * BLOCK ? BLOCK : std::min( 2 * singly, MOST_SINGLY );

        for( QV_INT i = 0; i < singly; i++, in++ )
            if( in == end || !isInert( *in ) )
                return in;
    }
}

QV_BOOL writeMapped( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink          *csc = static_cast< Sink * >( closure );
    const QV_CHAR *end = chars + charCount;

    while( chars < end )
    {
        const QV_CHAR *limit = chars + std::min( STRETCH, QV_INT( end - chars ) );
        const QV_CHAR *next  = skipInert( chars, limit );

        // Nothing composes between the first and the last two of these characters: the first ends what came before, and
        // the last two stay in the normalizer, since what follows may join them.
        if( next - chars > 3 )
        {
            qvUnicodeNormalizerWriteChar( csc->normalizer, chars[0] );
            qvUnicodeNormalizerFlush( csc->normalizer );

            if( !mapReadable( csc ) || !mapChars( csc, chars + 1, next - chars - 3 ) )
                return QV_FALSE;

            chars = next - 2;
        }

        // Normalizes the last two, those that are not inert, and so on up to a place where several inert ones may
        // follow.
        while( next < limit && QV_CHAR_OK( *next ) && !( isInert( *next ) && next - chars >= BLOCK ) )
            next++;

        qvUnicodeNormalizerWriteChars( csc->normalizer, chars, next - chars );
        chars = next;

        if( !mapReadable( csc ) )
            return QV_FALSE;

        // No String holds such a value, but a caller that does not go through one may write it. It is treated as a
        // character without a byte that joins no other; the normalizer would leave it out.
        if( next < limit && !QV_CHAR_OK( *next ) )
        {
            qvUnicodeNormalizerFlush( csc->normalizer );

            if( !mapReadable( csc ) || !putInvalid( csc, *next ) )
                return QV_FALSE;

            chars++;
        }
    }

    return QV_TRUE;
}

QV_BOOL flushMapped( QV_OBJ *closure )
{
    Sink *csc = static_cast< Sink * >( closure );
    qvUnicodeNormalizerFlush( csc->normalizer );

    // The cache is flushed also if that fails.
    bool pushed = mapReadable( csc );

    return qv::flushCache( csc ) && pushed ? QV_TRUE : QV_FALSE;
}
} // namespace

QV_CHAR_SINK *qv___CharsetMapCharSinkCreate(
    QV_BYTE_SINK *byteSink, QV_INT flags, QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc )
{
    QV_CHECK( byteSink );
    QV_CHECK( mapFunc );

    qv::Ref< Sink > csc( qv::createCodecSink< Sink >(
        qv___CharsetMapCharSinkClosureSort(), byteSink, flags, sizeof( Sink ) - offsetof( Sink, windows ) ) );
    csc->mapFunc    = mapFunc;
    csc->normalizer = qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC );
    csc->hasAscii   = true;
    memset( csc->memo, 0xFF, sizeof( csc->memo ) );

    csc->windows        = {};
    csc->windows.needed = FIRST_NEEDED;

    for( qv::vectors::CharBytes &window : csc->windows.of )
        window.block = 255;

    for( QV_CHAR ch = 0; ch < 0x80; ch++ )
    {
        uint8_t byte;

        if( !mapFunc( ch, &byte ) || byte != ch )
            csc->hasAscii = false;
    }

    return qv::createCharSink( qv::writeString< writeMapped >, writeMapped, flushMapped, csc.get() );
}
