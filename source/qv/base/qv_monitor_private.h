#ifndef QV_MONITOR_PRIVATE_H
#define QV_MONITOR_PRIVATE_H

#include "qv/base/qv_monitor.h"

namespace qv
{
/** Holds a monitor for a scope, in which nobody sleeps. */
class HeldMonitor
{
public:
    explicit HeldMonitor( QV_MONITOR *monitor ) : monitor_( monitor )
    {
        qvMonitorEnter( monitor_ );
    }

    ~HeldMonitor()
    {
        qvMonitorLeave( monitor_ );
    }

    HeldMonitor( const HeldMonitor & )            = delete;
    HeldMonitor &operator=( const HeldMonitor & ) = delete;

private:
    QV_MONITOR *monitor_;
};
} // namespace qv

#endif
