#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <cstring>

struct QV___CHARSET_MAP_CHAR_SINK_CLOSURE : qv::CodecSink
{
    QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc;
    QV_UNICODE_NORMALIZER         *normalizer;
    bool                           hasAscii;   // at its own values
    uint32_t                       memo[2048]; // what the function has told, by the lower bits of the character
};

namespace
{
using Sink = QV___CHARSET_MAP_CHAR_SINK_CLOSURE;

const QV_INT STRETCH     = 8192; // characters that are looked at before they are mapped; they stay at hand that long
const QV_INT PIECE       = 1024; // characters that come back from the normalizer at a time
const QV_INT BLOCK       = 8;
const QV_INT ASCII_PAUSE = 256; // characters in which it isn't looked for after something else has been found

// The letters of an alphabet and ASCII have places of their own here, so that a text soon has all of its characters.
const QV_CHAR MEMO_MASK = 2047;

// No character has all bits of an empty place.
uint32_t memoOf( QV_CHAR ch, uint8_t byte )
{
    return ch << 8 | byte;
}

void freeSink( QV_OBJ *thisObj )
{
    qv::freeCodecSink( thisObj );
    qv::drop( static_cast< Sink * >( thisObj )->normalizer );
}
} // namespace

QV___FAMILY( ___CharsetMapCharSinkClosure, QV___CHARSET_MAP_CHAR_SINK_CLOSURE, freeSink, nullptr, nullptr )

namespace
{
// What stands for a character that has no byte.
uint8_t replacementByte( Sink *csc )
{
    uint8_t byte = 0;

    if( !csc->mapFunc( qv::utf8::REPLACEMENT, &byte ) && !csc->mapFunc( U'?', &byte ) )
        byte = 0;

    return byte;
}

// Maps 8 characters at once; false if one of them is not in the memo, and then there is nothing at `out` that counts.
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

// Maps 16 characters of a set that has ASCII; false if one of them is something else.
bool putAscii( const QV_CHAR *in, uint8_t *out )
{
    QV_CHAR all = 0;

    for( QV_INT i = 0; i < 2 * BLOCK; i++ )
    {
        out[i] = static_cast< uint8_t >( in[i] );
        all |= in[i];
    }

    return all < 0x80;
}

// Stores a byte in the cache, which goes down as soon as it is full.
bool putByte( Sink *csc, uint8_t byte )
{
    csc->cache[csc->cacheLength++] = byte;

    return csc->room() > 0 || qv::flushCache( csc );
}

// Does what the flags say of a character that has no byte; false when the write has to fail.
bool putInvalid( Sink *csc )
{
    if( csc->flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER )
        return false;

    return csc->flags & QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS || putByte( csc, replacementByte( csc ) );
}

// Maps composed characters, all below 0x110000: the memo has room for no others.
bool put( Sink *csc, const QV_CHAR *in, QV_INT count )
{
    QV_ASSERT( qv::allCharsOk( in, count ) );

    const QV_CHAR *end   = in + count;
    const QV_CHAR *ascii = csc->hasAscii ? in : end; // where it is looked for again

    while( in < end )
    {
        // The cache goes down as soon as it is full, so a block has to leave a place in it.
        if( in >= ascii && end - in >= 2 * BLOCK && csc->room() > 2 * BLOCK )
        {
            if( putAscii( in, csc->cache + csc->cacheLength ) )
            {
                csc->cacheLength += 2 * BLOCK;
                in += 2 * BLOCK;
                continue;
            }

            ascii = in + ASCII_PAUSE;
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
            if( !putInvalid( csc ) )
                return false;

            continue;
        }

        csc->memo[ch & MEMO_MASK] = memoOf( ch, byte );

        if( !putByte( csc, byte ) )
            return false;
    }

    return true;
}

// Maps all that the normalizer has ready.
bool push( Sink *csc )
{
    QV_CHAR chars[PIECE];

    while( QV_INT count = qvUnicodeNormalizerReadChars( csc->normalizer, chars, PIECE ) )
        if( !put( csc, chars, count ) )
            return false;

    return true;
}

// True for a character that stays what it is and has nothing to do with what stands before it.
bool isInert( QV_CHAR ch )
{
    using namespace qv::unicode;

    return ch < 0x300 || ( QV_CHAR_OK( ch ) && composedQuickCheck( ch, false ) == 0 );
}

// The ranges that nearly all text in Latin and Cyrillic letters is made of: letters, punctuation and currencies. All
// characters in them are inert.
constexpr qv::vectors::Range COMMON[] = { { 0, 0x300 }, { 0x400, 0x483 }, { 0x2002, 0x20D0 } };

const QV_CHAR *skipInert( const QV_CHAR *in, const QV_CHAR *end )
{
    for( ;; )
    {
        in += qv::groupsBelow( in, end - in, 0x100 );
        in += qv::groupsIn( in, end - in, COMMON );

        for( QV_INT i = 0; i < BLOCK; i++, in++ )
            if( in == end || !isInert( *in ) )
                return in;
    }
}

QV_BOOL writeChars( QV_OBJ *closure, const QV_CHAR *chars, QV_INT charCount )
{
    Sink          *csc = static_cast< Sink * >( closure );
    const QV_CHAR *end = chars + charCount;

    while( chars < end )
    {
        const QV_CHAR *limit = chars + std::min( STRETCH, QV_INT( end - chars ) );
        const QV_CHAR *next  = skipInert( chars, limit );

        // Between the first and the last two of them there is nothing to compose: the first ends what came before, and
        // the last two stay in the normalizer, which would not have them readable yet.
        if( next - chars > 3 )
        {
            qvUnicodeNormalizerWriteChar( csc->normalizer, chars[0] );
            qvUnicodeNormalizerFlush( csc->normalizer );

            if( !push( csc ) || !put( csc, chars + 1, next - chars - 3 ) )
                return QV_FALSE;

            chars = next - 2;
        }

        // The last two, what isn't inert, and so on to where there may be some in a row again.
        while( next < limit && QV_CHAR_OK( *next ) && !( isInert( *next ) && next - chars >= BLOCK ) )
            next++;

        qvUnicodeNormalizerWriteChars( csc->normalizer, chars, next - chars );
        chars = next;

        if( !push( csc ) )
            return QV_FALSE;

        // No String holds such a value; this guards the tables against everything else that writes. It is a character
        // without a byte, which nothing joins, where the normalizer would leave it out.
        if( next < limit && !QV_CHAR_OK( *next ) )
        {
            qvUnicodeNormalizerFlush( csc->normalizer );

            if( !push( csc ) || !putInvalid( csc ) )
                return QV_FALSE;

            chars++;
        }
    }

    return QV_TRUE;
}

QV_BOOL write( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
{
    return writeChars( closure, qv::chars( qvs ) + charOffset, charCount );
}

QV_BOOL flush( QV_OBJ *closure )
{
    Sink *csc = static_cast< Sink * >( closure );
    qvUnicodeNormalizerFlush( csc->normalizer );

    // What is in the cache goes down in any case.
    bool pushed = push( csc );

    return qv::flushCache( csc ) && pushed ? QV_TRUE : QV_FALSE;
}
} // namespace

QV_CHAR_SINK *qv___CharsetMapCharSinkCreate(
    QV_BYTE_SINK *byteSink, QV_INT flags, QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc )
{
    QV_CHECK( byteSink );
    QV_CHECK( mapFunc );

    qv::Ref< Sink > csc( qv::createCodecSink< Sink >( qv___CharsetMapCharSinkClosureSort(), byteSink, flags ) );
    csc->mapFunc    = mapFunc;
    csc->normalizer = qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC );
    csc->hasAscii   = true;
    memset( csc->memo, 0xFF, sizeof( csc->memo ) );

    for( QV_CHAR ch = 0; ch < 0x80; ch++ )
    {
        uint8_t byte;

        if( !mapFunc( ch, &byte ) || byte != ch )
            csc->hasAscii = false;
    }

    return qv::createCharSink( write, writeChars, flush, csc.get() );
}
