#pragma once

#include "core/presets/Preset.h"
#include "core/providers/ProviderConnectionFailure.h"
#include "core/providers/ProviderEndpoint.h"
#include "core/transform/UnavailableReason.h"

#include <QString>

namespace scrivel::cli {

// The system's messages point at the desktop app's windows ("… in
// Presets"); a terminal user gets the command that fixes the problem on the
// line below. Each returns an empty text when no command helps.
namespace Hints {

// "scrivel-cli key set …" for the endpoint, with its --base-url when custom.
QString keySetCommand(const ProviderEndpoint& endpoint);
// Why the preset cannot run, as a command to try.
QString forReason(const UnavailableReason& reason, const std::optional<Preset>& preset);
// For a failed key or models command.
QString forFailure(const ProviderConnectionFailure& failure, const ProviderEndpoint& endpoint);
// Why a custom base URL is refused, in one sentence.
QString baseURLProblem(const QString& baseURL);

} // namespace Hints

} // namespace scrivel::cli
