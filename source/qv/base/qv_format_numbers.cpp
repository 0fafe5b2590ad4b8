// The encoders of integers and reals.

#include "qv/base/qv_format.h"

#include "qv/base/qv_format_private.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_real.h"
#include "qv/sys/qv_real_private.h"
#include "qv/sys/qv_vectors_number_private.h"

#include <algorithm>
#include <array>
#include <bit>
#include <float.h>
#include <math.h>
#include <string.h>

/* Digits --------------------------------------------------------------------------------------------------------- */

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
        // 1233 / 4096 is a little less than the decimal logarithm of 2: the product is the number of digits, or one
        // less. 0 has a digit too.
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

// Writes `digits` decimal digits that end before `end`, with leading zeros. Four at a time: each division depends on
// the one before it, and so there are fewer of them in a row.
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

// The sign, the prefix and the padding of a number.
struct NumberFrame
{
    NumberFrame( bool negative, QV_INT base, QV_INT flags_ ) : flags( flags_ )
    {
        sign  = negative ? U'-' : flags_ & QV_FORMAT_FLAG_PLUSPOS ? U'+' : flags_ & QV_FORMAT_FLAG_BLANKPOS ? U' ' : 0;
        radix = flags_ & WITH_PREFIX ? qv___FormatEncodeBase( prefix, base, flags_ ) : 0;
    }

    // Writes what comes before the digits and returns where they begin.
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

// Reals of 2^53 and above, and bases other than 10, are written digit by digit in the arithmetic of reals. The last
// digits of large values, and those past the precision of a real, depend on rounding: a step may result in a value that
// is no digit of the base. A value of 36 or more, for which there is no digit, is written as 0.
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
        *value    = qv___RealMultiplyAdd( -qvRealTrunc( q ), scale, *value );
    }

    return to;
}

QV_CHAR *writeFractionOfReal( QV_CHAR *to, QV_REAL value, QV_REAL base, QV_INT count, const char *map )
{
    for( ; count > 0; count-- )
    {
        QV_REAL x = base * value;
        *to++     = digitOfReal( qv___RealMultiplyAdd( -base, qvRealTrunc( value ), x ) / base * base, map );
        value     = x;
    }

    return to;
}

const QV_INT MOST_QUICK = 15; // places that writeDecimalFraction() takes

// The digits that writeFractionOfReal() writes in base 10, in a fraction of the time. Holds for a value from 0 to below
// 1 and at most MOST_QUICK places, and for any value without places. Both functions make the same products. The other one
// subtracts from a product what the digits before make of it, divides by 10 and multiplies by 10 again; that does not
// carry it past an integer, so that each digit is the last one of its product's integer part. The integer part of the
// last product has all of them.
QV_CHAR *writeDecimalFraction( QV_CHAR *to, QV_REAL *value, int count )
{
    QV_ASSERT( count == 0 || ( *value >= 0.0 && *value < 1.0 && count <= MOST_QUICK ) );

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
        int quick = decimal ? static_cast< int >( std::min( precision, MOST_QUICK ) ) : 0;
        *to++     = U'.';
        to        = writeDecimalFraction( to, &rest, quick );
        to        = writeFractionOfReal( to, rest, realBase, precision - quick, map );
    }

    text.extend( frame.writeTail( to ) - start );
}

namespace
{
// An integer as nothing but a sign and digits of a base.
struct PlainInt
{
    PlainInt( QV_INT value, QV_INT base_ ) :
        base( static_cast< unsigned >( base_ ) ), negative( value < 0 ),
        magnitude( value < 0 ? -static_cast< uint64_t >( value ) : static_cast< uint64_t >( value ) ),
        digits( countDigits( magnitude, base ) )
    {
    }

    static constexpr QV_INT MOST = 65; // characters: of the least integer in base 2

    QV_INT length() const
    {
        return digits + negative;
    }

    void write( QV_CHAR *to ) const
    {
        *to = U'-';
        writeDigits( to + length(), magnitude, base, digits, LOWER_DIGITS );
    }

    unsigned base;
    bool     negative;
    uint64_t magnitude;
    int      digits;
};

// The same of a real that has its digits quickly: a sign, those of an integer, a point and those of a fraction.
struct PlainReal
{
    static bool holds( QV_REAL value, QV_INT base, QV_INT precision )
    {
        return base == 10 && precision >= 0 && precision <= MOST_QUICK && fabs( value ) < EXACT;
    }

    PlainReal( QV_REAL value, QV_INT precision ) :
        rest( fabs( value ) ), whole( static_cast< uint64_t >( rest ) ), digits( countDigits( whole, 10 ) ),
        sign( value < 0.0 ), places( static_cast< int >( precision ) )
    {
    }

    static constexpr QV_INT MOST = 1 + 16 + 1 + MOST_QUICK;

    QV_INT length() const
    {
        return sign + digits + ( places ? 1 + places : 0 );
    }

    void write( QV_CHAR *to ) const
    {
        *to = U'-';
        to += sign + digits;
        writeDecimal( to, whole, digits );

        if( places )
        {
            QV_REAL fraction = rest - static_cast< QV_REAL >( whole );
            *to              = U'.';
            writeDecimalFraction( to + 1, &fraction, places );
        }
    }

    QV_REAL  rest;
    uint64_t whole;
    int      digits, sign, places;
};

template< class Plain >
QV_STRING *encodePlain( const Plain &plain )
{
    QV_STRING *text = qv::newString( plain.length(), nullptr, 0 );
    plain.write( qv::chars( text ) );

    return text;
}

#if QV___LAST_DIGITS
const QV_INT DECIMAL_ROOM = 20; // characters of the longest integer, of which one is a sign or a zero

// Writes every integer with DECIMAL_ROOM digits, since a branch by their number would be mispredicted. The text is what the
// memory ends with.
inline QV_STRING *writeDecimalInt( QV_STRING *text, QV_INT value )
{
    PlainInt plain( value, 10 );
    uint64_t upper = plain.magnitude / POWERS_OF_TEN[8];
    unsigned first = static_cast< unsigned >( upper / POWERS_OF_TEN[8] );
    QV_CHAR *to    = qv::embeddedChars( text );

    writePair( to, first / 100 );
    writePair( to + 2, first % 100 );
    qv::putSixteenDigits( to + 4, upper % POWERS_OF_TEN[8], plain.magnitude % POWERS_OF_TEN[8] );
    to[DECIMAL_ROOM - 1 - plain.digits] = plain.negative ? U'-' : U'0';
    text->initWritten( DECIMAL_ROOM, DECIMAL_ROOM - plain.length(), plain.length(), { 0, 0 } );

    return text;
}

// A function of its own, so that the usual way saves no registers.
__attribute__( ( noinline ) ) QV_STRING *encodeDecimalIntSlowly( QV_INT value )
{
    return writeDecimalInt( qv::newUnwritten( DECIMAL_ROOM, false ), value );
}
#endif

QV_STRING *encodeDecimalInt( QV_INT value )
{
#if QV___LAST_DIGITS
    if( QV_STRING *text = qv::newUnwritten( DECIMAL_ROOM, true ) )
        return writeDecimalInt( text, value );

    return encodeDecimalIntSlowly( value );
#else
    return encodePlain( PlainInt( value, 10 ) );
#endif
}

// Functions of their own for the same reason.
__attribute__( ( noinline ) ) QV_STRING *encodeIntAsTold( QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags )
{
    qv::TextBuilder text;
    qv::encodeInt( text, value, base, minWidth, flags );

    return text.give();
}

__attribute__( ( noinline ) ) QV_STRING *encodeRealAsTold(
    QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags )
{
    qv::TextBuilder text;
    qv::encodeReal( text, value, base, minWidth, precision, flags );

    return text.give();
}

// A function of its own, so that the usual way needs no place on the stack.
template< class Plain >
__attribute__( ( noinline ) ) void appendPlainSlowly( QV_STRING **dest, Plain plain )
{
    QV_CHAR text[Plain::MOST];
    QV_ASSERT( plain.length() > 0 && plain.length() <= Plain::MOST );

    plain.write( text );
    qvStringAppendChars( dest, text, plain.length() );
}

// Writes the digits where they belong if there is memory after some text that nobody else holds.
template< class Plain >
void appendPlain( QV_STRING **dest, Plain plain )
{
    QV_STRING *qvs    = *dest;
    QV_INT     length = plain.length();

    if( !qv::isShared( qvs ) && qvs->length > 0 && ( qvs->bspace >= length || qvs->stretch( length ) ) )
        return plain.write( qvs->takeBack( length ) );

    appendPlainSlowly( dest, plain );
}
} // namespace

QV_STRING *qvFormatEncodeInt( QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags )
{
    // Nothing but a sign and decimal digits goes into its String at once.
    if( base == 10 && minWidth == 0 && flags == 0 )
        return encodeDecimalInt( value );

    return encodeIntAsTold( value, base, minWidth, flags );
}

QV_STRING *qvFormatEncodeReal( QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags )
{
    if( minWidth == 0 && flags == 0 && PlainReal::holds( value, base, precision ) )
        return encodePlain( PlainReal( value, precision ) );

    return encodeRealAsTold( value, base, minWidth, precision, flags );
}

void qvStringAppendInt( QV_STRING **dest, QV_INT value, QV_INT base )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( base >= 2 );
    QV_CHECK( base <= 36 );

    appendPlain( dest, PlainInt( value, base ) );
}

void qvStringAppendReal( QV_STRING **dest, QV_REAL value, QV_INT base, QV_INT precision )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );

    if( PlainReal::holds( value, base, precision ) )
        return appendPlain( dest, PlainReal( value, precision ) );

    qv::TextBuilder text;
    qv::encodeReal( text, value, base, 0, precision, 0 );
    qvStringAppendChars( dest, text.chars(), text.length() );
}
