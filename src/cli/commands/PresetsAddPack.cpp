#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "cli/commands/CommandLineTransferUI.h"
#include "core/presets/ShippedPacks.h"

namespace scrivel::cli::commands {

using Terminal::write;

// Copies of a shipped pack's presets, the pack named ignoring case.
int addPack(Invocation& call) {
    PresetStore* const store = call.session.readPresets();
    if (!store)
        return otherFailure;
    if (call.words.size() != 1) {
        write(stderr, usageLine(QStringLiteral("scrivel-cli presets add-pack NAME")));
        return usageError;
    }
    for (const PresetPackDocument& pack : shippedPacks()) {
        if (pack.name.value_or(QString()).compare(call.words[0], Qt::CaseInsensitive) != 0)
            continue;
        CommandLineTransferUI ui;
        PresetTransfer::addShippedPack(*store, pack, ui);
        if (ui.failed || !call.session.saved(*store))
            return otherFailure;
        write(stdout,
              CliText::tr("Added %1 from %2.").arg(presetCount(pack.presets.size()), *pack.name) +
                  QLatin1Char('\n'));
        return success;
    }
    write(
        stderr,
        CliText::tr("No shipped pack \"%1\". See 'scrivel-cli presets packs'.").arg(call.words[0]) +
            QLatin1Char('\n'));
    return usageError;
}

} // namespace scrivel::cli::commands
