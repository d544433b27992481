#include "platform/linux/BootClock.h"

#include <time.h>

namespace scrivel {

DeadlineClock bootClock() {
    return [] {
        timespec now{};
        if (clock_gettime(CLOCK_BOOTTIME, &now) != 0)
            return steadyDeadlineClock()();
        return std::chrono::milliseconds(static_cast<long long>(now.tv_sec) * 1000 +
                                         now.tv_nsec / 1000000);
    };
}

} // namespace scrivel
