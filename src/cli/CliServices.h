#pragma once

#include "linux/FileSecretStore.h"
#include "linux/QSettingsStore.h"
#include "linux/SecretServiceProbe.h"
#include "linux/SecretServiceStore.h"
#include "linux/SleepWatcher.h"
#include "linux/UnavailableOnDeviceModel.h"
#include "pipeline/ProviderHub.h"
#include "pipeline/RewriteCoordinator.h"
#include "presets/PresetStore.h"
#include "providers/APIKeyStore.h"

#include <memory>

namespace scrivel::cli {

// The same services the desktop app uses, wired for a terminal: the user's
// settings, the Secret Service (or the private file store where none runs;
// SCRIVEL_SECRET_STORE=file forces it), and the provider hub.
class CliServices {
public:
    CliServices();

    PresetStore& presets() { return *m_presets; }
    APIKeyStore& keys() { return *m_keys; }
    ProviderHub& hub() { return *m_hub; }
    RewriteCoordinator& coordinator() { return *m_coordinator; }

private:
    QSettingsStore m_settings;
    SecretServiceStore m_secretService;
    FileSecretStore m_fileStore;
    SecretServiceProbe m_probe;
    UnavailableOnDeviceModel m_onDevice;
    std::unique_ptr<PresetStore> m_presets;
    std::unique_ptr<APIKeyStore> m_keys;
    std::unique_ptr<ProviderHub> m_hub;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    SleepWatcher m_sleep;
};

} // namespace scrivel::cli
