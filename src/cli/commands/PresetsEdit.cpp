#include "cli/commands/Commands.h"

#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/Hints.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "core/providers/ProviderCatalog.h"
#include "core/support/UnicodeText.h"

namespace scrivel::cli::commands {

namespace {

using Terminal::write;

// Whether the model could be set; says why not. Only the on-device model
// runs without one.
bool setModel(Preset& preset, const QString& typed) {
    const QString model = trimmedWhitespaceAndNewlines(typed);
    if (model.isEmpty() && preset.providerID != Preset::onDeviceProviderID()) {
        write(stderr, CliText::tr("Give a model, such as one that 'scrivel-cli models %1' lists.")
                              .arg(preset.providerID) +
                          QLatin1Char('\n'));
        return false;
    }
    preset.model = model;
    return true;
}

// Whether the base URL could be set; says why not.
bool setBaseURL(Preset& preset, const QString& url) {
    if (preset.providerID != customProviderID()) {
        write(stderr,
              CliText::tr("Only presets of the custom provider have a base URL; \"%1\" uses %2.")
                      .arg(preset.displayName(), providerDisplayName(preset)) +
                  QLatin1Char('\n'));
        return false;
    }
    if (!resolveEndpoint(customProviderID(), url)) {
        write(stderr, Hints::baseURLProblem(url) + QStringLiteral("\n"));
        return false;
    }
    preset.customBaseURL = trimmedWhitespaceAndNewlines(url);
    return true;
}

} // namespace

int editPreset(Invocation& call) {
    PresetStore* const store = call.session.readPresets();
    if (!store)
        return otherFailure;
    const QString modelOption = QStringLiteral("model");
    const QString baseURLOption = QStringLiteral("base-url");
    const bool changesModel = call.options.isSet(modelOption);
    const bool changesURL = call.options.isSet(baseURLOption);
    if (call.words.size() != 1 || (!changesModel && !changesURL)) {
        write(stderr, usageLine(QStringLiteral(
                          "scrivel-cli presets edit NAME|ID [--model MODEL] [--base-url URL]")));
        return usageError;
    }
    auto preset = findPreset(*store, call.words[0]);
    if (!preset) {
        write(stderr, preset.error() + QStringLiteral("\n"));
        return usageError;
    }
    if ((changesModel && !setModel(*preset, call.options.value(modelOption))) ||
        (changesURL && !setBaseURL(*preset, call.options.value(baseURLOption))))
        return usageError;
    store->update(*preset);
    if (!call.session.saved(*store))
        return otherFailure;
    write(stdout, CliText::tr("Updated %1.").arg(preset->displayName()) + QLatin1Char('\n'));
    return success;
}

} // namespace scrivel::cli::commands
