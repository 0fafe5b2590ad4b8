#include "qv/sys/qv_vectors_64_private.h"
#include "qv/sys/qv_vectors_private.h"

/* Case, and other changes that put some characters in the place of one. */

#ifdef QV___CPU_FEATURES

using namespace qv::vectors;

namespace
{
// The lower words of the 32 lanes in two vectors, as places in both of them.
struct Words
{
    constexpr Words()
    {
        for( int i = 0; i < 32; i++ )
            places[i] = static_cast< uint16_t >( 2 * i );
    }

    alignas( 64 ) uint16_t places[32] = {};
};

constexpr Words WORDS;

// 32 times the same.
QV___KERNEL_64 inline __m512i repeatWord( uint32_t value )
{
    return _mm512_set1_epi16( static_cast< short >( value ) );
}

// 32 words, with some characters in the place of one; what follows moves up.
template< class Char >
QV___KERNEL_64 inline __m512i replaceWord( __m512i words, QV_INT place, const Char *chars, QV_INT length )
{
    words = _mm512_mask_mov_epi16( words, 1u << place, repeatWord( chars[0] ) );

    for( QV_INT k = 1; k < length; k++ )
        words = _mm512_mask_expand_epi16( repeatWord( chars[k] ), ~( 1u << ( place + k ) ), words );

    return words;
}
} // namespace

QV___KERNEL_64 void qv::replaceFew64(
    const QV_CHAR *chs, QV_INT count, const Replacement *all, QV_INT replacements, QV_CHAR *to )
{
    QV_ASSERT( count > 0 && count <= 32 );

    uint64_t there = lowest( count );
    __m512i  words = _mm512_permutex2var_epi16(
        _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there ), chs ), _mm512_load_si512( WORDS.places ),
        _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there >> 16 ), chs + 16 ) );
    QV_INT more = 0;

    for( QV_INT i = 0; i < replacements; i++ )
    {
        words = replaceWord( words, all[i].place + more, all[i].chars, all[i].length );
        more += all[i].length - 1;
    }

    QV_ASSERT( count + more <= 32 );
    _mm512_storeu_si512( to, _mm512_cvtepu16_epi32( _mm512_castsi512_si256( words ) ) );
    _mm512_storeu_si512( to + 16, _mm512_cvtepu16_epi32( _mm512_extracti64x4_epi64( words, 1 ) ) );
}

namespace
{
QV___KERNEL_64 inline __m512i mapAscii( const qv::CaseTables &tables, __m512i in )
{
    __mmask16 letters =
        _mm512_cmplt_epu32_mask( _mm512_sub_epi32( in, repeat16( tables.asciiFirst ) ), repeat16( 26 ) );

    return _mm512_mask_xor_epi32( in, letters, in, repeat16( 0x20 ) );
}

// Which of some characters are not ASCII.
QV___KERNEL_64 inline __mmask16 beyondAscii( __m512i in, __mmask16 some )
{
    return _mm512_mask_test_epi32_mask( some, in, repeat16( ~0x7Fu ) );
}

// Which of some characters are in none of the ranges without case.
QV___KERNEL_64 inline __mmask16 beyondCaseless( const qv::CaseTables &tables, __m512i in, __mmask16 some )
{
    for( Range range : tables.caseless )
        some = _mm512_mask_cmpge_epu32_mask(
            some, _mm512_sub_epi32( in, repeat16( range.first ) ), repeat16( range.end - range.first ) );

    return some;
}

// A block of 128 distances of 16 bits, and the number that the characters of the block have above their lowest 7 bits.
struct CaseBlock
{
    __m512i number;
    __m512i quarters[4];
};

QV___KERNEL_64 inline CaseBlock caseBlockOf( const qv::CaseTables &tables, QV_CHAR ch )
{
    const uint16_t *row = tables.distances + tables.blocks[ch >> 7] * 128;

    return {
        repeat16( ch >> 7 ),
        { _mm512_loadu_si512( row ), _mm512_loadu_si512( row + 32 ), _mm512_loadu_si512( row + 64 ),
          _mm512_loadu_si512( row + 96 ) } };
}

// Adds the distances of the characters of a block to those that were found, and leaves the others.
QV___KERNEL_64 inline __mmask16 takeDistances( const CaseBlock &block, __m512i in, __mmask16 left, __m512i *grow )
{
    __mmask16 here  = _mm512_mask_cmpeq_epi32_mask( left, _mm512_srli_epi32( in, 7 ), block.number );
    __mmask16 upper = _mm512_mask_test_epi32_mask( here, in, repeat16( 64 ) );
    __m512i   low   = _mm512_permutex2var_epi16( block.quarters[0], in, block.quarters[1] );
    __m512i   high  = _mm512_permutex2var_epi16( block.quarters[2], in, block.quarters[3] );

    *grow = _mm512_mask_mov_epi32( _mm512_mask_mov_epi32( *grow, here, low ), upper, high );

    return static_cast< __mmask16 >( left & ~here );
}
} // namespace

QV___KERNEL_64 QV_INT qv::mapCase64( const CaseTables &tables, const QV_CHAR *chs, QV_INT count, QV_CHAR *to )
{
    const __mmask32 LOWER = 0x55555555; // the lower halves of all lanes

    // The blocks of most texts are the last two.
    CaseBlock last = caseBlockOf( tables, 0x80 ), before = last;

    for( QV_INT i = 0; i < count; i += 16 )
    {
        QV_INT    size  = count - i < 16 ? count - i : 16;
        __mmask16 there = static_cast< __mmask16 >( lowest( size ) );
        __m512i   in    = size == 16 ? _mm512_loadu_si512( chs + i ) : _mm512_maskz_loadu_epi32( there, chs + i );

        __m512i   mapped = mapAscii( tables, in );
        __mmask16 left   = beyondAscii( in, there );

        if( left == 0 )
        {
            store16( to + i, mapped, size );
            continue;
        }

        left = beyondCaseless( tables, in, left );

        if( left == 0 )
        {
            store16( to + i, mapped, size );
            continue;
        }

        __m512i grow = _mm512_setzero_si512();
        left         = takeDistances( last, in, left, &grow );
        left         = takeDistances( before, in, left, &grow );

        while( __builtin_expect( left, 0 ) )
        {
            before = last;
            last   = caseBlockOf( tables, chs[i + __builtin_ctz( left )] );
            left   = takeDistances( last, in, left, &grow );
        }

        __mmask32 longer =
            _mm512_mask_cmpeq_epi16_mask( LOWER, grow, _mm512_set1_epi16( static_cast< short >( tables.none ) ) );
        mapped = _mm512_mask_add_epi16( mapped, LOWER, mapped, grow );

        if( longer )
        {
            size = __builtin_ctz( longer ) / 2;
            store16( to + i, mapped, size );
            return i + size;
        }

        store16( to + i, mapped, size );
    }

    return count;
}

namespace
{
// The numbers of the blocks that most letters with case are in but for ASCII: Latin, Greek and Cyrillic.
const QV_CHAR USUAL_CASE_BLOCKS[] = { 0x80 >> 7, 0x380 >> 7, 0x400 >> 7 };

// Of 32 characters as words: adds the distances of those in a block to those that were found, and leaves the others.
QV___KERNEL_64 inline __mmask32 takeWordDistances(
    const qv::CaseTables &tables, QV_CHAR number, __m512i in, __mmask32 left, __m512i *grow )
{
    const uint16_t *row = tables.distances + tables.blocks[number] * 128;

    __mmask32 here  = _mm512_mask_cmpeq_epi16_mask( left, _mm512_srli_epi16( in, 7 ), repeatWord( number ) );
    __mmask32 upper = _mm512_mask_test_epi16_mask( here, in, repeatWord( 64 ) );
    __m512i   low   = _mm512_permutex2var_epi16( _mm512_loadu_si512( row ), in, _mm512_loadu_si512( row + 32 ) );
    __m512i   high  = _mm512_permutex2var_epi16( _mm512_loadu_si512( row + 64 ), in, _mm512_loadu_si512( row + 96 ) );

    *grow = _mm512_mask_mov_epi16( _mm512_mask_mov_epi16( *grow, here, low ), upper, high );

    return left & ~here;
}

// Puts the mappings of characters that map to several in their places, of a text of so many words. Returns its new length,
// or 0 if that is above 32.
QV___KERNEL_64 inline QV_INT lengthen(
    const qv::CaseTables &tables, const QV_CHAR *chs, QV_INT count, __mmask32 longer, __m512i *words )
{
    for( QV_INT more = 0; longer != 0; )
    {
        QV_INT         place   = __builtin_ctz( longer );
        QV_CHAR        ch      = chs[place - more];
        uint32_t       value   = tables.values[tables.blocks[ch >> 7] * 128 + ( ch & 127 )];
        const QV_CHAR *mapping = tables.mappings + ( value & 0x3FFF );
        QV_INT         length  = value >> 14;

        count += length - 1;
        more += length - 1;

        if( count > 32 )
            return 0;

        *words = replaceWord( *words, place, mapping, length );
        longer = ( longer & ( longer - 1 ) ) << ( length - 1 );
    }

    return count;
}
} // namespace

QV___KERNEL_64 QV_INT qv::mapFewCase64( const CaseTables &tables, const QV_CHAR *chs, QV_INT count, QV_CHAR *to )
{
    QV_ASSERT( count > 0 && count <= 32 );

    uint64_t there  = lowest( count );
    __m512i  first  = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there ), chs );
    __m512i  second = _mm512_maskz_loadu_epi32( static_cast< __mmask16 >( there >> 16 ), chs + 16 );

    // One decision for text without case but in ASCII.
    auto      both  = []( __mmask16 low, __mmask16 high ) { return low | static_cast< uint32_t >( high ) << 16; };
    __mmask32 cased = both(
        beyondCaseless( tables, first, beyondAscii( first, 0xFFFF ) ),
        beyondCaseless( tables, second, beyondAscii( second, 0xFFFF ) ) );

    if( cased == 0 )
    {
        _mm512_storeu_si512( to, mapAscii( tables, first ) );
        _mm512_storeu_si512( to + 16, mapAscii( tables, second ) );
        return count;
    }

    // All others as 32 words; characters that are none stay.
    __m512i   words = _mm512_permutex2var_epi16( first, _mm512_load_si512( WORDS.places ), second );
    __mmask32 wide  = both(
        _mm512_cmpge_epu32_mask( first, repeat16( 0x10000 ) ), _mm512_cmpge_epu32_mask( second, repeat16( 0x10000 ) ) );

    if( __builtin_expect( ( wide & cased ) != 0, 0 ) )
        return 0;

    __mmask32 letters =
        _mm512_cmplt_epu16_mask( _mm512_sub_epi16( words, repeatWord( tables.asciiFirst ) ), repeatWord( 26 ) );
    __m512i   mapped = _mm512_mask_mov_epi16( words, letters, _mm512_xor_si512( words, repeatWord( 0x20 ) ) );
    __mmask32 left   = _mm512_mask_cmpge_epu16_mask(
        cased, _mm512_sub_epi16( words, repeatWord( tables.marks.first ) ),
        repeatWord( tables.marks.end - tables.marks.first ) );

    if( left != 0 )
    {
        __m512i grow = _mm512_setzero_si512();

        for( QV_CHAR number : USUAL_CASE_BLOCKS )
            left = takeWordDistances( tables, number, words, left, &grow );

        while( __builtin_expect( left != 0, 0 ) )
            left = takeWordDistances( tables, chs[__builtin_ctz( left )] >> 7, words, left, &grow );

        __mmask32 longer = _mm512_cmpeq_epi16_mask( grow, repeatWord( tables.none ) );
        mapped           = _mm512_add_epi16( mapped, grow );

        if( longer != 0 )
        {
            count = wide == 0 ? lengthen( tables, chs, count, longer, &mapped ) : 0;

            if( count == 0 )
                return 0;
        }
    }

    __mmask16 narrowFirst = static_cast< __mmask16 >( ~wide ), narrowSecond = static_cast< __mmask16 >( ~wide >> 16 );
    _mm512_storeu_si512( to, _mm512_mask_cvtepu16_epi32( first, narrowFirst, _mm512_castsi512_si256( mapped ) ) );
    _mm512_storeu_si512(
        to + 16, _mm512_mask_cvtepu16_epi32( second, narrowSecond, _mm512_extracti64x4_epi64( mapped, 1 ) ) );

    return count;
}

#else

QV_INT qv::mapCase64( const CaseTables &, const QV_CHAR *, QV_INT, QV_CHAR * )
{
    return 0;
}

QV_INT qv::mapFewCase64( const CaseTables &, const QV_CHAR *, QV_INT, QV_CHAR * )
{
    return 0;
}

void qv::replaceFew64( const QV_CHAR *, QV_INT, const vectors::Replacement *, QV_INT, QV_CHAR * )
{
}

#endif
