/** @file
    Handle: what signalables and alertables are. The two families differ in nothing but their names.

    A handle is two objects. The handle itself is what its owner holds. The object that it stands for, the "imp", has the
    action and is what events hold as their target. When the handle ends, its imp is halted: an event that still holds
    the imp keeps an object without an action, and firing it does nothing. */

#ifndef QV_HANDLE_PRIVATE_H
#define QV_HANDLE_PRIVATE_H

#include "qv/base/qv_action_private.h"
#include "qv/base/qv_monitor.h"
#include "qv/runtime/qv_ref.h"

namespace qv
{
/** The object that a handle stands for. */
struct HandleImp : QV_OBJ
{
    QV_MONITOR *monitor; // guards the action; held while it fires, so that firing and halting exclude each other
    Action      action;  // with references of its own
};

/** A new imp of the family with the sort `sort`. Takes references to the objects of the action. */
template< class Imp >
Imp *createHandleImp( QV_SORT *sort, const Action &borrowed )
{
    Imp *imp     = create< Imp >( sort );
    imp->monitor = qvMonitorCreate();
    imp->action  = retainAction( borrowed );

    return imp;
}

/** What the free functions of the imps do. */
void freeHandleImp( HandleImp *imp );

/** Fires the action on the calling thread, with the imp's monitor held. */
void fireHandleImp( HandleImp *imp );

/** Waits for a firing that is under way, then gives up the action. From then on there is nothing to fire. */
void haltHandleImp( HandleImp *imp );

/** What the owner holds. */
template< class Imp >
struct Handle : QV_OBJ
{
    Imp *imp; // never null
};

/** A new handle of the family with the sort `sort`. Takes over the reference to the imp. */
template< class Family, class Imp >
Family *createHandle( QV_SORT *sort, Imp *owned )
{
    Family *handle = create< Family >( sort );
    handle->imp    = owned;

    return handle;
}

/** What the free functions of the handles do. */
template< class Imp >
void freeHandle( Handle< Imp > *handle )
{
    haltHandleImp( handle->imp );
    drop( handle->imp );
}
} // namespace qv

#endif
