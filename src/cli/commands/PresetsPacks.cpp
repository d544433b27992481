#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "core/presets/ShippedPacks.h"

namespace scrivel::cli::commands {

using Terminal::write;

// One line a shipped pack: its name, how many presets, its description.
int listPacks(Invocation& call) {
    // Read like every presets action, so that a damaged list is told here too.
    if (!call.session.readPresets())
        return otherFailure;
    for (const PresetPackDocument& pack : shippedPacks()) {
        QString line = pack.name.value_or(CliText::tr("Untitled Pack")) + QStringLiteral("\t") +
                       presetCount(pack.presets.size());
        if (pack.description && !pack.description->isEmpty())
            line += QStringLiteral(". ") + *pack.description;
        write(stdout, line + QStringLiteral("\n"));
    }
    return success;
}

} // namespace scrivel::cli::commands
