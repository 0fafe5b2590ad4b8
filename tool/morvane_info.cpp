#include "morvane_tool.h"

#include "qv/base/qv_store.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_runtime.h"

namespace morvane
{
using qv::Ref;

void printDocument( QV_STORE *store )
{
    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( store ) );
    qvPrintLines( lines );
}

QV_BOOL infoTool( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) != 0 )
        return QV_FALSE;

    printDocument( Ref< QV_STORE >( qvRuntimeInfo() ) );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}
} // namespace morvane
