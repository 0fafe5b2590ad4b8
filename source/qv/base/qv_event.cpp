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

qv::Action qv::retainAction( const Action &action )
{
    retainIfAny( action.arg );
    retainIfAny( action.barrier );
    retainIfAny( action.condSet );
    retainIfAny( action.signal );
    retainIfAny( action.alert );

    return action;
}

void qv::dropAction( Action *action )
{
    drop( action->arg );
    drop( action->barrier );
    drop( action->condSet );
    drop( action->signal );
    drop( action->alert );
}

void qv::fireAction( const Action &action )
{
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
