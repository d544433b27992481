#pragma once

#include "core/pipeline/OnDeviceModel.h"

namespace scrivel {

// Linux has no system language model: availability says so, and presets on
// the device show that reason instead of running.
class UnavailableOnDeviceModel : public OnDeviceModel {
public:
    Availability availability() const override;
    std::unique_ptr<Session> makeSession(const QString& instructions) override;
};

} // namespace scrivel
