#include "core/windows/ConventionalWindowCoordinator.h"

namespace scrivel {

void ConventionalWindowCoordinator::track(const QObject* window) {
    if (m_tracker.insert(window) && m_policy.policy() != ActivationPolicy::Policy::regular)
        m_policy.setPolicy(ActivationPolicy::Policy::regular);
}

void ConventionalWindowCoordinator::untrack(const QObject* window) {
    if (m_tracker.remove(window))
        m_policy.setPolicy(ActivationPolicy::Policy::accessory);
}

} // namespace scrivel
