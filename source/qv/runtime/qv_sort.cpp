#include "qv/runtime/qv_sort.h"

#include "qv/base/qv_name.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_obj_count_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_order_private.h"

#include <string.h>

namespace
{
QV_INT compareSorts( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_SORT *thisSort = qvSortFrom( thisObj );
    QV_SORT *thatSort = qvSortFrom( thatObj );

    if( thisSort == thatSort )
        return 0;

    QV_INT order = qv::orderCstr( thisSort->name, thatSort->name );

    if( order == 0 )
        qv___Abort( nullptr, QV___SOURCE, __LINE__, nullptr );

    return order;
}

QV_STRING *sortToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qvSortName( qvSortFrom( thisObj ) );
}
} // namespace

QV___FAMILY( Sort, QV_SORT, nullptr, compareSorts, sortToString )

QV_MODULE *qvSortModule( QV_SORT *sort )
{
    QV_CHECK( sort );
    return sort->module;
}

QV_BOOL qvSortHasModule( QV_SORT *sort )
{
    QV_CHECK( sort );
    return sort->module ? QV_TRUE : QV_FALSE;
}

QV_STRING *qvSortName( QV_SORT *sort )
{
    QV_CHECK( sort );

    QV_STRING *qvs = qvStringCreateFromCstr( sort->name, -1 );
    QV_CHECK( qvNameUpperCaseOk( qvs, QV_TRUE ) );

    return qvs;
}

QV_INT qvSortObjects( QV_SORT *sort )
{
    QV_CHECK( sort );
    return qv::liveObjects( sort );
}

QV_VECTOR *qvSortSnapshot( QV_SORT *sort )
{
    QV_CHECK( sort );

    if( !qv___ObjOdbEnabled() )
        return nullptr;

    qv::Snapshot snapshot;
    {
        qv::HeldOdb held;
        snapshot.addObjects( sort );
    }

    return snapshot.vector();
}
