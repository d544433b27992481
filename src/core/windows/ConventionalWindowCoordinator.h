#pragma once

#include "core/windows/ActivationPolicy.h"
#include "core/windows/ConventionalWindowTracker.h"

#include <QObject>

namespace scrivel {

// Makes Scrivel an ordinary app while at least one of its conventional windows
// (the main window) is open and a status-area utility otherwise. The panel
// and the status menu are never tracked.
class ConventionalWindowCoordinator {
public:
    explicit ConventionalWindowCoordinator(ActivationPolicy& policy) : m_policy(policy) {}

    // A window is shown (again); call before bringing it to the front.
    void track(const QObject* window);
    // A window closed.
    void untrack(const QObject* window);

    const ConventionalWindowTracker& tracker() const { return m_tracker; }

private:
    ActivationPolicy& m_policy;
    ConventionalWindowTracker m_tracker;
};

} // namespace scrivel
