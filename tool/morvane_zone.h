/** @file
    The time zone of the system, which the variable TZ sets. */

#ifndef MORVANE_ZONE_H
#define MORVANE_ZONE_H

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_types.h"

namespace morvane
{
/** How many seconds the clocks of the zone are ahead of UTC at a time of UTC. 0 where the system does not know it, as in
    years of more than ten digits. */
QV_INT zoneOffset( QV_TIME *utc );

/** The IANA name of the zone, empty where it has none. */
qv::Ref< QV_STRING > zoneName();
} // namespace morvane

#endif
