#pragma once

#include "core/pipeline/ProviderHub.h"
#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"
#include "core/providers/APIKeyStore.h"
#include "core/storage/ReportingSettingsStore.h"
#include "platform/linux/FileSecretStore.h"
#include "platform/linux/LogindWakeObserver.h"
#include "platform/linux/QSettingsStore.h"
#include "platform/linux/SecretServiceProbe.h"
#include "platform/linux/SecretServiceStore.h"
#include "platform/linux/UnavailableOnDeviceModel.h"

#include <functional>
#include <memory>

namespace scrivel {

// The long-lived services on Linux, shared by the desktop app and the CLI:
// the user's settings, the Secret Service (or the private file store where
// none runs; SCRIVEL_SECRET_STORE=file forces it), the provider hub, the
// rewrite coordinator and the wake from sleep. Seeding the preset store is left to the caller,
// which decides when in its start-up that happens.
class LinuxServices {
public:
    LinuxServices();

    // The settings file, reporting its read and write failures.
    ReportingSettingsStore& settings() { return m_settings; }
    OnDeviceModel& onDeviceModel() { return m_onDevice; }
    PresetStore& presets() { return *m_presets; }
    APIKeyStore& keys() { return *m_keys; }
    ProviderHub& hub() { return *m_hub; }
    RewriteCoordinator& coordinator() { return *m_coordinator; }
    // Where settings and presets are kept, and the private key file used
    // where no Secret Service runs.
    QString settingsFile() const { return m_settingsFile.fileName(); }
    QString keyFile() const { return m_fileStore.filePath(); }
    // The machine woke from sleep (systemd-logind); the coordinator checks
    // its runs' deadlines then.
    WakeObserver& wake() { return m_wake; }

    // Told once, with the file's path, when the private key file is found
    // damaged (by default a warning in the log).
    void setKeyFileDamageHandler(std::function<void(const QString& path)> handler);

private:
    QSettingsStore m_settingsFile;
    ReportingSettingsStore m_settings{m_settingsFile};
    SecretServiceStore m_secretService;
    FileSecretStore m_fileStore;
    SecretServiceProbe m_probe;
    UnavailableOnDeviceModel m_onDevice;
    std::unique_ptr<PresetStore> m_presets;
    std::unique_ptr<APIKeyStore> m_keys;
    std::unique_ptr<ProviderHub> m_hub;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    LogindWakeObserver m_wake;
};

} // namespace scrivel
