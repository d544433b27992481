#pragma once

#include "ui/editor/MainWindowServices.h"
#include "ui/editor/PresetPackPickerDialog.h"

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QUuid>
#include <memory>

class QWidget;

namespace scrivel {

class MainWindow;
class MainWindowModel;

// Presents the one main window and runs the pack flows for it, opening their
// dialogs (files, the pack picker) over the window. The application's menus,
// the tray and the panel all open the window through present(); windowShown
// tells the app (which tracks the window until it closes).
class MainWindowController : public QObject {
    Q_OBJECT

public:
    explicit MainWindowController(MainWindowServices services, QObject* parent = nullptr);
    ~MainWindowController() override;

    // Opens the window on the settings or on the presets (the selected one
    // when it still exists, else the active one), or brings the open window
    // to the front.
    void present(bool selectSettings);
    // Opens the window on this preset (when the store still holds it).
    void presentPreset(const QUuid& presetID);

    // The main menu's actions. Each opens the window on the presets first.
    void showSettings();
    void importPresets();
    void exportPresets();
    void exportPresets(const QSet<QUuid>& ids);
    void addFromPack();

    MainWindow* window() const;
    MainWindowModel& model() const { return *m_model; }
    // The pack picker while it is open.
    PresetPackPickerDialog* packPicker() const { return m_packPicker; }

Q_SIGNALS:
    // The window was shown (made or brought to the front).
    void windowShown(QWidget* window);

private:
    void show();

    MainWindowServices m_services;
    std::unique_ptr<MainWindowModel> m_model;
    QPointer<MainWindow> m_window;
    QPointer<PresetPackPickerDialog> m_packPicker;
};

} // namespace scrivel
