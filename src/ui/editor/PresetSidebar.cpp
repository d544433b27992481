#include "ui/editor/PresetSidebar.h"

#include "core/editor/MainWindowModel.h"
#include "core/presets/PresetStore.h"
#include "ui/editor/PresetSidebarRowDelegate.h"

#include <QDrag>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

namespace scrivel {

namespace {

using RowKind = PresetSidebarList::RowKind;

RowKind kindOf(const QListWidgetItem* item) {
    return RowKind(item->data(PresetSidebarList::kindRole).toInt());
}

QToolButton* toolButton(const QString& text, const QString& tooltip, const QString& accessible,
                        QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(tooltip);
    button->setAccessibleName(accessible);
    button->setAutoRaise(true);
    button->setMinimumSize(28, 24);
    return button;
}

} // namespace

PresetSidebarList::PresetSidebarList(QWidget* parent) : QListWidget(parent) {
    setItemDelegate(new PresetSidebarRowDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(true);
    setFrameShape(QFrame::NoFrame);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setUniformItemSizes(false);
    setAccessibleName(tr("Presets"));
}

void PresetSidebarList::mousePressEvent(QMouseEvent* event) {
    m_pressPosition = event->position().toPoint();
    QListWidget::mousePressEvent(event);
}

void PresetSidebarList::startDrag(Qt::DropActions supportedActions) {
    QListWidgetItem* dragged = currentItem();
    if (!dragged || kindOf(dragged) != RowKind::preset)
        return;
    // The base class would take the dragged row out of the list once the
    // drag reports a move (as the X11 drag does). But the drop has already
    // asked the store to reorder, and the list was rebuilt from it with the
    // dragged preset selected: the row taken out would be that one. So the
    // drag runs here, and the list stays as the store made it.
    const QRect rect = visualItemRect(dragged);
    auto* drag = new QDrag(this);
    drag->setMimeData(model()->mimeData({indexFromItem(dragged)}));
    drag->setPixmap(viewport()->grab(rect));
    drag->setHotSpot(m_pressPosition - rect.topLeft());
    drag->exec(supportedActions, Qt::MoveAction);
}

void PresetSidebarList::dropEvent(QDropEvent* event) {
    QListWidgetItem* dragged = currentItem();
    if (event->source() != this || !dragged || kindOf(dragged) != RowKind::preset) {
        event->ignore();
        return;
    }
    int presetCount = 0;
    for (int row = 0; row < count(); ++row)
        presetCount += kindOf(item(row)) == RowKind::preset ? 1 : 0;
    // Preset rows start after the heading.
    const int source = row(dragged) - 1;
    int destination = presetCount;
    const QPoint position = event->position().toPoint();
    if (QListWidgetItem* target = itemAt(position)) {
        switch (kindOf(target)) {
        case RowKind::heading:
            destination = 0;
            break;
        case RowKind::preset: {
            const int offset = row(target) - 1;
            const QRect rect = visualItemRect(target);
            destination = position.y() < rect.center().y() ? offset : offset + 1;
            break;
        }
        case RowKind::spacer:
        case RowKind::settings:
            break;
        }
    }
    // The store reorders; the list follows the store, so the view's own move
    // is not wanted.
    event->acceptProposedAction();
    setState(NoState);
    viewport()->update();
    if (destination != source && destination != source + 1)
        Q_EMIT moveRequested(source, destination);
}

PresetSidebar::PresetSidebar(MainWindowModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_list(new PresetSidebarList(this)),
      m_transferMenu(new QMenu(this)) {
    m_add = toolButton(QStringLiteral("+"), tr("Add a preset, copied from the selected one"),
                       tr("Add Preset"), this);
    m_delete = toolButton(QStringLiteral("−"), tr("Delete the selected preset"),
                          tr("Delete Preset"), this);
    m_transfer = toolButton(QStringLiteral("⋯"), tr("Import, export, or add presets from a pack"),
                            tr("Preset Transfer"), this);
    m_transfer->setMenu(m_transferMenu);
    m_transfer->setPopupMode(QToolButton::InstantPopup);
    m_transfer->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));

    auto* toolbar = new QHBoxLayout();
    toolbar->setContentsMargins(6, 2, 6, 4);
    toolbar->setSpacing(2);
    toolbar->addWidget(m_add);
    toolbar->addWidget(m_delete);
    toolbar->addWidget(m_transfer);
    toolbar->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_list, 1);
    layout->addLayout(toolbar);

    PresetStore& store = m_model.store();
    connect(&store, &PresetStore::presetsChanged, this, &PresetSidebar::rebuild);
    connect(&store, &PresetStore::activePresetIDChanged, this, &PresetSidebar::rebuild);
    connect(&m_model, &MainWindowModel::selectionChanged, this, &PresetSidebar::showSelection);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &PresetSidebar::takeSelection);
    connect(m_list, &PresetSidebarList::moveRequested, this,
            [this](int source, int destination) { m_model.store().move({source}, destination); });
    connect(m_list, &QWidget::customContextMenuRequested, this, [this](const QPoint& position) {
        QListWidgetItem* item = m_list->itemAt(position);
        if (!item || kindOf(item) != RowKind::preset)
            return;
        contextMenuFor(item->data(PresetSidebarList::idRole).toUuid())
            ->popup(m_list->viewport()->mapToGlobal(position));
    });
    connect(m_add, &QToolButton::clicked, this, [this] {
        m_model.addPreset();
        Q_EMIT presetAdded();
    });
    connect(m_delete, &QToolButton::clicked, this,
            [this] { m_model.requestDeletionOfSelection(); });
    // Alt+Up and Alt+Down move the selected preset, as dragging it does.
    for (const auto& [key, step] : {std::pair{Qt::Key_Up, -1}, std::pair{Qt::Key_Down, 1}}) {
        auto* move = new QShortcut(QKeySequence(Qt::ALT | key), m_list);
        move->setContext(Qt::WidgetShortcut);
        connect(move, &QShortcut::activated, this, [this, step] {
            if (const std::optional<Preset> selected = m_model.selectedPreset())
                m_model.move(selected->id, step);
        });
    }
    // The Delete key asks about the selected row, as the minus button does.
    auto* remove = new QShortcut(QKeySequence::Delete, m_list);
    remove->setContext(Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, [this] {
        if (m_model.canDeleteSelection())
            m_model.requestDeletionOfSelection();
    });
    connect(m_transferMenu, &QMenu::aboutToShow, this, &PresetSidebar::rebuildTransferMenu);
    rebuild();
}

void PresetSidebar::rebuild() {
    m_rebuilding = true;
    m_list->clear();
    auto* heading = new QListWidgetItem(tr("Presets"), m_list);
    heading->setData(PresetSidebarList::kindRole, int(RowKind::heading));
    heading->setFlags(Qt::ItemIsEnabled | Qt::ItemIsDropEnabled);
    for (const Preset& preset : m_model.store().presets()) {
        const bool active = m_model.isActive(preset.id);
        auto* row = new QListWidgetItem(preset.displayName(), m_list);
        row->setData(PresetSidebarList::kindRole, int(RowKind::preset));
        row->setData(PresetSidebarList::idRole, preset.id);
        row->setData(PresetSidebarList::subtitleRole, MainWindowModel::sidebarSubtitle(preset));
        row->setData(PresetSidebarList::activeRole, active);
        row->setToolTip(MainWindowModel::sidebarTooltip(active));
        row->setData(Qt::AccessibleTextRole, preset.displayName() + QStringLiteral(", ") +
                                                 MainWindowModel::sidebarSubtitle(preset));
        if (active) {
            row->setData(Qt::AccessibleDescriptionRole, tr("Active preset"));
            // A state a screen reader announces with the row ("checked"); the
            // row draws its own check mark and cannot be toggled (it is not
            // user-checkable).
            row->setData(Qt::CheckStateRole, Qt::Checked);
        }
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
    }
    auto* spacer = new QListWidgetItem(m_list);
    spacer->setData(PresetSidebarList::kindRole, int(RowKind::spacer));
    spacer->setFlags(Qt::ItemIsDropEnabled);
    auto* settings = new QListWidgetItem(tr("Settings"), m_list);
    settings->setData(PresetSidebarList::kindRole, int(RowKind::settings));
    settings->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    m_rebuilding = false;
    showSelection();
}

void PresetSidebar::showSelection() {
    const std::optional<MainSidebarItem>& selection = m_model.selection();
    QListWidgetItem* selected = nullptr;
    for (int row = 0; selection && row < m_list->count(); ++row) {
        QListWidgetItem* item = m_list->item(row);
        const RowKind kind = kindOf(item);
        if ((kind == RowKind::settings && selection->kind() == MainSidebarItem::Kind::settings) ||
            (kind == RowKind::preset && selection->isPreset() &&
             item->data(PresetSidebarList::idRole).toUuid() == selection->presetID()))
            selected = item;
    }
    m_rebuilding = true;
    if (selected) {
        m_list->setCurrentItem(selected);
        m_list->scrollToItem(selected);
    } else {
        m_list->clearSelection();
    }
    m_rebuilding = false;
    m_delete->setEnabled(m_model.canDeleteSelection());
}

void PresetSidebar::takeSelection() {
    if (m_rebuilding)
        return;
    const QList<QListWidgetItem*> selected = m_list->selectedItems();
    if (selected.isEmpty()) {
        m_model.setSelection(std::nullopt);
    } else if (kindOf(selected.first()) == RowKind::settings) {
        m_model.setSelection(MainSidebarItem::settings());
    } else if (kindOf(selected.first()) == RowKind::preset) {
        m_model.setSelection(
            MainSidebarItem::preset(selected.first()->data(PresetSidebarList::idRole).toUuid()));
    }
    m_delete->setEnabled(m_model.canDeleteSelection());
}

void PresetSidebar::rebuildTransferMenu() {
    m_transferMenu->clear();
    m_transferMenu->addAction(tr("Add from Pack…"), this, &PresetSidebar::addFromPackRequested);
    m_transferMenu->addAction(tr("Import…"), this, &PresetSidebar::importRequested);
    m_transferMenu->addAction(tr("Export All…"), this, &PresetSidebar::exportAllRequested);
    if (const std::optional<Preset> selected = m_model.selectedPreset()) {
        const QUuid id = selected->id;
        m_transferMenu->addAction(tr("Export Selected…"), this,
                                  [this, id] { Q_EMIT exportRequested(id); });
    }
}

QMenu* PresetSidebar::contextMenuFor(const QUuid& id) {
    if (!m_contextMenu)
        m_contextMenu = new QMenu(this);
    m_contextMenu->clear();
    QAction* use = m_contextMenu->addAction(tr("Use This Preset"), this,
                                            [this, id] { m_model.store().activate(id); });
    use->setEnabled(!m_model.isActive(id));
    QAction* up =
        m_contextMenu->addAction(tr("Move Up"), this, [this, id] { m_model.move(id, -1); });
    up->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Up));
    up->setEnabled(m_model.canMove(id, -1));
    QAction* down =
        m_contextMenu->addAction(tr("Move Down"), this, [this, id] { m_model.move(id, 1); });
    down->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Down));
    down->setEnabled(m_model.canMove(id, 1));
    m_contextMenu->addAction(tr("Export Preset…"), this,
                             [this, id] { Q_EMIT exportRequested(id); });
    m_contextMenu->addSeparator();
    m_contextMenu->addAction(tr("Delete Preset"), this,
                             [this, id] { m_model.requestDeletion(id); });
    return m_contextMenu;
}

} // namespace scrivel
