#pragma once

#include "core/presets/Preset.h"

#include <QList>

namespace scrivel {

// The three presets a first launch starts with, each with a fresh identifier.
// "Fix" runs on the device when its model is available, otherwise on Groq.
QList<Preset> builtInPresets(bool onDeviceModelAvailable);

// The catalogue provider and model the built-ins use when not on the device.
QString builtInCloudProviderID();
QString builtInCloudModel();

} // namespace scrivel
