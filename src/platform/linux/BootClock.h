#pragma once

#include "core/support/DeadlineClock.h"

namespace scrivel {

// CLOCK_BOOTTIME: monotonic, and it keeps counting while the machine is
// suspended.
DeadlineClock bootClock();

} // namespace scrivel
