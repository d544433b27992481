#pragma once

#include "core/presets/PresetStoreProblem.h"
#include "core/storage/SettingsStoreError.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <optional>

class QMessageBox;
class QWidget;

namespace scrivel {

class ReportingSettingsStore;
class StatusItemModel;

// Tells the desktop user what could not be read or saved.
//
// Settings: one alert, naming the file, for each run of failures; the app
// keeps its state in memory and the store tries again with every change, so
// the next alert comes only after a write has succeeded in between.
//
// Presets found damaged at launch: the tray's status line says so until the
// panel or the main window is first shown, which then shows the alert naming
// the copy of the stored presets.
class StorageAlerts : public QObject {
    Q_OBJECT

public:
    explicit StorageAlerts(ReportingSettingsStore& settings, QObject* parent = nullptr);

    // Alerts about the failure the settings already have (on the next turn of
    // the event loop), and about every later one.
    void watchSettings();

    // Holds the presets' notice in the status line until showPresetNotice().
    void holdPresetNotice(const PresetStoreProblem& problem, StatusItemModel& statusItem);
    bool hasPresetNotice() const { return m_presetNotice.has_value(); }
    // Shows the held notice once, over window (which may be null), and calls
    // afterwards when it is closed.
    void showPresetNotice(QWidget* window, std::function<void()> afterwards = {});

    // The alert's second paragraph: what the app does about the failure.
    static QString settingsAlertDetail(const SettingsStoreError& error);
    static QString presetNoticeDetail(const PresetStoreProblem& problem);

private:
    void showSettingsFailure(const SettingsStoreError& error);

    ReportingSettingsStore& m_settings;
    std::optional<PresetStoreProblem> m_presetNotice;
    QPointer<StatusItemModel> m_statusItem;
    QPointer<QMessageBox> m_settingsAlert;
};

} // namespace scrivel
