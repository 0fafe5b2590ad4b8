// Format strings beside a writer that goes by the rules, and the readers of numbers and truth values beside one that
// does.

#include "qv_fuzz_walk.h"

#include <cstring>
#include <random>

namespace qv::fuzz
{
/* Writing ---------------------------------------------------------------------------------------------------------- */

struct Conversion
{
    bool   left = false, plus = false, blank = false, zero = false, upper = false, decimal = false;
    int    hashes = 0;
    QV_INT width = 0, precision = -1, base = 10;

    Text prefix() const
    {
        char32_t letter = base == 2 ? U'b' : base == 8 ? U'o' : base == 10 ? U'd' : base == 16 ? U'x' : 0;

        if( hashes < 1 || hashes > 2 || ( base == 10 && !decimal ) )
            return {};

        return hashes == 2 || !letter ? wide( std::to_string( base ) + ":" )
                                      : Text{ U'0', upper ? letter - 32 : letter };
    }

    Text padded( const Text &text ) const
    {
        Text blanks = repeated( std::max< QV_INT >( width - lengthOf( text ), 0 ), U' ' );
        return left ? text + blanks : blanks + text;
    }

    Text number( bool negative, const Text &digits, QV_INT counted = -1 ) const
    {
        Text head = ( negative ? U"-" : plus ? U"+" : blank ? U" " : U"" ) + prefix();
        counted   = lengthOf( head ) + ( counted < 0 ? lengthOf( digits ) : counted );
        Text pad  = repeated( std::max< QV_INT >( width - counted, 0 ), zero && !left ? U'0' : U' ' );
        return left ? head + digits + pad : zero ? head + pad + digits : pad + head + digits;
    }

    // Digits after the precision of a real may come to a value that no character stands for.
    char32_t digit( double value ) const
    {
        unsigned whole = static_cast< unsigned >( std::min( std::fabs( value ), 99.0 ) );
        return whole < 10 ? U'0' + whole : whole < 36 ? ( upper ? U'A' : U'a' ) + whole - 10 : U'0';
    }

    Text digits( QV_INT value ) const
    {
        Text result;

        do
            result.insert( 0, 1, digit( static_cast< double >( value % base ) ) );
        while( value /= base );

        return result;
    }

    // Step by step in the arithmetic of reals: digits are cut off, not rounded.
    Text real( double value ) const
    {
        if( !std::isfinite( value ) )
            return padded( std::isnan( value ) ? U"NAN" : U"INF" );

        double radix = static_cast< double >( base ), scale = 1.0;
        bool   negative = value < 0.0;
        QV_INT counted  = 1; // for the width; it may differ from what is written where reals are rounded
        Text   result;

        for( double t = std::trunc( value / radix ); t != 0.0; t = std::trunc( t / radix ) )
            scale *= radix, counted++;

        for( ; scale >= 1.0; scale = std::trunc( scale / radix ) )
        {
            double q = value / scale;
            result += digit( q );
            value = std::fma( -std::trunc( q ), scale, value );
        }

        QV_INT places = precision == -1 ? 6 : precision;

        if( places )
            result += U'.', counted += places + 1;

        for( ; places > 0; places-- )
        {
            double x = radix * value;
            result += digit( std::fma( -radix, std::trunc( value ), x ) / radix * radix );
            value = x;
        }

        return number( negative, result, counted );
    }
};

/* The walk --------------------------------------------------------------------------------------------------------- */

struct FormatWalk
{
    Conversion            conversion;
    Text                  format;
    std::vector< QV_INT > stars;

    // A number after a mark, as it is or as an argument.
    QV_INT star( const char32_t *mark, QV_INT value )
    {
        bool argument = in.flag();
        format += mark + ( argument ? U"*" : wide( std::to_string( value ) ) + ( in.below( 8 ) ? U"" : U" \t" ) );

        if( argument )
            stars.push_back( value );

        return value;
    }

    // Flags, width, precision and base, some of them by arguments.
    void begin( QV_INT mostBase )
    {
        conversion = Conversion();
        stars.clear();
        format = U"<%";

        for( QV_INT count = in.below( 4 ); count > 0; count-- )
        {
            char32_t flag = in.oneOf( U"-+ 0^'" );
            format += flag ? flag : U'#';
            conversion.left |= flag == U'-', conversion.plus |= flag == U'+', conversion.blank |= flag == U' ';
            conversion.zero |= flag == U'0', conversion.upper |= flag == U'^', conversion.decimal |= flag == U'\'';
            conversion.hashes += !flag;
        }

        if( in.flag() )
            conversion.width = star( U"", 1 + in.below( 90 ) );

        if( in.flag() )
            conversion.precision = star( U".", in.below( 40 ) );

        if( mostBase && in.flag() )
            conversion.base = star( U"!", 2 + in.below( mostBase - 1 ) );
    }

    // Another conversion comes after it, so that arguments must not be mixed up.
    template< class T >
    void run( const char *name, T argument, const Text &expected )
    {
        format += wide( name ) + U">%%%i";
        Ref< QV_STRING > fmt    = stringOf( format ), result;
        QV_INT           number = in.number();

        auto make = [&]( auto... leading )
        { result.reset( qvStringCreateFromFormat( fmt, leading..., argument, number ) ); };

        stars.empty()       ? make()
        : stars.size() == 1 ? make( stars[0] )
        : stars.size() == 2 ? make( stars[0], stars[1] )
                            : make( stars[0], stars[1], stars[2] );

        if( tracing )
            fprintf( stderr, " '%s' of <%s>", ascii( format ).c_str(), ascii( expected ).c_str() );

        require( charsOf( result ) == U"<" + expected + U">%" + wide( std::to_string( number ) ) );
    }

    void integers()
    {
        begin( 36 );
        QV_INT how = in.below( 3 ), value = in.number(), width = conversion.width;

        if( how == 1 )
        {
            // Padded with zeros to the width of the largest value.
            QV_INT largest  = conversion.precision >= 0 ? conversion.precision : QV_INT_MAX;
            value           = largest == QV_INT_MAX ? value & QV_INT_MAX : ( value & QV_INT_MAX ) % ( largest + 1 );
            conversion.zero = true, conversion.left = false;
            conversion.width = 0;
            conversion.width = std::max( width, lengthOf( conversion.number( false, conversion.digits( largest ) ) ) );
        }
        else if( how == 0 && format.find( U'!' ) == Text::npos )
            conversion.base = 16;

        run( how == 0 ? "X" : how == 1 ? "A" : "i", value, conversion.number( value < 0, conversion.digits( value ) ) );
    }

    void reals()
    {
        static const double SPECIAL[] = { 0.0,  -0.0, 0.5,      0.999,     1e15, -1e18,
                                          1e22, 1e-7, INFINITY, -INFINITY, NAN,  1.0 / 3 };
        begin( 36 );
        double value = in.flag() ? in.oneOf( SPECIAL ) : static_cast< double >( in.number() ) / 1024;
        run( "r", value, conversion.real( value ) );

        // Of any size, near integers and powers of 2, and with few places, which are those that people write.
        std::mt19937_64 random( static_cast< uint64_t >( in.number() ) );

        for( int i = 0; i < 40; i++ )
        {
            double any      = std::ldexp( static_cast< double >( random() ), -64 );
            double VALUES[] = {
                std::ldexp( any - 0.5, static_cast< int >( random() % 140 ) - 60 ),
                static_cast< double >( static_cast< QV_INT >( random() ) >> random() % 64 ) / 1000,
                static_cast< double >( random() % 100000 ) / std::pow( 10.0, random() % 8 ),
                std::nextafter( static_cast< double >( random() % 1000 ), i & 1 ? 1e9 : -1e9 ),
                std::nextafter( static_cast< double >( random() % 100 ) / 100, i & 1 ) };
            Conversion plain;
            plain.precision = static_cast< QV_INT >( random() % 22 );
            plain.base      = i % 8 ? 10 : 2 + static_cast< QV_INT >( random() % 35 );

            for( double each : VALUES )
                require(
                    charsOf( Ref< QV_STRING >( qvFormatEncodeReal( each, plain.base, 0, plain.precision, 0 ) ) )
                    == plain.real( each ) );
        }
    }

    void texts()
    {
        begin( 0 );
        Text text = in.text( 200 );
        bool null = in.below( 6 ) == 0, consumed = in.flag();
        Text shown = null ? ( conversion.hashes ? U"" : U"null" ) : text;

        if( conversion.precision >= 0 )
            shown = shown.substr( 0, static_cast< size_t >( conversion.precision ) );

        // The mark may stand among the flags only.
        if( consumed )
            format.insert( 2, 1, U'~' );

        Ref< QV_STRING > qvs = null ? Ref< QV_STRING >() : stringOf( text );

        if( QV_STRING *argument = consumed ? qvs.give() : qvs.get(); in.flag() )
            run( "s", argument, conversion.padded( shown ) );
        else
            run( "o", qv::obj( argument ), conversion.padded( shown ) );
    }

    void others()
    {
        begin( 0 );
        QV_CHAR ch   = in.character();
        bool    flag = in.flag();
        Text    word = conversion.upper ? ( flag ? U"TRUE" : U"FALSE" ) : flag ? U"true" : U"false";
        Text    rule = repeated(
            conversion.width, conversion.precision < 0 ? U'\t' : static_cast< char32_t >( conversion.precision ) );
        QV_INT how = in.below( 3 );

        // The last takes no argument of its own; the one that is given is the number's.
        how == 0   ? run( "c", ch, conversion.padded( Text( 1, ch ) ) )
        : how == 1 ? run( "b", QV_INT( flag ), conversion.padded( word ) )
                   : run( "m>%i<%#%", QV_INT( 7 ), rule + U">7<" );
    }

    void read()
    {
        // clang-format off
        static const char32_t *const PIECES[] = {
            U" ", U"-", U"+", U"0", U"1", U"9", U"f", U"Z", U"0x", U"0B", U"16:", U"36:", U".", U",", U"\u2003",
            U"TRUE", U"false", U"tRuE", U"9223372036854775807", U"922337203685477580", U"8", U"\u0663", U"0d", U"x" };
        // clang-format on
        Text   text;
        QV_INT base = in.flag() ? -1 : 2 + in.below( 35 ), value = 7, consumed = 7;
        double real = 7;

        for( QV_INT count = in.below( 8 ); count > 0; count-- )
            text += in.below( 13 ) ? Text( in.oneOf( PIECES ) ) : wide( std::to_string( in.number() ) );

        if( text.empty() )
            return;

        // Read in the middle of a text.
        Ref< QV_STRING > qvs = stringOf( U"7" + text + U"7" );
        NumberReader     reader{ text }, realReader{ text }, boolReader{ text };
        QV_INT           number;
        double           expected;
        QV_BOOL          truth = 7;
        bool             ok = reader.integer( base, number ), numeric = in.flag(), isTrue = false;

        require( qvFormatTryDecodeInt( qvs, 1, lengthOf( text ), base, &value, &consumed ) == ok );
        require( value == ( ok ? number : 0 ) && consumed == QV_INT( reader.at ) );

        ok = realReader.real( base, expected );
        require( qvFormatTryDecodeReal( qvs, 1, lengthOf( text ), base, &real, &consumed ) == ok );
        require( std::memcmp( &real, &( ok ? expected : expected = 0 ), 8 ) == 0 );
        require( consumed == QV_INT( realReader.at ) );

        // A number that is not 0, or a word.
        if( numeric && boolReader.real( -1, expected ) )
            ok = true, isTrue = expected != 0.0;
        else
        {
            boolReader.at = 0;
            boolReader.space();
            std::string rest = ascii( text.substr( boolReader.at, 5 ) );
            isTrue           = strncasecmp( rest.c_str(), "TRUE", 4 ) == 0;
            ok               = isTrue || strcasecmp( rest.c_str(), "FALSE" ) == 0;

            if( ok )
                boolReader.at += isTrue ? 4 : 5, boolReader.space();
        }

        require( qvFormatTryDecodeBool( qvs, 1, lengthOf( text ), numeric, &truth, &consumed ) == ok );
        require( truth == ( ok && isTrue ) && consumed == QV_INT( boolReader.at ) );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( FormatWalk, OP( integers ) OP( reals ) OP( texts ) OP( others ) OP( read ) )
