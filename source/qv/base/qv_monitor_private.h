#ifndef QV_MONITOR_PRIVATE_H
#define QV_MONITOR_PRIVATE_H

#include "qv/base/qv_monitor.h"
#include "qv/runtime/qv_family.h"
#include "qv/sys/qv_lock_word_private.h"

struct QV_MONITOR : QV_OBJ
{
    qv::LockWord lock;
};

namespace qv
{
/** As qvMonitorEnter(), inline where nobody else is there. */
inline void enterMonitor( QV_MONITOR *monitor )
{
    if( __builtin_expect( !monitor || !tryAcquire( &monitor->lock ), 0 ) )
        qvMonitorEnter( monitor );
}

/** As qvMonitorLeave(), for a monitor that is held. */
inline void leaveMonitor( QV_MONITOR *monitor )
{
    release( &monitor->lock );
}

/** Holds a monitor for a scope, in which nobody sleeps. */
class HeldMonitor
{
public:
    explicit HeldMonitor( QV_MONITOR *monitor ) : monitor_( monitor )
    {
        enterMonitor( monitor_ );
    }

    ~HeldMonitor()
    {
        leaveMonitor( monitor_ );
    }

    HeldMonitor( const HeldMonitor & )            = delete;
    HeldMonitor &operator=( const HeldMonitor & ) = delete;

private:
    QV_MONITOR *monitor_;
};
} // namespace qv

#endif
