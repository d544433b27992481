#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "cli/commands/CommandLineTransferUI.h"

#include <QFileInfo>
#include <QSet>

namespace scrivel::cli::commands {

namespace {

using Terminal::write;

// Every preset. "export Fix" most likely means the preset, not a file
// named Fix: refused, with the command for either.
std::expected<bool, ExitCode> exportAll(const PresetStore& store, CommandLineTransferUI& ui) {
    if (namesPreset(store, ui.path) && !QFileInfo(ui.path).isDir()) {
        write(stderr, CliText::tr("\"%1\" names a preset. To export it, name the file too:\n"
                                  "  scrivel-cli presets export %2 FILE\n"
                                  "To export every preset into a file of that name, write ./%1 "
                                  "instead.")
                              .arg(ui.path, shellQuoted(ui.path)) +
                          QLatin1Char('\n'));
        return std::unexpected(usageError);
    }
    return PresetTransfer::exportAll(store, ui);
}

std::expected<bool, ExitCode> exportNamed(const PresetStore& store, const QStringList& names,
                                          CommandLineTransferUI& ui) {
    QSet<QUuid> ids;
    for (const QString& name : names) {
        const auto preset = findPreset(store, name);
        if (!preset) {
            write(stderr, preset.error() + QStringLiteral("\n"));
            return std::unexpected(usageError);
        }
        ids.insert(preset->id);
    }
    return PresetTransfer::exportSelection(store, ids, ui);
}

} // namespace

// The last word is the file (or folder); any before it name the presets.
int exportPresets(Invocation& call) {
    const PresetStore* const store = call.session.readPresets();
    if (!store)
        return otherFailure;
    if (call.words.isEmpty()) {
        write(stderr, usageLine(QStringLiteral("scrivel-cli presets export [NAME|ID...] FILE")));
        return usageError;
    }
    CommandLineTransferUI ui;
    ui.path = call.words.last();
    ui.overwrite = call.options.isSet(QStringLiteral("force"));
    const auto written = call.words.size() == 1
                             ? exportAll(*store, ui)
                             : exportNamed(*store, call.words.first(call.words.size() - 1), ui);
    if (!written)
        return written.error();
    if (!ui.refusedExisting.isEmpty()) {
        write(stderr,
              CliText::tr("%1 already exists; nothing was written. Add --force to replace it.")
                      .arg(ui.refusedExisting) +
                  QLatin1Char('\n'));
        return otherFailure;
    }
    if (!*written)
        return otherFailure;
    write(stderr, CliText::tr("Exported to %1").arg(ui.path) + QLatin1Char('\n'));
    return success;
}

} // namespace scrivel::cli::commands
