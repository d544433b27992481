#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "core/presets/PresetTransfer.h"

namespace scrivel::cli::commands {

using Terminal::write;

int importPack(Invocation& call) {
    PresetStore* const store = call.session.readPresets();
    if (!store)
        return otherFailure;
    if (call.words.size() != 1) {
        write(stderr, usageLine(QStringLiteral("scrivel-cli presets import FILE")));
        return usageError;
    }
    const QString failed = PresetTransfer::failureTitle() + QStringLiteral(": ");
    const auto document = PresetTransfer::readPack(call.words[0]);
    if (!document) {
        write(stderr, failed + PresetTransfer::message(document.error()) + QStringLiteral("\n"));
        // What exactly is wrong with the file, for whoever fixes it.
        if (document.error().packError && !document.error().debugDescription.isEmpty())
            write(stderr, document.error().debugDescription + QStringLiteral("\n"));
        return otherFailure;
    }
    const auto imported = store->importPack(*document, false);
    if (!imported) {
        write(stderr, failed + imported.error().message() + QStringLiteral("\n"));
        return otherFailure;
    }
    if (!call.session.saved(*store))
        return otherFailure;
    write(stdout, CliText::tr("Imported %1: %2 added, %3 replaced.")
                          .arg(presetCount(imported->added + imported->replaced))
                          .arg(imported->added)
                          .arg(imported->replaced) +
                      QLatin1Char('\n'));
    return success;
}

} // namespace scrivel::cli::commands
