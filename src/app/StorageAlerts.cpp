#include "app/StorageAlerts.h"

#include "core/storage/ReportingSettingsStore.h"
#include "core/tray/StatusItemModel.h"

#include <QMessageBox>

namespace scrivel {

namespace {

QMessageBox* makeAlert(const QString& text, const QString& detail, QWidget* parent) {
    auto* box = new QMessageBox(QMessageBox::Warning, StorageAlerts::tr("Scrivel"), text,
                                QMessageBox::Ok, parent);
    box->setInformativeText(detail);
    box->setAttribute(Qt::WA_DeleteOnClose);
    // Over a window it belongs to that window; on its own it still comes to
    // the front, as the tray app has no window of its own.
    box->setWindowModality(parent ? Qt::WindowModal : Qt::NonModal);
    return box;
}

} // namespace

StorageAlerts::StorageAlerts(ReportingSettingsStore& settings, QObject* parent)
    : QObject(parent), m_settings(settings) {}

void StorageAlerts::watchSettings() {
    // Queued: a failure is reported from inside the write that failed, which
    // the alert must not interrupt.
    connect(&m_settings, &ReportingSettingsStore::failed, this, &StorageAlerts::showSettingsFailure,
            Qt::QueuedConnection);
    // A failure from before (reading the file, the first writes of the
    // launch) is shown once the launch is done, over anything it opened.
    if (const auto& failure = m_settings.failure())
        QMetaObject::invokeMethod(
            this, [this, error = *failure] { showSettingsFailure(error); }, Qt::QueuedConnection);
}

QString StorageAlerts::settingsAlertDetail(const SettingsStoreError& error) {
    switch (error.kind()) {
    case SettingsStoreError::Kind::unreadable:
        return tr("Your presets aren’t shown, and nothing is written to the file until Scrivel "
                  "can read it. Make the file readable, or move it aside, then start Scrivel "
                  "again.");
    case SettingsStoreError::Kind::unwritable:
        break;
    }
    return tr("Your changes are kept while Scrivel is running, and saved with your next change "
              "once the folder can be written to.");
}

QString StorageAlerts::presetNoticeDetail(const PresetStoreProblem& problem) {
    switch (problem.kind()) {
    case PresetStoreProblem::Kind::presetsUnreadable:
        if (problem.kept() == 0)
            return tr("Scrivel has started again with its built-in presets. The copy holds "
                      "everything that was stored.");
        break;
    case PresetStoreProblem::Kind::newerFields:
        break;
    case PresetStoreProblem::Kind::copyFailed:
        return tr("Check that the folder can be written to.");
    }
    return tr("The copy holds everything that was stored.");
}

void StorageAlerts::showSettingsFailure(const SettingsStoreError& error) {
    // One alert at a time: the failures after the first are the same one.
    if (m_settingsAlert)
        return;
    m_settingsAlert = makeAlert(error.message(), settingsAlertDetail(error), nullptr);
    m_settingsAlert->show();
    m_settingsAlert->raise();
    m_settingsAlert->activateWindow();
}

void StorageAlerts::holdPresetNotice(const PresetStoreProblem& problem,
                                     StatusItemModel& statusItem) {
    m_presetNotice = problem;
    m_statusItem = &statusItem;
    statusItem.setNotice(tr("Status: %1").arg(problem.statusLine()));
}

void StorageAlerts::showPresetNotice(QWidget* window, std::function<void()> afterwards) {
    if (!m_presetNotice)
        return;
    const PresetStoreProblem problem = *std::exchange(m_presetNotice, std::nullopt);
    if (m_statusItem)
        m_statusItem->setNotice({});
    QMessageBox* box = makeAlert(problem.message(), presetNoticeDetail(problem), window);
    if (afterwards)
        connect(box, &QMessageBox::finished, this, [afterwards] { afterwards(); });
    box->show();
    box->raise();
    box->activateWindow();
}

} // namespace scrivel
