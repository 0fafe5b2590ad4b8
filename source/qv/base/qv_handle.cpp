#include "qv/base/qv_handle_private.h"

#include "qv/base/qv_monitor_private.h"

void qv::freeHandleImp( HandleImp *imp )
{
    drop( imp->monitor );
    dropAction( &imp->action );
}

void qv::fireHandleImp( HandleImp *imp )
{
    HeldMonitor held( imp->monitor );
    fireAction( imp->action );
}

void qv::haltHandleImp( HandleImp *imp )
{
    Action action;

    {
        HeldMonitor held( imp->monitor );
        action = std::exchange( imp->action, Action() );
    }

    // After the monitor: these may be last references, and what ends may fire the events that this is a target of.
    dropAction( &action );
}
