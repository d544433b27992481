#include "cli/Hints.h"

#include "cli/PresetLookup.h"
#include "core/pipeline/OutputCleaning.h"
#include "core/providers/ProviderCatalog.h"
#include "core/storage/KeyStorePlace.h"

#include <QCoreApplication>
#include <QUrl>

namespace scrivel::cli::Hints {

namespace {

// The hints' texts, translated under one context.
struct HintText {
    Q_DECLARE_TR_FUNCTIONS(Hints)
};

QString keyStoreHint() {
    if (currentKeyStorePlace() == KeyStorePlace::privateKeyFile)
        return HintText::tr("Check that Scrivel’s key file can be read and written; move a damaged "
                            "one aside to start a new one.");
    return HintText::tr(
        "Check that a Secret Service (such as GNOME Keyring) is running and unlocked, "
        "or keep keys in a private file: SCRIVEL_SECRET_STORE=file scrivel-cli …");
}

QString editCommand(const Preset& preset, const QString& option) {
    // A blank name cannot be typed back; the id always finds the preset.
    const QString which =
        preset.name.trimmed().isEmpty() ? Preset::idText(preset.id) : shellQuoted(preset.name);
    return QStringLiteral("scrivel-cli presets edit %1 %2").arg(which, option);
}

} // namespace

QString keySetCommand(const ProviderEndpoint& endpoint) {
    QString command = QStringLiteral("scrivel-cli key set ") + endpoint.id;
    if (endpoint.id == customProviderID())
        command += QStringLiteral(" --base-url ") + shellQuoted(endpoint.baseURL.toString());
    return command;
}

QString forReason(const UnavailableReason& reason, const std::optional<Preset>& preset) {
    switch (reason.kind()) {
    case UnavailableReason::Kind::missingAPIKey:
    case UnavailableReason::Kind::rejectedAPIKey:
        if (preset) {
            if (const auto endpoint = resolveEndpoint(preset->providerID, preset->customBaseURL))
                return HintText::tr("Save a key with: %1").arg(keySetCommand(*endpoint));
        }
        return {};
    case UnavailableReason::Kind::keychainError:
        return keyStoreHint();
    case UnavailableReason::Kind::misconfigured: {
        if (!preset) {
            return HintText::tr("Add presets with: scrivel-cli presets add-pack NAME (see "
                                "'scrivel-cli presets packs')");
        }
        if (preset->providerID == customProviderID() &&
            !resolveEndpoint(preset->providerID, preset->customBaseURL)) {
            return baseURLProblem(preset->customBaseURL.value_or(QString())) + QLatin1Char('\n') +
                   HintText::tr("Set it with: %1")
                       .arg(editCommand(*preset, QStringLiteral("--base-url URL")));
        }
        QString models = QStringLiteral("scrivel-cli models ") + preset->providerID;
        if (preset->providerID == customProviderID())
            models += QStringLiteral(" --base-url ") +
                      shellQuoted(preset->customBaseURL.value_or(QString()).trimmed());
        return HintText::tr("List the models with: %1\nChoose one with: %2")
            .arg(models, editCommand(*preset, QStringLiteral("--model MODEL")));
    }
    case UnavailableReason::Kind::modelNotReady:
    case UnavailableReason::Kind::other:
        return HintText::tr("Pick a preset that uses a provider: scrivel-cli presets use NAME");
    }
    return {};
}

QString forFailure(const ProviderConnectionFailure& failure, const ProviderEndpoint& endpoint) {
    switch (failure.kind()) {
    case ProviderConnectionFailure::Kind::missingCredential:
    case ProviderConnectionFailure::Kind::unauthorized:
    case ProviderConnectionFailure::Kind::forbidden:
        return HintText::tr("Save a key with: %1").arg(keySetCommand(endpoint));
    case ProviderConnectionFailure::Kind::keychain:
        return keyStoreHint();
    default:
        return {};
    }
}

QString baseURLProblem(const QString& baseURL) {
    const QString text = trimmedWhitespaceAndNewlines(baseURL);
    if (text.isEmpty())
        return HintText::tr(
            "A custom provider needs a base URL, such as http://localhost:11434/v1.");
    const QUrl url(text, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (url.isValid() &&
        (url.authority().contains(QLatin1Char('@')) || url.hasQuery() || url.hasFragment()))
        return HintText::tr("A base URL can’t hold a user name, password, query or fragment.");
    if (url.isValid() && scheme == QLatin1String("http"))
        return HintText::tr("Plain http is allowed only for servers on this computer (localhost or "
                            "127.0.0.1); use https for \"%1\".")
            .arg(text);
    return HintText::tr("\"%1\" is not a valid provider base URL: use https://host/path, or "
                        "http://localhost:PORT/path for a local server.")
        .arg(text);
}

} // namespace scrivel::cli::Hints
