#include "ui/editor/MainWindowController.h"

#include "core/editor/MainWindowModel.h"
#include "core/presets/PresetStore.h"
#include "core/presets/PresetTransfer.h"
#include "core/presets/ShippedPacks.h"
#include "ui/editor/FileDialogTransferUI.h"
#include "ui/editor/MainWindow.h"

namespace scrivel {

MainWindowController::MainWindowController(MainWindowServices services, QObject* parent)
    : QObject(parent), m_services(std::move(services)),
      m_model(std::make_unique<MainWindowModel>(*m_services.store)) {}

MainWindowController::~MainWindowController() {
    if (m_window) {
        m_window->saveFrame();
        delete m_window;
    }
}

MainWindow* MainWindowController::window() const {
    return m_window;
}

void MainWindowController::present(bool selectSettings) {
    m_model->prepareSelection(selectSettings);
    show();
}

void MainWindowController::presentPreset(const QUuid& presetID) {
    m_model->prepareSelection(presetID);
    show();
}

void MainWindowController::show() {
    if (!m_window) {
        m_window = new MainWindow(*m_model, m_services);
        connect(m_window, &MainWindow::settingsRequested, this,
                &MainWindowController::showSettings);
        connect(m_window, &MainWindow::importRequested, this, &MainWindowController::importPresets);
        connect(m_window, &MainWindow::exportAllRequested, this,
                qOverload<>(&MainWindowController::exportPresets));
        connect(m_window, &MainWindow::exportRequested, this,
                [this](const QUuid& id) { exportPresets(QSet<QUuid>{id}); });
        connect(m_window, &MainWindow::addFromPackRequested, this,
                &MainWindowController::addFromPack);
        m_window->restoreFrame();
    }
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
    Q_EMIT windowShown(m_window);
}

void MainWindowController::showSettings() {
    present(true);
}

void MainWindowController::importPresets() {
    present(false);
    FileDialogTransferUI ui(m_window);
    m_model->didImport(PresetTransfer::importFromFile(*m_services.store, ui));
}

void MainWindowController::exportPresets() {
    present(false);
    FileDialogTransferUI ui(m_window);
    PresetTransfer::exportAll(*m_services.store, ui);
}

void MainWindowController::exportPresets(const QSet<QUuid>& ids) {
    present(false);
    FileDialogTransferUI ui(m_window);
    PresetTransfer::exportSelection(*m_services.store, ids, ui);
}

void MainWindowController::addFromPack() {
    present(false);
    if (m_packPicker)
        return;
    const QList<PresetPackDocument> packs = m_services.packs ? m_services.packs() : shippedPacks();
    m_packPicker = new PresetPackPickerDialog(packs, m_window);
    m_packPicker->setAttribute(Qt::WA_DeleteOnClose);
    m_packPicker->setWindowModality(Qt::WindowModal);
    connect(m_packPicker, &PresetPackPickerDialog::addRequested, this,
            [this](const PresetPackDocument& pack) {
                FileDialogTransferUI ui(m_window);
                m_model->didImport(PresetTransfer::addShippedPack(*m_services.store, pack, ui));
                if (m_packPicker)
                    m_packPicker->accept();
            });
    m_packPicker->open();
}

} // namespace scrivel
