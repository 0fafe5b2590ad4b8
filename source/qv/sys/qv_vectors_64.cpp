#include "qv/sys/qv_vectors_64_private.h"
#include "qv/sys/qv_vectors_private.h"

#ifdef QV___CPU_FEATURES

using namespace qv::vectors;

namespace
{
// A table of 256 bytes in registers, each half of it for one look-up.
struct Table
{
    __m512i quarters[4];
};

QV___KERNEL_64 inline Table tableOf( const uint8_t *bytes )
{
    return {
        _mm512_loadu_si512( bytes ), _mm512_loadu_si512( bytes + 64 ), _mm512_loadu_si512( bytes + 128 ),
        _mm512_loadu_si512( bytes + 192 ) };
}

QV___KERNEL_64 inline __m512i lookUp( const Table &table, __m512i at )
{
    __m512i lower = _mm512_permutex2var_epi8( table.quarters[0], at, table.quarters[1] );
    __m512i upper = _mm512_permutex2var_epi8( table.quarters[2], at, table.quarters[3] );

    return _mm512_mask_mov_epi8( lower, _mm512_movepi8_mask( at ), upper );
}

QV___KERNEL_64 inline __m512i repeatByte( uint32_t value )
{
    return _mm512_set1_epi8( static_cast< char >( value ) );
}

// The lowest bytes of the 32 lanes in two vectors, as places in both of them.
struct Lanes
{
    constexpr Lanes()
    {
        for( int i = 0; i < 32; i++ )
            places[i] = static_cast< uint8_t >( 4 * i );
    }

    alignas( 64 ) uint8_t places[64] = {};
};

constexpr Lanes LANES;

// The number that 1 to 19 digits make, of which the vectors have the values.
QV___KERNEL_64 inline uint64_t numberOf( __m512i low, __m512i high, QV_INT digits )
{
    // As bytes, the last digit in the highest place and zeros before the first.
    __m512i place =
        _mm512_add_epi8( _mm512_load_si512( LANES.places ), _mm512_set1_epi8( static_cast< char >( 4 * digits ) ) );
    __m256i bytes = _mm512_castsi512_si256(
        _mm512_maskz_permutex2var_epi8( UINT64_C( 0xFFFFFFFF ) << ( 32 - digits ), low, place, high ) );

    // Neighbours together to numbers of two digits, of four and of eight, of which the last three count.
    __m256i two   = _mm256_maddubs_epi16( bytes, _mm256_set1_epi16( 1 << 8 | 10 ) );
    __m256i four  = _mm256_madd_epi16( two, _mm256_set1_epi32( 1 << 16 | 100 ) );
    __m256i eight = _mm256_madd_epi16( _mm256_packus_epi32( four, four ), _mm256_set1_epi32( 1 << 16 | 10000 ) );

    uint64_t upper = static_cast< uint64_t >( _mm_cvtsi128_si64( _mm256_castsi256_si128( eight ) ) ) >> 32;
    uint64_t lower = static_cast< uint64_t >( _mm_cvtsi128_si64( _mm256_extracti128_si256( eight, 1 ) ) );

    return ( upper * 100000000 + ( lower & 0xFFFFFFFF ) ) * 100000000 + ( lower >> 32 );
}
} // namespace

QV___KERNEL_64 QV_INT qv::decodeBytes64(
    const vectors::ByteChars &chars, const uint8_t *bytes, QV_INT count, QV_CHAR *to )
{
    const __m512i none = _mm512_set1_epi8( -1 );
    const __m512i zero = _mm512_setzero_si512();

    const Table low  = tableOf( chars.low );
    const Table high = tableOf( chars.high );
    QV_INT      done = 0;

    while( done < count )
    {
        QV_INT    size   = count - done < 64 ? count - done : 64;
        __mmask64 loaded = _bzhi_u64( ~UINT64_C( 0 ), unsigned( size ) );
        __m512i   in     = _mm512_maskz_loadu_epi8( loaded, bytes + done );
        in               = unpackable( in );
        __m512i lower    = lookUp( low, in );
        __m512i upper    = lookUp( high, in );

        // The bytes that are not there count as byte 0, which has a character in all tables, else they end the run.
        if( _mm512_cmpeq_epi8_mask( _mm512_and_si512( lower, upper ), none ) != 0 )
            break;

        __m512i first  = _mm512_unpacklo_epi8( lower, upper );
        __m512i second = _mm512_unpackhi_epi8( lower, upper );
        store16( to + done, _mm512_unpacklo_epi16( first, zero ), size );
        store16( to + done + 16, _mm512_unpackhi_epi16( first, zero ), size - 16 );
        store16( to + done + 32, _mm512_unpacklo_epi16( second, zero ), size - 32 );
        store16( to + done + 48, _mm512_unpackhi_epi16( second, zero ), size - 48 );
        done += size;
    }

    return done;
}

namespace
{
// The lowest bytes of 64 lanes.
QV___KERNEL_64 inline __m512i bytesAt( __m512i places, const __m512i ( &lanes )[4] )
{
    __m512i first  = _mm512_permutex2var_epi8( lanes[0], places, lanes[1] );
    __m512i second = _mm512_permutex2var_epi8( lanes[2], places, lanes[3] );

    return _mm512_inserti64x4( first, _mm512_castsi512_si256( second ), 1 );
}

QV___KERNEL_64 inline __m512i lowBytes( const __m512i ( &lanes )[4] )
{
    return bytesAt( _mm512_load_si512( LANES.places ), lanes );
}

// Bits 8 to 15.
QV___KERNEL_64 inline __m512i nextBytes( const __m512i ( &lanes )[4] )
{
    return bytesAt( _mm512_add_epi8( _mm512_load_si512( LANES.places ), repeatByte( 1 ) ), lanes );
}

// Writes what a window tells over the bytes of its characters, which it adds to `known`.
QV___KERNEL_64 inline __m512i mapWindow(
    const CharBytes &window, __m512i chars, __m512i blocks, __m512i bytes, __mmask64 *known )
{
    __m512i   low  = _mm512_loadu_si512( window.bytes );
    __m512i   high = _mm512_loadu_si512( window.bytes + 64 );
    __mmask64 own  = _mm512_cmpeq_epi8_mask( blocks, _mm512_set1_epi8( static_cast< char >( window.block ) ) );
    __m512i   told = _mm512_permutex2var_epi8( low, chars, high );

    *known |= _mm512_mask_test_epi8_mask( own, told, told );

    return _mm512_mask_mov_epi8( bytes, own, told );
}
} // namespace

QV___KERNEL_64 QV_INT qv::charsIn64( const QV_CHAR *chs, QV_INT count, const Range ( &ranges )[3] )
{
    for( QV_INT i = 0; i < count; i += 16 )
    {
        __mmask16 there = static_cast< __mmask16 >( lowest( count - i < 16 ? count - i : 16 ) );
        __m512i   in    = _mm512_maskz_loadu_epi32( there, chs + i );
        __mmask16 isIn  = 0;

        for( Range range : ranges )
            isIn |= _mm512_cmplt_epu32_mask(
                _mm512_sub_epi32( in, repeat16( range.first ) ), repeat16( range.end - range.first ) );

        if( ( isIn & there ) != there )
            return i + __builtin_ctz( ~isIn & there );
    }

    return count;
}

QV___KERNEL_64 QV_INT qv::encodeBytes64(
    const vectors::CharBytes ( &windows )[CHAR_WINDOWS], const QV_CHAR *chs, QV_INT count, uint8_t *to )
{
    QV_INT done = 0;

    while( done < count )
    {
        QV_INT  size = count - done < 64 ? count - done : 64;
        __m512i chars[4], blocks[4];

        // Characters that are not there count as ASCII.
        for( int k = 0; k < 4; k++ )
        {
            __mmask16 loaded = static_cast< __mmask16 >( lowest( size ) >> 16 * k );
            chars[k]         = _mm512_maskz_loadu_epi32( loaded, chs + done + 16 * k );
            blocks[k]        = _mm512_min_epu32( _mm512_srli_epi32( chars[k], 7 ), repeat16( 255 ) );
        }

        __m512i low = lowBytes( chars );
        __m512i all =
            _mm512_or_si512( _mm512_or_si512( blocks[0], blocks[1] ), _mm512_or_si512( blocks[2], blocks[3] ) );

        if( _mm512_test_epi32_mask( all, all ) == 0 )
        {
            _mm512_mask_storeu_epi8( to + done, lowest( size ), low );
            done += size;
            continue;
        }

        __m512i   block = lowBytes( blocks );
        __mmask64 known = _mm512_testn_epi8_mask( block, block );
        __m512i   bytes = low;

        for( const CharBytes &window : windows )
            if( known != UINT64_MAX )
                bytes = mapWindow( window, low, block, bytes, &known );

        QV_INT first = ~known ? __builtin_ctzll( ~known ) : size; // the first one without

        _mm512_mask_storeu_epi8( to + done, lowest( first < size ? first : size ), bytes );
        done += first;

        if( first < size )
            break;
    }

    return done;
}

namespace
{
QV___KERNEL_64 inline __mmask16 below( __m512i in, QV_CHAR limit )
{
    return _mm512_cmplt_epu32_mask( in, repeat16( limit ) );
}

// Which of 64 characters are below a limit, which `most`, the greatest ones of each lane, may tell.
QV___KERNEL_64 inline __mmask64 below( const __m512i ( &chars )[4], __m512i most, QV_CHAR limit )
{
    if( below( most, limit ) == 0xFFFF )
        return UINT64_MAX;

    return below( chars[0], limit ) | static_cast< __mmask64 >( below( chars[1], limit ) ) << 16
           | static_cast< __mmask64 >( below( chars[2], limit ) ) << 32
           | static_cast< __mmask64 >( below( chars[3], limit ) ) << 48;
}

// In each byte the bit that its 3 lowest bits tell.
QV___KERNEL_64 inline __m512i bitAt( __m512i place )
{
    const __m512i bits = _mm512_set1_epi64( static_cast< int64_t >( 0x8040201008040201 ) );

    return _mm512_shuffle_epi8( bits, _mm512_and_si512( place, repeatByte( 7 ) ) );
}

// For each byte of a vector the place of the one before it; before the first one is the last one of another vector.
struct ByteBefore
{
    constexpr ByteBefore()
    {
        for( int i = 0; i < 64; i++ )
            places[i] = static_cast< uint8_t >( ( i + 127 ) % 128 );
    }

    alignas( 64 ) uint8_t places[64] = {};
};

constexpr ByteBefore BYTE_BEFORE;

// Which of the classes of 64 characters, marks and 0 for all others, do not ascend after that of the character before, or
// end the run, or fill a group of 16 to its end: the first bit is where the first one of these is.
QV___KERNEL_64 inline __mmask64 outOfOrder( __m512i now, __m512i before )
{
    const uint64_t ONES = 0x0001000100010001;

    __mmask64 marks = _mm512_test_epi8_mask( now, now );
    __m512i   prev  = _mm512_permutex2var_epi8( now, _mm512_load_si512( BYTE_BEFORE.places ), before );
    __mmask64 down = _mm512_mask_cmplt_epu8_mask( marks, now, prev ) | _mm512_cmpeq_epi8_mask( now, repeatByte( 255 ) );
    __mmask64 full = ( ~marks - ONES ) & marks & ONES << 15; // what borrows is above the first one

    return down | full;
}
} // namespace

QV___KERNEL_64 QV_INT qv::orderedGroups64(
    const QV_CHAR *chs, QV_INT count, const uint8_t *inert, const uint8_t *classes, uint32_t *last )
{
    const Table   blocks = tableOf( inert );
    const __m512i ascii = repeat16( ~0x7Fu ), zero = _mm512_setzero_si512();

    __m512i before  = repeatByte( *last ); // the classes of the 64 characters before
    bool    isAscii = true;
    QV_INT  i       = 0;

    for( ; i < count; i += 64 )
    {
        for( ; isAscii && i + 64 < count; i += 64 )
        {
            __m512i all = _mm512_or_si512(
                _mm512_or_si512( _mm512_loadu_si512( chs + i ), _mm512_loadu_si512( chs + i + 16 ) ),
                _mm512_or_si512( _mm512_loadu_si512( chs + i + 32 ), _mm512_loadu_si512( chs + i + 48 ) ) );

            if( _mm512_test_epi32_mask( all, ascii ) != 0 )
                break;

            before = zero;
        }

        // Characters that are not there any more count as U+0000, which is inert.
        uint64_t there = lowest( count - i < 64 ? count - i : 64 );
        __m512i  in[4];

        for( int k = 0; k < 4; k++ )
            in[k] = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there >> 16 * k ), chs + i + 16 * k );

        __m512i   most  = _mm512_max_epu32( _mm512_max_epu32( in[0], in[1] ), _mm512_max_epu32( in[2], in[3] ) );
        __m512i   upper = nextBytes( in ), lower = lowBytes( in );
        __mmask64 known = UINT64_MAX; // which are below 0x10000
        __mmask64 stay  = 0;

        isAscii = below( most, 0x80 ) == 0xFFFF;

        if( below( most, 0x800 ) != 0xFFFF )
        {
            __m512i block = bitAt( _mm512_srli_epi16( lower, 5 ) );
            known         = below( in, most, 0x10000 );
            stay          = _mm512_mask_test_epi8_mask( known, lookUp( blocks, upper ), block );

            // The next 0x10000 characters by the same upper 8 bits, modulo 256.
            if( known != UINT64_MAX )
                stay |= _mm512_mask_test_epi8_mask(
                    ~known & below( in, most, 0x20000 ), lookUp( tableOf( inert + 512 ), upper ), block );
        }

        // Below 0x800 each character has a bit of its own.
        if( stay != UINT64_MAX )
        {
            __m512i eighth = _mm512_ternarylogic_epi32(
                repeatByte( 0x1F ), _mm512_srli_epi16( lower, 3 ), _mm512_slli_epi16( upper, 5 ), 0xCA );
            __mmask64 small = _mm512_mask_cmplt_epu8_mask( known, upper, repeatByte( 8 ) );
            stay |= _mm512_mask_test_epi8_mask( small, lookUp( tableOf( inert + 256 ), eighth ), bitAt( lower ) );
        }

        if( stay == UINT64_MAX )
        {
            before = zero;
            continue;
        }

        // The marks of two blocks have a class.
        __mmask64 second = _mm512_movepi8_mask( lower );
        __mmask64 isNear = known & ~stay
                           & ( ( _mm512_cmpeq_epi8_mask( upper, repeatByte( 3 ) ) & ~second )
                               | ( _mm512_cmpeq_epi8_mask( upper, repeatByte( 5 ) ) & second ) );
        __m512i   now = _mm512_maskz_mov_epi8( isNear, lookUp( tableOf( classes ), lower ) );
        __mmask64 bad = ~( stay | isNear ) | outOfOrder( now, before );

        if( bad != 0 )
        {
            alignas( 64 ) uint8_t all[2 * 64];
            QV_INT                good = __builtin_ctzll( bad ) / 16 * 16;

            _mm512_store_si512( all, before );
            _mm512_store_si512( all + 64, now );
            *last = all[64 + good - 1];

            return i + good;
        }

        before = now;
    }

    return count;
}

namespace
{
// The bytes of 32 characters, those of a kind side by side.
struct FewBytes
{
    __m256i upper; // bits 8 to 15
    __m256i lower; // bits 0 to 7
};

QV___KERNEL_64 inline FewBytes bytesOf( __m512i low, __m512i high )
{
    const __m512i places = _mm512_load_si512( LANES.places );
    const __m512i next   = _mm512_add_epi8( places, _mm512_set1_epi8( 1 ) );

    return {
        _mm512_castsi512_si256( _mm512_permutex2var_epi8( low, next, high ) ),
        _mm512_castsi512_si256( _mm512_permutex2var_epi8( low, places, high ) ) };
}

QV___KERNEL_64 inline __m256i lookUp( const Table &table, __m256i at )
{
    return _mm512_castsi512_si256( lookUp( table, _mm512_castsi256_si512( at ) ) );
}

QV___KERNEL_64 inline __m256i repeatFew( uint32_t value )
{
    return _mm256_set1_epi8( static_cast< char >( value ) );
}

// In each byte the bit that its 3 lowest bits tell.
QV___KERNEL_64 inline __m256i bitAt( __m256i place )
{
    const __m256i bits = _mm256_set1_epi64x( static_cast< int64_t >( 0x8040201008040201 ) );

    return _mm256_shuffle_epi8( bits, _mm256_and_si256( place, repeatFew( 7 ) ) );
}
} // namespace

QV___KERNEL_64 bool qv::areOrdered64(
    const QV_CHAR *chs, QV_INT count, QV_CHAR limit, const uint8_t *inert, const uint8_t *classes, FewChecked *checked )
{
    QV_ASSERT( count > 0 && count <= 32 );
    *checked = { 0, 0, false };

    // As above, but 32 characters as bytes, and only the tables that are needed. What counts is how many steps follow from
    // each other, so that no table waits for what another one tells.
    uint64_t there = lowest( count );
    __m512i  low   = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there ), chs );
    __m512i  high  = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there >> 16 ), chs + 16 );
    __m512i  most  = _mm512_max_epu32( low, high );

    if( _mm512_cmpge_epu32_mask( most, repeat16( limit ) ) == 0 )
        return true;

    FewBytes  bytes = bytesOf( low, high );
    __m256i   block = bitAt( _mm256_srli_epi16( bytes.lower, 5 ) );
    __mmask32 stay  = _mm256_test_epi8_mask( lookUp( tableOf( inert ), bytes.upper ), block );
    __mmask32 known = UINT32_MAX; // which are below 0x10000

    if( _mm512_cmpge_epu32_mask( most, repeat16( 0x10000 ) ) != 0 )
    {
        __mmask32 next = below( low, 0x20000 ) | static_cast< uint32_t >( below( high, 0x20000 ) ) << 16;
        known          = below( low, 0x10000 ) | static_cast< uint32_t >( below( high, 0x10000 ) ) << 16;
        stay           = ( stay & known )
               | ( _mm256_test_epi8_mask( lookUp( tableOf( inert + 512 ), bytes.upper ), block ) & next & ~known );
    }

    if( stay == UINT32_MAX )
        return true;

    // Below 0x800 each character has a bit of its own, and the marks of two blocks a class.
    __m256i eighth = _mm256_ternarylogic_epi32(
        repeatFew( 0x1F ), _mm256_srli_epi16( bytes.lower, 3 ), _mm256_slli_epi16( bytes.upper, 5 ), 0xCA );
    __mmask32 small = _mm256_mask_cmplt_epu8_mask( known, bytes.upper, repeatFew( 8 ) );
    __mmask32 alone =
        _mm256_mask_test_epi8_mask( small, lookUp( tableOf( inert + 256 ), eighth ), bitAt( bytes.lower ) );

    __mmask32 second = _mm256_movepi8_mask( bytes.lower );
    __mmask32 isNear = known
                       & ( ( _mm256_cmpeq_epi8_mask( bytes.upper, repeatFew( 3 ) ) & ~second )
                           | ( _mm256_cmpeq_epi8_mask( bytes.upper, repeatFew( 5 ) ) & second ) );
    __m256i   now  = _mm256_maskz_mov_epi8( isNear, lookUp( tableOf( classes ), bytes.lower ) );
    __m256i   prev = _mm256_alignr_epi8( now, _mm256_permute2x128_si256( now, now, 0x08 ), 15 );
    __mmask32 down = _mm256_mask_cmplt_epu8_mask( _mm256_test_epi8_mask( now, now ), now, prev )
                     | _mm256_cmpeq_epi8_mask( now, repeatFew( 255 ) );

    *checked = { ~( stay | alone | isNear ), _mm256_test_epi8_mask( now, now ), known != UINT32_MAX };

    return down == 0;
}

QV___KERNEL_64 bool qv::takePlainInt64( const QV_CHAR *chs, QV_INT count, QV_INT *value )
{
    uint64_t minus = count > 0 && *chs == U'-';
    chs += minus;
    count -= static_cast< QV_INT >( minus );

    if( count < 1 || count > 19 )
        return false;

    uint64_t  all   = lowest( count );
    __mmask16 first = static_cast< __mmask16 >( all ), second = static_cast< __mmask16 >( all >> 16 );
    __m512i   low   = _mm512_sub_epi32( _mm512_maskz_loadu_epi32( first, chs ), repeat16( U'0' ) );
    __m512i   high  = _mm512_sub_epi32( _mm512_maskz_loadu_epi32( second, chs + 16 ), repeat16( U'0' ) );
    __mmask16 other = _mm512_mask_cmpgt_epu32_mask( first, low, repeat16( 9 ) )
                      | _mm512_mask_cmpgt_epu32_mask( second, high, repeat16( 9 ) );
    uint64_t number = numberOf( low, high, count );

    *value = static_cast< QV_INT >( ( number ^ -minus ) + minus );

    return other == 0 && number <= static_cast< uint64_t >( QV_INT_MAX ) + minus;
}

QV___KERNEL_64 QV_INT qv::takeDigits64( const QV_CHAR *chs, QV_INT count, uint64_t *value )
{
    __mmask16 first  = static_cast< __mmask16 >( lowest( count < 15 ? count : 15 ) );
    __m512i   low    = _mm512_sub_epi32( _mm512_maskz_loadu_epi32( first, chs ), repeat16( U'0' ) );
    QV_INT    digits = __builtin_ctz( _mm512_cmpgt_epu32_mask( low, repeat16( 9 ) ) );

    *value = numberOf( low, low, digits );

    return digits;
}

QV___KERNEL_64 QV_INT qv::findLineEnd64( const QV_CHAR *chs, QV_INT offset, QV_INT length )
{
    for( ; offset < length; offset += 16 )
    {
        QV_INT    count  = length - offset < 16 ? length - offset : 16;
        __mmask16 loaded = static_cast< __mmask16 >( _bzhi_u32( 0xFFFF, static_cast< unsigned >( count ) ) );
        __m512i   in     = _mm512_maskz_loadu_epi32( loaded, chs + offset );
        __m512i   more   = _mm512_sub_epi32( in, repeat16( U'\n' ) );
        __m512i   even   = _mm512_and_si512( in, repeat16( ~1u ) );
        unsigned  ends   = _mm512_cmple_epu32_mask( more, repeat16( U'\r' - U'\n' ) )
                        | _mm512_cmpeq_epi32_mask( in, repeat16( 0x85 ) )
                        | _mm512_cmpeq_epi32_mask( even, repeat16( 0x2028 ) );

        if( ends )
            return offset + __builtin_ctz( ends );
    }

    return length;
}

#else

bool qv::takePlainInt64( const QV_CHAR *, QV_INT, QV_INT * )
{
    return false;
}

QV_INT qv::takeDigits64( const QV_CHAR *, QV_INT, uint64_t * )
{
    return 0;
}

QV_INT qv::findLineEnd64( const QV_CHAR *, QV_INT, QV_INT length )
{
    return length;
}

QV_INT qv::orderedGroups64( const QV_CHAR *, QV_INT, const uint8_t *, const uint8_t *, uint32_t * )
{
    return 0;
}

QV_INT qv::charsIn64( const QV_CHAR *, QV_INT, const vectors::Range ( & )[3] )
{
    return 0;
}

QV_INT qv::encodeBytes64( const vectors::CharBytes ( & )[vectors::CHAR_WINDOWS], const QV_CHAR *, QV_INT, uint8_t * )
{
    return 0;
}

bool qv::areOrdered64( const QV_CHAR *, QV_INT, QV_CHAR, const uint8_t *, const uint8_t *, vectors::FewChecked * )
{
    return false;
}

QV_INT qv::decodeBytes64( const vectors::ByteChars &, const uint8_t *, QV_INT, QV_CHAR * )
{
    return 0;
}

#endif
