#include "AppDelegate.h"

#include "app/Clipboard.h"
#include "app/ShortcutActionBinding.h"
#include "app/WakeObserver.h"
#include "linux/LinuxServices.h"

#include <QPointer>
#include <QTimer>

namespace scrivel {

AppDelegate::AppDelegate(LinuxServices& services, Clipboard& clipboard, WakeObserver* wakeObserver,
                         HotKeyService& hotKeys, PanelWindowTraits panelTraits, QObject* parent)
    : QObject(parent), m_services(services), m_clipboard(clipboard), m_wakeObserver(wakeObserver),
      m_panelTraits(std::move(panelTraits)), m_shortcuts(services.settings(), hotKeys) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    QTimer::singleShot(0, this, &AppDelegate::launch);
}

void AppDelegate::launch() {
    const bool onDeviceAvailable = m_services.onDeviceModel().availability().isAvailable();
    m_services.presets().seedIfEmpty(onDeviceAvailable);
    createFixPanel();
    // Next in this order: the status item and the updater (when configured).
    attachGlobalShortcut();
    observeWake();
    prewarmActivePreset();
    showPanelAtFirstLaunch();
    Q_EMIT launched();
}

void AppDelegate::createFixPanel() {
    QPointer<AppDelegate> self(this);
    auto openPresets = [self] {
        if (self)
            self->openMainWindow(false);
    };
    Clipboard& clipboard = m_clipboard;
    auto copyResult = [&clipboard](const QString& text) {
        return copyToClipboard(clipboard, text);
    };
    m_fixPanel = std::make_unique<FixPanelController>(
        m_services.presets(), m_services.coordinator(), openPresets, copyResult, m_panelTraits);
}

void AppDelegate::attachGlobalShortcut() {
    const ShortcutName& name = ShortcutName::rewriteFocusedField();
    KeyboardShortcuts& shortcuts = m_shortcuts;
    m_fixPanel->setShortcutText([&shortcuts, name] { return shortcuts.displayText(name); });
    connect(&m_shortcuts, &KeyboardShortcuts::shortcutChanged, m_fixPanel.get(),
            &FixPanelController::refreshShortcutHint);
    // The controller queues the toggle, so the hot-key handler returns at once.
    QPointer<AppDelegate> self(this);
    m_hotKey = std::make_unique<HotKeyController>(m_shortcuts, [self] {
        if (self)
            self->togglePanel();
    });
}

ShortcutRecorderModel::MenuItemLookup AppDelegate::menuItemLookup() {
    return &ShortcutActionBinding::applicationMenuItemUsing;
}

void AppDelegate::observeWake() {
    if (!m_wakeObserver)
        return;
    connect(m_wakeObserver, &WakeObserver::didWake, this, &AppDelegate::prewarmActivePreset,
            Qt::QueuedConnection);
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
    if (m_fixPanel)
        m_fixPanel->toggle();
}

void AppDelegate::activate() {
    openMainWindow(false);
}

void AppDelegate::openMainWindow(bool selectSettings) {
    if (m_openMainWindow) {
        m_openMainWindow(selectSettings);
        return;
    }
    if (m_fixPanel)
        m_fixPanel->presentCentered(std::nullopt);
}

} // namespace scrivel
