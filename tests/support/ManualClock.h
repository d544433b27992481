#pragma once

#include "support/Sleep.h"

#include <QList>
#include <chrono>

namespace scrivel::test {

// A clock the test moves by hand: sleeps handed out by sleep() end when
// advance() passes their deadline. Cancelled sleeps never end.
class ManualClock {
public:
    Sleep sleep();
    void advance(std::chrono::milliseconds by);
    std::chrono::milliseconds now() const { return m_now; }
    // Sleeps neither ended nor cancelled.
    int pendingCount() const;

private:
    struct Waiter {
        std::chrono::milliseconds deadline;
        Promise<std::monostate> promise;
    };
    std::chrono::milliseconds m_now{0};
    QList<Waiter> m_waiters;
};

} // namespace scrivel::test
