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

int tellInfo( const Arguments & )
{
    printDocument( Ref< QV_STORE >( qvRuntimeInfo() ) );
    return SUCCESS;
}
} // namespace morvane
