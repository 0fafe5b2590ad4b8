#include "qv/runtime/qv_runtime_snapshot_private.h"

#include "qv/base/qv_vector.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_private.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_int.h"

#include <string.h>

void qv::printSnapshotLine()
{
    qvPrintCstr( "------------------------------------------------------------------------------------------", -1 );
}

void qv::printSnapshotSort( QV_SORT *sort, QV_INT width, QV_INT objects )
{
    qvPrintFormatCstr( "%~-*s %i", -1, width, qvSortName( sort ), objects );
}

void qv::printSnapshotObject( QV_OBJ *object, QV_INT retainCount, QV_INT flags )
{
    QV_SORT *sort = qvObjSort( object );

    if( ( flags & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_TOSTRING ) && sort->toStringFunc )
        qvPrintFormatCstr( "%~s (%i) %o", -1, qvSortName( sort ), retainCount, object );
    else
        qvPrintFormatCstr( "%~s (%i)", -1, qvSortName( sort ), retainCount );

    if( !( flags & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT_LOG ) )
        return;

    Ref< QV_VECTOR > log( qv___ObjLog( object ) );
    QV_INT           length = log ? qvVectorLength( log ) : 0;

    for( QV_INT i = 0; i < length; i++ )
        qvPrintFormatCstr( "%1m%~o", -1, qvVectorObjAt( log, i ) );
}

void qv::printSurvivors( QV_INT flags )
{
    qv___RuntimeSnapshotHeader();
    printSnapshotLine();

    QV_SORT *first = qv___module.sortsFirst;

    if( flags & QV_RUNTIME_FLAG_SNAPSHOT_SORT )
    {
        QV_INT width = 0;

        for( QV_SORT *sort = first; sort; sort = sort->sortsNext )
            width = qvIntMax( width, static_cast< QV_INT >( strlen( sort->name ) ) );

        for( QV_SORT *sort = first; sort; sort = sort->sortsNext )
        {
            // The sort's own count includes the objects of the run that prints.
            QV_INT count = 0;

            for( QV_OBJ *obj = sort->odbFirst; obj; obj = obj->odbNext )
                count++;

            printSnapshotSort( sort, width, count );
        }

        if( flags & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT )
            qvPrintCstr( "", 0 );
    }

    if( !( flags & QV_RUNTIME_FLAG_SNAPSHOT_OBJECT ) )
        return;

    for( QV_SORT *sort = first; sort; sort = sort->sortsNext )
        for( QV_OBJ *obj = sort->odbFirst; obj; obj = obj->odbNext )
        {
            QV_INT retainCount = qv___AtomicLoad32( &obj->retainCount );
            QV_CHECK_AS( retainCount, "QV___RETAIN_COUNT_VALUE( obj->retainCount )" );
            printSnapshotObject( obj, retainCount, flags );
        }
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
