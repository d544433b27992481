#include "CliApplication.h"

#include "CliServices.h"
#include "ClipboardHolder.h"
#include "ExitCode.h"
#include "Terminal.h"
#include "pipeline/OutputCleaning.h"
#include "presets/PresetTransfer.h"
#include "presets/ShippedPacks.h"
#include "providers/ProviderCatalog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>

namespace scrivel::cli {

namespace {

using Terminal::write;

const char* overview =
    "Usage: scrivel-cli <command> [options]\n"
    "\n"
    "Rewrites text with the presets, keys and providers of Scrivel.\n"
    "\n"
    "Commands:\n"
    "  rewrite [--preset NAME|ID] [--copy] [FILE]   rewrite FILE or standard input\n"
    "  presets                                      list the presets (* marks the active one)\n"
    "  presets use NAME|ID                          make a preset active\n"
    "  presets export [NAME|ID...] FILE             export presets as a pack\n"
    "  presets import FILE                          import a pack\n"
    "  presets packs                                list the packs that ship with Scrivel\n"
    "  presets add-pack NAME                        add a shipped pack's presets as copies\n"
    "  key set|delete|status PROVIDER [--base-url URL]\n"
    "                                               manage an API key (set reads it from stdin)\n"
    "  models PROVIDER [--base-url URL]             list a provider's chat models\n"
    "  status                                       the active preset's readiness\n"
    "\n"
    "Run 'scrivel-cli <command> --help' for a command's options.\n"
    "\n"
    "Exit codes: 0 success, 1 other failure, 2 usage error, 3 preset not runnable,\n"
    "4 provider failure, 130 cancelled.\n";

// Waits for a future on a local event loop. Nothing when interrupted.
template <typename T>
std::optional<T> await(Future<T>& future, bool* interrupted = nullptr) {
    std::optional<T> value;
    QEventLoop loop;
    QObject context;
    future.then(&context, [&](T delivered) {
        value = std::move(delivered);
        loop.quit();
    });
    Terminal::onInterrupt([&] {
        if (interrupted)
            *interrupted = true;
        loop.quit();
    });
    if (!value)
        loop.exec();
    return value;
}

template <typename T>
std::optional<T> await(Future<T>&& future) {
    Future<T> held = std::move(future);
    return await(held);
}

// A parser with the shared options and the command's own help.
struct CommandParser {
    QCommandLineParser parser;
    QString usage;

    CommandParser(const QString& name, const QString& description, const QString& syntax)
        : usage(QStringLiteral("Usage: scrivel-cli %1 [options] %2").arg(name, syntax).trimmed()) {
        parser.setApplicationDescription(description);
        parser.addHelpOption();
        parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    }

    // Parses; on an error prints it and returns the exit code to use.
    std::optional<int> parse(const QStringList& arguments) {
        if (!parser.parse(arguments)) {
            write(stderr, parser.errorText() + QStringLiteral("\n") + usage + QStringLiteral("\n"));
            return usageError;
        }
        if (parser.isSet(QStringLiteral("help"))) {
            // Qt's first line names the binary's full path; ours names the command.
            QString help = parser.helpText();
            help = usage + help.mid(help.indexOf(QLatin1Char('\n')));
            write(stdout, help);
            return success;
        }
        return std::nullopt;
    }
};

// A preset by identifier, exact name, or a name that matches one preset
// ignoring case.
std::optional<Preset> findPreset(const PresetStore& store, const QString& nameOrID) {
    if (const auto id = Preset::parseID(nameOrID); id)
        return store.preset(*id);
    for (const Preset& preset : store.presets()) {
        if (preset.name == nameOrID)
            return preset;
    }
    std::optional<Preset> match;
    for (const Preset& preset : store.presets()) {
        if (preset.name.compare(nameOrID, Qt::CaseInsensitive) == 0) {
            if (match)
                return std::nullopt;
            match = preset;
        }
    }
    return match;
}

int exitCodeFor(const RewriteError& error) {
    switch (error.kind()) {
    case RewriteError::Kind::modelUnavailable:
        return presetNotRunnable;
    case RewriteError::Kind::emptyInput:
        return usageError;
    case RewriteError::Kind::cancelled:
        return cancelled;
    default:
        return providerFailure;
    }
}

int exitCodeFor(const ProviderConnectionFailure& failure) {
    switch (failure.kind()) {
    case ProviderConnectionFailure::Kind::missingCredential:
    case ProviderConnectionFailure::Kind::invalidEndpoint:
    case ProviderConnectionFailure::Kind::unauthorized:
    case ProviderConnectionFailure::Kind::forbidden:
        return presetNotRunnable;
    case ProviderConnectionFailure::Kind::keychain:
        return otherFailure;
    default:
        return providerFailure;
    }
}

// The endpoint named on a key or models command line.
std::optional<ProviderEndpoint> endpointFromArguments(const QString& provider,
                                                      const QString& baseURL) {
    if (provider == customProviderID())
        return resolveEndpoint(provider, baseURL.isEmpty() ? std::nullopt : std::optional(baseURL));
    return catalogEndpoint(provider);
}

// --base-url, shared by the commands that name a provider.
QCommandLineOption baseURLOption() {
    return QCommandLineOption(QStringLiteral("base-url"),
                              QStringLiteral("The base URL of a custom provider."),
                              QStringLiteral("URL"));
}

QString providerList() {
    QStringList ids;
    for (const ProviderEndpoint& endpoint : catalogEndpoints())
        ids << endpoint.id;
    ids << customProviderID();
    return ids.join(QStringLiteral(", "));
}

// The pack dialogs of the desktop app, answered from the command line.
class CommandLineTransferUI : public PresetTransferUI {
public:
    QString path;
    bool failed = false;

    std::optional<QString> chooseImportFile() override { return path; }
    std::optional<QString> chooseExportFile(const QString&) override { return path; }
    void showFailure(const QString& title, const QString& message) override {
        failed = true;
        write(stderr, title + QStringLiteral(": ") + message + QStringLiteral("\n"));
    }
};

} // namespace

CliServices& CliApplication::services() {
    if (!m_services)
        m_services = new CliServices; // lives for the process
    return *m_services;
}

int CliApplication::run(const QStringList& arguments) {
    const QString command = arguments.value(1);
    const QStringList rest = QStringList{arguments.value(0)} + arguments.mid(2);
    if (command == QLatin1String("--version") || command == QLatin1String("-v")) {
        write(stdout,
              QStringLiteral("scrivel-cli %1\n").arg(QCoreApplication::applicationVersion()));
        return success;
    }
    if (command.isEmpty() || command == QLatin1String("--help") || command == QLatin1String("-h") ||
        command == QLatin1String("help")) {
        write(command.isEmpty() ? stderr : stdout, QString::fromUtf8(overview));
        return command.isEmpty() ? usageError : success;
    }
    if (command == QLatin1String("rewrite"))
        return rewrite(rest);
    if (command == QLatin1String("presets"))
        return presets(rest);
    if (command == QLatin1String("key"))
        return key(rest);
    if (command == QLatin1String("models"))
        return models(rest);
    if (command == QLatin1String("status"))
        return status(rest);
    write(stderr,
          QStringLiteral("Unknown command \"%1\".\n\n").arg(command) + QString::fromUtf8(overview));
    return usageError;
}

int CliApplication::rewrite(const QStringList& arguments) {
    CommandParser command(
        QStringLiteral("rewrite"),
        QStringLiteral("Rewrites FILE (or standard input) with a preset and writes the result to "
                       "standard output. On a terminal the reply streams in on standard error."),
        QStringLiteral("[FILE]"));
    const QCommandLineOption presetOption(QStringLiteral("preset"),
                                          QStringLiteral("The preset to use (default: the active "
                                                         "one)."),
                                          QStringLiteral("NAME|ID"));
    const QCommandLineOption copyOption(QStringLiteral("copy"),
                                        QStringLiteral("Also copy the result to the clipboard."));
    command.parser.addOption(presetOption);
    command.parser.addOption(copyOption);
    if (const auto code = command.parse(arguments))
        return *code;
    const QStringList files = command.parser.positionalArguments();
    if (files.size() > 1) {
        write(stderr, QStringLiteral("rewrite takes at most one FILE.\n"));
        return usageError;
    }

    const auto bytes = Terminal::readAll(files.value(0));
    if (!bytes) {
        write(stderr, QStringLiteral("Couldn’t read %1.\n")
                          .arg(files.value(0, QStringLiteral("standard input"))));
        return otherFailure;
    }
    const QString input = QString::fromUtf8(*bytes);

    PresetStore& store = services().presets();
    std::optional<Preset> preset = command.parser.isSet(presetOption)
                                       ? findPreset(store, command.parser.value(presetOption))
                                       : store.activePreset();
    if (!preset) {
        write(stderr, command.parser.isSet(presetOption)
                          ? QStringLiteral("No preset \"%1\". See 'scrivel-cli presets'.\n")
                                .arg(command.parser.value(presetOption))
                          : QStringLiteral("There are no presets.\n"));
        return usageError;
    }

    // The reply streams to standard error on a terminal: print what is new.
    const bool showStream = Terminal::isTerminal(stderr);
    qsizetype shown = 0;
    auto onPartial = [&](const TextSnapshot& text) {
        if (!showStream)
            return;
        write(stderr, text.view().mid(shown).toString());
        shown = text.size();
    };
    Future<RewriteCoordinator::Result> run =
        services().coordinator().rewrite(input, *preset, onPartial);
    bool interrupted = false;
    const auto result = await(run, &interrupted);
    if (showStream && shown > 0)
        write(stderr, QStringLiteral("\n"));
    if (interrupted || !result) {
        run.cancel(); // aborts the request; nothing is written
        write(stderr, QStringLiteral("Cancelled.\n"));
        return cancelled;
    }
    if (!*result) {
        const TransformFailure& failure = result->error();
        if (failure.kind() == TransformFailure::Kind::cancelled) {
            write(stderr, QStringLiteral("Cancelled.\n"));
            return cancelled;
        }
        const RewriteError error = failure.error().value_or(
            RewriteError::modelFailed(QStringLiteral("Couldn’t transform this text. Try again.")));
        write(stderr, error.panelMessage() + QStringLiteral("\n"));
        return exitCodeFor(error);
    }

    if ((*result)->kind() == FixResult::Kind::alreadyClean) {
        write(stdout, input);
        write(stderr, QStringLiteral("No change needed.\n"));
        return success;
    }
    const QString text = (*result)->text();
    write(stdout, text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n'));
    if (command.parser.isSet(copyOption)) {
        if (!ClipboardHolder::copyInBackground(text)) {
            write(stderr,
                  QStringLiteral("Couldn’t copy the result. Select and copy it manually.\n"));
            return otherFailure;
        }
        write(stderr, QStringLiteral("Copied.\n"));
    }
    return success;
}

int CliApplication::presets(const QStringList& arguments) {
    CommandParser command(QStringLiteral("presets"),
                          QStringLiteral("Lists and manages presets and packs."),
                          QStringLiteral("[use NAME|ID | export [NAME|ID...] FILE | import FILE "
                                         "| packs | add-pack NAME]"));
    if (const auto code = command.parse(arguments))
        return *code;
    const QStringList words = command.parser.positionalArguments();
    const QString action = words.value(0);
    PresetStore& store = services().presets();

    if (action.isEmpty()) {
        const auto active = store.activePreset();
        for (const Preset& preset : store.presets()) {
            const bool isActive = active && active->id == preset.id;
            QString provider = providerDisplayName(preset);
            if (!preset.model.isEmpty())
                provider += QStringLiteral(" \u00B7 ") + preset.model;
            write(stdout, QStringLiteral("%1 %2\t%3\t%4\n")
                              .arg(isActive ? QStringLiteral("*") : QStringLiteral(" "),
                                   preset.name, provider, Preset::idText(preset.id)));
        }
        return success;
    }
    if (action == QLatin1String("use")) {
        if (words.size() != 2) {
            write(stderr, QStringLiteral("Usage: scrivel-cli presets use NAME|ID\n"));
            return usageError;
        }
        const auto preset = findPreset(store, words[1]);
        if (!preset) {
            write(stderr, QStringLiteral("No preset \"%1\".\n").arg(words[1]));
            return usageError;
        }
        store.activate(preset->id);
        write(stdout, QStringLiteral("Active preset: %1\n").arg(preset->name));
        return success;
    }
    if (action == QLatin1String("export")) {
        if (words.size() < 2) {
            write(stderr, QStringLiteral("Usage: scrivel-cli presets export [NAME|ID...] FILE\n"));
            return usageError;
        }
        CommandLineTransferUI ui;
        ui.path = words.last();
        bool written;
        if (words.size() == 2) {
            written = PresetTransfer::exportAll(store, ui);
        } else {
            QSet<QUuid> ids;
            for (const QString& name : words.mid(1, words.size() - 2)) {
                const auto preset = findPreset(store, name);
                if (!preset) {
                    write(stderr, QStringLiteral("No preset \"%1\".\n").arg(name));
                    return usageError;
                }
                ids.insert(preset->id);
            }
            written = PresetTransfer::exportSelection(store, ids, ui);
        }
        if (!written)
            return otherFailure;
        write(stderr, QStringLiteral("Exported to %1\n").arg(ui.path));
        return success;
    }
    if (action == QLatin1String("import")) {
        if (words.size() != 2) {
            write(stderr, QStringLiteral("Usage: scrivel-cli presets import FILE\n"));
            return usageError;
        }
        const auto document = PresetTransfer::readPack(words[1]);
        if (!document) {
            write(stderr, PresetTransfer::failureTitle() + QStringLiteral(": ") +
                              PresetTransfer::message(document.error()) + QStringLiteral("\n"));
            return otherFailure;
        }
        const auto imported = store.importPack(*document, false);
        if (!imported) {
            write(stderr, PresetTransfer::failureTitle() + QStringLiteral(": ") +
                              imported.error().message() + QStringLiteral("\n"));
            return otherFailure;
        }
        PresetTransferNotifier::instance().postDidImport(imported->affectedIDs);
        write(stdout, QStringLiteral("Imported %1 presets: %2 added, %3 replaced.\n")
                          .arg(imported->added + imported->replaced)
                          .arg(imported->added)
                          .arg(imported->replaced));
        return success;
    }
    if (action == QLatin1String("packs")) {
        for (const PresetPackDocument& pack : shippedPacks()) {
            QString line = pack.name.value_or(QStringLiteral("Untitled Pack")) +
                           QStringLiteral("\t%1 presets").arg(pack.presets.size());
            if (pack.description && !pack.description->isEmpty())
                line += QStringLiteral(". ") + *pack.description;
            write(stdout, line + QStringLiteral("\n"));
        }
        return success;
    }
    if (action == QLatin1String("add-pack")) {
        if (words.size() != 2) {
            write(stderr, QStringLiteral("Usage: scrivel-cli presets add-pack NAME\n"));
            return usageError;
        }
        for (const PresetPackDocument& pack : shippedPacks()) {
            if (pack.name.value_or(QString()).compare(words[1], Qt::CaseInsensitive) != 0)
                continue;
            CommandLineTransferUI ui;
            PresetTransfer::addShippedPack(store, pack, ui);
            if (ui.failed)
                return otherFailure;
            write(stdout, QStringLiteral("Added %1 presets from %2.\n")
                              .arg(pack.presets.size())
                              .arg(*pack.name));
            return success;
        }
        write(stderr, QStringLiteral("No shipped pack \"%1\". See 'scrivel-cli presets packs'.\n")
                          .arg(words[1]));
        return usageError;
    }
    write(stderr, QStringLiteral("Unknown presets action \"%1\".\n").arg(action));
    return usageError;
}

int CliApplication::key(const QStringList& arguments) {
    CommandParser command(
        QStringLiteral("key"),
        QStringLiteral("Saves, deletes or checks the API key of a provider. 'key set' reads the "
                       "key from standard input (without echo on a terminal); keys are never "
                       "printed. Providers: %1.")
            .arg(providerList()),
        QStringLiteral("set|delete|status PROVIDER"));
    const QCommandLineOption baseURL = baseURLOption();
    command.parser.addOption(baseURL);
    if (const auto code = command.parse(arguments))
        return *code;
    const QStringList words = command.parser.positionalArguments();
    if (words.size() != 2) {
        write(stderr, QStringLiteral("Usage: scrivel-cli key set|delete|status PROVIDER "
                                     "[--base-url URL]\n"));
        return usageError;
    }
    const auto endpoint = endpointFromArguments(words[1], command.parser.value(baseURL));
    if (!endpoint) {
        write(stderr, words[1] == customProviderID()
                          ? QStringLiteral("Give a valid --base-url for the custom provider.\n")
                          : QStringLiteral("Unknown provider \"%1\". Providers: %2.\n")
                                .arg(words[1], providerList()));
        return usageError;
    }
    const QString account = credentialAccount(*endpoint);
    APIKeyStore& keys = services().keys();
    const QString keychainMessage =
        ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain).message();
    // A key-store failure is worded once, as the editor words it.
    const auto succeeded = [&](const std::optional<APIKeyProviding::VoidResult>& result) {
        if (result && *result)
            return true;
        write(stderr,
              (result ? result->error().saveMessage() : keychainMessage) + QStringLiteral("\n"));
        return false;
    };

    if (words[0] == QLatin1String("set")) {
        const auto typed =
            Terminal::readSecretLine(QStringLiteral("API key for %1: ").arg(endpoint->displayName));
        if (!typed || trimmedWhitespaceAndNewlines(*typed).isEmpty()) {
            write(stderr, QStringLiteral("No key given; nothing was saved.\n"));
            return usageError;
        }
        if (!succeeded(await(keys.saveKey(*typed, account))))
            return otherFailure;
        write(stdout, QStringLiteral("Saved the key for %1.\n").arg(endpoint->displayName));
        return success;
    }
    if (words[0] == QLatin1String("delete")) {
        if (!succeeded(await(keys.deleteKey(account))))
            return otherFailure;
        write(stdout, QStringLiteral("Deleted the key for %1.\n").arg(endpoint->displayName));
        return success;
    }
    if (words[0] == QLatin1String("status")) {
        const auto stored = await(keys.readKey(account));
        if (!stored || !*stored) {
            write(stderr, keychainMessage + QStringLiteral("\n"));
            return otherFailure;
        }
        write(stdout, QStringLiteral("%1: %2\n")
                          .arg(endpoint->displayName, **stored ? QStringLiteral("key stored")
                                                               : QStringLiteral("no key stored")));
        return success;
    }
    write(stderr, QStringLiteral("Unknown key action \"%1\".\n").arg(words[0]));
    return usageError;
}

int CliApplication::models(const QStringList& arguments) {
    CommandParser command(
        QStringLiteral("models"),
        QStringLiteral("Lists a provider's chat models, sorted, using the stored key. "
                       "Providers: %1.")
            .arg(providerList()),
        QStringLiteral("PROVIDER"));
    const QCommandLineOption baseURL = baseURLOption();
    command.parser.addOption(baseURL);
    if (const auto code = command.parse(arguments))
        return *code;
    const QStringList words = command.parser.positionalArguments();
    if (words.size() != 1) {
        write(stderr, QStringLiteral("Usage: scrivel-cli models PROVIDER [--base-url URL]\n"));
        return usageError;
    }
    const auto endpoint = endpointFromArguments(words[0], command.parser.value(baseURL));
    if (!endpoint) {
        write(stderr, QStringLiteral("Unknown provider or invalid base URL. Providers: %1.\n")
                          .arg(providerList()));
        return usageError;
    }
    Future<OpenAICompatibleProvider::ModelsResult> fetch =
        services().hub().client(*endpoint).fetchModels(EndpointCredential::stored());
    bool interrupted = false;
    const auto result = await(fetch, &interrupted);
    if (interrupted || !result) {
        fetch.cancel();
        return cancelled;
    }
    if (!*result) {
        write(stderr, result->error().message() + QStringLiteral("\n"));
        return exitCodeFor(result->error());
    }
    for (const QString& model : **result)
        write(stdout, model + QStringLiteral("\n"));
    return success;
}

int CliApplication::status(const QStringList& arguments) {
    CommandParser command(QStringLiteral("status"),
                          QStringLiteral("Shows whether the active preset can run."), QString());
    if (const auto code = command.parse(arguments))
        return *code;
    const auto line =
        await(services().coordinator().readinessLine(services().presets().activePreset()));
    write(stdout, line.value_or(QString()) + QStringLiteral("\n"));
    return success;
}

} // namespace scrivel::cli
