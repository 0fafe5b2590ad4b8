// The decoders of integers, reals and truth values.

#include "qv/base/qv_format.h"

#include "qv/base/qv_number_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_cpu_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_real.h"
#include "qv/sys/qv_real_private.h"
#include "qv/sys/qv_vectors_private.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <algorithm>
#include <array>

namespace
{
// The values of the ASCII digits and letters.
constexpr std::array< uint8_t, 128 > makeAsciiDigits()
{
    std::array< uint8_t, 128 > values{};

    for( int ch = 0; ch < 128; ch++ )
        values[static_cast< size_t >( ch )] = static_cast< uint8_t >(
            ch >= '0' && ch <= '9'   ? ch - '0'
            : ch >= 'A' && ch <= 'Z' ? ch - 'A' + 10
            : ch >= 'a' && ch <= 'z' ? ch - 'a' + 10
                                     : 99 );

    return values;
}

constexpr std::array< uint8_t, 128 > ASCII_DIGITS = makeAsciiDigits();

// Digits as qvUnicodeBaseNDigitValue() has them, without a call for ASCII ones: up to base 10 all decimal digits and up
// to base 16 all hexadecimal ones, whatever the base.
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

// The characters that are decoded and the position in them.
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

    // Takes a sign and the white space after it. True if there was one.
    bool takeSign( bool plusToo, bool *negative )
    {
        if( takeChar( U'-' ) )
            *negative = true;
        else if( !plusToo || !takeChar( U'+' ) )
            return false;

        skipWhiteSpace();
        return true;
    }

    // Takes a prefix and returns its base; 10 without one. Every base has a numeric prefix, as `36:`.
    QV_INT takeBase()
    {
        QV_INT left = end - at;

        if( left >= 2 && *at == U'0' )
        {
            // An upper-case letter differs from its lower-case form in this bit.
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

        // A base has no leading zero.
        if( digits && digits < left && at[digits] == U':' && *at != U'0' && number >= 2 && number <= 36 )
        {
            at += digits + 1;
            return number;
        }

        return 10;
    }

    // Takes all that comes before the digits. False if nothing is left after it.
    bool takeHead( bool plusToo, QV_INT *base, bool *negative )
    {
        // Most numbers begin with a digit.
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

    // 18 digits of base 10 are below the limit of the range, so that they need no check of it.
    if( base == 10 )
    {
        const QV_CHAR *safe = in.at + std::min< ptrdiff_t >( in.end - in.at, 18 );

        while( in.at < safe && *in.at - U'0' <= 9 )
            result = result * 10 + static_cast< QV_INT >( *in.at++ - U'0' );

        if( negative )
            result = -result;
    }

    // Digits of a negative number are subtracted, since the lowest value has no positive counterpart.
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
template< bool machine >
inline __attribute__( ( always_inline ) ) QV_REAL multiplyAdd( QV_REAL x, QV_REAL y, QV_REAL z )
{
    if constexpr( machine )
        return __builtin_fma( x, y, z );
    else
        return qv___RealMultiplyAdd( x, y, z );
}

template< bool machine >
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

    // Sums below 2^53 are exact as reals, so integers make the same ones.
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
        result = multiplyAdd< machine >( result, realBase, sign * static_cast< QV_REAL >( digit ) );

    if( !in.ended() && ( *in.at == U'.' || *in.at == U',' ) )
        for( in.at++; !in.ended() && ( digit = digitOf( *in.at ) ) >= 0; in.at++ )
        {
            result = multiplyAdd< machine >( sign * static_cast< QV_REAL >( digit ), unit, result );
            unit /= realBase;
        }

    QV_BOOL found = in.at != first ? QV_TRUE : QV_FALSE;
    in.skipWhiteSpace();
    *value = result;

    return found;
}

// What the places after the point are worth in base 10, as decodeRealBody() makes them: by dividing again and again.
constexpr std::array< QV_REAL, 24 > makeDecimalUnits()
{
    std::array< QV_REAL, 24 > units{};
    QV_REAL                   unit = 1.0;

    for( QV_REAL &slot : units )
        slot = unit /= 10.0;

    return units;
}

constexpr std::array< QV_REAL, 24 > DECIMAL_UNITS = makeDecimalUnits();

// Reads what most reals are, in base 10: up to 14 digits, which a real holds exactly, a point and further digits, and
// nothing else but a minus sign before them. False if it is something else.
template< bool machine >
inline __attribute__( ( always_inline ) ) bool takePlainReal( Reader &in, QV_REAL *value )
{
    const QV_INT   MOST_EXACT = 14;
    bool           negative   = !in.ended() && *in.at == U'-';
    const QV_CHAR *at         = in.at + negative;
    uint64_t       whole;

    if( at == in.end || !qv::vectors::has64() )
        return false;

    QV_INT digits = qv::takeDigits64( at, in.end - at, &whole );
    at += digits;

    if( digits == 0 || digits > MOST_EXACT || in.end - at > 1 + QV_INT( DECIMAL_UNITS.size() )
        || ( at < in.end && *at != U'.' && *at != U',' ) )
        return false;

    const QV_REAL sign   = negative ? -1.0 : 1.0;
    QV_REAL       result = sign * static_cast< QV_REAL >( whole ) + 0.0;

    if( at < in.end )
        at++;

    for( const QV_REAL *unit = DECIMAL_UNITS.data(); at < in.end; at++, unit++ )
    {
        QV_CHAR digit = *at - U'0';

        if( digit > 9 )
            return false;

        result = multiplyAdd< machine >( sign * static_cast< QV_REAL >( static_cast< int >( digit ) ), *unit, result );
    }

    QV_ASSERT(
        [&]( Reader general, QV_REAL other )
        { return decodeRealBody< machine >( general, 10, &other ) && general.ended() && other == result; }( in, 0.0 ) );
    in.at  = in.end;
    *value = result;

    return true;
}

template< bool machine >
inline __attribute__( ( always_inline ) ) QV_BOOL decodeAnyReal( Reader &in, QV_INT base, QV_REAL *value )
{
    return base == 10 && takePlainReal< machine >( in, value ) ? QV_TRUE : decodeRealBody< machine >( in, base, value );
}

#ifdef QV___CPU_FEATURES
__attribute__( ( target( "fma" ) ) ) QV_BOOL decodeRealFma( Reader &in, QV_INT base, QV_REAL *value )
{
    return decodeAnyReal< true >( in, base, value );
}
#endif

QV_BOOL decodeReal( Reader &in, QV_INT base, QV_REAL *value )
{
#ifdef QV___CPU_FEATURES
    if( CPU_FEATURE_ACTIVE( FMA ) )
        return decodeRealFma( in, base, value );
#endif

    return decodeAnyReal< false >( in, base, value );
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

        // An ASCII letter and its lower-case form differ in the bit 0x20. No other character becomes a letter by it.
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

// What all decoders have in common: `decode` reads from a Reader and stores the value.
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

__attribute__( ( noinline ) ) QV_BOOL decodeIntChars(
    const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    return decodeChars(
        src, srcLength, value, consumed,
        [base]( Reader &in, QV_INT *result ) { return decodeInt( in, base, result ); } );
}

// Reads what most numbers are, by the kernel for them. False if it is something else, which decodeIntChars() reads.
inline bool takePlainInt( const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    QV_INT number;

    if( base != 10 || !qv::vectors::has64() || !qv::takePlainInt64( src, srcLength, &number ) )
        return false;

    QV_ASSERT( [&]( QV_INT other )
               { return decodeIntChars( src, srcLength, 10, &other, nullptr ) && other == number; }( 0 ) );

    if( value )
        *value = number;

    if( consumed )
        *consumed = srcLength;

    return true;
}
} // namespace

// Not inlined into the form on a String, whose short way then saves no registers.
__attribute__( ( noinline ) ) QV_BOOL qvFormatTryDecodeIntChars(
    const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( src || srcLength == 0 );
    QV_CHECK( base == -1 || ( base >= 2 && base <= 36 ) );

    return takePlainInt( src, srcLength, base, value, consumed )
               ? QV_TRUE
               : decodeIntChars( src, srcLength, base, value, consumed );
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

/* The forms on a range of a String ------------------------------------------------------------------------------- */

namespace
{
// The first character of a range, which has to lie in the String.
const QV_CHAR *rangeOf( QV_STRING *src, QV_INT srcOffset, QV_INT srcLength )
{
    QV_CHECK( src );
    QV_CHECK( srcOffset >= 0 );
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( QV_INT_ADD_OK( srcOffset, srcLength ) );
    QV_CHECK_AS( srcOffset + srcLength <= src->length, "srcOffset + srcLength <= qvStringLength( src )" );

    return qv::chars( src ) + srcOffset;
}
} // namespace

QV_BOOL qvFormatTryDecodeInt(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    return qv::decodeIntIn( src, rangeOf( src, srcOffset, srcLength ), srcLength, base, value, consumed );
}

QV_BOOL qvFormatTryDecodeReal(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_INT base, QV_REAL *value, QV_INT *consumed )
{
    return qvFormatTryDecodeRealChars( rangeOf( src, srcOffset, srcLength ), srcLength, base, value, consumed );
}

QV_BOOL qvFormatTryDecodeBool(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed )
{
    return qvFormatTryDecodeBoolChars( rangeOf( src, srcOffset, srcLength ), srcLength, allowNumeric, value, consumed );
}
