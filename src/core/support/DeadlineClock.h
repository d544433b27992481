#pragma once

#include <chrono>
#include <functional>

namespace scrivel {

// Reads a clock for deadlines that must count the time the machine spends
// asleep: milliseconds since an arbitrary origin. QTimer runs on a clock
// that stops during suspend, so a waiter that must not overrun its deadline
// after wake compares against this clock instead. The platform supplies the
// real one (on Linux the boot-time clock); the default is the steady clock.
using DeadlineClock = std::function<std::chrono::milliseconds()>;

DeadlineClock steadyDeadlineClock();

} // namespace scrivel
