#pragma once

namespace scrivel {

// Whether the app shows up as an ordinary app (a Dock icon and a menu bar of
// its own) or lives only in the status area.
class ActivationPolicy {
public:
    enum class Policy { regular = 0, accessory = 1 };

    virtual ~ActivationPolicy() = default;
    virtual Policy policy() const = 0;
    virtual void setPolicy(Policy policy) = 0;
};

} // namespace scrivel
