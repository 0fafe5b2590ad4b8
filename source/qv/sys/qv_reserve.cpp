#include "qv/sys/qv_abort_private.h"

// Large memory of zeros that nothing writes to but a report. It is linked last: the smaller variables, which the start
// writes to, lie side by side before it, in as few pages as they take.

qv::AbortStack qv::reportStack = {};

alignas( 64 ) char qv::firstSignalStack[SIGNAL_STACK_SIZE] = {};
