#include "qv/base/qv_timezone.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_timezone_tables_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"

#include <span>

namespace
{
using namespace qv::timezone;

// Compares a String with a text in ASCII: -1, 0 or 1, in the order of Strings.
int compareNames( QV_STRING *name, const char *other )
{
    for( QV_INT i = 0; i < name->length; i++ )
    {
        QV_CHAR ch      = qv::chars( name )[i];
        QV_CHAR otherCh = static_cast< unsigned char >( other[i] );

        // The other name has ended, so the longer one is greater, also when its next character is 0.
        if( otherCh == 0 )
            return 1;

        if( ch != otherCh )
            return ch < otherCh ? -1 : 1;
    }

    return other[name->length] ? -1 : 0;
}

// The other name in the row of a name, or null.
const char *findTranslation( std::span< const Row > rows, QV_STRING *name )
{
    size_t low  = 0;
    size_t high = rows.size();

    while( low < high )
    {
        size_t middle = ( low + high ) / 2;
        int    order  = compareNames( name, names + rows[middle].name );

        if( order == 0 )
            return names + rows[middle].translation;

        if( order < 0 )
            high = middle;
        else
            low = middle + 1;
    }

    return nullptr;
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
