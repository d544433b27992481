#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/ExitCode.h"
#include "cli/Terminal.h"
#include "core/presets/PresetStore.h"
#include "core/providers/ProviderCatalog.h"

namespace scrivel::cli::commands {

// One line a preset: "* Name<TAB>Provider · model<TAB>ID", the star on the
// active one.
int listPresets(Invocation& call) {
    const PresetStore* const store = call.session.readPresets();
    if (!store)
        return otherFailure;
    const auto active = store->activePreset();
    for (const Preset& preset : store->presets()) {
        const bool isActive = active && active->id == preset.id;
        QString provider = providerDisplayName(preset);
        if (!preset.model.isEmpty())
            provider += QStringLiteral(" \u00B7 ") + preset.model;
        Terminal::write(stdout,
                        QStringLiteral("%1 %2\t%3\t%4\n")
                            .arg(isActive ? QStringLiteral("*") : QStringLiteral(" "),
                                 preset.displayName(), provider, Preset::idText(preset.id)));
    }
    return success;
}

} // namespace scrivel::cli::commands
