#include "qv/runtime/qv_runtime_snapshot_private.h"

#include "qv/io/qv_print.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"

void qv::printSnapshotLine()
{
    qvPrintCstr( "------------------------------------------------------------------------------------------", -1 );
}

void qv___RuntimeSnapshotHeader( void )
{
    qv::printSnapshotLine();
    qvPrintFormatCstr( "Product   : %lc", -1, qv___RuntimeVersionProductNameCstr() );
    qvPrintFormatCstr( "Friendly  : %lc", -1, qv___RuntimeVersionProductFriendlyNameCstr() );
    qvPrintFormatCstr( "Version   : %~s", -1, qvRuntimeVersionProductVersion() );
    qvPrintFormatCstr( "OS        : %~s", -1, qvRuntimeOsFriendlyName( qvRuntimeOs() ) );
    qvPrintFormatCstr( "Hardware  : %~s", -1, qvRuntimeHardwareFriendlyName( qvRuntimeHardware() ) );
    qvPrintFormatCstr( "Variant   : %~s", -1, qvRuntimeVariantFriendlyName( qvRuntimeVariant() ) );
    qvPrintFormatCstr( "Build Time: %lc", -1, qv___RuntimeVersionProductBuildTimeCstr() );
}
