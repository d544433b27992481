#pragma once

#include "core/presets/PresetTransfer.h"

namespace scrivel::cli {

// The pack dialogs of the desktop app, answered from the command line.
class CommandLineTransferUI : public PresetTransferUI {
public:
    QString path;
    bool overwrite = false;
    bool failed = false;
    QString refusedExisting; // the file left alone because it exists

    std::optional<QString> chooseImportFile() override { return path; }
    // A folder gets the proposed file name; an existing file is replaced only
    // when asked to.
    std::optional<QString> chooseExportFile(const QString& proposedFileName) override;
    // Said on standard error.
    void showFailure(const QString& title, const QString& message) override;
};

} // namespace scrivel::cli
