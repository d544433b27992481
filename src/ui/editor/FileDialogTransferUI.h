#pragma once

#include "core/presets/PresetTransfer.h"

#include <QPointer>
#include <QWidget>

namespace scrivel {

// The pack flows' questions asked with the desktop's file dialogs, and their
// failures shown in a warning alert, all modal to one window.
class FileDialogTransferUI : public PresetTransferUI {
public:
    explicit FileDialogTransferUI(QWidget* parent) : m_parent(parent) {}

    std::optional<QString> chooseImportFile() override;
    std::optional<QString> chooseExportFile(const QString& proposedFileName) override;
    void showFailure(const QString& title, const QString& message) override;

    // The alert on its own, for flows that fail outside this adapter.
    static void showFailureAlert(QWidget* parent, const QString& title, const QString& message);

private:
    QPointer<QWidget> m_parent;
};

} // namespace scrivel
