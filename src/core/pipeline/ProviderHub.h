#pragma once

#include "core/pipeline/OnDeviceProvider.h"
#include "core/providers/APIKeyProviding.h"
#include "core/providers/OpenAICompatibleProvider.h"
#include "core/providers/ProviderEndpoint.h"
#include "core/transform/PresetTransforming.h"

#include <QHash>
#include <QObject>
#include <chrono>
#include <functional>

namespace scrivel {

// Routes a preset to the on-device model or to the client of its endpoint,
// keeping one client per endpoint for the life of the hub.
class ProviderHub : public QObject, public PresetTransforming {
    Q_OBJECT

public:
    ProviderHub(OnDeviceModel& onDeviceModel, APIKeyProviding& keys, QObject* parent = nullptr);

    // Called on each new client (tests shorten time-outs with it).
    void setClientConfigurator(std::function<void(OpenAICompatibleProvider&)> configure) {
        m_configure = std::move(configure);
    }

    // The client of an endpoint, made on first use.
    OpenAICompatibleProvider& client(const ProviderEndpoint& endpoint);
    OnDeviceProvider& onDevice() { return m_onDevice; }
    int clientCount() const { return int(m_clients.size()); }

    void prewarm(const Preset& preset) override;
    Future<std::optional<UnavailableReason>> unavailableReason(const Preset& preset) override;
    TransformStream stream(const Preset& preset, const QString& text) override;

private:
    OnDeviceProvider m_onDevice;
    APIKeyProviding& m_keys;
    QHash<ProviderEndpoint, OpenAICompatibleProvider*> m_clients;
    std::function<void(OpenAICompatibleProvider&)> m_configure;
};

} // namespace scrivel
