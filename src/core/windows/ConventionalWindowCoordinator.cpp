#include "core/windows/ConventionalWindowCoordinator.h"

#include <memory>

namespace scrivel {

namespace {

class RememberedPolicy : public ActivationPolicy {
public:
    Policy policy() const override { return m_policy; }
    void setPolicy(Policy policy) override { m_policy = policy; }

private:
    Policy m_policy = Policy::accessory;
};

std::unique_ptr<ConventionalWindowCoordinator>& sharedSlot() {
    static std::unique_ptr<ConventionalWindowCoordinator> slot;
    return slot;
}

} // namespace

ConventionalWindowCoordinator& ConventionalWindowCoordinator::shared() {
    auto& slot = sharedSlot();
    if (!slot) {
        static RememberedPolicy fallback;
        slot = std::make_unique<ConventionalWindowCoordinator>(fallback);
    }
    return *slot;
}

void ConventionalWindowCoordinator::install(ActivationPolicy& policy) {
    sharedSlot() = std::make_unique<ConventionalWindowCoordinator>(policy);
}

void ConventionalWindowCoordinator::track(const QObject* window) {
    if (m_tracker.insert(window) && m_policy.policy() != ActivationPolicy::Policy::regular)
        m_policy.setPolicy(ActivationPolicy::Policy::regular);
}

void ConventionalWindowCoordinator::untrack(const QObject* window) {
    if (m_tracker.remove(window))
        m_policy.setPolicy(ActivationPolicy::Policy::accessory);
}

} // namespace scrivel
