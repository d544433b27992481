#include "linux/LinuxServices.h"

namespace scrivel {

LinuxServices::LinuxServices() : m_secretService(APIKeyStore::service()) {
    m_presets = std::make_unique<PresetStore>(m_settings);
    const bool fileOnly = qEnvironmentVariable("SCRIVEL_SECRET_STORE") == QLatin1String("file");
    m_keys = std::make_unique<APIKeyStore>(m_secretService, m_fileStore, [this, fileOnly] {
        return fileOnly ? Future<bool>::ready(false) : m_probe.isAvailable();
    });
    m_hub = std::make_unique<ProviderHub>(m_onDevice, *m_keys);
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_hub);
}

} // namespace scrivel
