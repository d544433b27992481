#pragma once

#include <QWidget>
#include <functional>

class QCheckBox;
class QLabel;
class QVBoxLayout;
class QPushButton;

namespace scrivel {

class GeneralSettingsModel;
class LoginItemService;
class SelectionPreferences;
class SettingsStatusLabel;
class UpdaterController;

// The settings page of the main window: General (the keyboard shortcut,
// the selected text in and the result back, launch at login with its status
// line, help text) and Updates.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    // Makes the shortcut recorder for the "Keyboard shortcut" row.
    using RecorderFactory = std::function<QWidget*(QWidget* parent)>;

    // Without selection preferences the page has no rows for them.
    SettingsView(LoginItemService& loginItems, UpdaterController& updater,
                 RecorderFactory shortcutRecorder, SelectionPreferences* selection = nullptr,
                 QWidget* parent = nullptr);

    GeneralSettingsModel& generalModel() { return *m_general; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeGeneralSection(const RecorderFactory& shortcutRecorder);
    QWidget* makeUpdatesSection();
    void addSelectionRows(QVBoxLayout* rows, QWidget* box);
    void renderGeneral();
    void renderSelection();
    void renderUpdates();

    GeneralSettingsModel* m_general;
    UpdaterController& m_updater;
    SelectionPreferences* m_selection;

    QCheckBox* m_launchToggle = nullptr;
    QPushButton* m_approvalButton = nullptr;
    QLabel* m_unavailable = nullptr;
    SettingsStatusLabel* m_status = nullptr;
    QLabel* m_generalFooter = nullptr;
    QCheckBox* m_takeSelection = nullptr;
    QCheckBox* m_replaceSelection = nullptr;

    QCheckBox* m_automaticChecks = nullptr;
    QPushButton* m_checkNow = nullptr;
    bool m_shownBefore = false;
};

} // namespace scrivel
