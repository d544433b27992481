#include "app/AppDelegate.h"

#include "app/StorageAlerts.h"
#include "core/desktop/Clipboard.h"
#include "core/desktop/WakeObserver.h"
#include "core/panel/FixPanelControlsState.h"
#include "core/presets/PresetStore.h"
#include "core/providers/APIKeyStore.h"
#include "core/windows/WindowSession.h"
#include "platform/linux/DBusStatusItemExport.h"
#include "platform/linux/LinuxServices.h"
#include "platform/linux/NoOpAnnouncer.h"
#include "platform/linux/XdgAutostartLoginItemService.h"
#include "ui/settings/GlobalShortcutField.h"
#include "ui/settings/ShortcutActionBinding.h"
#include "ui/settings/ShortcutRecorder.h"
#include "ui/tray/StatusItemController.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>
#include <QTimer>

namespace scrivel {

AppDelegate::AppDelegate(LinuxServices& services, Clipboard& clipboard, HotKeyService& hotKeys,
                         PanelWindowTraits panelTraits, QObject* parent)
    : QObject(parent), m_services(services), m_clipboard(clipboard),
      m_panelTraits(std::move(panelTraits)), m_shortcuts(services.settings(), hotKeys),
      m_announcer(std::make_unique<NoOpAnnouncer>()) {
    // The recorder where keys are grabbed; elsewhere what the desktop offers.
    m_shortcutRecorder = [this](QWidget* parent) {
        return new GlobalShortcutField(
            m_shortcuts,
            [this](QWidget* fieldParent) {
                return new ShortcutRecorder(m_shortcuts, ShortcutName::rewriteFocusedField(),
                                            menuItemLookup(), fieldParent);
            },
            parent);
    };
    MainWindowServices windowServices;
    windowServices.store = &m_services.presets();
    windowServices.keys = &m_services.keys();
    windowServices.settings = &m_services.settings();
    windowServices.settingsFile = m_services.settingsFile();
    windowServices.keyFile = m_services.keyFile();
    windowServices.loadModels = PresetEditorModel::hubModelLoader(m_services.hub());
    windowServices.runTestTransform = PresetEditorModel::hubTestTransform(m_services.hub());
    ProviderHub& hub = m_services.hub();
    windowServices.onDeviceUnavailable = [&hub] {
        Preset onDevice;
        onDevice.providerID = Preset::onDeviceProviderID();
        return hub.unavailableReason(onDevice);
    };
    windowServices.settingsPage = [this](QWidget* parent) { return makeSettingsView(parent); };
    m_mainWindow = std::make_unique<MainWindowController>(std::move(windowServices));
    // The main window is the one conventional window: while it is open Scrivel
    // is an ordinary app.
    connect(m_mainWindow.get(), &MainWindowController::windowShown, this, [this](QWidget* window) {
        if (!window->findChild<WindowSession*>(QString(), Qt::FindDirectChildrenOnly))
            new WindowSession(window, m_windows);
        m_windows.track(window);
    });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    QTimer::singleShot(0, this, &AppDelegate::launch);
}

void AppDelegate::launch() {
    // What loading found is taken before seeding, which may write the list.
    const std::optional<PresetStoreProblem> presetProblem = m_services.presets().loadProblem();
    const bool onDeviceAvailable = m_services.onDeviceModel().availability().isAvailable();
    m_services.presets().seedIfEmpty(onDeviceAvailable);
    createFixPanel();
    connectSelection();
    createStatusItem();
    createStorageAlerts(presetProblem);
    // Linux has no update framework: this makes no controller even in a
    // build configured for updates.
    m_updater.startIfConfigured();
    showShortcutHint();
    connectRun();
    followChanges();
    prewarmActivePreset();
    showPanelAtFirstLaunch();
    Q_EMIT launched();
}

void AppDelegate::createFixPanel() {
    m_fixPanel = std::make_unique<FixPanelController>(
        m_services.presets(), m_services.coordinator(), m_clipboard, m_panelTraits);
    // "Open Presets…" after a failed run: on the preset that failed.
    connect(&m_fixPanel->model(), &FixPanelModel::presetsRequested, this,
            [this](const QUuid& presetID) { m_mainWindow->presentPreset(presetID); });
}

void AppDelegate::connectSelection() {
    m_selectionPreferences = std::make_unique<SelectionPreferences>(m_services.settings(),
                                                                    m_selectionDesktop != nullptr);
    m_selection = std::make_unique<SelectionHandoff>(m_selectionDesktop, *m_selectionPreferences,
                                                     m_fixPanel->model());
    FixPanelController* panel = m_fixPanel.get();
    connect(m_selection.get(), &SelectionHandoff::selectionTaken, panel,
            &FixPanelController::selectAllText);
    connect(m_selection.get(), &SelectionHandoff::handBackStarted, panel,
            &FixPanelController::beginHandBack);
    connect(m_selection.get(), &SelectionHandoff::handBackFinished, panel,
            &FixPanelController::endHandBack);
    connect(panel, &FixPanelController::panelHidden, m_selection.get(),
            &SelectionHandoff::panelDidClose);
}

void AppDelegate::createStatusItem() {
    m_statusItem = std::make_unique<StatusItemController>(m_services.coordinator(),
                                                          m_services.presets(), *m_announcer);
    StatusItemModel& tray = m_statusItem->model();
    ShortcutActionBinding::bind(m_statusItem->openPanelAction(), m_shortcuts,
                                ShortcutName::rewriteFocusedField());
    connect(&tray, &StatusItemModel::panelRequested, m_fixPanel.get(),
            [panel = m_fixPanel.get()] { panel->presentCentered(std::nullopt); });
    connect(&tray, &StatusItemModel::settingsRequested, this, [this] { openMainWindow(true); });
    connect(&tray, &StatusItemModel::shortcutEnabledChanged, this,
            &AppDelegate::setGlobalShortcutEnabled);
    // The tray's look and tooltip for scripts and tests: an XEmbed tray shows
    // its tooltip to no one else.
    m_statusItemExport = std::make_unique<DBusStatusItemExport>(tray);
}

void AppDelegate::setGlobalShortcutEnabled(bool enabled) {
    const QList<ShortcutName> names{ShortcutName::rewriteFocusedField()};
    if (enabled)
        m_shortcuts.enable(names);
    else
        m_shortcuts.disable(names);
}

void AppDelegate::createStorageAlerts(const std::optional<PresetStoreProblem>& presetProblem) {
    m_storageAlerts = std::make_unique<StorageAlerts>(m_services.settings());
    m_storageAlerts->watchSettings();
    if (!presetProblem)
        return;
    m_storageAlerts->holdPresetNotice(*presetProblem, m_statusItem->model());
    // The first window shown carries the alert. Over the panel, the alert
    // takes the focus and the panel steps aside as it does for any window;
    // it comes back once the alert is closed.
    QPointer<AppDelegate> self(this);
    connect(m_fixPanel.get(), &FixPanelController::panelShown, m_storageAlerts.get(), [self] {
        if (!self || !self->m_storageAlerts->hasPresetNotice())
            return;
        self->m_storageAlerts->showPresetNotice(nullptr, [self] {
            if (self && !self->m_fixPanel->isPanelVisible())
                self->m_fixPanel->presentCentered(std::nullopt);
        });
    });
    connect(m_mainWindow.get(), &MainWindowController::windowShown, m_storageAlerts.get(),
            [self](QWidget* window) {
                if (self)
                    self->m_storageAlerts->showPresetNotice(window);
            });
}

SettingsView* AppDelegate::makeSettingsView(QWidget* parent) {
    if (!m_loginItems)
        m_loginItems = std::make_unique<XdgAutostartLoginItemService>(
            QGuiApplication::desktopFileName().isEmpty() ? QStringLiteral("com.scrivel.app")
                                                         : QGuiApplication::desktopFileName());
    return new SettingsView(*m_loginItems, m_updater, m_shortcutRecorder,
                            m_selectionPreferences.get(), parent);
}

void AppDelegate::showShortcutHint() {
    // The panel's hint says how the shortcut reaches Scrivel now.
    const auto show = [this] {
        m_fixPanel->setShortcutHint(
            shortcutHintText(m_shortcuts.deliveryStatus(),
                             m_shortcuts.displayText(ShortcutName::rewriteFocusedField())));
    };
    show();
    connect(&m_shortcuts, &KeyboardShortcuts::shortcutChanged, this, show);
    connect(&m_shortcuts, &KeyboardShortcuts::deliveryStatusChanged, this, show);
}

// One run, from the shortcut to the tray:
//  1. The shortcut's release: HotKeyController::togglePanelRequested (queued,
//     so the hot-key handler returns at once) → togglePanel(), which shows
//     the panel at the pointer with the focused window's selection.
//  2. Return in the panel: PanelTextEditor::submitted → FixPanelModel::run
//     (FixPanelView), which calls RewriteCoordinator::rewrite and shows the
//     reply as it streams in.
//  3. A changed result: FixPanelModel copies it to the Clipboard it was
//     given (its success decides the panel's stage); SelectionHandoff may
//     paste it back into the window the user left (connectSelection()).
//  4. The run's states: RewriteCoordinator::operationStateChanged →
//     StatusItemModel::applyState, the tray's look and status line.
void AppDelegate::connectRun() {
    m_hotKey = std::make_unique<HotKeyController>(m_shortcuts);
    connect(m_hotKey.get(), &HotKeyController::togglePanelRequested, this,
            &AppDelegate::togglePanel);
    // The coordinator reports from inside a run; the tray shows each state on
    // the next turn of the event loop, in the order reported.
    connect(&m_services.coordinator(), &RewriteCoordinator::operationStateChanged,
            &m_statusItem->model(), &StatusItemModel::applyState, Qt::QueuedConnection);
}

// Changes made anywhere (the main window, an import, the panel's or the
// tray's preset choice) and the wake from sleep: the active preset is
// prepared again and the tray reads its readiness again. The tray follows
// the preset store itself; an API key is the key store's news.
void AppDelegate::followChanges() {
    connect(&m_services.presets(), &PresetStore::presetsChanged, this,
            &AppDelegate::prewarmActivePreset, Qt::QueuedConnection);
    connect(&m_services.wake(), &WakeObserver::didWake, this, &AppDelegate::prewarmActivePreset,
            Qt::QueuedConnection);
    connect(&m_services.keys(), &APIKeyStore::keyChanged, &m_statusItem->model(),
            &StatusItemModel::refreshReadiness);
}

ShortcutRecorderModel::MenuItemLookup AppDelegate::menuItemLookup() {
    return &ShortcutActionBinding::applicationMenuItemUsing;
}

void AppDelegate::prewarmActivePreset() {
    m_services.coordinator().prewarm(m_services.presets().activePreset());
}

void AppDelegate::showPanelAtFirstLaunch() {
    SettingsStore& settings = m_services.settings();
    if (settings.boolean(hasSeenPanelKey()).value_or(false))
        return;
    settings.setBoolean(hasSeenPanelKey(), true);
    m_fixPanel->presentCentered(tr("This sentense has a typo."));
}

void AppDelegate::togglePanel() {
    if (!m_fixPanel)
        return;
    if (m_fixPanel->isPanelVisible()) {
        m_fixPanel->toggle();
        return;
    }
    // Shown with the text selected in the window the user left, once it has
    // arrived (or without it after a moment), where the pointer was.
    const QPoint anchor = m_fixPanel->shortcutAnchor();
    FixPanelController* panel = m_fixPanel.get();
    m_selection->openPanel([panel, anchor] { panel->present(anchor); });
}

void AppDelegate::activate() {
    openMainWindow(false);
}

void AppDelegate::openMainWindow(bool selectSettings) {
    m_mainWindow->present(selectSettings);
}

} // namespace scrivel
