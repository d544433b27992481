#pragma once

#include "core/support/Sleep.h"

#include <QList>
#include <algorithm>
#include <chrono>

namespace scrivel::test {

// A clock the test moves by hand: sleeps handed out by sleep() end when
// advance() passes their deadline. Cancelled sleeps never end.
class ManualClock {
public:
    Sleep sleep() {
        return [this](std::chrono::milliseconds duration) {
            Promise<std::monostate> promise;
            m_waiters.append({m_now + duration, promise});
            return promise.future();
        };
    }

    void advance(std::chrono::milliseconds by) {
        m_now += by;
        for (qsizetype i = 0; i < m_waiters.size();) {
            if (m_waiters[i].deadline > m_now) {
                ++i;
                continue;
            }
            m_waiters[i].promise.resolve(std::monostate{});
            m_waiters.removeAt(i);
        }
    }

    std::chrono::milliseconds now() const { return m_now; }

    // Sleeps neither ended nor cancelled.
    int pendingCount() const {
        return int(std::count_if(m_waiters.cbegin(), m_waiters.cend(),
                                 [](const Waiter& w) { return !w.promise.isCancelled(); }));
    }

private:
    struct Waiter {
        std::chrono::milliseconds deadline;
        Promise<std::monostate> promise;
    };
    std::chrono::milliseconds m_now{0};
    QList<Waiter> m_waiters;
};

} // namespace scrivel::test
