#include "ui/editor/FileDialogTransferUI.h"

#include "ui/widgets/MessageBoxTitle.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace scrivel {

namespace {

// The texts of this file, under the context they have always had.
struct DialogText {
    Q_DECLARE_TR_FUNCTIONS(FileDialogTransferUI)
};

QString jsonFilter() {
    return DialogText::tr("JSON files (*.json)");
}

// Where the dialogs start: the Documents folder when it exists. (Given a
// folder that does not exist, the dialog opens its parent and types the
// missing folder's name into the file name field.)
QString startFolder() {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return !documents.isEmpty() && QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

} // namespace

std::optional<QString> FileDialogTransferUI::chooseImportFile() {
    QFileDialog dialog(m_parent, DialogText::tr("Import Presets"), startFolder());
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilter(jsonFilter());
    dialog.setLabelText(QFileDialog::Accept, DialogText::tr("Import"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().first();
}

std::optional<QString> FileDialogTransferUI::chooseExportFile(const QString& proposedFileName) {
    QFileDialog dialog(m_parent, DialogText::tr("Export Presets"), startFolder());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilter(jsonFilter());
    dialog.setLabelText(QFileDialog::Accept, DialogText::tr("Export"));
    dialog.selectFile(proposedFileName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().first();
}

void FileDialogTransferUI::showFailure(const QString& title, const QString& message) {
    showFailureAlert(m_parent, title, message);
}

void FileDialogTransferUI::showFailureAlert(QWidget* parent, const QString& title,
                                            const QString& message) {
    QMessageBox box(QMessageBox::Warning, DialogText::tr("Scrivel"), title, QMessageBox::NoButton,
                    parent);
    box.setInformativeText(message);
    QPushButton* close = box.addButton(DialogText::tr("Close"), QMessageBox::AcceptRole);
    box.setDefaultButton(close);
    box.setEscapeButton(close);
    makeRoomForTitle(box);
    box.exec();
}

} // namespace scrivel
