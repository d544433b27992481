#pragma once

#include "ui/editor/MainWindowServices.h"

#include <QMainWindow>
#include <QUuid>
#include <memory>

class QMenu;

namespace scrivel {

class MainWindowModel;
class PresetEditorModel;
class PresetEditorView;
class PresetSidebar;

// The main window: the presets sidebar, the detail area (a preset's editor,
// the settings page or the empty state) and the menu bar.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    static QString frameKey() { return QStringLiteral("Scrivel Main"); }
    static QSize initialSize() { return {880, 640}; }
    static QSize minimumContentSize() { return {720, 520}; }

    MainWindow(MainWindowModel& model, const MainWindowServices& services,
               QWidget* parent = nullptr);
    ~MainWindow() override;

    PresetSidebar* sidebar() const { return m_sidebar; }
    PresetEditorView* editorView() const { return m_editorView; }
    PresetEditorModel* editorModel() const { return m_editorModel.get(); }
    QWidget* detail() const { return m_detailWidget; }

    // Restores the remembered frame, or centres the window at its initial
    // size when there is none.
    void restoreFrame();
    void saveFrame();

Q_SIGNALS:
    void settingsRequested();
    void importRequested();
    void exportAllRequested();
    void exportRequested(const QUuid& id);
    void addFromPackRequested();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void showDetail();
    void showDeleteConfirmation();
    void refreshActiveState();

    MainWindowModel& m_model;
    // The presenter's, which outlives its windows.
    const MainWindowServices& m_services;
    PresetSidebar* m_sidebar;
    QWidget* m_detailArea;
    QWidget* m_detailWidget = nullptr;
    PresetEditorView* m_editorView = nullptr;
    std::unique_ptr<PresetEditorModel> m_editorModel;
    std::optional<QUuid> m_editedPresetID;
    Future<std::optional<UnavailableReason>> m_onDeviceStatus;
    QMenu* m_editMenu = nullptr;
};

} // namespace scrivel
