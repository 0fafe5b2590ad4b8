#include "qv/sys/qv_utf8_private.h"
#include "qv/sys/qv_vectors_64_private.h"

using namespace qv::utf8;

// Vectors of 64 bytes. Loads and stores take any number of bytes by a mask, so that short texts and what is left over
// need no other code, and an instruction moves the chosen bytes of a vector together: on decoding the places where
// characters end, on encoding the bytes that they need. No step depends on the lengths of the characters.

#ifdef QV___CPU_FEATURES

using namespace qv::vectors;

namespace
{
// Which byte of a vector comes to each place of another.
struct Places
{
    // The byte so many places before.
    static constexpr Places shifted( int by )
    {
        Places all{};

        for( int i = 0; i < 64; i++ )
            all.places[i] = static_cast< uint8_t >( ( i - by ) & 63 );

        return all;
    }

    alignas( 64 ) uint8_t places[64];
};

// For the four bytes of each of 16 lanes the place of its lane and the one after, and how far each is before the next
// lane's character.
struct LanePlaces
{
    constexpr LanePlaces()
    {
        for( int i = 0; i < 64; i++ )
        {
            own[i]    = static_cast< uint8_t >( i / 4 );
            next[i]   = static_cast< uint8_t >( i / 4 + 1 );
            before[i] = static_cast< uint8_t >( i % 4 + 1 );
        }
    }

    alignas( 64 ) uint8_t own[64]    = {};
    alignas( 64 ) uint8_t next[64]   = {};
    alignas( 64 ) uint8_t before[64] = {};
};

constexpr LanePlaces LANE_PLACES;

constexpr Places BACK[] = { Places::shifted( 0 ), Places::shifted( 1 ), Places::shifted( 2 ), Places::shifted( 3 ) };

// For each character that ends in a block the byte `back` places before its last one, or 0 for those that have less;
// `follow` tells which last bytes have so many before them.
QV___KERNEL_64 inline __m512i bytesBefore( __m512i bytes, int back, uint64_t follow, uint64_t ends )
{
    __m512i there = _mm512_maskz_permutexvar_epi8( follow, _mm512_load_si512( BACK[back].places ), bytes );
    return unpackable( _mm512_maskz_compress_epi8( ends, there ) );
}

// Decodes the ASCII that bytes begin with, in groups of 16, of which the last one may be shorter. Returns how many.
QV___KERNEL_64 inline QV_INT decodeAscii( const uint8_t *in, const uint8_t *inEnd, QV_CHAR *out, const QV_CHAR *outEnd )
{
    QV_INT room = inEnd - in < outEnd - out ? inEnd - in : outEnd - out;
    QV_INT done = 0;

    for( ; room - done >= 64; done += 64 )
    {
        if( _mm512_movepi8_mask( _mm512_loadu_si512( in + done ) ) != 0 )
            break;

        for( int k = 0; k < 64; k += 16 )
        {
            __m128i part = _mm_loadu_si128( reinterpret_cast< const __m128i * >( in + done + k ) );
            _mm512_storeu_si512( out + done + k, _mm512_cvtepu8_epi32( part ) );
        }
    }

    while( done < room )
    {
        QV_INT  count = room - done < 16 ? room - done : 16;
        __m128i part  = _mm_maskz_loadu_epi8( static_cast< __mmask16 >( lowest( count ) ), in + done );

        if( _mm_movemask_epi8( part ) != 0 )
            break;

        store16( out + done, _mm512_cvtepu8_epi32( part ), count );
        done += count;
    }

    return done;
}

// What the bytes have of the values, by their upper halves.
QV___KERNEL_64 inline __m512i valueBits( __m512i bytes )
{
    const __m512i masks = _mm512_broadcast_i32x4(
        _mm_setr_epi8( 127, 127, 127, 127, 127, 127, 127, 127, 63, 63, 63, 63, 31, 31, 15, 7 ) );
    __m512i kinds = _mm512_and_si512( _mm512_srli_epi16( bytes, 4 ), _mm512_set1_epi8( 15 ) );

    return _mm512_and_si512( bytes, _mm512_shuffle_epi8( masks, kinds ) );
}

// Where the first bytes of characters are, and the following ones, and what the first ones demand.
struct Sequences
{
    uint64_t lead, lead3, lead4; // first bytes of at least two, three and four
    uint64_t follow;
    uint64_t demanded; // where following bytes have to be
    uint64_t above;    // bytes of F4 and more

    // Whether all bytes of a block are those of characters that decode() gives: following bytes stand just where they are
    // demanded. With a first byte of F4 the value may be too high, above that nothing is good.
    bool areGood( uint64_t block ) const
    {
        return !( ( ( follow ^ demanded ) & block ) | above );
    }
};

// Of the bytes `other` are not ASCII.
QV___KERNEL_64 inline Sequences sequencesOf( __m512i bytes, uint64_t other )
{
    Sequences found;

    found.lead     = _mm512_cmpge_epu8_mask( bytes, _mm512_set1_epi8( static_cast< char >( 0xC0 ) ) );
    found.lead3    = _mm512_cmpge_epu8_mask( bytes, _mm512_set1_epi8( static_cast< char >( 0xE0 ) ) );
    found.lead4    = _mm512_cmpge_epu8_mask( bytes, _mm512_set1_epi8( static_cast< char >( 0xF0 ) ) );
    found.above    = _mm512_cmpge_epu8_mask( bytes, _mm512_set1_epi8( static_cast< char >( 0xF4 ) ) );
    found.follow   = other & ~found.lead;
    found.demanded = found.lead << 1 | found.lead3 << 2 | found.lead4 << 3;

    return found;
}

// The bytes of 16 characters, which are below 0x110000, in their lanes, and which of them count.
struct LaneBytes
{
    __m512i  bytes;
    uint64_t kept;
};

QV___KERNEL_64 inline LaneBytes laneBytes( __m512i chars )
{
    __mmask16 two    = _mm512_cmpge_epu32_mask( chars, repeat16( 0x80 ) );
    __mmask16 three  = _mm512_cmpge_epu32_mask( chars, repeat16( 0x800 ) );
    __mmask16 isFour = _mm512_cmpge_epu32_mask( chars, repeat16( 0x10000 ) );

    // The marks that the length demands. They have the topmost bit in each byte that counts, so ASCII has one too here.
    __m512i marks = _mm512_mask_mov_epi32( repeat16( 0x80000000 ), two, repeat16( 0x80C00000 ) );
    marks         = _mm512_mask_mov_epi32( marks, three, repeat16( 0x8080E000 ) );
    marks         = _mm512_mask_mov_epi32( marks, isFour, repeat16( 0x808080F0 ) );

    // Eight bits from where each byte starts in the two characters of eight bytes, of which six count, the last byte highest.
    const __m512i starts = _mm512_set1_epi64( 0x20262C3200060C12 );
    __m512i       sixes  = _mm512_and_si512( _mm512_multishift_epi64_epi8( starts, chars ), _mm512_set1_epi8( 0x3F ) );
    __m512i       bytes  = _mm512_or_si512( sixes, marks );

    return { _mm512_mask_slli_epi32( bytes, _knot_mask16( two ), chars, 24 ), _mm512_movepi8_mask( marks ) };
}

// For characters in lanes of so many bytes, of which more are kept than there is room for: how many of the characters fit.
// The others are no longer kept.
QV___KERNEL_64 inline QV_INT fitting( uint64_t *kept, QV_INT lane, QV_INT room )
{
    QV_INT over = __builtin_ctzll( _pdep_u64( UINT64_C( 1 ) << room, *kept ) ); // the first byte without room
    *kept &= lowest( over / lane * lane );

    return over / lane;
}

// Writes the bytes of a vector that the bits of `kept` tell, `size` of them, one after the other.
QV___KERNEL_64 inline void storeKept( uint8_t *to, __m512i bytes, uint64_t kept, QV_INT size )
{
    _mm512_mask_storeu_epi8( to, lowest( size ), _mm512_maskz_compress_epi8( kept, bytes ) );
}
} // namespace

// Decodes the characters that end in a block of 61 bytes; the three bytes before it are loaded with it, for what began
// there. So the next block does not wait for this one. The load of bytes before the first is masked out.
QV___KERNEL_64 void qv::utf8::decodeBlocks64( Decoded &done, const uint8_t *inEnd, const QV_CHAR *outEnd )
{
    const QV_INT BEFORE = LONGEST - 1, BLOCK = 64 - BEFORE;

    const uint8_t *in   = done.in;
    QV_CHAR       *out  = done.out;
    uint64_t       seen = 0; // which of the bytes before the block are loaded

    while( in < inEnd )
    {
        QV_INT   count = inEnd - in < BLOCK ? inEnd - in : BLOCK;
        uint64_t block = lowest( count ) << BEFORE;
        __m512i  bytes = _mm512_maskz_loadu_epi8( block | seen, in - BEFORE );
        uint64_t other = static_cast< uint64_t >( _mm512_movepi8_mask( bytes ) );

        if( other == 0 && outEnd - out >= count )
        {
            QV_INT ascii = decodeAscii( in, inEnd, out, outEnd );
            in += ascii;
            out += ascii;
            seen = 0; // ASCII is complete
            continue;
        }

        Sequences found  = sequencesOf( bytes, other );
        uint64_t  follow = found.follow;
        uint64_t  two    = found.lead & ~found.lead3;
        uint64_t  three  = found.lead3 & ~found.lead4;
        uint64_t  ends   = ( ~other | two << 1 | three << 2 | found.lead4 << 3 ) & block;
        QV_INT    chars  = __builtin_popcountll( ends );

        if( !found.areGood( block ) || outEnd - out < chars )
            break;

        __m512i bits = valueBits( bytes );

        // The lower 12 bits of all characters in lanes of two bytes, and the upper ones where there are any.
        const __m512i pair  = repeat16( 0x40014001 );
        __m512i       last  = bytesBefore( bits, 0, ~UINT64_C( 0 ), ends );
        __m512i       third = bytesBefore( bits, 1, follow, ends );
        __m512i       low   = _mm512_maddubs_epi16( _mm512_unpacklo_epi8( last, third ), pair );
        __m512i       high  = _mm512_maddubs_epi16( _mm512_unpackhi_epi8( last, third ), pair );
        __m512i       zero  = _mm512_setzero_si512();
        __m512i       parts[4];

        if( found.lead3 == 0 )
        {
            parts[0] = _mm512_unpacklo_epi16( low, zero );
            parts[1] = _mm512_unpackhi_epi16( low, zero );
            parts[2] = _mm512_unpacklo_epi16( high, zero );
            parts[3] = _mm512_unpackhi_epi16( high, zero );
        }
        else
        {
            uint64_t      follow2 = follow & follow << 1;
            __m512i       second  = bytesBefore( bits, 2, follow2, ends );
            __m512i       first   = found.lead4 ? bytesBefore( bits, 3, follow2 & follow << 2, ends ) : zero;
            __m512i       upLow   = _mm512_maddubs_epi16( _mm512_unpacklo_epi8( second, first ), pair );
            __m512i       upHigh  = _mm512_maddubs_epi16( _mm512_unpackhi_epi8( second, first ), pair );
            const __m512i weights = repeat16( 0x10000001 );

            parts[0] = _mm512_madd_epi16( _mm512_unpacklo_epi16( low, upLow ), weights );
            parts[1] = _mm512_madd_epi16( _mm512_unpackhi_epi16( low, upLow ), weights );
            parts[2] = _mm512_madd_epi16( _mm512_unpacklo_epi16( high, upHigh ), weights );
            parts[3] = _mm512_madd_epi16( _mm512_unpackhi_epi16( high, upHigh ), weights );
        }

        for( int k = 0; k < 4 && 16 * k < chars; k++ )
            store16( out + 16 * k, parts[k], chars - 16 * k );

        seen = lowest( BEFORE );
        in += count;
        out += chars;
    }

    // Back to the start of a character that has not ended.
    for( int back = 1; back <= BEFORE && in - back >= done.in; back++ )
        if( following( in[-back] ) >= back )
        {
            in -= back;
            break;
        }

    done = { in, out };
}

QV___KERNEL_64 void qv::utf8::encodeBlocks64( Encoded &done, const QV_CHAR *inEnd, const uint8_t *outEnd )
{
    const uint64_t LOW = UINT64_C( 0x5555555555555555 ), HIGH = LOW << 1;

    const QV_CHAR *in = done.in;
    uint8_t       *to = done.out;

    while( in < inEnd )
    {
        QV_INT  count = inEnd - in < 32 ? inEnd - in : 32;
        QV_INT  half  = count < 16 ? count : 16;
        __m512i a     = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( lowest( half ) ), in );
        __m512i b     = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( lowest( count - half ) ), in + half );
        __m512i both  = _mm512_or_si512( a, b );

        if( _mm512_test_epi32_mask( both, repeat16( ~0x7Fu ) ) == 0 )
        {
            if( outEnd - to < count && ( count = outEnd - to ) == 0 )
                break;

            __m256i bytes = _mm256_set_m128i( _mm512_cvtepi32_epi8( b ), _mm512_cvtepi32_epi8( a ) );
            _mm256_mask_storeu_epi8( to, static_cast< __mmask32 >( lowest( count ) ), bytes );
            in += count;
            to += count;
            continue;
        }

        if( _mm512_test_epi32_mask( both, repeat16( ~0x7FFu ) ) == 0 )
        {
            // One or two bytes each, in lanes of two, the first one lower.
            __m512i chars = _mm512_inserti64x4(
                _mm512_castsi256_si512( _mm512_cvtepi32_epi16( a ) ), _mm512_cvtepi32_epi16( b ), 1 );
            __mmask32 two  = _mm512_cmpge_epu16_mask( chars, _mm512_set1_epi16( 0x80 ) );
            __m512i   last = _mm512_slli_epi16( _mm512_and_si512( chars, _mm512_set1_epi16( 0x3F ) ), 8 );
            __m512i   pair = _mm512_or_si512( last, _mm512_srli_epi16( chars, 6 ) );
            pair           = _mm512_or_si512( pair, _mm512_set1_epi16( static_cast< short >( 0x80C0 ) ) );
            uint64_t kept  = _pdep_u64( lowest( count ), LOW ) | _pdep_u64( two, HIGH );
            QV_INT   size  = __builtin_popcountll( kept );

            if( __builtin_expect( outEnd - to < size, 0 ) )
            {
                if( ( count = fitting( &kept, 2, outEnd - to ) ) == 0 )
                    break;

                size = __builtin_popcountll( kept );
            }

            storeKept( to, _mm512_mask_mov_epi16( chars, two, pair ), kept, size );
            in += count;
            to += size;
            continue;
        }

        // Both vectors where nothing can go wrong in either: a look at 32 characters serves them all.
        if( outEnd - to >= 2 * 64 && _mm512_cmpge_epu32_mask( _mm512_max_epu32( a, b ), repeat16( 0x110000 ) ) == 0 )
        {
            LaneBytes first = laneBytes( a ), second = laneBytes( b );

            uint64_t keptFirst  = first.kept & lowest( 4 * half ),
                     keptSecond = second.kept & lowest( 4 * ( count - half ) );
            QV_INT size = __builtin_popcountll( keptFirst ), more = __builtin_popcountll( keptSecond );

            storeKept( to, first.bytes, keptFirst, size );
            storeKept( to + size, second.bytes, keptSecond, more );
            in += count;
            to += size + more;
            continue;
        }

        if( _mm512_cmpge_epu32_mask( a, repeat16( 0x110000 ) ) != 0 )
            break;

        LaneBytes lanes = laneBytes( a );
        uint64_t  kept  = lanes.kept & lowest( 4 * half );
        QV_INT    size  = __builtin_popcountll( kept );

        if( __builtin_expect( outEnd - to < size, 0 ) )
        {
            if( ( half = fitting( &kept, 4, outEnd - to ) ) == 0 )
                break;

            size = __builtin_popcountll( kept );
        }

        storeKept( to, lanes.bytes, kept, size );
        in += half;
        to += size;
    }

    done = { in, to };
}

namespace
{
// Decodes a block of at most 63 bytes, so that what comes after the last character has a place too. From the places where
// characters start follow, for 16 lanes at a time, those of the four bytes before the next character; what is before the
// own start is not the character's. `store` writes a vector of 16 characters that begins at an index.
template< class Store >
QV___KERNEL_64 inline void decodeStarts( __m512i bytes, QV_INT size, Looked looked, Store store )
{
    const __m512i own = _mm512_load_si512( LANE_PLACES.own ), next = _mm512_load_si512( LANE_PLACES.next );
    const __m512i before = _mm512_load_si512( LANE_PLACES.before ), identity = _mm512_load_si512( BACK[0].places );

    __m512i bits   = valueBits( bytes );
    __m512i places = _mm512_maskz_compress_epi8( looked.starts | UINT64_C( 1 ) << size, identity );

    for( QV_INT k = 0; k < looked.chars; k += 16 )
    {
        __m512i   at    = _mm512_sub_epi8( _mm512_permutexvar_epi8( next, places ), before );
        __mmask64 valid = _mm512_cmpge_epi8_mask( at, _mm512_permutexvar_epi8( own, places ) );
        __m512i   parts = _mm512_maskz_permutexvar_epi8( valid, at, bits );
        parts           = _mm512_maddubs_epi16( parts, repeat16( 0x40014001 ) );
        store( k, _mm512_madd_epi16( parts, repeat16( 0x10000001 ) ) );
        places = _mm512_alignr_epi64( places, places, 2 );
    }
}
} // namespace

QV___KERNEL_64 QV_INT qv::utf8::decodeShort64( const uint8_t *in, QV_INT size, QV_CHAR *out )
{
    QV_CHAR *to = out;

    while( size > 0 )
    {
        QV_INT   count = size < ONE_LOOK ? size : ONE_LOOK;
        uint64_t block = lowest( count );
        __m512i  bytes = _mm512_maskz_loadu_epi8( block, in );
        uint64_t other = static_cast< uint64_t >( _mm512_movepi8_mask( bytes ) );

        if( other == 0 )
        {
            for( QV_INT k = 0; k < count; k += 16 )
            {
                _mm512_storeu_si512( to + k, _mm512_cvtepu8_epi32( _mm512_castsi512_si128( bytes ) ) );
                bytes = _mm512_alignr_epi64( bytes, bytes, 2 );
            }

            in += count;
            to += count;
            size -= count;
            continue;
        }

        // Where the text ends nothing is demanded any more.
        Sequences found = sequencesOf( bytes, other );
        uint64_t  cut   = found.demanded & ~block;

        if( !found.areGood( block ) || ( cut && count == size ) )
            return -1;

        // A character that goes on after the block starts the next one.
        uint64_t starts = ~found.follow & block;
        QV_INT   whole  = cut ? 63 - __builtin_clzll( starts ) : count;
        starts &= lowest( whole );

        QV_INT chars = __builtin_popcountll( starts );
        auto   store = [to]( QV_INT k, __m512i vector ) QV___KERNEL_64 { _mm512_storeu_si512( to + k, vector ); };
        decodeStarts( bytes, whole, { starts, chars }, store );

        in += whole;
        to += chars;
        size -= whole;
    }

    return to - out;
}

QV___KERNEL_64 Looked qv::utf8::look64( const uint8_t *in, QV_INT size )
{
    uint64_t  block = lowest( size );
    __m512i   bytes = _mm512_maskz_loadu_epi8( block, in );
    Sequences found = sequencesOf( bytes, static_cast< uint64_t >( _mm512_movepi8_mask( bytes ) ) );

    if( !found.areGood( ~UINT64_C( 0 ) ) )
        return { 0, 0 };

    uint64_t starts = ~found.follow & block;
    return { starts, __builtin_popcountll( starts ) };
}

QV___KERNEL_64 void qv::utf8::decodeLooked64( const uint8_t *in, QV_INT size, Looked looked, QV_CHAR *out )
{
    QV_INT chars = looked.chars;
    auto   store = [out, chars]( QV_INT k, __m512i vector ) QV___KERNEL_64 { store16( out + k, vector, chars - k ); };
    decodeStarts( _mm512_maskz_loadu_epi8( lowest( size ), in ), size, looked, store );
}

QV___KERNEL_64 QV_INT qv::utf8::encodeShort64( const QV_CHAR *in, QV_INT count, uint8_t *out )
{
    uint8_t *to = out;

    while( count > 0 )
    {
        QV_INT  half = count < 16 ? count : 16;
        QV_INT  more = count < 32 ? count - half : 16;
        __m512i a    = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( lowest( half ) ), in );
        __m512i b    = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( lowest( more ) ), in + half );

        if( _mm512_test_epi32_mask( _mm512_or_si512( a, b ), repeat16( ~0x7Fu ) ) == 0 )
        {
            _mm_storeu_si128( reinterpret_cast< __m128i * >( to ), _mm512_cvtepi32_epi8( a ) );
            _mm_storeu_si128( reinterpret_cast< __m128i * >( to + half ), _mm512_cvtepi32_epi8( b ) );
            to += half + more;
        }
        else
        {
            if( _mm512_cmpge_epu32_mask( _mm512_max_epu32( a, b ), repeat16( 0x110000 ) ) != 0 )
                return -1;

            LaneBytes lanes = laneBytes( a );
            uint64_t  kept  = lanes.kept & lowest( 4 * half );
            _mm512_storeu_si512( to, _mm512_maskz_compress_epi8( kept, lanes.bytes ) );
            to += __builtin_popcountll( kept );

            lanes = laneBytes( b );
            kept  = lanes.kept & lowest( 4 * more );
            _mm512_storeu_si512( to, _mm512_maskz_compress_epi8( kept, lanes.bytes ) );
            to += __builtin_popcountll( kept );
        }

        in += half + more;
        count -= half + more;
    }

    return to - out;
}

namespace
{
// At most 32 characters in two vectors, 0 where there are none.
struct FewChars
{
    __m512i a, b;
};

QV___KERNEL_64 inline FewChars loadFew( const QV_CHAR *in, QV_INT count )
{
    uint64_t there = lowest( count );

    return {
        _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there ), in ),
        _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there >> 16 ), in + 16 ) };
}

QV___KERNEL_64 inline bool areAscii( FewChars chars )
{
    return _mm512_test_epi32_mask( _mm512_or_si512( chars.a, chars.b ), repeat16( ~0x7Fu ) ) == 0;
}

// How many of both are `limit` and above.
QV___KERNEL_64 inline QV_INT countFrom( FewChars chars, uint32_t limit )
{
    return __builtin_popcountll(
        static_cast< uint64_t >( _mm512_cmpge_epu32_mask( chars.a, repeat16( limit ) ) ) << 16
        | _mm512_cmpge_epu32_mask( chars.b, repeat16( limit ) ) );
}
} // namespace

QV___KERNEL_64 QV_INT qv::utf8::exactLength64( const QV_CHAR *in, QV_INT count )
{
    FewChars chars = loadFew( in, count );

    if( areAscii( chars ) )
        return count;

    if( countFrom( chars, 0x110000 ) > 0 )
        return -1;

    return count + countFrom( chars, 0x80 ) + countFrom( chars, 0x800 ) + countFrom( chars, 0x10000 );
}

QV___KERNEL_64 void qv::utf8::encodeExact64( const QV_CHAR *in, QV_INT count, uint8_t *out )
{
    FewChars chars = loadFew( in, count );

    if( areAscii( chars ) )
    {
        if( count < 16 )
            return _mm_mask_storeu_epi8(
                out, static_cast< __mmask16 >( lowest( count ) ), _mm512_cvtepi32_epi8( chars.a ) );

        // The first ones and the last ones, which may be some of them.
        __m128i last = _mm512_cvtepi32_epi8( _mm512_loadu_si512( in + count - 16 ) );
        _mm_storeu_si128( reinterpret_cast< __m128i * >( out ), _mm512_cvtepi32_epi8( chars.a ) );
        _mm_storeu_si128( reinterpret_cast< __m128i * >( out + count - 16 ), last );
        return;
    }

    LaneBytes lanes = laneBytes( chars.a );
    uint64_t  kept  = lanes.kept & lowest( count < 16 ? 4 * count : 64 );
    QV_INT    size  = __builtin_popcountll( kept );
    storeKept( out, lanes.bytes, kept, size );

    if( count > 16 )
    {
        lanes = laneBytes( chars.b );
        kept  = lanes.kept & lowest( 4 * ( count - 16 ) );
        storeKept( out + size, lanes.bytes, kept, __builtin_popcountll( kept ) );
    }
}

#else

QV_INT qv::utf8::exactLength64( const QV_CHAR *, QV_INT )
{
    return -1;
}

void qv::utf8::encodeExact64( const QV_CHAR *, QV_INT, uint8_t * )
{
}

QV_INT qv::utf8::decodeShort64( const uint8_t *, QV_INT, QV_CHAR * )
{
    return -1;
}

QV_INT qv::utf8::encodeShort64( const QV_CHAR *, QV_INT, uint8_t * )
{
    return -1;
}

Looked qv::utf8::look64( const uint8_t *, QV_INT )
{
    return { 0, 0 };
}

void qv::utf8::decodeLooked64( const uint8_t *, QV_INT, Looked, QV_CHAR * )
{
}

void qv::utf8::decodeBlocks64( Decoded &, const uint8_t *, const QV_CHAR * )
{
}

void qv::utf8::encodeBlocks64( Encoded &, const QV_CHAR *, const uint8_t * )
{
}

#endif
