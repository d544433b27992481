#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"

namespace scrivel::cli::commands {

using Terminal::write;

int usePreset(Invocation& call) {
    PresetStore* const store = call.session.readPresets();
    if (!store)
        return otherFailure;
    if (call.words.size() != 1) {
        write(stderr, usageLine(QStringLiteral("scrivel-cli presets use NAME|ID")));
        return usageError;
    }
    const auto preset = findPreset(*store, call.words[0]);
    if (!preset) {
        write(stderr, preset.error() + QStringLiteral("\n"));
        return usageError;
    }
    store->activate(preset->id);
    if (!call.session.saved(*store))
        return otherFailure;
    write(stdout, CliText::tr("Active preset: %1").arg(preset->displayName()) + QLatin1Char('\n'));
    return success;
}

} // namespace scrivel::cli::commands
