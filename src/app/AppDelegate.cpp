#include "AppDelegate.h"

#include "app/Clipboard.h"
#include "app/WakeObserver.h"
#include "linux/LinuxServices.h"

#include <QPointer>
#include <QTimer>

namespace scrivel {

AppDelegate::AppDelegate(LinuxServices& services, Clipboard& clipboard, WakeObserver* wakeObserver,
                         PanelWindowTraits panelTraits, QObject* parent)
    : QObject(parent), m_services(services), m_clipboard(clipboard), m_wakeObserver(wakeObserver),
      m_panelTraits(std::move(panelTraits)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    QTimer::singleShot(0, this, &AppDelegate::launch);
}

void AppDelegate::launch() {
    const bool onDeviceAvailable = m_services.onDeviceModel().availability().isAvailable();
    m_services.presets().seedIfEmpty(onDeviceAvailable);
    createFixPanel();
    // Next in this order: the status item, the updater (when configured) and
    // the global shortcut's key-up handler.
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
