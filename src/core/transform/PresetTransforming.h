#pragma once

#include "core/presets/Preset.h"
#include "core/support/Future.h"
#include "core/support/Stream.h"
#include "core/transform/TransformFailure.h"
#include "core/transform/TransformStreamEvent.h"
#include "core/transform/UnavailableReason.h"

#include <optional>

namespace scrivel {

using TransformStream = Stream<TransformStreamEvent, TransformFailure>;
using TransformStreamWriter = StreamWriter<TransformStreamEvent, TransformFailure>;

// The contract every transformer fulfils. The rewrite coordinator holds its
// transformer only through this interface, so tests can stand in a scripted
// one.
class PresetTransforming {
public:
    virtual ~PresetTransforming() = default;

    // Prepares the provider so that the first request is faster. Never fails.
    virtual void prewarm(const Preset& preset) = 0;
    // Why the preset cannot run now, or nothing when it can.
    virtual Future<std::optional<UnavailableReason>> unavailableReason(const Preset& preset) = 0;
    // Starts the work at once and returns its events; destroying or cancelling
    // the stream stops the work.
    virtual TransformStream stream(const Preset& preset, const QString& text) = 0;
};

} // namespace scrivel
