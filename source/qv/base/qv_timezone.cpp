#include "qv/base/qv_timezone.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_timezone_tables_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

#include <iterator>
#include <span>
#include <string.h>

namespace
{
using namespace qv::timezone;

// The other name in the row of a name, or null.
const char *findTranslation( std::span< const Row > rows, QV_STRING *name )
{
    auto orderAt = [&]( QV_INT idx )
    {
        const char *other  = names + rows[static_cast< size_t >( idx )].name;
        QV_INT      length = static_cast< QV_INT >( strlen( other ) );

        return -qv::order( qv::chars( name ), name->length, reinterpret_cast< const uint8_t * >( other ), length );
    };

    auto [idx, found] = qv::bisect( QV_INT( -1 ), QV_INT( std::ssize( rows ) ), orderAt );
    return found ? names + rows[static_cast< size_t >( idx )].translation : nullptr;
}

QV_STRING *translateName( std::span< const Row > rows, QV_STRING *name )
{
    const char *translation = findTranslation( rows, name );
    return translation ? qvStringCreateFromCstr( translation, -1 ) : nullptr;
}
} // namespace

QV_STRING *qvTimezoneWindowsToIana( QV_STRING *name )
{
    QV_CHECK( name );
    return translateName( windowsRows, name );
}

QV_STRING *qvTimezoneIanaToWindows( QV_STRING *name )
{
    QV_CHECK( name );
    return translateName( ianaRows, name );
}

QV_BOOL qvTimezoneWindowsOk( QV_STRING *name )
{
    QV_CHECK( name );
    return findTranslation( windowsRows, name ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvTimezoneIanaOk( QV_STRING *name )
{
    QV_CHECK( name );
    return findTranslation( ianaRows, name ) ? QV_TRUE : QV_FALSE;
}

QV_VECTOR *qvTimezoneList( void )
{
    qv::Ref< QV_VECTOR > list( qvVectorCreate() );

    for( const Row &row : ianaRows )
        qvVectorAppendStringCstr( list.at(), names + row.name, -1 );

    return list.give();
}
