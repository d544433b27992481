#pragma once

#include <QListWidget>
#include <QUuid>
#include <QWidget>

class QMenu;
class QToolButton;

namespace scrivel {

class MainWindowModel;

// The list of the sidebar: a "Presets" heading, one row per preset (dragged
// to reorder), and the "Settings" entry.
class PresetSidebarList : public QListWidget {
    Q_OBJECT

public:
    enum Role { kindRole = Qt::UserRole + 1, idRole, subtitleRole, activeRole };
    enum class RowKind { heading, preset, spacer, settings };

    explicit PresetSidebarList(QWidget* parent = nullptr);

Q_SIGNALS:
    // A preset row was dropped: its offset among the presets, and where it
    // goes, counted in the list as it was before the move.
    void moveRequested(int source, int destination);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dropEvent(QDropEvent* event) override;

private:
    QPoint m_pressPosition;
};

// The sidebar: the list above, and a toolbar to add, delete and transfer
// presets.
class PresetSidebar : public QWidget {
    Q_OBJECT

public:
    PresetSidebar(MainWindowModel& model, QWidget* parent = nullptr);

    PresetSidebarList* list() const { return m_list; }
    QToolButton* addButton() const { return m_add; }
    QToolButton* deleteButton() const { return m_delete; }
    QToolButton* transferButton() const { return m_transfer; }
    // The transfer menu as it stands for the current selection.
    QMenu* transferMenu() const { return m_transferMenu; }
    // The context menu of a preset row.
    QMenu* contextMenuFor(const QUuid& id);

Q_SIGNALS:
    void addFromPackRequested();
    void importRequested();
    void exportAllRequested();
    void exportRequested(const QUuid& id);
    // The add button made a preset, now selected.
    void presetAdded();

private:
    void rebuild();
    void showSelection();
    void takeSelection();
    void rebuildTransferMenu();
    int presetRow(int offset) const { return offset + 1; }

    MainWindowModel& m_model;
    PresetSidebarList* m_list;
    QToolButton* m_add;
    QToolButton* m_delete;
    QToolButton* m_transfer;
    QMenu* m_transferMenu;
    QMenu* m_contextMenu = nullptr;
    bool m_rebuilding = false;
};

} // namespace scrivel
