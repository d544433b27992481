#include "CliServices.h"

#include "linux/BootClock.h"

#include <cstdio>

namespace scrivel::cli {

CliServices::CliServices() : m_secretService(APIKeyStore::service()) {
    // Said once, on the terminal: the damaged file is left for the user to
    // look at or move aside.
    m_fileStore.setDamageHandler([](const QString& path) {
        fprintf(stderr, "%s\n",
                qUtf8Printable(QStringLiteral("The private key file “%1” is damaged and can’t be "
                                              "read. It was left as it is; move it aside to store "
                                              "keys in a new one.")
                                   .arg(path)));
    });
    m_presets = std::make_unique<PresetStore>(m_settings);
    m_presets->seedIfEmpty(m_onDevice.availability().isAvailable());
    const bool fileOnly = qEnvironmentVariable("SCRIVEL_SECRET_STORE") == QLatin1String("file");
    m_keys = std::make_unique<APIKeyStore>(m_secretService, m_fileStore, [this, fileOnly] {
        return fileOnly ? Future<bool>::ready(false) : m_probe.isAvailable();
    });
    m_hub = std::make_unique<ProviderHub>(m_onDevice, *m_keys);
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_hub);
    // A run's time-out counts time asleep, and is checked again on wake.
    m_coordinator->setDeadlineClock(bootClock());
    QObject::connect(&m_sleep, &SleepWatcher::resumed, m_coordinator.get(),
                     &RewriteCoordinator::checkDeadlines);
}

} // namespace scrivel::cli
