/** @file
    Rules that several walks go by: white space, numbers in texts, surrogates, and how numbers and texts are encoded. */

#ifndef QV_FUZZ_MODELS_H
#define QV_FUZZ_MODELS_H

#include "qv_fuzz_walk.h"

#include <cmath>

namespace qv::fuzz
{
inline bool isSpace( char32_t ch )
{
    return qvUnicodeIsWhiteSpace( ch );
}

inline Text trimmed( const Text &text, bool first = true, bool last = true )
{
    auto from = first ? std::find_if_not( text.begin(), text.end(), isSpace ) : text.begin();
    auto to   = last ? std::find_if_not( text.rbegin(), std::reverse_iterator( from ), isSpace ).base() : text.end();
    return Text( from, to );
}

inline bool isSurrogate( char32_t ch )
{
    return ch >> 11 == 0xD800 >> 11;
}

/** Pairs of surrogates are one character, and those that stand alone are none. */
inline Text sanitized( const Text &text )
{
    Text result;

    for( size_t i = 0; i < text.size(); i++ )
        if( text[i] >> 10 == 0xD800 >> 10 && i + 1 < text.size() && text[i + 1] >> 10 == 0xDC00 >> 10 )
            result += 0x10000 + ( ( text[i] & 0x3FF ) << 10 ) + ( text[i + 1] & 0x3FF ), i++;
        else if( !isSurrogate( text[i] ) )
            result += text[i];

    return result;
}

/** A length, and so many bytes, the highest first. */
inline std::string encodedInt( QV_INT value )
{
    uint64_t    magnitude = value < 0 ? -static_cast< uint64_t >( value ) : static_cast< uint64_t >( value );
    std::string digits;

    for( ; magnitude > 0; magnitude /= 256 )
        digits.insert( 0, 1, static_cast< char >( magnitude ) );

    return static_cast< char >( digits.size() | ( value < 0 ? 0x80 : 0 ) ) + digits;
}

inline std::string encodedChars( const Text &text )
{
    std::string bytes;

    for( char32_t ch : text )
    {
        if( ch >= 0x80 )
            bytes += { static_cast< char >( 0x80 | ch >> 16 ), static_cast< char >( ch >> 8 ) };

        bytes += static_cast< char >( ch );
    }

    return bytes;
}

inline std::string encodedText( const Text &text )
{
    return encodedInt( lengthOf( text ) ) + encodedChars( text );
}

/** Reads numbers from a text. */
struct NumberReader
{
    Text   text;
    size_t at = 0;

    bool end() const
    {
        return at >= text.size();
    }

    void space()
    {
        while( !end() && isSpace( text[at] ) )
            at++;
    }

    int sign( bool plusToo )
    {
        int found = end() ? 0 : text[at] == U'-' ? -1 : plusToo && text[at] == U'+';

        if( found )
            at++, space();

        return found;
    }

    // A sign; and if the base is to be read, a prefix and a sign after it where there was none before. True if negative.
    bool head( QV_INT &base, bool plusToo )
    {
        static const char *const PREFIXES[] = { "0b", "0B", "0o", "0O", "0d", "0D", "0x", "0X" };

        space();
        int found = sign( plusToo );

        if( base != -1 )
            return found < 0;

        base = 10;

        for( QV_INT i = 0; i < 43; i++ )
            if( Text prefix = wide( i < 8 ? PREFIXES[i] : std::to_string( i - 6 ) + ":" );
                text.compare( at, prefix.size(), prefix ) == 0 )
            {
                at += prefix.size();
                base = i >= 8 ? i - 6 : i < 2 ? 2 : i < 4 ? 8 : i < 6 ? 10 : 16;
                break;
            }

        space();

        return ( found ? found : sign( true ) ) < 0;
    }

    QV_INT digit( QV_INT base ) const
    {
        return end() ? -1 : qvUnicodeBaseNDigitValue( text[at], base );
    }

    bool integer( QV_INT base, QV_INT &value )
    {
        bool   negative = head( base, true );
        size_t from     = at;
        QV_INT longer, d;
        value = 0;

        while( ( d = digit( base ) ) >= 0 && !__builtin_mul_overflow( value, base, &longer )
               && !__builtin_add_overflow( longer, negative ? -d : d, &longer ) )
            value = longer, at++;

        return done( from );
    }

    // White space comes after a number, but not after none.
    bool done( size_t from )
    {
        bool any = at > from;

        if( any )
            space();

        return any;
    }

    bool real( QV_INT base, double &value )
    {
        bool   negative = head( base, false ), separated = false;
        double radix = static_cast< double >( base ), unit = 1 / radix, one = negative ? -1.0 : 1.0;
        size_t from = at;
        value       = 0.0;

        for( ; !end(); at++ )
        {
            double d = static_cast< double >( digit( base ) );

            if( d < 0 && !separated && ( text[at] == U'.' || text[at] == U',' ) )
                separated = true;
            else if( d < 0 )
                break;
            else if( separated )
                value = std::fma( one * unit, d, value ), unit /= radix;
            else
                value = std::fma( value, radix, one * d );
        }

        return done( from );
    }
};
} // namespace qv::fuzz

#endif
