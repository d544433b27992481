#include "platform/linux/LinuxServices.h"

#include "core/storage/KeyStorePlace.h"
#include "platform/linux/BootClock.h"

namespace scrivel {

LinuxServices::LinuxServices() : m_secretService(APIKeyStore::service()) {
    m_presets = std::make_unique<PresetStore>(m_settings);
    const bool fileOnly = qEnvironmentVariable("SCRIVEL_SECRET_STORE") == QLatin1String("file");
    m_keys = std::make_unique<APIKeyStore>(m_secretService, m_fileStore, [this, fileOnly] {
        Future<bool> available = fileOnly ? Future<bool>::ready(false) : m_probe.isAvailable();
        // Messages about a failed key access name the store in use.
        return mapFuture(std::move(available), &m_probe, [](bool keyring) {
            setCurrentKeyStorePlace(keyring ? KeyStorePlace::desktopKeyring
                                            : KeyStorePlace::privateKeyFile);
            return keyring;
        });
    });
    m_hub = std::make_unique<ProviderHub>(m_onDevice, *m_keys);
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_hub);
    // A run's time-out counts time asleep, and is checked again on wake.
    m_coordinator->setDeadlineClock(bootClock());
    QObject::connect(&m_wake, &WakeObserver::didWake, m_coordinator.get(),
                     &RewriteCoordinator::checkDeadlines);
}

void LinuxServices::setKeyFileDamageHandler(std::function<void(const QString& path)> handler) {
    m_fileStore.setDamageHandler(std::move(handler));
}

} // namespace scrivel
