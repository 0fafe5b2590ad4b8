/** @file
    UTF-8 by the letter of its rules, one byte after the other: the model that arrays are held against. */

#ifndef QV_TEST_UTF8_H
#define QV_TEST_UTF8_H

#include <string>

namespace qv::test
{
/** The bytes of a character, with U+FFFD in the place of what is none. */
inline std::string encodedUtf8( char32_t ch )
{
    if( ch >= 0x110000 )
        ch = 0xFFFD;

    if( ch < 0x80 )
        return std::string( 1, static_cast< char >( ch ) );

    int         shift = ch < 0x800 ? 6 : ch < 0x10000 ? 12 : 18;
    std::string result( 1, static_cast< char >( ( shift == 6 ? 0xC0 : shift == 12 ? 0xE0 : 0xF0 ) + ( ch >> shift ) ) );

    while( ( shift -= 6 ) >= 0 )
        result += static_cast< char >( 0x80 + ( ch >> shift ) % 64 );

    return result;
}

inline std::string encodedUtf8( const std::u32string &text )
{
    std::string result;

    for( char32_t ch : text )
        result += encodedUtf8( ch );

    return result;
}

/** The characters of bytes. The byte that breaks a sequence is looked at again; a sequence that the end cuts and a value
    that is too high are nothing. */
inline std::u32string decodedUtf8( const std::string &bytes )
{
    std::u32string result;
    size_t         i = 0;

    auto follows = [&] { return i < bytes.size() && static_cast< unsigned char >( bytes[i] ) / 64 == 2; };

    while( i < bytes.size() )
    {
        unsigned lead   = static_cast< unsigned char >( bytes[i++] );
        size_t   demand = lead / 32 == 6 ? 1 : lead / 16 == 14 ? 2 : lead / 8 == 30 ? 3 : 0;
        char32_t value  = lead < 0x80 ? lead : lead % ( 64 >> demand );
        size_t   seen   = 0;

        for( ; seen < demand && follows(); seen++ )
            value = value * 64 + static_cast< unsigned char >( bytes[i++] ) % 64;

        if( seen == demand && ( demand > 0 || lead < 0x80 ) )
            result += value < 0x110000 ? std::u32string( 1, value ) : U"";
        else if( demand == 0 || i < bytes.size() )
            result += U'\xFFFD';

        while( lead >= 0x80 && demand == 0 && follows() )
            i++;
    }

    return result;
}
} // namespace qv::test

#endif
