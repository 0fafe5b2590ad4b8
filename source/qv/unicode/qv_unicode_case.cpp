#include "qv/unicode/qv_unicode_case_private.h"

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

namespace
{
// `asciiFirst` is the first of the 26 letters of ASCII that change.
template< const uint8_t *blocks, const uint16_t *values, QV_CHAR asciiFirst >
qv::unicode::CaseMapped mapCase( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    QV_ASSERT( room >= length );

    QV_INT spare = room - length; // places beyond one for each character that is left
    QV_INT count = 0;
    QV_INT i     = 0;

    // What the tables hold: the length in the upper two bits, the place of the mapping below.
    const unsigned ONE    = 1 << 14;
    const unsigned LONGER = 2 << 14;

    while( i < length )
    {
        if( from[i] < 0x80 )
        {
            QV_INT ascii = qv::swapLeadingAsciiCase( from + i, length - i, asciiFirst, to + count );
            i += ascii;
            count += ascii;
        }

        QV_INT stop = length - i < 4 ? length : i + 4;

        // Four at once of characters that map to one each, which may be themselves.
        if( stop - i == 4 )
        {
            uint16_t found[4];

            for( int k = 0; k < 4; k++ )
                found[k] = qv::unicode::lookUp( blocks, values, from[i + k] );

            if( ( found[0] | found[1] | found[2] | found[3] ) < LONGER )
            {
                for( int k = 0; k < 4; k++ )
                {
                    QV_CHAR other = qv::unicode::caseMappings[found[k] % ONE];
                    to[count + k] = found[k] ? other : from[i + k];
                }

                count += 4;
                i += 4;
                continue;
            }
        }

        for( ; i < stop; i++ )
        {
            qv::unicode::Mapping mapping = qv::unicode::caseMapping( qv::unicode::lookUp( blocks, values, from[i] ) );

            if( !mapping.chars )
            {
                to[count++] = from[i];
                continue;
            }

            if( mapping.length - 1 > spare )
                return { i, count };

            spare -= mapping.length - 1;

            for( QV_INT k = 0; k < mapping.length; k++ )
                to[count++] = mapping.chars[k];
        }
    }

    return { i, count };
}
} // namespace

qv::unicode::CaseMapped qv::unicode::mapToUpper( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    return mapCase< upperBlocks, upper, U'a' >( from, length, to, room );
}

qv::unicode::CaseMapped qv::unicode::mapToLower( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    return mapCase< lowerBlocks, lower, U'A' >( from, length, to, room );
}

qv::unicode::CaseMapped qv::unicode::mapToCaseFold( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room )
{
    return mapCase< foldBlocks, fold, U'A' >( from, length, to, room );
}
