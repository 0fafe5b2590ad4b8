#include "qv/runtime/qv_obj.h"

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_sort.h"

QV_STRING *qvObjToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    qv::Ref< QV_SORT > sort = qv::Ref< QV_SORT >::share( qvObjSort( thisObj ) );
    QV_STRING *result       = sort->toStringFunc ? sort->toStringFunc( thisObj ) : qvObjDefaultToStringFunc( thisObj );
    QV_CHECK( result );

    return result;
}

QV_STRING *qvObjDefaultToStringFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    return qvStringCreateFromFormatCstr(
        "%~s(%^!16i)", -1, qvSortName( qvObjSort( thisObj ) ), qv___ObjUnique( thisObj ) );
}
