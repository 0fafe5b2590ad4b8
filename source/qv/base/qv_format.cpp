#include "qv/base/qv_format.h"

#include "qv/base/qv_format_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_real.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <algorithm>
#include <array>
#include <bit>
#include <float.h>
#include <math.h>
#include <string.h>
#include <utility>

/* Building ------------------------------------------------------------------------------------------------------- */

namespace qv
{
void TextBuilder::resize( QV_INT capacity )
{
    if( chars_ == own_ )
    {
        chars_ = static_cast< QV_CHAR * >( qvMemAllocN( capacity, sizeof( QV_CHAR ) ) );
        std::copy_n( own_, length_, chars_ );
    }
    else
    {
        chars_ = static_cast< QV_CHAR * >( qvMemReallocN( chars_, capacity, sizeof( QV_CHAR ) ) );
    }

    capacity_ = capacity;
}

void TextBuilder::grow( QV_INT count )
{
    QV_CHECK_AS( QV_INT_ADD_OK( length_, count ), "QV_INT_ADD_OK( (*qvs)->length, chsLength )" );
    resize( std::max( length_ + count, qvIntMulSaturating( capacity_, 2 ) ) );
}

void TextBuilder::freeBlock()
{
    qvMemFree( chars_ );
}

QV_STRING *TextBuilder::give()
{
    if( length_ == 0 )
        return qvStringCreate();

    // Nobody else has had the characters, which are proper ones.
    if( chars_ == own_ )
    {
        QV_STRING *qvs = createString( length_ );
        std::copy_n( own_, length_, qv::chars( qvs ) );

        return qvs;
    }

    if( capacity_ != length_ )
        resize( length_ );

    return createStringUse( std::exchange( chars_, own_ ), length_ );
}
} // namespace qv

/* Encoding ------------------------------------------------------------------------------------------------------- */

namespace
{
const char LOWER_DIGITS[] = "0123456789abcdefghijklmnopqrstuvwxyz";
const char UPPER_DIGITS[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

const char *digitsOf( QV_INT flags )
{
    return flags & QV_FORMAT_FLAG_UPPERCASE ? UPPER_DIGITS : LOWER_DIGITS;
}

struct DigitPair
{
    QV_CHAR tens, ones;
};

constexpr std::array< DigitPair, 100 > makePairs()
{
    std::array< DigitPair, 100 > pairs{};

    for( unsigned i = 0; i < 100; i++ )
        pairs[i] = { U'0' + i / 10, U'0' + i % 10 };

    return pairs;
}

constexpr std::array< DigitPair, 100 > DECIMAL_PAIRS = makePairs();

constexpr std::array< uint64_t, 20 > makePowersOfTen()
{
    std::array< uint64_t, 20 > powers{};
    uint64_t                   power = 1;

    for( uint64_t &slot : powers )
    {
        slot = power;
        power *= 10;
    }

    return powers;
}

constexpr std::array< uint64_t, 20 > POWERS_OF_TEN = makePowersOfTen();

int countDigits( uint64_t value, unsigned base )
{
    if( base == 10 )
    {
        // 1233 / 4096 is a little less than the decimal logarithm of 2. Only powers of 10 matter, and 0 has a digit.
        value |= 1;
        int digits = std::bit_width( value ) * 1233 >> 12;
        return digits + ( value >= POWERS_OF_TEN[digits] );
    }

    if( base == 16 )
        return ( std::bit_width( value | 1 ) + 3 ) / 4;

    int digits = 1;

    for( uint64_t rest = value / base; rest; rest /= base )
        digits++;

    return digits;
}

void writePair( QV_CHAR *to, unsigned value )
{
    memcpy( to, &DECIMAL_PAIRS[value], sizeof( DigitPair ) );
}

// Writes so many decimal digits in front of `end`, with zeros where the value has less. By four of them, since one
// division has to wait for the other.
void writeDecimal( QV_CHAR *end, uint64_t value, int digits )
{
    for( ; digits >= 4; digits -= 4 )
    {
        unsigned four = static_cast< unsigned >( value % 10000 );
        value /= 10000;
        end -= 4;
        writePair( end, four / 100 );
        writePair( end + 2, four % 100 );
    }

    unsigned rest = static_cast< unsigned >( value );

    if( digits >= 2 )
        writePair( end -= 2, rest % 100 );

    if( digits & 1 )
        end[-1] = U'0' + ( digits == 1 ? rest : rest / 100 ) % 10;
}

void writeDigits( QV_CHAR *end, uint64_t value, unsigned base, int digits, const char *map )
{
    if( base == 10 )
        return writeDecimal( end, value, digits );

    if( base == 16 )
        for( ; digits > 0; digits--, value >>= 4 )
            *--end = static_cast< QV_CHAR >( map[value & 15] );
    else
        for( ; digits > 0; digits--, value /= base )
            *--end = static_cast< QV_CHAR >( map[value % base] );
}

const QV_INT WITH_PREFIX = QV_FORMAT_FLAG_BASEMNEMONIC | QV_FORMAT_FLAG_BASENUMERIC;

// What stands around the digits of a number.
struct NumberFrame
{
    NumberFrame( bool negative, QV_INT base, QV_INT flags_ ) : flags( flags_ )
    {
        sign  = negative ? U'-' : flags_ & QV_FORMAT_FLAG_PLUSPOS ? U'+' : flags_ & QV_FORMAT_FLAG_BLANKPOS ? U' ' : 0;
        radix = flags_ & WITH_PREFIX ? qv___FormatEncodeBase( prefix, base, flags_ ) : 0;
    }

    // All that stands in front of the digits; gives their place.
    QV_CHAR *writeHead( QV_CHAR *to ) const
    {
        if( !( flags & ( QV_FORMAT_FLAG_LEFTALIGN | QV_FORMAT_FLAG_ZEROPAD ) ) )
            to = std::fill_n( to, pad, U' ' );

        if( sign )
            *to++ = sign;

        for( QV_INT i = 0; i < radix; i++ )
            *to++ = prefix[i];

        if( ( flags & QV_FORMAT_FLAG_ZEROPAD ) && !( flags & QV_FORMAT_FLAG_LEFTALIGN ) )
            to = std::fill_n( to, pad, U'0' );

        return to;
    }

    QV_CHAR *writeTail( QV_CHAR *to ) const
    {
        return flags & QV_FORMAT_FLAG_LEFTALIGN ? std::fill_n( to, pad, U' ' ) : to;
    }

    QV_INT  flags;
    QV_INT  pad = 0;
    QV_INT  radix;
    QV_CHAR sign; // 0 for none
    QV_CHAR prefix[3];
};
} // namespace

QV_INT qv___FormatEncodeBase( QV_CHAR *dest, QV_INT base, QV_INT flags )
{
    QV_CHECK( base > 1 && base <= 36 );

    if( !( flags & WITH_PREFIX ) )
        return 0;

    if( base == 10 && !( flags & QV_FORMAT_FLAG_BASEDECIMAL ) )
        return 0;

    const char *mnemonic = base == 2 ? "bB" : base == 8 ? "oO" : base == 10 ? "dD" : base == 16 ? "xX" : nullptr;
    QV_CHAR     prefix[3];
    QV_INT      length = 0;

    if( mnemonic && ( flags & QV_FORMAT_FLAG_BASEMNEMONIC ) )
    {
        prefix[length++] = U'0';
        prefix[length++] = static_cast< QV_CHAR >( mnemonic[flags & QV_FORMAT_FLAG_UPPERCASE ? 1 : 0] );
    }
    else
    {
        if( base >= 10 )
            prefix[length++] = U'0' + static_cast< QV_CHAR >( base / 10 );

        prefix[length++] = U'0' + static_cast< QV_CHAR >( base % 10 );
        prefix[length++] = U':';
    }

    if( dest )
        std::copy_n( prefix, length, dest );

    return length;
}

QV_CHAR *qv::encodePadding( TextBuilder &text, QV_INT length, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( minWidth >= 0 );

    QV_INT   pad   = std::max< QV_INT >( minWidth - length, 0 );
    QV_CHAR *place = text.append( length + pad );

    if( flags & QV_FORMAT_FLAG_LEFTALIGN )
        std::fill_n( place + length, pad, U' ' );
    else
        place = std::fill_n( place, pad, U' ' );

    return place;
}

void qv::encodeBool( TextBuilder &text, QV_BOOL value, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( minWidth >= 0 );

    flags = qvFormatFlagsNormalize( flags );

    bool           upper = flags & QV_FORMAT_FLAG_UPPERCASE;
    const QV_CHAR *word  = value ? ( upper ? U"TRUE" : U"true" ) : ( upper ? U"FALSE" : U"false" );
    QV_INT         count = value ? 4 : 5;
    std::copy_n( word, count, encodePadding( text, count, minWidth, flags ) );
}

void qv::encodeInt( TextBuilder &text, QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( base >= 2 );
    QV_CHECK( base <= 36 );
    QV_CHECK( minWidth >= 0 );

    uint64_t    magnitude = value < 0 ? -static_cast< uint64_t >( value ) : static_cast< uint64_t >( value );
    int         digits    = countDigits( magnitude, static_cast< unsigned >( base ) );
    NumberFrame frame( value < 0, base, flags );
    QV_INT      length = ( frame.sign ? 1 : 0 ) + frame.radix + digits;
    frame.pad          = std::max< QV_INT >( minWidth - length, 0 );

    QV_CHAR *end = frame.writeHead( text.append( length + frame.pad ) ) + digits;
    writeDigits( end, magnitude, static_cast< unsigned >( base ), digits, digitsOf( flags ) );
    frame.writeTail( end );
}

namespace
{
const QV_REAL EXACT = 9007199254740992.0; // 2 to the power 53: below it, every integer is a real

// Reals of 2^53 and above and bases other than 10 go digit by digit, in the arithmetic of reals. That makes the last
// digits of large values, and those past the precision of a real, what rounding makes of them: a step may give a value
// that is no digit of the base. One that the digits have no character for is written as 0.
QV_CHAR digitOfReal( QV_REAL digit, const char *map )
{
    QV_INT value = qvRealToInt( fabs( digit ) );
    return static_cast< QV_CHAR >( map[value < 36 ? value : 0] );
}

int countDigitsOfReal( QV_REAL value, QV_REAL base, QV_REAL *scale )
{
    int     digits = 1;
    QV_REAL t      = qvRealTrunc( value / base );
    *scale         = 1.0;

    for( ; t != 0.0; t = qvRealTrunc( t / base ) )
    {
        *scale *= base;
        digits++;
    }

    return digits;
}

QV_CHAR *writeDigitsOfReal( QV_CHAR *to, QV_REAL *value, QV_REAL base, QV_REAL scale, const char *map )
{
    for( ; scale >= 1.0; scale = qvRealTrunc( scale / base ) )
    {
        QV_REAL q = *value / scale;
        *to++     = digitOfReal( q, map );
        *value    = fma( -qvRealTrunc( q ), scale, *value );
    }

    return to;
}

QV_CHAR *writeFractionOfReal( QV_CHAR *to, QV_REAL value, QV_REAL base, QV_INT count, const char *map )
{
    for( ; count > 0; count-- )
    {
        QV_REAL x = base * value;
        *to++     = digitOfReal( fma( -base, qvRealTrunc( value ), x ) / base * base, map );
        value     = x;
    }

    return to;
}

// The same digits in base 10, of a value from 0 to below 1 and of 15 places at most, in a fraction of the time. The
// products are those of writeFractionOfReal(). What it takes off them and divides by 10 and multiplies by 10 again
// stays between the same two integers, so each digit is the last one of the product's integer part, and that has all
// of them.
QV_CHAR *writeDecimalFraction( QV_CHAR *to, QV_REAL *value, int count )
{
    QV_REAL product = *value;

    for( int i = 0; i < count; i++ )
        product *= 10.0;

    *value = product;
    writeDecimal( to + count, static_cast< uint64_t >( product ), count );

    return to + count;
}
} // namespace

void qv::encodeReal( TextBuilder &text, QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags )
{
    QV_CHECK( base >= 2 );
    QV_CHECK( base <= 36 );
    QV_CHECK( minWidth >= 0 );
    QV_CHECK( precision >= -1 );

    if( precision == -1 )
        precision = 6;

    if( __builtin_expect( !( fabs( value ) <= DBL_MAX ), 0 ) )
    {
        std::copy_n( qvRealIsNan( value ) ? U"NAN" : U"INF", 3, encodePadding( text, 3, minWidth, flags ) );
        return;
    }

    // Digits are those of the absolute value: every step rounds alike on both sides of 0.
    bool        negative    = value < 0.0;
    bool        decimal     = base == 10 && fabs( value ) < EXACT;
    QV_REAL     rest        = fabs( value );
    QV_REAL     scale       = 1.0;
    QV_REAL     realBase    = static_cast< QV_REAL >( base );
    const char *map         = digitsOf( flags );
    uint64_t    whole       = decimal ? static_cast< uint64_t >( rest ) : 0;
    QV_INT      wholeDigits = decimal ? countDigits( whole, 10 ) : countDigitsOfReal( rest, realBase, &scale );
    QV_INT      digits      = wholeDigits;

    if( precision != 0 )
    {
        QV_CHECK( QV_INT_ADD_OK( digits, precision ) );
        QV_CHECK( QV_INT_ADD_OK( digits + precision, 1 ) );
        digits += precision + 1;
    }

    NumberFrame frame( negative, base, flags );
    QV_INT      sign = frame.sign ? 1 : 0, radix = frame.radix;
    QV_CHECK( QV_INT_ADD_OK( digits, sign ) );
    QV_CHECK( QV_INT_ADD_OK( digits + sign, radix ) );

    frame.pad      = std::max< QV_INT >( minWidth - ( digits + sign + radix ), 0 );
    QV_CHAR *start = text.room( digits + sign + radix + frame.pad );
    QV_CHAR *to    = frame.writeHead( start );

    if( decimal )
    {
        to += wholeDigits;
        writeDecimal( to, whole, static_cast< int >( wholeDigits ) );
        rest -= static_cast< QV_REAL >( whole );
    }
    else
    {
        to = writeDigitsOfReal( to, &rest, realBase, scale, map );
    }

    if( precision != 0 )
    {
        int quick = decimal ? static_cast< int >( std::min< QV_INT >( precision, 15 ) ) : 0;
        *to++     = U'.';
        to        = writeDecimalFraction( to, &rest, quick );
        to        = writeFractionOfReal( to, rest, realBase, precision - quick, map );
    }

    text.extend( frame.writeTail( to ) - start );
}

QV_STRING *qvFormatEncodeBool( QV_BOOL value, QV_INT minWidth, QV_INT flags )
{
    qv::TextBuilder text;
    qv::encodeBool( text, value, minWidth, flags );

    return text.give();
}

QV_STRING *qvFormatEncodeInt( QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags )
{
    qv::TextBuilder text;
    qv::encodeInt( text, value, base, minWidth, flags );

    return text.give();
}

QV_STRING *qvFormatEncodeReal( QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags )
{
    qv::TextBuilder text;
    qv::encodeReal( text, value, base, minWidth, precision, flags );

    return text.give();
}

QV_STRING *qvFormatEncodeChars( const QV_CHAR *src, QV_INT srcLength, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( src || srcLength == 0 );
    QV_CHECK( minWidth >= 0 );
    QV_CHECK( qvCharsAllOk( src, srcLength ) );

    qv::TextBuilder text;
    std::copy_n( src, srcLength, qv::encodePadding( text, srcLength, minWidth, flags ) );

    return text.give();
}

/* Decoding ------------------------------------------------------------------------------------------------------- */

namespace
{
// The values of the ASCII digits and letters.
constexpr std::array< int8_t, 128 > makeAsciiDigits()
{
    std::array< int8_t, 128 > values{};

    for( int ch = 0; ch < 128; ch++ )
        values[static_cast< size_t >( ch )] = static_cast< int8_t >(
            ch >= '0' && ch <= '9'   ? ch - '0'
            : ch >= 'A' && ch <= 'Z' ? ch - 'A' + 10
            : ch >= 'a' && ch <= 'z' ? ch - 'a' + 10
                                     : 99 );

    return values;
}

constexpr std::array< int8_t, 128 > ASCII_DIGITS = makeAsciiDigits();

// Digits as qvUnicodeBaseNDigitValue() has them, without a call for each: up to base 10 all decimal digits and up to
// base 16 all hexadecimal ones, whatever the base.
class DigitReader
{
public:
    explicit DigitReader( QV_INT base ) : base_( base ), limit_( base <= 10 ? 10 : base <= 16 ? 16 : base )
    {
    }

    // The digit's value, or -1.
    QV_INT operator()( QV_CHAR ch ) const
    {
        if( __builtin_expect( ch < 128, 1 ) )
        {
            QV_INT value = ASCII_DIGITS[ch];
            return value < limit_ ? value : -1;
        }

        return qvUnicodeBaseNDigitValue( ch, base_ );
    }

private:
    QV_INT base_, limit_;
};

// A place in the characters that are decoded.
struct Reader
{
    const QV_CHAR *start, *at, *end;

    bool ended() const
    {
        return at == end;
    }

    bool takeChar( QV_CHAR ch )
    {
        if( at == end || *at != ch )
            return false;

        at++;
        return true;
    }

    void skipWhiteSpace()
    {
        while( at < end && ( *at < 128 ? *at == U' ' || *at - U'\t' <= U'\r' - U'\t' : qvUnicodeIsWhiteSpace( *at ) ) )
            at++;
    }

    // A sign with the white space behind it. True if there was one.
    bool takeSign( bool plusToo, bool *negative )
    {
        if( takeChar( U'-' ) )
            *negative = true;
        else if( !plusToo || !takeChar( U'+' ) )
            return false;

        skipWhiteSpace();
        return true;
    }

    // The base that a prefix tells, 10 without one. Every base has a prefix of its number, as `36:`.
    QV_INT takeBase()
    {
        QV_INT left = end - at;

        if( left >= 2 && *at == U'0' )
        {
            // Letters differ from lower-case ones in one bit.
            QV_CHAR letter = at[1] | 0x20;
            QV_INT  base   = letter == U'b' ? 2 : letter == U'o' ? 8 : letter == U'd' ? 10 : letter == U'x' ? 16 : 0;

            if( base )
            {
                at += 2;
                return base;
            }
        }

        QV_INT number = 0, digits = 0;

        while( digits < 2 && digits < left && at[digits] - U'0' <= 9 )
            number = number * 10 + at[digits++] - U'0';

        // No base is written with a zero in front.
        if( digits && digits < left && at[digits] == U':' && *at != U'0' && number >= 2 && number <= 36 )
        {
            at += digits + 1;
            return number;
        }

        return 10;
    }

    // All that stands in front of the digits. False if nothing stands behind it.
    bool takeHead( bool plusToo, QV_INT *base, bool *negative )
    {
        // Mostly nothing.
        if( *base != -1 && !ended() && *at - U'0' <= 9 )
            return true;

        skipWhiteSpace();
        bool sign = takeSign( plusToo, negative );

        if( *base == -1 )
        {
            *base = takeBase();
            skipWhiteSpace();

            if( !sign )
                takeSign( true, negative );
        }

        return !ended();
    }
};

QV_BOOL decodeInt( Reader &in, QV_INT base, QV_INT *value )
{
    bool negative = false;

    if( !in.takeHead( true, &base, &negative ) )
        return QV_FALSE;

    const DigitReader digitOf( base );
    const QV_CHAR    *first  = in.at;
    QV_INT            result = 0;

    // The first 18 digits of base 10 cannot leave the range.
    if( base == 10 )
    {
        const QV_CHAR *safe = in.at + std::min< ptrdiff_t >( in.end - in.at, 18 );

        while( in.at < safe && *in.at - U'0' <= 9 )
            result = result * 10 + static_cast< QV_INT >( *in.at++ - U'0' );

        if( negative )
            result = -result;
    }

    // The sign goes in with each digit, since the lowest value has no positive counterpart.
    for( ; !in.ended(); in.at++ )
    {
        QV_INT digit = digitOf( *in.at ), next;

        if( digit < 0 || __builtin_mul_overflow( result, base, &next )
            || __builtin_add_overflow( next, negative ? -digit : digit, &next ) )
            break;

        result = next;
    }

    QV_BOOL found = in.at != first ? QV_TRUE : QV_FALSE;
    in.skipWhiteSpace();
    *value = result;

    return found;
}

// Inlined into functions with and without the machine's own fused multiply-add.
inline __attribute__( ( always_inline ) ) QV_BOOL decodeRealBody( Reader &in, QV_INT base, QV_REAL *value )
{
    bool negative = false;

    if( !in.takeHead( false, &base, &negative ) )
        return QV_FALSE;

    const DigitReader digitOf( base );
    const QV_REAL     realBase = static_cast< QV_REAL >( base );
    const QV_CHAR    *first    = in.at;
    uint64_t          whole    = 0;
    QV_INT            digit    = 0;

    // Below 2^53 the sums are exact, and may as well be made of integers.
    for( ; !in.ended() && whole < ( UINT64_C( 1 ) << 53 ) / 36 - 36; in.at++ )
    {
        if( ( digit = digitOf( *in.at ) ) < 0 )
            break;

        whole = whole * static_cast< uint64_t >( base ) + static_cast< uint64_t >( digit );
    }

    const QV_REAL sign   = negative ? -1.0 : 1.0;
    QV_REAL       result = sign * static_cast< QV_REAL >( whole ) + 0.0; // there is no negative zero
    QV_REAL       unit   = 1.0 / realBase;

    for( ; !in.ended() && ( digit = digitOf( *in.at ) ) >= 0; in.at++ )
        result = __builtin_fma( result, realBase, sign * static_cast< QV_REAL >( digit ) );

    if( !in.ended() && ( *in.at == U'.' || *in.at == U',' ) )
        for( in.at++; !in.ended() && ( digit = digitOf( *in.at ) ) >= 0; in.at++ )
        {
            result = __builtin_fma( sign * static_cast< QV_REAL >( digit ), unit, result );
            unit /= realBase;
        }

    QV_BOOL found = in.at != first ? QV_TRUE : QV_FALSE;
    in.skipWhiteSpace();
    *value = result;

    return found;
}

#ifdef QV___CPU_FEATURES
__attribute__( ( target( "fma" ) ) ) QV_BOOL decodeRealFma( Reader &in, QV_INT base, QV_REAL *value )
{
    return decodeRealBody( in, base, value );
}
#endif

QV_BOOL decodeReal( Reader &in, QV_INT base, QV_REAL *value )
{
#ifdef QV___CPU_FEATURES
    if( CPU_FEATURE_ACTIVE( FMA ) )
        return decodeRealFma( in, base, value );
#endif

    return decodeRealBody( in, base, value );
}

QV_BOOL decodeBool( Reader &in, QV_BOOL allowNumeric, QV_BOOL *value )
{
    if( allowNumeric )
    {
        Reader  number = in;
        QV_REAL real   = 0.0;

        if( decodeReal( number, -1, &real ) )
        {
            in     = number;
            *value = qvRealEquals( real, 0.0 ) ? QV_FALSE : QV_TRUE;
            return QV_TRUE;
        }
    }

    in.skipWhiteSpace();

    auto takeWord = [&in]( const char *word, QV_INT length )
    {
        if( in.end - in.at < length )
            return false;

        // The letters of ASCII have one lower-case counterpart each, 0x20 above.
        for( QV_INT i = 0; i < length; i++ )
            if( ( in.at[i] | 0x20 ) != static_cast< QV_CHAR >( word[i] ) )
                return false;

        in.at += length;
        return true;
    };

    bool yes = takeWord( "true", 4 );

    if( !yes && !takeWord( "false", 5 ) )
        return QV_FALSE;

    in.skipWhiteSpace();
    *value = yes ? QV_TRUE : QV_FALSE;

    return QV_TRUE;
}

// What every decoder does around its work.
template< class T, class Decode >
QV_BOOL decodeChars( const QV_CHAR *src, QV_INT srcLength, T *value, QV_INT *consumed, Decode decode )
{
    Reader  in{ src, src, src + srcLength };
    T       result = 0;
    QV_BOOL found  = decode( in, &result );

    if( value )
        *value = result;

    if( consumed )
        *consumed = in.at - in.start;

    return found;
}
} // namespace

QV_BOOL
qvFormatTryDecodeIntChars( const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( src || srcLength == 0 );
    QV_CHECK( base == -1 || ( base >= 2 && base <= 36 ) );

    return decodeChars(
        src, srcLength, value, consumed,
        [base]( Reader &in, QV_INT *result ) { return decodeInt( in, base, result ); } );
}

QV_BOOL
qvFormatTryDecodeRealChars( const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_REAL *value, QV_INT *consumed )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( src || srcLength == 0 );
    QV_CHECK( base == -1 || ( base >= 2 && base <= 36 ) );

    return decodeChars(
        src, srcLength, value, consumed,
        [base]( Reader &in, QV_REAL *result ) { return decodeReal( in, base, result ); } );
}

QV_BOOL qvFormatTryDecodeBoolChars(
    const QV_CHAR *src, QV_INT srcLength, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( src || srcLength == 0 );

    return decodeChars(
        src, srcLength, value, consumed,
        [allowNumeric]( Reader &in, QV_BOOL *result ) { return decodeBool( in, allowNumeric, result ); } );
}

// The forms on a range of a String.
#define DECODE_INNER( Name, How, how, Type )                                                                           \
    QV_BOOL Name( QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, How how, Type *value, QV_INT *consumed )         \
    {                                                                                                                  \
        QV_CHECK( src );                                                                                               \
        QV_CHECK( srcOffset >= 0 );                                                                                    \
        QV_CHECK( srcLength >= 0 );                                                                                    \
        QV_CHECK( QV_INT_ADD_OK( srcOffset, srcLength ) );                                                             \
        QV_CHECK( srcOffset + srcLength <= qvStringLength( src ) );                                                    \
                                                                                                                       \
        return Name##Chars( qv::chars( src ) + srcOffset, srcLength, how, value, consumed );                           \
    }

DECODE_INNER( qvFormatTryDecodeInt, QV_INT, base, QV_INT )
DECODE_INNER( qvFormatTryDecodeReal, QV_INT, base, QV_REAL )
DECODE_INNER( qvFormatTryDecodeBool, QV_BOOL, allowNumeric, QV_BOOL )

#undef DECODE_INNER
