#include "qv/base/qv_event_private.h"

#include "qv/base/qv_condset.h"

namespace
{
template< class T >
void retainIfAny( T *object )
{
    if( object )
        qv::retain( object );
}
} // namespace

qv::Action qv::retainAction( Action action )
{
    retainIfAny( action.arg );
    retainIfAny( action.barrier );
    retainIfAny( action.condSet );
    retainIfAny( action.signal );
    retainIfAny( action.alert );

    return action;
}

void qv::freeHandleImp( HandleImp *imp )
{
    drop( imp->monitor );
    drop( imp->action.arg );
    drop( imp->action.barrier );
    drop( imp->action.condSet );
    drop( imp->action.signal );
    drop( imp->action.alert );
}

void qv::fireHandleImp( HandleImp *imp )
{
    HeldMonitor   held( imp->monitor );
    const Action &action = imp->action;

    if( action.func )
        action.func( action.arg );

    if( action.barrier )
        qvBarrierUnblock( action.barrier );

    if( action.condSet )
        qvCondsetAddConditions( action.condSet, action.conditions );

    if( action.signal )
        qvSignalAssert( action.signal );

    if( action.alert )
        qvAlertSet( action.alert );
}

void qv::haltHandleImp( HandleImp *imp )
{
    Action action;

    {
        HeldMonitor held( imp->monitor );
        action = std::exchange( imp->action, Action() );
    }

    // Behind the monitor: these may be last references, and what ends may fire the events that this is a target of.
    release( action.arg );
    release( action.barrier );
    release( action.condSet );
    release( action.signal );
    release( action.alert );
}
