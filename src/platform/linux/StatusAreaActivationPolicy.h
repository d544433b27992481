#pragma once

#include "core/windows/ActivationPolicy.h"

namespace scrivel {

// Linux desktops have no Dock and no app-wide menu bar to switch: the main
// window shows in the task bar by itself. The policy is only remembered.
class StatusAreaActivationPolicy : public ActivationPolicy {
public:
    Policy policy() const override { return m_policy; }
    void setPolicy(Policy policy) override { m_policy = policy; }

private:
    Policy m_policy = Policy::accessory;
};

} // namespace scrivel
