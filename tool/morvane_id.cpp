#include "morvane_tool.h"

#include "qv/base/qv_identifier.h"

namespace morvane
{
using qv::Ref;

int makeIdentifier( const Arguments & )
{
    Ref< QV_IDENTIFIER > ident( qvIdentifierCreate() );
    print( Ref< QV_STRING >( qvIdentifierString( ident ) ) );
    return SUCCESS;
}
} // namespace morvane
