#include "core/pipeline/ProviderHub.h"

#include "core/providers/ProviderCatalog.h"

#include <QCoreApplication>
#include <QPointer>

namespace scrivel {

namespace {

using Reason = std::optional<UnavailableReason>;

bool isOnDevice(const Preset& preset) {
    return preset.providerID == Preset::onDeviceProviderID();
}

UnavailableReason noBaseURL() {
    return UnavailableReason::misconfigured(
        QCoreApplication::translate("ProviderHub", "Set a custom Base URL in Presets"));
}

UnavailableReason noModel() {
    return UnavailableReason::misconfigured(
        QCoreApplication::translate("ProviderHub", "Choose a model in Presets"));
}

// Spaces and tabs, not line breaks.
bool isBlankModel(const QString& model) {
    for (const QChar c : model) {
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t'))
            return false;
    }
    return true;
}

} // namespace

ProviderHub::ProviderHub(OnDeviceModel& onDeviceModel, APIKeyProviding& keys, QObject* parent)
    : QObject(parent), m_onDevice(onDeviceModel), m_keys(keys) {}

OpenAICompatibleProvider& ProviderHub::client(const ProviderEndpoint& endpoint) {
    if (auto* existing = m_clients.value(endpoint))
        return *existing;
    auto* made = new OpenAICompatibleProvider(endpoint, m_keys, std::chrono::seconds(120), this);
    if (m_configure)
        m_configure(*made);
    m_clients.insert(endpoint, made);
    return *made;
}

void ProviderHub::prewarm(const Preset& preset) {
    if (isOnDevice(preset))
        m_onDevice.prewarm(preset.instructions);
}

Future<Reason> ProviderHub::unavailableReason(const Preset& preset) {
    if (isOnDevice(preset)) {
        const auto availability = m_onDevice.availability();
        if (availability.isAvailable())
            return Future<Reason>::ready(std::nullopt);
        return Future<Reason>::ready(
            UnavailableReason::modelNotReady(OnDeviceProvider::availabilityMessage(availability)));
    }
    const auto endpoint = resolveEndpoint(preset.providerID, preset.customBaseURL);
    if (!endpoint)
        return Future<Reason>::ready(noBaseURL());
    if (isBlankModel(preset.model))
        return Future<Reason>::ready(noModel());
    const auto policy = endpoint->authenticationPolicy;
    return mapFuture(client(*endpoint).storedAPIKey(), this,
                     [policy](OpenAICompatibleProvider::KeyResult key) -> Reason {
                         if (!key)
                             return UnavailableReason::keychainError();
                         if (*key || policy == EndpointAuthenticationPolicy::optional)
                             return std::nullopt;
                         return UnavailableReason::missingAPIKey();
                     });
}

TransformStream ProviderHub::stream(const Preset& preset, const QString& text) {
    TransformStreamWriter writer;
    TransformStream stream = writer.stream();

    if (isOnDevice(preset)) {
        // The device answers once: its whole reply is the one completed event.
        auto result = std::make_shared<Future<OnDeviceProvider::Result>>(
            m_onDevice.transform(text, preset.instructions));
        writer.onCancel([result] { result->cancel(); });
        result->then(this, [writer, result](OnDeviceProvider::Result value) {
            if (!value) {
                writer.fail(value.error());
                return;
            }
            writer.push(TransformStreamEvent::completed(*value));
            writer.finish();
        });
        return stream;
    }

    const auto endpoint = resolveEndpoint(preset.providerID, preset.customBaseURL);
    if (!endpoint) {
        writer.fail(TransformFailure::rewrite(RewriteError::modelUnavailable(noBaseURL())));
        return stream;
    }
    // A request without a model would only come back as the provider's own
    // error (or, from some servers, a reply of their default model).
    if (isBlankModel(preset.model)) {
        writer.fail(TransformFailure::rewrite(RewriteError::modelUnavailable(noModel())));
        return stream;
    }
    CompletionInput input{preset.model, preset.instructions, text, preset.reasoningEffort,
                          preset.temperature};
    // Events pass through unchanged; dropping our stream drops the client's.
    auto inner = std::make_shared<TransformStream>(client(*endpoint).streamCompletion(input));
    writer.onCancel([inner] { inner->cancel(); });
    inner->subscribe(
        this, [writer](const TransformStreamEvent& event) { writer.push(event); },
        [writer, inner](std::optional<TransformFailure> failure) {
            if (failure)
                writer.fail(*failure);
            else
                writer.finish();
        });
    return stream;
}

} // namespace scrivel
