// Linked into a program it lets nobody on the main thread wait for a time.

#include "qv_test_clock.h"

namespace
{
std::function< void() > nothing = [] {};
const bool              IS_FAST = ( qv::test::WallClock::onOwnWait = &nothing );
} // namespace
