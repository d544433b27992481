#include "cli/commands/CommandLineTransferUI.h"

#include "cli/Terminal.h"

#include <QDir>
#include <QFileInfo>

namespace scrivel::cli {

std::optional<QString> CommandLineTransferUI::chooseExportFile(const QString& proposedFileName) {
    if (QFileInfo(path).isDir())
        path = QDir(path).filePath(proposedFileName);
    if (QFileInfo::exists(path) && !overwrite) {
        refusedExisting = path;
        return std::nullopt;
    }
    return path;
}

void CommandLineTransferUI::showFailure(const QString& title, const QString& message) {
    failed = true;
    Terminal::write(stderr, title + QStringLiteral(": ") + message + QStringLiteral("\n"));
}

} // namespace scrivel::cli
