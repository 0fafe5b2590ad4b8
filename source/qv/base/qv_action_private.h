/** @file
    Action: what a signalable, an alertable or a timer does when it fires. */

#ifndef QV_ACTION_PRIVATE_H
#define QV_ACTION_PRIVATE_H

#include "qv/runtime/qv_family.h"

namespace qv
{
/** Firing does all of it that is not null. Most actions have one part only. */
struct Action
{
    void ( *func )( QV_OBJ *arg ) = nullptr; // called with `arg`, which may be null
    QV_OBJ     *arg               = nullptr;
    QV_BARRIER *barrier           = nullptr; // opened
    QV_CONDSET *condSet           = nullptr; // gets `conditions`, of which the low 16 bits count
    QV_INT      conditions        = 0;
    QV_SIGNAL  *signal            = nullptr; // asserted
    QV_ALERT   *alert             = nullptr; // set
};

/** Takes a reference to each object of the action. Returns the same action, now for an owner to keep. */
Action retainAction( const Action &action );

/** Gives up these references; the fields are not to be used any more. */
void dropAction( Action *action );

/** Fires on the calling thread, in the order of the fields. */
void fireAction( const Action &action );
} // namespace qv

#endif
