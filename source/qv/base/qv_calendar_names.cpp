#include "qv/base/qv_calendar_names_private.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"

QV_INT qv::calendarNameIndex( std::span< const char *const > names, QV_STRING *text, QV_INT shortLength )
{
    Ref< QV_STRING > word( qvStringCreateFrom( text ) );
    qvStringTrim( word.at() );
    qvStringToLower( word.at() );

    for( size_t i = 0; i < names.size(); i++ )
    {
        Ref< QV_STRING > name( qvStringCreateFromCstr( names[i], -1 ) );
        qvStringToLower( name.at() );

        if( qvStringEquals( word, name )
            || ( qvStringLength( word ) == shortLength && qvStringBeginsWith( name, word ) ) )
            return static_cast< QV_INT >( i );
    }

    return -1;
}
