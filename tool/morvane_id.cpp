#include "morvane_tool.h"

#include "qv/base/qv_identifier.h"

namespace morvane
{
using qv::Ref;

QV_BOOL idTool( QV_VECTOR *argv, void *context )
{
    Arguments arguments;

    if( !arguments.read( argv, nullptr, 0 ) || qvVectorLength( arguments.words() ) != 0 )
        return QV_FALSE;

    Ref< QV_IDENTIFIER > ident( qvIdentifierCreate() );
    print( Ref< QV_STRING >( qvIdentifierString( ident ) ) );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}
} // namespace morvane
