/** @file
    The wall clock as tests set it. */

#ifndef QV_TEST_CLOCK_H
#define QV_TEST_CLOCK_H

#include "qv/sys/qv_types.h"

#include <atomic>
#include <ctime>
#include <functional>
#include <limits>

namespace qv::test
{
struct WallClock
{
    /** Milliseconds by which it is ahead of the system's. Timed waits take as long as without. */
    std::atomic< QV_INT > step{ 0 };

    /** Milliseconds by which each look at it moves it on. */
    std::atomic< QV_INT > perLook{ 0 };

    /** If not -1, the milliseconds since the epoch at which it stands still. Then nobody sleeps in a timed wait: it
        runs out at once, and the clock is set to its end. */
    std::atomic< QV_INT > stopped{ -1 };

    /** What time() says, or SHOWN: what the clock shows. */
    static constexpr time_t SHOWN = std::numeric_limits< time_t >::min();
    std::atomic< time_t >   time{ SHOWN };

    /** How often time() was called. The library's own thread does it in each of its rounds, and hardly anybody else. */
    std::atomic< int > timeCalls{ 0 };

    /** Called in place of such a wait with the end of the wait, to set the clock to something else. */
    std::function< void( QV_INT end ) > onWait;

    /** If not null, timed waits of the running thread run out at once: the clock goes on to their end, and it is
        called. */
    static thread_local std::function< void() > *onOwnWait;

    /** Milliseconds since the epoch. */
    QV_INT now() const;

    /** As without stand-ins. */
    void reset();
};

extern WallClock wallClock;
} // namespace qv::test

#endif
