#ifndef QV_TIMER_PRIVATE_H
#define QV_TIMER_PRIVATE_H

#include "qv/base/qv_timer.h"

/** What a timer stands for: its target and its place in a queue. While it fires it may outlive the timer. */
QV_FAMILY( ___TimerClosure, QV___TIMER_CLOSURE )

/** A new timer, not scheduled, that ends the process when it fires, after it has tried to stop the calling thread. */
QV_API QV_TIMER *qv___TimerCreateAbort( void );

/** The body of the thread on which timers fire. Returns when the library stops. */
QV_API void qv___TimerThreadFunc( void );

#endif
