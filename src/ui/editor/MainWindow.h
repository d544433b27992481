#pragma once

#include "ui/editor/MainWindowServices.h"

#include <QMainWindow>
#include <QUuid>
#include <memory>

class QAction;
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
    // A settings key: not translated.
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
    // The About box's text: version, what Scrivel does, its licence and
    // where it keeps settings and keys.
    QString aboutText() const;

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
    void updateEditActions(bool readClipboard);
    void updatePresetActions();
    void showAbout();
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
    // The widget the Edit menu acts on: the last one in this window that
    // had the focus.
    QPointer<QWidget> m_editTarget;
    QMetaObject::Connection m_focusWatch;
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QAction* m_cut = nullptr;
    QAction* m_copy = nullptr;
    QAction* m_paste = nullptr;
    QAction* m_selectAll = nullptr;
    QMenu* m_presetsMenu = nullptr;
    QAction* m_addPreset = nullptr;
    QAction* m_usePreset = nullptr;
    QAction* m_deletePreset = nullptr;
};

} // namespace scrivel
