#include "ui/tray/StatusItemController.h"

#include "ui/tray/TintedIcon.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QCursor>
#include <QIconEngine>
#include <QMenu>
#include <QPainter>

namespace scrivel {

namespace {

// A white glyph on a soft dark rim: tray panels come in every colour, and
// this reads on all of them, like the white text of a subtitle.
QPixmap trayPixmap(const QString& path, int side) {
    const QSize size(side, side);
    const int inset = std::max(1, side / 12);
    const QSize glyph(side - 2 * inset, side - 2 * inset);
    const QPixmap rim = tintedSvgPixmap(path, QColor(0, 0, 0, 190), glyph, 1.0);
    const QPixmap face = tintedSvgPixmap(path, Qt::white, glyph, 1.0);
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    for (int dx = -1; dx <= 1; ++dx)
        for (int dy = -1; dy <= 1; ++dy)
            if (dx || dy)
                painter.drawPixmap(inset + dx, inset + dy, rim);
    painter.drawPixmap(inset, inset, face);
    return pixmap;
}

} // namespace

QString StatusItemController::iconPath(StatusItemModel::Look look) {
    switch (look) {
    case StatusItemModel::Look::wand:
        return QStringLiteral(":/icons/status-item-wand.svg");
    case StatusItemModel::Look::progress:
        return QStringLiteral(":/icons/status-item-progress.svg");
    case StatusItemModel::Look::checkMark:
        return QStringLiteral(":/icons/status-item-check.svg");
    case StatusItemModel::Look::triangle:
        return QStringLiteral(":/icons/status-item-triangle.svg");
    }
    return {};
}

namespace {

// Draws only the sizes the tray asks for: start-up renders one pixmap, not
// a ladder of them.
class TrayIconEngine : public QIconEngine {
public:
    explicit TrayIconEngine(QString path) : m_path(std::move(path)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        painter->drawPixmap(rect, pixmap(rect.size(), mode, state));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override {
        const int side = std::min(size.width(), size.height());
        auto found = m_cache.constFind(side);
        if (found != m_cache.constEnd())
            return *found;
        const QPixmap drawn = trayPixmap(m_path, side);
        m_cache.insert(side, drawn);
        return drawn;
    }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        const int side = std::min(size.width(), size.height());
        return QSize(side, side);
    }

    QIconEngine* clone() const override { return new TrayIconEngine(m_path); }

private:
    QString m_path;
    QHash<int, QPixmap> m_cache;
};

} // namespace

QIcon StatusItemController::iconFor(StatusItemModel::Look look) {
    static QHash<int, QIcon> icons;
    auto found = icons.constFind(int(look));
    if (found != icons.constEnd())
        return *found;
    const QIcon icon(new TrayIconEngine(iconPath(look)));
    icons.insert(int(look), icon);
    return icon;
}

StatusItemController::StatusItemController(RewriteCoordinator& coordinator, PresetStore& presets,
                                           Announcer& announcer, QObject* parent)
    : QObject(parent),
      m_model(new StatusItemModel(coordinator, presets, announcer, timerSleep, this)),
      m_menu(new QMenu) {

    buildMenu();
    m_tray.setContextMenu(m_menu);
    renderButton();
    renderMenu();
    connect(m_model, &StatusItemModel::buttonChanged, this, &StatusItemController::renderButton);
    connect(m_model, &StatusItemModel::menuChanged, this, &StatusItemController::renderMenu);
    // The menu opens on a left click too: the item has nothing else to do.
    connect(&m_tray, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason r) {
                if (r == QSystemTrayIcon::Trigger && !m_menu->isVisible())
                    m_menu->popup(QCursor::pos());
            });

    m_exportedMenuBound.setSingleShot(true);
    m_exportedMenuBound.setInterval(defaultExportedMenuBound);
    connect(&m_exportedMenuBound, &QTimer::timeout, this, &StatusItemController::menuClosed);

    m_trayCheck.setInterval(std::chrono::seconds(2));
    connect(&m_trayCheck, &QTimer::timeout, this, &StatusItemController::checkForTray);
    m_trayCheck.start();
    checkForTray();
}

StatusItemController::~StatusItemController() {
    m_tray.hide();
    delete m_menu;
}

void StatusItemController::setExportedMenuBound(std::chrono::milliseconds bound) {
    m_exportedMenuBound.setInterval(bound);
}

bool StatusItemController::isMenuExported() {
    return m_menu->platformMenu() != nullptr;
}

void StatusItemController::menuOpened() {
    m_model->menuWillOpen();
    if (isMenuExported())
        m_exportedMenuBound.start();
}

void StatusItemController::menuClosed() {
    m_exportedMenuBound.stop();
    // Once: the host's "closed" may follow a chosen item or the bound.
    if (m_model->isMenuOpen())
        m_model->menuDidClose();
}

void StatusItemController::buildMenu() {
    m_menu->setAccessibleName(tr("Scrivel"));
    m_menu->setAccessibleDescription(tr("Opens the Scrivel menu"));

    m_statusLineItem = m_menu->addAction(m_model->statusLine());
    m_statusLineItem->setEnabled(false);
    m_statusLineItem->setStatusTip(tr("Current provider readiness"));
    m_statusLineItem->setWhatsThis(tr("Current provider readiness"));
    m_menu->addSeparator();

    m_openPanelItem = m_menu->addAction(tr("Open Panel"));
    m_openPanelItem->setStatusTip(tr("Opens the Scrivel panel"));
    m_openPanelItem->setWhatsThis(tr("Opens the Scrivel panel"));
    connect(m_openPanelItem, &QAction::triggered, m_model, &StatusItemModel::openPanel);

    m_presetMenu = m_menu->addMenu(tr("Preset"));
    m_menu->addSeparator();

    // Only the panel's item shows keys: its shortcut is global. Ctrl+, and
    // Ctrl+Q work in the main window, never from the tray.
    m_settingsItem = m_menu->addAction(tr("Settings…"));
    connect(m_settingsItem, &QAction::triggered, m_model, &StatusItemModel::showSettings);
    m_menu->addSeparator();

    m_quitItem = m_menu->addAction(tr("Quit Scrivel"));
    connect(m_quitItem, &QAction::triggered, qApp, &QCoreApplication::quit);

    connect(m_menu, &QMenu::aboutToShow, this, &StatusItemController::menuOpened);
    // Qt reports the closing before the chosen item's action; closing on the
    // next turn lets that action see the menu still open, so presentations
    // wait until the menu has let go of the pointer and keyboard.
    connect(m_menu, &QMenu::aboutToHide, this, &StatusItemController::menuClosed,
            Qt::QueuedConnection);
    // A menu the tray host draws from the D-Bus export holds no grab of ours,
    // and the host's "closed" event (Qt's aboutToHide there) may never come:
    // choosing an item closes it, and a bound ends it otherwise, so the
    // shortcut is never left off.
    for (QMenu* menu : {m_menu, m_presetMenu}) {
        connect(menu, &QMenu::triggered, this, [this] {
            if (isMenuExported())
                menuClosed();
        });
    }
}

void StatusItemController::renderButton() {
    m_tray.setIcon(iconFor(m_model->look()));
    m_tray.setToolTip(m_model->toolTip());
}

void StatusItemController::renderMenu() {
    m_statusLineItem->setText(m_model->statusLine());
    m_statusLineItem->setEnabled(false);
    m_openPanelItem->setEnabled(true);
    m_settingsItem->setEnabled(true);

    // Deleted later: the item just chosen is still delivering its click.
    for (QAction* old : m_presetMenu->actions())
        m_presetMenu->removeAction(old);
    if (m_presetGroup)
        m_presetGroup->deleteLater();
    // One of several: shown as radio items.
    m_presetGroup = new QActionGroup(m_presetMenu);
    m_presetGroup->setExclusive(true);
    for (const auto& item : m_model->presetMenu()) {
        auto* action = new QAction(item.title, m_presetGroup);
        action->setCheckable(true);
        action->setChecked(item.checked);
        action->setData(item.representedObject);
        m_presetMenu->addAction(action);
        connect(action, &QAction::triggered, m_model,
                [model = m_model, action] { model->selectPreset(action->data()); });
    }
}

void StatusItemController::checkForTray() {
    const bool available = QSystemTrayIcon::isSystemTrayAvailable();
    if (available && (!m_tray.isVisible() || !m_trayWasAvailable)) {
        // A tray that came (back) after the icon was shown needs the icon
        // docked again.
        m_tray.hide();
        m_tray.show();
    }
    m_trayWasAvailable = available;
}

} // namespace scrivel
