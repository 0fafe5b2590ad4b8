#include "qv/base/qv_action_private.h"

#include "qv/base/qv_alert.h"
#include "qv/base/qv_barrier.h"
#include "qv/base/qv_condset.h"
#include "qv/base/qv_signal.h"
#include "qv/runtime/qv_ref.h"

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
