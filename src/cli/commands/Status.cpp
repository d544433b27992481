#include "cli/commands/Commands.h"

#include "cli/Await.h"
#include "cli/CliSession.h"
#include "cli/ExitCode.h"
#include "cli/Hints.h"
#include "cli/Terminal.h"
#include "core/pipeline/RewriteCoordinator.h"
#include "platform/linux/LinuxServices.h"

namespace scrivel::cli::commands {

// The active preset's readiness line; why it cannot run, if it cannot.
int showStatus(Invocation& call) {
    PresetStore* const presets = call.session.readPresets();
    if (!presets)
        return otherFailure;
    RewriteCoordinator& coordinator = call.session.services().coordinator();
    const std::optional<Preset> preset = presets->activePreset();
    const auto line = await(coordinator.readinessLine(preset));
    const auto reason = await(coordinator.unavailableReason(preset));
    Terminal::write(stdout, line.value_or(QString()) + QStringLiteral("\n"));
    if (!reason || !*reason)
        return success;
    Terminal::writeProblem((*reason)->message(), Hints::forReason(**reason, preset));
    return exitCodeFor(**reason);
}

} // namespace scrivel::cli::commands
