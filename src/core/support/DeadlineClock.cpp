#include "core/support/DeadlineClock.h"

namespace scrivel {

DeadlineClock steadyDeadlineClock() {
    return [] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    };
}

} // namespace scrivel
