#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_format_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_real.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT LEFTALIGN    = QV_FORMAT_FLAG_LEFTALIGN;
const QV_INT ZEROPAD      = QV_FORMAT_FLAG_ZEROPAD;
const QV_INT PLUSPOS      = QV_FORMAT_FLAG_PLUSPOS;
const QV_INT BLANKPOS     = QV_FORMAT_FLAG_BLANKPOS;
const QV_INT UPPERCASE    = QV_FORMAT_FLAG_UPPERCASE;
const QV_INT BASEMNEMONIC = QV_FORMAT_FLAG_BASEMNEMONIC;
const QV_INT BASENUMERIC  = QV_FORMAT_FLAG_BASENUMERIC;
const QV_INT BASEDECIMAL  = QV_FORMAT_FLAG_BASEDECIMAL;

std::string formatted( const char *fmt, ... )
{
    Ref< QV_STRING > fmtText = text( std::string_view( fmt ) );
    va_list          argList;
    va_start( argList, fmt );
    std::string result = take( qv___FormatArgList( fmtText, &argList ) );
    va_end( argList );

    return result;
}

std::string intText( QV_INT value, QV_INT base, QV_INT minWidth = 0, QV_INT flags = 0 )
{
    return take( qvFormatEncodeInt( value, base, minWidth, flags ) );
}

std::string realText( QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags = 0 )
{
    return take( qvFormatEncodeReal( value, base, minWidth, precision, flags ) );
}

// The digits of an integer, by the schoolbook.
std::string modelOfInt( QV_INT value, QV_INT base )
{
    std::string digits;
    __int128    rest = value < 0 ? -static_cast< __int128 >( value ) : value;

    do
        digits.insert( digits.begin(), "0123456789abcdefghijklmnopqrstuvwxyz"[static_cast< int >( rest % base )] );
    while( ( rest /= base ) );

    if( value < 0 )
        digits.insert( digits.begin(), '-' );

    return digits;
}

// The digits of a real, one step at a time.
std::string modelOfReal( QV_REAL value, QV_REAL base, QV_INT precision )
{
    auto digit = []( QV_REAL q ) {
        QV_INT index = qvRealToInt( std::fabs( q ) );
        return "0123456789abcdefghijklmnopqrstuvwxyz"[index < 36 ? index : 0];
    };

    std::string result = value < 0.0 ? "-" : "";
    QV_REAL     scale  = 1.0;

    for( QV_REAL t = qvRealTrunc( value / base ); t != 0.0; t = qvRealTrunc( t / base ) )
        scale *= base;

    for( ; scale >= 1.0; scale = qvRealTrunc( scale / base ) )
    {
        QV_REAL q = value / scale;
        result += digit( q );
        value = std::fma( -qvRealTrunc( q ), scale, value );
    }

    result += precision ? "." : "";

    for( QV_INT i = 0; i < precision; i++ )
    {
        QV_REAL x = base * value;
        result += digit( std::fma( -base, qvRealTrunc( value ), x ) / base * base );
        value = x;
    }

    return result;
}

QV_REAL modelOfDecodedReal( const std::string &digits, QV_REAL base )
{
    QV_REAL result = 0.0, unit = 1.0 / base, sign = digits[0] == '-' ? -1.0 : 1.0;
    bool    fraction = false;

    for( char ch : digits )
    {
        QV_REAL value = std::isdigit( static_cast< unsigned char >( ch ) ) ? ch - '0' : ch - 'a' + 10;

        if( ch == '.' )
            fraction = true;
        else if( ch != '-' && !fraction )
            result = std::fma( result, base, sign * value );
        else if( ch != '-' )
        {
            result = std::fma( sign * unit, value, result );
            unit /= base;
        }
    }

    return result;
}

// What a decoder says, in one piece: the result, the value and how much it read.
template< class T >
struct Decoded
{
    bool   found;
    T      value;
    QV_INT consumed;

    bool operator==( const Decoded & ) const = default;
};

template< class T >
void PrintTo( const Decoded< T > &decoded, std::ostream *out )
{
    *out << "{" << decoded.found << ", " << decoded.value << ", " << decoded.consumed << "}";
}

template< class T, class How >
Decoded< T > decoded(
    QV_BOOL ( *decode )( const QV_CHAR *, QV_INT, How, T *, QV_INT * ), std::u32string_view chs, How how )
{
    T       value    = 99;
    QV_INT  consumed = 99;
    QV_BOOL found    = decode( chs.data(), static_cast< QV_INT >( chs.size() ), how, &value, &consumed );

    return { found == QV_TRUE, value, consumed };
}

QV_INT randomInt( std::mt19937_64 &random )
{
    return static_cast< QV_INT >( random() ) >> ( random() % 64 );
}
} // namespace

TEST( Format, IntegersGoThroughTextInEveryBase )
{
    std::mt19937_64       random( 34 );
    std::vector< QV_INT > values = { 0, 1, -1, 9, 10, 99, 100, QV_INT_MAX, QV_INT_MIN, QV_INT_MIN + 1 };

    for( QV_INT power = 10; power < QV_INT_MAX / 10; power *= 10 )
        values.insert( values.end(), { power - 1, power, -power } );

    for( int i = 0; i < 300; i++ )
        values.push_back( randomInt( random ) );

    for( QV_INT base = 2; base <= 36; base++ )
        for( QV_INT value : values )
        {
            std::string      digits  = intText( value, base );
            Ref< QV_STRING > encoded = text( digits );
            ASSERT_EQ( modelOfInt( value, base ), digits );

            QV_INT back = 0, consumed = 0;
            QV_INT length = qvStringLength( encoded );
            ASSERT_TRUE( qvFormatTryDecodeInt( encoded, 0, length, base, &back, &consumed ) ) << digits;
            ASSERT_EQ( value, back ) << digits << " in base " << base;
            ASSERT_EQ( length, consumed );

            // Both prefixes tell the base to who doesn't know it.
            for( QV_INT prefix : { BASEMNEMONIC, BASENUMERIC, BASENUMERIC | UPPERCASE } )
            {
                encoded = Ref< QV_STRING >( qvFormatEncodeInt( value, base, 0, prefix | BASEDECIMAL ) );
                ASSERT_TRUE( qvFormatTryDecodeInt( encoded, 0, qvStringLength( encoded ), -1, &back, nullptr ) );
                ASSERT_EQ( value, back ) << utf8( encoded );
            }
        }
}

TEST( Format, SignPrefixAndPaddingSurroundTheDigits )
{
    EXPECT_EQ( "0x0000ff", intText( 255, 16, 8, ZEROPAD | BASEMNEMONIC ) );
    EXPECT_EQ( "  +0XFF", intText( 255, 16, 7, PLUSPOS | BLANKPOS | BASEMNEMONIC | UPPERCASE ) );
    EXPECT_EQ( "-005", intText( -5, 10, 4, ZEROPAD ) );
    EXPECT_EQ( "5   ", intText( 5, 10, 4, LEFTALIGN | ZEROPAD ) );
    EXPECT_EQ( " 5", intText( 5, 10, 0, BLANKPOS ) );
    EXPECT_EQ( "-5", intText( -5, 10, 0, BLANKPOS | PLUSPOS ) );
    EXPECT_EQ( std::string( 297, ' ' ) + "123", intText( 123, 10, 300 ) );

    // The table of prefixes.
    EXPECT_EQ( "3:12", intText( 5, 3, 0, BASEMNEMONIC ) );
    EXPECT_EQ( "0b101", intText( 5, 2, 0, BASEMNEMONIC | BASENUMERIC ) );
    EXPECT_EQ( "0O5", intText( 5, 8, 0, BASEMNEMONIC | UPPERCASE ) );
    EXPECT_EQ( "36:5", intText( 5, 36, 0, BASENUMERIC ) );
    EXPECT_EQ( "16:ff", intText( 255, 16, 0, BASENUMERIC ) );
    EXPECT_EQ( "ff", intText( 255, 16, 0, BASEDECIMAL ) );
    EXPECT_EQ( "7", intText( 7, 10, 0, BASEDECIMAL ) );
    EXPECT_EQ( "7", intText( 7, 10, 0, BASEMNEMONIC ) );
    EXPECT_EQ( "0D7", intText( 7, 10, 0, BASEDECIMAL | BASEMNEMONIC | UPPERCASE ) );
    EXPECT_EQ( "10:7", intText( 7, 10, 0, BASEDECIMAL | BASENUMERIC ) );
    EXPECT_EQ( 3, qv___FormatEncodeBase( nullptr, 17, BASENUMERIC ) );

    EXPECT_BROKEN( qvFormatEncodeInt( 1, 1, 0, 0 ), "base >= 2" );
    EXPECT_BROKEN( qvFormatEncodeInt( 1, 37, 0, 0 ), "base <= 36" );
}

TEST( Format, RealsHaveTheDigitsOfEveryStep )
{
    std::mt19937_64 random( 35 );
    QV_REAL         unit = 0.0;

    auto check = [&]( QV_REAL value, QV_INT base, QV_INT precision ) {
        std::string model = modelOfReal( value, static_cast< QV_REAL >( base ), precision );
        ASSERT_EQ( model, realText( value, base, 0, precision ) ) << std::hexfloat << value << " in base " << base;
    };

    for( int i = 0; i < 100000; i++ )
    {
        QV_INT precision = static_cast< QV_INT >( random() % 22 );
        unit             = std::ldexp( static_cast< QV_REAL >( random() ), -64 );

        // Of any size, near integers and powers of 2, and with few places, which are those that people write.
        check( std::ldexp( unit - 0.5, static_cast< int >( random() % 140 ) - 60 ), 10, precision );
        check( static_cast< QV_REAL >( randomInt( random ) ) / 1000.0, 10, precision );
        check( static_cast< QV_REAL >( random() % 100000 ) / std::pow( 10.0, random() % 8 ), 10, precision );
        check( std::nextafter( static_cast< QV_REAL >( random() % 1000 ), i & 1 ? 1e9 : -1e9 ), 10, precision );
        check( std::nextafter( static_cast< QV_REAL >( random() % 100 ) / 100.0, i & 1 ? 1.0 : 0.0 ), 10, precision );
    }

    for( int i = 0; i < 300; i++ )
        for( QV_INT base = 2; base <= 36; base++ )
            check( std::ldexp( unit + i, static_cast< int >( random() % 400 ) - 200 ), base, 12 );

    for( QV_INT base = 2; base <= 36; base++ )
        for( QV_REAL value : { 0.0, -0.0, DBL_MAX, -DBL_MAX, DBL_MIN, DBL_TRUE_MIN, 0x1p53 - 1, 0x1p53, 1e22 } )
            check( value, base, 40 );
}

TEST( Format, RealsAreCutOffAndFramedLikeIntegers )
{
    EXPECT_EQ( "1", realText( 1.5, 10, 0, 0 ) );
    EXPECT_EQ( "1.500000", realText( 1.5, 10, 0, -1 ) );
    EXPECT_EQ( "0.99", realText( 0.999, 10, 0, 2 ) );
    EXPECT_EQ( "0.0", realText( -0.0, 10, 0, 1 ) );
    EXPECT_EQ( "-0.0", realText( -0.04, 10, 0, 1 ) );
    EXPECT_EQ( "-0x00f.8", realText( -15.5, 16, 8, 1, ZEROPAD | BASEMNEMONIC ) );
    EXPECT_EQ( "+Z.I   ", realText( 35.5, 36, 7, 1, PLUSPOS | UPPERCASE | LEFTALIGN ) );
    EXPECT_EQ( "   1.25", realText( 1.25, 10, 7, 2 ) );

    EXPECT_EQ( "  NAN", realText( std::nan( "" ), 10, 5, 2, PLUSPOS | ZEROPAD ) );
    EXPECT_EQ( "INF", realText( -std::numeric_limits< QV_REAL >::infinity(), 10, 0, -1 ) );

    EXPECT_BROKEN( qvFormatEncodeReal( 1.0, 10, 0, -2, 0 ), "precision >= -1" );
    EXPECT_BROKEN( qvFormatEncodeReal( 1.0, 10, -1, 0, 0 ), "minWidth >= 0" );
    EXPECT_BROKEN( qvFormatEncodeReal( 1.0, 10, 0, QV_INT_MAX, 0 ), "QV_INT_ADD_OK( digits, precision )" );
}

TEST( Format, WordsAndCharactersArePaddedWithBlanks )
{
    EXPECT_EQ( "  true", take( qvFormatEncodeBool( 5, 6, ZEROPAD ) ) );
    EXPECT_EQ( "FALSE ", take( qvFormatEncodeBool( QV_FALSE, 6, UPPERCASE | LEFTALIGN ) ) );
    EXPECT_EQ( "  ab", take( qvFormatEncodeChars( U"ab", 2, 4, ZEROPAD ) ) );
    EXPECT_EQ( "", take( qvFormatEncodeChars( nullptr, 0, 0, 0 ) ) );

    const QV_CHAR bad = 0x110000;
    EXPECT_BROKEN( qvFormatEncodeChars( &bad, 1, 0, 0 ), "qvCharsAllOk( src, srcLength )" );
    EXPECT_BROKEN( qvFormatEncodeChars( nullptr, 1, 0, 0 ), "src || srcLength == 0" );
}

TEST( Format, DecodedIntegersStopWhereTheNumberStops )
{
    const struct
    {
        std::u32string_view chs;
        QV_INT              base;
        Decoded< QV_INT >   expected;
    } CASES[] = {
        { U"", 10, { false, 0, 0 } },
        { U" \t\u3000", 10, { false, 0, 3 } },
        { U"x", 10, { false, 0, 0 } },
        { U" - ", 10, { false, 0, 3 } },
        { U"- 12", 10, { true, -12, 4 } },
        { U"+12", 10, { true, 12, 3 } },
        { U"+-12", 10, { false, 0, 1 } },
        { U"12 34", 10, { true, 12, 3 } },
        { U"0x10", 16, { true, 0, 1 } },
        { U"0x10", 10, { true, 0, 1 } },
        { U"0x10", -1, { true, 16, 4 } },
        { U"0X 10", -1, { true, 16, 5 } },
        { U"0x", -1, { false, 0, 2 } },
        { U"-0x - 10", -1, { false, 0, 4 } },
        { U"0x - 10", -1, { true, -16, 7 } },
        { U"0o17", -1, { true, 15, 4 } },
        { U"0D9", -1, { true, 9, 3 } },
        { U"0b2", -1, { true, 2, 3 } }, // up to base 10, digits are not compared with the base
        { U"16:ff", -1, { true, 255, 5 } },
        { U"36:z", -1, { true, 35, 4 } },
        { U"37:z", -1, { true, 37, 2 } },
        { U"1:1", -1, { true, 1, 1 } },
        { U"02:1", -1, { true, 2, 2 } },
        { U"2:", -1, { false, 0, 2 } },
        { U"12", -1, { true, 12, 2 } },
        { U"z", 35, { false, 0, 0 } },
        { U"\u0661\u0662", 10, { true, 12, 2 } },
        { U"\uFF21", 16, { true, 10, 1 } },
        { U"\u0661", 36, { false, 0, 0 } },
        { U"9223372036854775807 ", 10, { true, QV_INT_MAX, 20 } },
        { U"9223372036854775808 ", 10, { true, 922337203685477580, 18 } },
        { U"-9223372036854775808", 10, { true, QV_INT_MIN, 20 } },
        { U"-9223372036854775809", 10, { true, -922337203685477580, 19 } },
        { U"92233720368547758070", 10, { true, QV_INT_MAX, 19 } },
    };

    for( const auto &c : CASES )
        EXPECT_EQ( c.expected, decoded( qvFormatTryDecodeIntChars, c.chs, c.base ) )
            << utf8( text( c.chs ) ) << " in base " << c.base;

    EXPECT_TRUE( qvFormatTryDecodeIntChars( U"1", 1, 10, nullptr, nullptr ) );

    Ref< QV_STRING > inner = text( std::string_view( "a123b" ) );
    QV_INT           value;
    EXPECT_TRUE( qvFormatTryDecodeInt( inner, 1, 2, 10, &value, nullptr ) );
    EXPECT_EQ( 12, value );
    EXPECT_BROKEN(
        qvFormatTryDecodeInt( inner, 4, 2, 10, nullptr, nullptr ), "srcOffset + srcLength <= qvStringLength( src )" );
    EXPECT_BROKEN(
        qvFormatTryDecodeReal( inner, 0, 2, 1, nullptr, nullptr ), "base == -1 || ( base >= 2 && base <= 36 )" );
}

TEST( Format, DecodedRealsHaveOneSeparatorAndNoExponent )
{
    const struct
    {
        std::u32string_view chs;
        QV_INT              base;
        Decoded< QV_REAL >  expected;
    } CASES[] = {
        { U"1,5", 10, { true, 1.5, 3 } },
        { U"1.5.5", 10, { true, 1.5, 3 } },
        { U"1.,", 10, { true, 1.0, 2 } },
        { U".", 10, { true, 0.0, 1 } },
        { U" - .5 x", 10, { true, -0.5, 6 } },
        { U"+1.5", 10, { false, 0.0, 0 } },
        { U"+1.5", -1, { true, 1.5, 4 } },
        { U"+0x10", -1, { true, 0.0, 2 } },
        { U"0x.8", -1, { true, 0.5, 4 } },
        { U"1e5", 10, { true, 1.0, 1 } },
        { U"NAN", 10, { false, 0.0, 0 } },
        { U" ", 10, { false, 0.0, 1 } },
    };

    for( const auto &c : CASES )
        EXPECT_EQ( c.expected, decoded( qvFormatTryDecodeRealChars, c.chs, c.base ) ) << utf8( text( c.chs ) );

    // No minus sign survives at zero, and no number is too large.
    EXPECT_FALSE( std::signbit( decoded( qvFormatTryDecodeRealChars, U"-0.0", QV_INT( 10 ) ).value ) );
    EXPECT_TRUE( std::isinf( decoded( qvFormatTryDecodeRealChars, std::u32string( 400, U'9' ), QV_INT( 10 ) ).value ) );

    std::mt19937_64 random( 36 );

    for( int i = 0; i < 20000; i++ )
    {
        QV_INT      base   = i % 2 ? 10 : 2 + static_cast< QV_INT >( random() % 35 );
        std::string digits = modelOfInt( randomInt( random ), base );

        for( QV_INT places = static_cast< QV_INT >( random() % 3 ); places > 0; places-- )
            digits += modelOfInt( static_cast< QV_INT >( random() >> 1 ), base );

        digits.insert( 1 + random() % digits.size(), 1, '.' );
        ASSERT_EQ(
            modelOfDecodedReal( digits, static_cast< QV_REAL >( base ) ),
            decoded( qvFormatTryDecodeRealChars, chars( text( digits ) ), base ).value )
            << digits << " in base " << base;
    }
}

TEST( Format, DecodedTruthValuesAreWordsOrNumbers )
{
    const struct
    {
        std::u32string_view chs;
        QV_BOOL             allowNumeric;
        Decoded< QV_BOOL >  expected;
    } CASES[] = {
        { U"", QV_TRUE, { false, 0, 0 } },           { U"  ", QV_TRUE, { false, 0, 2 } },
        { U" True ", QV_FALSE, { true, 1, 6 } },     { U"fALSE", QV_TRUE, { true, 0, 5 } },
        { U"TRUEX", QV_FALSE, { true, 1, 4 } },      { U" tru", QV_FALSE, { false, 0, 1 } },
        { U"yes", QV_TRUE, { false, 0, 0 } },        { U"1", QV_FALSE, { false, 0, 0 } },
        { U"1 x", QV_TRUE, { true, 1, 2 } },         { U"0.0", QV_TRUE, { true, 0, 3 } },
        { U"-0x.4", QV_TRUE, { true, 1, 5 } },       { U"\u0154RUE", QV_FALSE, { false, 0, 0 } },
    };

    for( const auto &c : CASES )
        EXPECT_EQ( c.expected, decoded( qvFormatTryDecodeBoolChars, c.chs, c.allowNumeric ) ) << utf8( text( c.chs ) );
}

TEST( Format, ConversionsOfNumbers )
{
    const QV_INT n = 255;

    EXPECT_EQ( "%0000ff", formatted( "%%%06!16i", n ) );
    EXPECT_EQ( "0xff 0XFF 16:ff ff", formatted( "%#!16i %^#!16i %##!16i %###!16i", n, n, n, n ) );
    EXPECT_EQ( "0d10 ff FF 11111111", formatted( "%'#i %X %^X %!2X", QV_INT( 10 ), n, n, n ) );
    EXPECT_EQ( "+255| 255|255  |00255|-0255", formatted( "%+i|% i|%-05i|%05i|%05i", n, n, n, n, -n ) );
    EXPECT_EQ( "     7|z", formatted( "%*i|%!*i", QV_INT( 6 ), QV_INT( 7 ), QV_INT( 36 ), QV_INT( 35 ) ) );
    EXPECT_EQ( "  7", formatted( "%3 i", QV_INT( 7 ) ) ); // white space behind a number belongs to it
    EXPECT_EQ( "7", formatted( "%.!i", QV_INT( 7 ) ) );
    EXPECT_EQ( "  7 7  ", formatted( "%\u0663i %-\u0663i", QV_INT( 7 ), QV_INT( 7 ) ) ); // a width in Arabic digits

    EXPECT_EQ( "1.333 1.33 1.333333", formatted( "%.3r %.*r %r", 4.0 / 3.0, QV_INT( 2 ), 4.0 / 3.0, 4.0 / 3.0 ) );
    EXPECT_EQ( "00001.5|+f.8", formatted( "%07.1r|%+.1!16r", 1.5, 15.5 ) );

    EXPECT_EQ( "007 000007 007", formatted( "%.999A %6.999A %-.999A", QV_INT( 7 ), QV_INT( 7 ), QV_INT( 7 ) ) );
    EXPECT_EQ( "0000000000000000007", formatted( "%A", QV_INT( 7 ) ) );
    EXPECT_EQ( "0x0f", formatted( "%#.*!16A", n, QV_INT( 15 ) ) );

    EXPECT_EQ( "TRUE|false |  true|  true", formatted( "%^b|%-6b|%6b|%06b", 1, 0, 1, 1 ) );
    EXPECT_EQ( "  x\xC3\xA9y ", formatted( "%3c%c%-2c", U'x', U'\u00E9', U'y' ) );
}

TEST( Format, ConversionsOfText )
{
    Ref< QV_STRING >    x = text( std::string_view( "x" ) ), hello = text( std::string_view( "hello" ) );
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( -12 ) );
    const wchar_t      *wide = L"w\u00E9";

    EXPECT_EQ( "x(FF)", formatted( "%s(%^!16i)", x.get(), QV_INT( 255 ) ) );
    EXPECT_EQ( "hel|hello|", formatted( "%.3s|%.9s|%.0s", hello.get(), hello.get(), hello.get() ) );
    EXPECT_EQ( "   he|he   ", formatted( "%5.2s|%-5.*s", hello.get(), QV_INT( 2 ), hello.get() ) );
    EXPECT_EQ( "hello", formatted( "%.s", hello.get() ) );
    EXPECT_EQ( "-12 -1 -12", formatted( "%o %.2o %s", boxed.get(), boxed.get(), boxed.get() ) );
    EXPECT_EQ( "\xC3\xA9|ab|  ab", formatted( "%lc|%lC|%4.2lc", "\xC3\xA9", "abc", QV_INT( 2 ), "abc" ) );
    EXPECT_EQ( "w\xC3\xA9|w", formatted( "%lw|%lW", wide, wide, QV_INT( 1 ) ) );

    // Null, also with the length that comes behind it.
    EXPECT_EQ( "null||nu", formatted( "%s|%#s|%.2o", nullptr, nullptr, nullptr ) );
    EXPECT_EQ( "null 5  null", formatted( "%lC %i %#lc %~lw", nullptr, QV_INT( 3 ), QV_INT( 5 ), nullptr, nullptr ) );

    EXPECT_EQ( "\t   aa", formatted( "%1m%3.32m%0m%2.*m", QV_INT( 'a' ) ) );
    EXPECT_EQ( "", formatted( "%#%" ) );
    EXPECT_EQ( "a%%b", formatted( "a%%%%b%#%" ) );

    // Texts and formats of any length, the latter from outside too.
    std::string  dots( 1000, '.' );
    std::wstring wideDots( 1000, L'.' );
    EXPECT_EQ( dots + "hello", formatted( ( dots + "%s" ).c_str(), hello.get() ) );
    EXPECT_EQ( dots + "hello", take( qvStringCreateFromFormatCstr( ( dots + "%s" ).c_str(), -1, hello.get() ) ) );
    EXPECT_EQ( dots + "hello", take( qvStringCreateFromFormatWcstr( ( wideDots + L"%s" ).c_str(), -1, hello.get() ) ) );
    EXPECT_EQ( "\xC3\xA9" "7", take( qvStringCreateFromFormatCstr( "\xC3\xA9%i%", 4, QV_INT( 7 ) ) ) );
}

TEST( Format, ConsumedArgumentsAreGivenUp )
{
    Ref< QV_STRING > hello = text( std::string_view( "hello" ) );
    char            *block = static_cast< char * >( qvMemAlloc( 4 ) );
    std::strcpy( block, "abc" );

    EXPECT_EQ( "hello   7", formatted( "%~-*s %i", QV_INT( 7 ), qv::retain( hello.get() ), QV_INT( 7 ) ) );
    EXPECT_EQ( "\thello", formatted( "%1m%~o", qv::retain( hello.get() ) ) );
    EXPECT_EQ( "-1", formatted( "%~o", qvBoxedIntCreate( -1 ) ) );
    EXPECT_EQ( "abc null", formatted( "%~lc %~s", block, nullptr ) );
    EXPECT_EQ( 1, references( hello.get() ) );
}

TEST( Format, TheListIsAdvancedAndTheTextIsAnOrdinaryString )
{
    auto twice = []( QV_STRING *fmt, ... ) {
        va_list argList;
        va_start( argList, fmt );
        Ref< QV_STRING > first( qv___FormatArgList( fmt, &argList ) ), second( qv___FormatArgList( fmt, &argList ) );
        va_end( argList );
        qvStringAppend( first.at(), second );
        return utf8( first );
    };

    EXPECT_EQ( "<1><2>", twice( text( std::string_view( "<%i>" ) ), QV_INT( 1 ), QV_INT( 2 ) ) );

    Ref< QV_STRING > number( qvFormatEncodeInt( 12345, 10, 0, 0 ) );
    EXPECT_EQ( 20, allocated( number.get() ) );
    number = Ref< QV_STRING >( qvFormatEncodeInt( 1, 10, 5000, 0 ) );
    EXPECT_EQ( 20000, allocated( number.get() ) );
}

TEST( Format, BadFormatsAreReported )
{
    const char *none = "A format string must contain at least a single conversion.";
    EXPECT_BROKEN_MESSAGE( formatted( "" ), none, "fmtContainsConversion" );
    EXPECT_BROKEN_MESSAGE( formatted( "text %%" ), none, "fmtContainsConversion" );

    for( const char *fmt : { "%", "%-", "%i%6", "%.", "%.3", "%!", "%!16" } )
        EXPECT_BROKEN_MESSAGE( formatted( fmt, QV_INT( 1 ) ), "missing conversion", "pos < fmtLength" );

    for( const char *fmt : { "%q", "%l", "%lx", "%.-3i", "%I" } )
        EXPECT_DEATH( formatted( fmt, QV_INT( 1 ) ), testing::HasSubstr( "    Message   : invalid conversion\n" ) );

    EXPECT_BROKEN( formatted( "%*i", QV_INT( -1 ), QV_INT( 1 ) ), "minWidth >= 0" );
    EXPECT_BROKEN( formatted( "%!37i", QV_INT( 1 ) ), "base <= 36" );
    EXPECT_BROKEN( formatted( "%A", QV_INT( -1 ) ), "value >= 0" );
    EXPECT_BROKEN( formatted( "%.5A", QV_INT( 6 ) ), "value <= precision" );
    EXPECT_BROKEN( formatted( "%*m", QV_INT( -1 ) ), "width >= 0" );
    EXPECT_BROKEN( formatted( "%1.*m", QV_INT( 0x100000041 ) ), "QV_CHAR_OK( precision )" );
    EXPECT_BROKEN( formatted( "%c", 0x110000u ), "qvCharsAllOk( src, srcLength )" );
    EXPECT_BROKEN( qv___FormatArgList( nullptr, nullptr ), "fmt" );
}

TEST( Format, FlagsResolveTheirConflicts )
{
    EXPECT_EQ( LEFTALIGN, qvFormatFlagsNormalize( LEFTALIGN | ZEROPAD | 256 ) );
    EXPECT_EQ( ZEROPAD | PLUSPOS, qvFormatFlagsNormalize( ZEROPAD | PLUSPOS | BLANKPOS ) );
    EXPECT_EQ( BASEMNEMONIC | BASEDECIMAL, qvFormatFlagsNormalize( BASEMNEMONIC | BASENUMERIC | BASEDECIMAL ) );
    EXPECT_EQ( UPPERCASE | BASENUMERIC, qvFormatFlagsNormalize( QV_INT_MIN | UPPERCASE | BASENUMERIC ) );

    EXPECT_EQ( "QV_FORMAT_FLAG_LEFTALIGN|QV_FORMAT_FLAG_PLUSPOS", take( qvFormatFlagsToString( 15 ) ) );
    EXPECT_EQ(
        LEFTALIGN | UPPERCASE,
        qvFormatFlagsFromString( text( std::string_view( "QV_FORMAT_FLAG_UPPERCASE | 0x103 | NOTHING" ) ) ) );
    EXPECT_BROKEN( qvFormatFlagsFromString( nullptr ), "qvs" );
}
