#include "support/ManualClock.h"

namespace scrivel::test {

Sleep ManualClock::sleep() {
    return [this](std::chrono::milliseconds duration) {
        Promise<std::monostate> promise;
        SleepFuture future = promise.future();
        m_waiters.append({m_now + duration, promise});
        return future;
    };
}

void ManualClock::advance(std::chrono::milliseconds by) {
    m_now += by;
    for (qsizetype i = 0; i < m_waiters.size();) {
        if (m_waiters[i].deadline <= m_now) {
            m_waiters[i].promise.resolve(std::monostate{});
            m_waiters.removeAt(i);
        } else {
            ++i;
        }
    }
}

int ManualClock::pendingCount() const {
    int count = 0;
    for (const Waiter& waiter : m_waiters)
        count += waiter.promise.isCancelled() ? 0 : 1;
    return count;
}

} // namespace scrivel::test
