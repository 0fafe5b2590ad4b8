/** @file
    The short way to the integer that a range of a String is. */

#ifndef QV_NUMBER_PRIVATE_H
#define QV_NUMBER_PRIVATE_H

#include "qv/base/qv_format.h"
#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_vectors_number_private.h"

namespace qv
{
static_assert( !QV___LAST_DIGITS || FIXED_STRING >= QV_INT( BEFORE_DIGITS * sizeof( QV_CHAR ) ) );

/** qvFormatTryDecodeIntChars() for `count` characters from `chs` on, which lie in the String. */
inline QV_BOOL decodeIntIn(
    QV_STRING *qvs, const QV_CHAR *chs, QV_INT count, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    // What stands before the characters can be read: in one allocation with them, the String's own fields are there.
    if( QV___LAST_DIGITS && __builtin_expect( base == 10 && count > 0 && isEmbedded( qvs ) && vectors::has16(), 1 ) )
    {
        // A block of its own that follows the String by chance has the fields before it all the same.
        QV_ASSERT( uintptr_t( chs ) - uintptr_t( qvs ) >= uintptr_t( FIXED_STRING ) );

        uint64_t minus  = *chs == U'-';
        QV_INT   digits = count - static_cast< QV_INT >( minus );
        uint64_t number;

        if( __builtin_expect( digits > 0 && digits < 20 && takeLastDigits( chs + count, digits, &number ), 1 ) )
        {
            // Less one, a negative number's magnitude is in the range of the positive ones. So the magnitude 0 is not.
            QV_INT magnitude = static_cast< QV_INT >( number - minus );

            if( __builtin_expect( magnitude >= 0, 1 ) )
            {
                QV_INT result = magnitude ^ -static_cast< QV_INT >( minus );

                QV_ASSERT(
                    [&]( QV_INT other )
                    { return qvFormatTryDecodeIntChars( chs, count, 10, &other, nullptr ) && other == result; }( 0 ) );

                if( value )
                    *value = result;

                if( consumed )
                    *consumed = count;

                return QV_TRUE;
            }
        }
    }

    return qvFormatTryDecodeIntChars( chs, count, base, value, consumed );
}
} // namespace qv

#endif
