/** @file
    UTF-8: the one place that knows how characters and bytes stand for each other.

    A sequence is good if its first byte demands as many following ones as there are, and its value is below 0x110000.
    Overlong forms and surrogates are good here. What becomes of anything else differs from caller to caller, so nothing
    here decides it: the loops over long runs stop before it.

    Every loop runs on kernels: plain code, and code for the vectors of the processor where it has them; which of them run
    is chosen in qv_vectors_private.h. All give the same result. Nothing here has state, so any thread may call. */

#ifndef QV_UTF8_PRIVATE_H
#define QV_UTF8_PRIVATE_H

#include "qv/sys/qv_types.h"
#include "qv/sys/qv_vectors_private.h"

#include <string.h>

namespace qv::utf8
{
/** Stands for what cannot be read or written. */
const QV_CHAR REPLACEMENT = 0xFFFD;

/** Bytes of the longest sequence. */
const QV_INT LONGEST = 4;

/** True for a byte that follows in a sequence. */
inline bool follows( uint8_t byte )
{
    return ( byte & 0xC0 ) == 0x80;
}

/** True when all eight bytes of a word are ASCII. */
inline bool isAscii( uint64_t word )
{
    return ( word & UINT64_C( 0x8080808080808080 ) ) == 0;
}

/** How many bytes follow a first one: 0 after ASCII, -1 for a byte that begins nothing. */
inline int following( uint8_t first )
{
    return first < 0x80 ? 0 : first < 0xC0 ? -1 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : first < 0xF8 ? 3 : -1;
}

/** What a first byte with so many following ones has of the value, and what it is with the next one. */
inline QV_CHAR firstBits( uint8_t first, int following )
{
    return following == 0 ? first : first & ( 0x3F >> following );
}

inline QV_CHAR nextBits( QV_CHAR value, uint8_t next )
{
    return value << 6 | ( next & 0x3F );
}

/** Bytes of a character, which is below 0x110000. */
inline QV_INT length( QV_CHAR ch )
{
    return 1 + ( ch >= 0x80 ) + ( ch >= 0x800 ) + ( ch >= 0x10000 );
}

/** Writes a character, which is below 0x110000. Returns the number of bytes; there is room for them. */
inline QV_INT put( QV_CHAR ch, uint8_t *out )
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

/** Reads the sequence at `in`, which is before `end`, if it is good. Returns the number of its bytes, or 0. */
inline QV_INT take( const uint8_t *in, const uint8_t *end, QV_CHAR *ch )
{
    int     more  = following( *in );
    QV_CHAR value = firstBits( *in, more < 0 ? 0 : more );

    if( more < 0 || end - in <= more )
        return 0;

    for( int i = 1; i <= more; i++ )
    {
        if( !follows( in[i] ) )
            return 0;

        value = nextBits( value, in[i] );
    }

    *ch = value;
    return QV_CHAR_OK( value ) ? more + 1 : 0;
}

/* Long runs ------------------------------------------------------------------------------------------------------ */

struct Decoded
{
    const uint8_t *in;
    QV_CHAR       *out;
};

struct Counted
{
    const uint8_t *in;
    QV_INT         count;
};

struct Encoded
{
    const QV_CHAR *in;
    uint8_t       *out;
};

/** Decodes good sequences until the bytes or the room end or something else comes, and tells how far it got. Nothing
    after that place is written. */
Decoded decode( const uint8_t *in, const uint8_t *inEnd, QV_CHAR *out, QV_CHAR *outEnd );

/** Counts the characters that decode() gives with any room. */
Counted count( const uint8_t *in, const uint8_t *inEnd );

/** Encodes until the characters end, one is 0x110000 or above, or the next one does not fit. After the place that it
    got to, bytes are written only if at least as many characters are left. */
Encoded encode( const QV_CHAR *in, const QV_CHAR *inEnd, uint8_t *out, uint8_t *outEnd );

/** Bytes of all characters, with U+FFFD in the place of values of 0x110000 and above. */
QV_INT length( const QV_CHAR *in, QV_INT count );

/** Writes the ASCII that `count` bytes begin with as characters, unless `out` is null, and returns its length. There is
    room for all of them. Inline for texts that are short as a rule. */
inline QV_INT decodeLeadingAscii( QV_CHAR *out, const uint8_t *in, QV_INT count )
{
    QV_INT i = 0;

    for( uint64_t word; count - i >= 8 && ( memcpy( &word, in + i, 8 ), isAscii( word ) ); i += 8 )
        if( out )
            for( QV_INT k = i; k < i + 8; k++ )
                out[k] = in[k];

    for( ; i < count && in[i] < 0x80; i++ )
        if( out )
            out[i] = in[i];

    return i;
}

/** Writes the ASCII that a text begins with and returns its length. There is room for all characters. */
QV_INT encodeLeadingAscii( uint8_t *out, const QV_CHAR *in, QV_INT count );

/** True if a text of `size` bytes, above 0, is ASCII. For short texts. */
inline bool isShortAscii( const uint8_t *in, QV_INT size )
{
    const QV_INT WORD = sizeof( uint64_t );
    uint64_t     all  = 0, word;
    QV_INT       i    = 0;

#if QV___VECTORS_16
    auto load = [in]( QV_INT at ) { return _mm_loadu_si128( reinterpret_cast< const __m128i * >( in + at ) ); };

    if( size >= 16 )
    {
        __m128i both = load( size - 16 ); // it may overlap the ones before

        for( ; i < size - 16; i += 16 )
            both = _mm_or_si128( both, load( i ) );

        return _mm_movemask_epi8( both ) == 0;
    }
#endif

    for( ; i + WORD <= size; i += WORD )
    {
        memcpy( &word, in + i, sizeof( word ) );
        all |= word;
    }

    for( ; i < size; i++ )
        all |= in[i];

    return isAscii( all );
}

/** Writes eight bytes of ASCII as characters. */
inline void decodeEightAscii( const uint8_t *in, QV_CHAR *out )
{
#if QV___VECTORS_16
    __m128i zero  = _mm_setzero_si128();
    __m128i words = _mm_unpacklo_epi8( _mm_loadl_epi64( reinterpret_cast< const __m128i * >( in ) ), zero );
    _mm_storeu_si128( reinterpret_cast< __m128i * >( out ), _mm_unpacklo_epi16( words, zero ) );
    _mm_storeu_si128( reinterpret_cast< __m128i * >( out + 4 ), _mm_unpackhi_epi16( words, zero ) );
#else
    for( int k = 0; k < 8; k++ )
        out[k] = in[k];
#endif
}

/** Writes a text of `size` bytes of ASCII, above 0, as characters. For short texts. */
inline void decodeShortAscii( const uint8_t *in, QV_INT size, QV_CHAR *out )
{
    const QV_INT GROUP = 8;

    if( size < GROUP )
    {
        for( QV_INT i = 0; i < size; i++ )
            out[i] = in[i];

        return;
    }

    for( QV_INT i = 0; i < size - GROUP; i += GROUP )
        decodeEightAscii( in + i, out + i );

    decodeEightAscii( in + size - GROUP, out + size - GROUP ); // it may overlap the ones before
}

/** A text of one look: which bytes characters begin at, and how many of these there are. */
struct Looked
{
    uint64_t starts;
    QV_INT   chars;
};

/** The most bytes that one look takes in. */
const QV_INT ONE_LOOK = 63;

/** Looks at a text of at most ONE_LOOK bytes. No characters where decodeShort() returns -1. */
inline Looked look( const uint8_t *in, QV_INT size );

/** Decodes a text that look() has found good. Nothing after the characters is written. */
inline void decodeLooked( const uint8_t *in, QV_INT size, Looked looked, QV_CHAR *out );

/** How many units decodeShort() and encodeShort() may write after what counts. */
const QV_INT SHORT_ROOM = 64;

/** Decodes a whole text of good sequences and returns the number of characters; -1 where it is not made of such, or has
    one of the characters from U+100000 to U+10FFFF, which are those whose first byte is 0xF4, or the machine has no vectors
    for it. There is room for as many characters as there are bytes, and for SHORT_ROOM more. Faster than decode() for a
    text of few bytes, slower for one of many. */
inline QV_INT decodeShort( const uint8_t *in, QV_INT size, QV_CHAR *out );

/** Encodes a whole text and returns the number of bytes; -1 where it has a value of 0x110000 or above, or the machine has no
    vectors for it. There is room for LONGEST bytes a character, and for SHORT_ROOM more. */
inline QV_INT encodeShort( const QV_CHAR *in, QV_INT count, uint8_t *out );

/** The most characters that encodeExact() takes. */
const QV_INT FEW_CHARS = 32;

/** How many bytes at most FEW_CHARS characters need; -1 where encodeShort() returns that. */
inline QV_INT exactLength( const QV_CHAR *in, QV_INT count );

/** Encodes characters of which exactLength() has told the bytes. Nothing after these is written. */
inline void encodeExact( const QV_CHAR *in, QV_INT count, uint8_t *out );

/* Kernels -------------------------------------------------------------------------------------------------------- */

/* What the kernels of the vectors do: as much as they can do with whole vectors, up to any place before which the
   loops above would not stop. They move `done` on. */

void decodeBlocks64( Decoded &done, const uint8_t *inEnd, const QV_CHAR *outEnd );
void encodeBlocks64( Encoded &done, const QV_CHAR *inEnd, const uint8_t *outEnd );

QV_INT decodeShort64( const uint8_t *in, QV_INT size, QV_CHAR *out );
Looked look64( const uint8_t *in, QV_INT size );
void   decodeLooked64( const uint8_t *in, QV_INT size, Looked looked, QV_CHAR *out );
QV_INT encodeShort64( const QV_CHAR *in, QV_INT count, uint8_t *out );
QV_INT exactLength64( const QV_CHAR *in, QV_INT count );
void   encodeExact64( const QV_CHAR *in, QV_INT count, uint8_t *out );

void decodeBlocks32( Decoded &done, const uint8_t *inEnd, QV_CHAR *outEnd );
void countBlocks32( Counted &done, const uint8_t *inEnd );
void encodeBlocks32( Encoded &done, const QV_CHAR *inEnd, uint8_t *outEnd );
void encodeBlocks16( Encoded &done, const QV_CHAR *inEnd, uint8_t *outEnd );

/** How many characters a measure went over, 32 at a time, and their bytes. */
struct Measured
{
    QV_INT chars;
    QV_INT bytes;
};

Measured measureBlocks32( const QV_CHAR *in, QV_INT count );
QV_INT   encodeAsciiBlocks32( uint8_t *out, const QV_CHAR *in, QV_INT count );

inline QV_INT decodeShort( const uint8_t *in, QV_INT size, QV_CHAR *out )
{
    QV_INT chars = vectors::has64() ? decodeShort64( in, size, out ) : -1;
    QV_ASSERT( chars < 0 || ( count( in, in + size ).in == in + size && count( in, in + size ).count == chars ) );

    return chars;
}

inline Looked look( const uint8_t *in, QV_INT size )
{
    QV_ASSERT( size > 0 && size <= ONE_LOOK );
    Looked looked = vectors::has64() ? look64( in, size ) : Looked{ 0, 0 };
    QV_ASSERT(
        !looked.chars || ( count( in, in + size ).in == in + size && count( in, in + size ).count == looked.chars ) );

    return looked;
}

inline void decodeLooked( const uint8_t *in, QV_INT size, Looked looked, QV_CHAR *out )
{
    QV_ASSERT( looked.chars > 0 && look64( in, size ).starts == looked.starts );
    decodeLooked64( in, size, looked, out );
}

inline QV_INT exactLength( const QV_CHAR *in, QV_INT count )
{
    QV_ASSERT( count <= FEW_CHARS );
    QV_INT bytes = vectors::has64() ? exactLength64( in, count ) : -1;
    QV_ASSERT( bytes < 0 || bytes == length( in, count ) );

    return bytes;
}

inline void encodeExact( const QV_CHAR *in, QV_INT count, uint8_t *out )
{
    QV_ASSERT( exactLength( in, count ) >= 0 );
    encodeExact64( in, count, out );
}

inline QV_INT encodeShort( const QV_CHAR *in, QV_INT count, uint8_t *out )
{
    QV_INT bytes = vectors::has64() ? encodeShort64( in, count, out ) : -1;
    QV_ASSERT( bytes < 0 || bytes == length( in, count ) );

    return bytes;
}
} // namespace qv::utf8

#endif
