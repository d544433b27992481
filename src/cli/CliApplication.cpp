#include "cli/CliApplication.h"

#include "cli/ClipboardHolder.h"
#include "cli/DraftDisplay.h"
#include "cli/ExitCode.h"
#include "cli/Hints.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "core/pipeline/OutputCleaning.h"
#include "core/presets/PresetTransfer.h"
#include "core/presets/ShippedPacks.h"
#include "core/providers/ProviderCatalog.h"
#include "platform/linux/LinuxServices.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
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
    "  presets edit NAME|ID [--model MODEL] [--base-url URL]\n"
    "                                               change a preset's model or base URL\n"
    "  presets export [NAME|ID...] FILE [--force]   export presets as a pack\n"
    "  presets import FILE                          import a pack\n"
    "  presets packs                                list the packs that ship with Scrivel\n"
    "  presets add-pack NAME                        add a shipped pack's presets as copies\n"
    "  key set|delete|status PROVIDER [--base-url URL]\n"
    "                                               manage an API key (set reads it from stdin)\n"
    "  models PROVIDER [--base-url URL]             list a provider's chat models\n"
    "  status                                       the active preset's readiness\n"
    "\n"
    "Run 'scrivel-cli help <command>' for a command's options.\n"
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
        // Qt's own help option would also list --help-all, which shows Qt's
        // internal options.
        parser.addOption(QCommandLineOption({QStringLiteral("h"), QStringLiteral("help")},
                                            QStringLiteral("Shows this help.")));
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

// A key store that could not be read says nothing about the preset: that is
// no "no key".
int exitCodeFor(const UnavailableReason& reason) {
    return reason.kind() == UnavailableReason::Kind::keychainError ? otherFailure
                                                                   : presetNotRunnable;
}

int exitCodeFor(const RewriteError& error) {
    switch (error.kind()) {
    case RewriteError::Kind::modelUnavailable:
        return error.reason() ? exitCodeFor(*error.reason()) : presetNotRunnable;
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

QString providerList();

// The endpoint named on a key or models command line, or the message that
// says why there is none.
std::expected<ProviderEndpoint, QString> endpointFromArguments(const QString& provider,
                                                               const QString& baseURL) {
    if (provider == customProviderID()) {
        if (const auto endpoint = resolveEndpoint(
                provider, baseURL.isEmpty() ? std::nullopt : std::optional(baseURL)))
            return *endpoint;
        return std::unexpected(Hints::baseURLProblem(baseURL) +
                               QStringLiteral("\nName it with --base-url URL."));
    }
    if (const auto endpoint = catalogEndpoint(provider))
        return *endpoint;
    return std::unexpected(
        QStringLiteral("Unknown provider \"%1\". Providers: %2.").arg(provider, providerList()));
}

// "1 preset", "2 presets".
QString presetCount(qsizetype count) {
    return count == 1 ? QStringLiteral("1 preset") : QStringLiteral("%1 presets").arg(count);
}

// A message, and on the next line the command that fixes it, if any.
void writeProblem(const QString& message, const QString& hint) {
    write(stderr, message + QStringLiteral("\n"));
    if (!hint.isEmpty())
        write(stderr, hint + QStringLiteral("\n"));
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
    bool overwrite = false;
    bool failed = false;
    QString refusedExisting; // the file left alone because it exists

    std::optional<QString> chooseImportFile() override { return path; }
    // A folder gets the proposed file name; an existing file is replaced only
    // when asked to.
    std::optional<QString> chooseExportFile(const QString& proposedFileName) override {
        if (QFileInfo(path).isDir())
            path = QDir(path).filePath(proposedFileName);
        if (QFileInfo::exists(path) && !overwrite) {
            refusedExisting = path;
            return std::nullopt;
        }
        return path;
    }
    void showFailure(const QString& title, const QString& message) override {
        failed = true;
        write(stderr, title + QStringLiteral(": ") + message + QStringLiteral("\n"));
    }
};

} // namespace

LinuxServices& CliApplication::services() {
    if (!m_services) {
        m_services = new LinuxServices; // lives for the process
        // Said once, on the terminal: the damaged file is left for the user
        // to look at or move aside.
        m_services->setKeyFileDamageHandler([](const QString& path) {
            write(stderr, QStringLiteral("The private key file “%1” is damaged and can’t be read. "
                                         "It was left as it is; move it aside to store keys in a "
                                         "new one.\n")
                              .arg(path));
        });
        m_services->presets().seedIfEmpty(m_services->onDeviceModel().availability().isAvailable());
    }
    return *m_services;
}

PresetStore* CliApplication::readPresets() {
    LinuxServices& all = services();
    if (const auto unreadable = all.settings().readError()) {
        write(stderr, unreadable->message() + QStringLiteral("\n"));
        return nullptr;
    }
    PresetStore& store = all.presets();
    if (const auto& problem = store.loadProblem())
        write(stderr, problem->message() + QStringLiteral("\n"));
    // The built-ins seeded into an empty store that could not be written:
    // the command can still use them, and is told they are not kept.
    if (const auto error = store.saveError())
        sayOnce(error->message());
    return &store;
}

bool CliApplication::saved(const PresetStore& store) {
    const auto error = store.saveError();
    if (error)
        sayOnce(error->message());
    return !error;
}

void CliApplication::sayOnce(const QString& message) {
    if (m_said.contains(message))
        return;
    m_said.insert(message);
    write(stderr, message + QStringLiteral("\n"));
}

int CliApplication::run(const QStringList& arguments) {
    const QString command = arguments.value(1);
    const QStringList rest = QStringList{arguments.value(0)} + arguments.mid(2);
    if (command == QLatin1String("--version") || command == QLatin1String("-v")) {
        write(stdout,
              QStringLiteral("scrivel-cli %1\n").arg(QCoreApplication::applicationVersion()));
        return success;
    }
    if (command == QLatin1String("help") && arguments.size() > 2)
        return run(QStringList{arguments.value(0), arguments[2], QStringLiteral("--help")});
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

    // The preset first: a wrong name should not cost the user their typing.
    PresetStore* const presets = readPresets();
    if (!presets)
        return otherFailure;
    PresetStore& store = *presets;
    std::optional<Preset> preset;
    if (command.parser.isSet(presetOption)) {
        auto found = findPreset(store, command.parser.value(presetOption));
        if (!found) {
            write(stderr, found.error() + QStringLiteral("\n"));
            return usageError;
        }
        preset = *found;
    } else {
        preset = store.activePreset();
    }
    if (!preset) {
        writeProblem(QStringLiteral("There are no presets."),
                     Hints::forReason(UnavailableReason::misconfigured({}), std::nullopt));
        return usageError;
    }

    if (files.isEmpty() && Terminal::isTerminal(stdin))
        write(stderr, QStringLiteral("Type or paste text, then Ctrl-D\n"));
    const auto bytes = Terminal::readAll(files.value(0));
    if (!bytes) {
        write(stderr, QStringLiteral("Couldn’t read %1.\n")
                          .arg(files.value(0, QStringLiteral("standard input"))));
        return otherFailure;
    }
    const QString input = QString::fromUtf8(*bytes);

    // On a terminal the reply streams in as a dimmed draft on standard error,
    // which goes away when the cleaned result (or the error) is printed.
    // Elsewhere the partial text is not looked at: each event is the whole
    // reply so far, and touching it would make a long reply quadratic.
    DraftDisplay draft;
    RewriteCoordinator::PartialTextHandler onPartial;
    if (draft.isActive())
        onPartial = [&draft](const TextSnapshot& text) { draft.show(text.view()); };
    Future<RewriteCoordinator::Result> run =
        services().coordinator().rewrite(input, *preset, std::move(onPartial));
    bool interrupted = false;
    const auto result = await(run, &interrupted);
    const bool succeeded = result && *result;
    draft.finish(succeeded ? QStringLiteral("Result:")
                           : QStringLiteral("The draft above was not used."));
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
        writeProblem(error.panelMessage(),
                     error.reason() ? Hints::forReason(*error.reason(), preset) : QString());
        return exitCodeFor(error);
    }

    if ((*result)->kind() == FixResult::Kind::alreadyClean) {
        write(stdout, input);
        write(stderr, QStringLiteral("No change needed.\n"));
        return success;
    }
    const QString text = (*result)->text();
    write(stdout, text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n'));
    // The result is on standard output already: a failed copy is a warning.
    if (command.parser.isSet(copyOption)) {
        switch (ClipboardHolder::copyInBackground(text)) {
        case ClipboardHolder::Outcome::copied:
            write(stderr, QStringLiteral("Copied.\n"));
            break;
        case ClipboardHolder::Outcome::noDisplay:
            write(stderr, QStringLiteral("Not copied: there is no display to hold a clipboard "
                                         "(DISPLAY is not set).\n"));
            break;
        case ClipboardHolder::Outcome::failed:
            write(stderr,
                  QStringLiteral("Couldn’t copy the result. Select and copy it manually.\n"));
            break;
        }
    }
    return success;
}

int CliApplication::presets(const QStringList& arguments) {
    CommandParser command(QStringLiteral("presets"),
                          QStringLiteral("Lists and manages presets and packs."),
                          QStringLiteral("[use NAME|ID | edit NAME|ID | export [NAME|ID...] FILE "
                                         "| import FILE | packs | add-pack NAME]"));
    const QCommandLineOption forceOption(QStringLiteral("force"),
                                         QStringLiteral("export: replace FILE if it exists."));
    const QCommandLineOption modelOption(QStringLiteral("model"),
                                         QStringLiteral("edit: the model to use."),
                                         QStringLiteral("MODEL"));
    const QCommandLineOption baseURL = baseURLOption();
    command.parser.addOption(forceOption);
    command.parser.addOption(modelOption);
    command.parser.addOption(baseURL);
    if (const auto code = command.parse(arguments))
        return *code;
    const QStringList words = command.parser.positionalArguments();
    const QString action = words.value(0);
    PresetStore* const presets = readPresets();
    if (!presets)
        return otherFailure;
    PresetStore& store = *presets;

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
            write(stderr, preset.error() + QStringLiteral("\n"));
            return usageError;
        }
        store.activate(preset->id);
        if (!saved(store))
            return otherFailure;
        write(stdout, QStringLiteral("Active preset: %1\n").arg(preset->name));
        return success;
    }
    if (action == QLatin1String("edit")) {
        const bool changesModel = command.parser.isSet(modelOption);
        const bool changesURL = command.parser.isSet(baseURL);
        if (words.size() != 2 || (!changesModel && !changesURL)) {
            write(stderr, QStringLiteral("Usage: scrivel-cli presets edit NAME|ID "
                                         "[--model MODEL] [--base-url URL]\n"));
            return usageError;
        }
        auto preset = findPreset(store, words[1]);
        if (!preset) {
            write(stderr, preset.error() + QStringLiteral("\n"));
            return usageError;
        }
        if (changesModel) {
            const QString model = trimmedWhitespaceAndNewlines(command.parser.value(modelOption));
            if (model.isEmpty() && preset->providerID != Preset::onDeviceProviderID()) {
                write(stderr, QStringLiteral("Give a model, such as one that 'scrivel-cli models "
                                             "%1' lists.\n")
                                  .arg(preset->providerID));
                return usageError;
            }
            preset->model = model;
        }
        if (changesURL) {
            if (preset->providerID != customProviderID()) {
                write(stderr, QStringLiteral("Only presets of the custom provider have a base "
                                             "URL; \"%1\" uses %2.\n")
                                  .arg(preset->name, providerDisplayName(*preset)));
                return usageError;
            }
            const QString url = command.parser.value(baseURL);
            if (!resolveEndpoint(customProviderID(), url)) {
                write(stderr, Hints::baseURLProblem(url) + QStringLiteral("\n"));
                return usageError;
            }
            preset->customBaseURL = trimmedWhitespaceAndNewlines(url);
        }
        store.update(*preset);
        if (!saved(store))
            return otherFailure;
        write(stdout, QStringLiteral("Updated %1.\n").arg(preset->name));
        return success;
    }
    if (action == QLatin1String("export")) {
        if (words.size() < 2) {
            write(stderr, QStringLiteral("Usage: scrivel-cli presets export [NAME|ID...] FILE\n"));
            return usageError;
        }
        CommandLineTransferUI ui;
        ui.path = words.last();
        ui.overwrite = command.parser.isSet(forceOption);
        bool written;
        if (words.size() == 2) {
            // "export Fix" most likely means the preset, not a file named Fix.
            if (namesPreset(store, ui.path) && !QFileInfo(ui.path).isDir()) {
                write(stderr,
                      QStringLiteral("\"%1\" names a preset. To export it, name the file too:\n"
                                     "  scrivel-cli presets export %2 FILE\n"
                                     "To export every preset into a file of that name, write "
                                     "./%1 instead.\n")
                          .arg(ui.path, shellQuoted(ui.path)));
                return usageError;
            }
            written = PresetTransfer::exportAll(store, ui);
        } else {
            QSet<QUuid> ids;
            for (const QString& name : words.mid(1, words.size() - 2)) {
                const auto preset = findPreset(store, name);
                if (!preset) {
                    write(stderr, preset.error() + QStringLiteral("\n"));
                    return usageError;
                }
                ids.insert(preset->id);
            }
            written = PresetTransfer::exportSelection(store, ids, ui);
        }
        if (!ui.refusedExisting.isEmpty()) {
            write(stderr, QStringLiteral("%1 already exists; nothing was written. Add --force to "
                                         "replace it.\n")
                              .arg(ui.refusedExisting));
            return otherFailure;
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
            // What exactly is wrong with the file, for whoever fixes it.
            if (document.error().packError && !document.error().debugDescription.isEmpty())
                write(stderr, document.error().debugDescription + QStringLiteral("\n"));
            return otherFailure;
        }
        const auto imported = store.importPack(*document, false);
        if (!imported) {
            write(stderr, PresetTransfer::failureTitle() + QStringLiteral(": ") +
                              imported.error().message() + QStringLiteral("\n"));
            return otherFailure;
        }
        if (!saved(store))
            return otherFailure;
        PresetTransferNotifier::instance().postDidImport(imported->affectedIDs);
        write(stdout, QStringLiteral("Imported %1: %2 added, %3 replaced.\n")
                          .arg(presetCount(imported->added + imported->replaced))
                          .arg(imported->added)
                          .arg(imported->replaced));
        return success;
    }
    if (action == QLatin1String("packs")) {
        for (const PresetPackDocument& pack : shippedPacks()) {
            QString line = pack.name.value_or(QStringLiteral("Untitled Pack")) +
                           QStringLiteral("\t") + presetCount(pack.presets.size());
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
            if (ui.failed || !saved(store))
                return otherFailure;
            write(stdout, QStringLiteral("Added %1 from %2.\n")
                              .arg(presetCount(pack.presets.size()), *pack.name));
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
        write(stderr, endpoint.error() + QStringLiteral("\n"));
        return usageError;
    }
    const QString account = credentialAccount(*endpoint);
    APIKeyStore& keys = services().keys();
    const ProviderConnectionFailure keychainFailure =
        ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain);
    // A key-store failure is worded once, as the editor words it.
    const auto reportKeychain = [&] {
        writeProblem(keychainFailure.message(), Hints::forFailure(keychainFailure, *endpoint));
    };
    const auto succeeded = [&](const std::optional<APIKeyProviding::VoidResult>& result) {
        if (result && *result)
            return true;
        // A refused key is the user's to fix; anything else is the store's.
        if (result && result->error().kind() == KeychainError::Kind::invalidKey)
            writeProblem(result->error().saveMessage(), {});
        else
            reportKeychain();
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
    if (words[0] == QLatin1String("delete") || words[0] == QLatin1String("status")) {
        const auto stored = await(keys.readKey(account));
        if (!stored || !*stored) {
            reportKeychain();
            return otherFailure;
        }
        const bool hasKey = bool(**stored);
        if (words[0] == QLatin1String("status")) {
            write(stdout,
                  QStringLiteral("%1: %2\n")
                      .arg(endpoint->displayName, hasKey ? QStringLiteral("key stored")
                                                         : QStringLiteral("no key stored")));
            return success;
        }
        if (!hasKey) {
            write(stdout, QStringLiteral("No key stored for %1; nothing to delete.\n")
                              .arg(endpoint->displayName));
            return success;
        }
        if (!succeeded(await(keys.deleteKey(account))))
            return otherFailure;
        write(stdout, QStringLiteral("Deleted the key for %1.\n").arg(endpoint->displayName));
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
        write(stderr, endpoint.error() + QStringLiteral("\n"));
        return usageError;
    }
    Future<OpenAICompatibleProvider::ModelsResult> fetch =
        services().hub().client(*endpoint).fetchModels(EndpointCredential::stored());
    bool interrupted = false;
    const auto result = await(fetch, &interrupted);
    if (interrupted || !result) {
        fetch.cancel();
        write(stderr, QStringLiteral("Cancelled.\n"));
        return cancelled;
    }
    if (!*result) {
        writeProblem(result->error().message(), Hints::forFailure(result->error(), *endpoint));
        return exitCodeFor(result->error());
    }
    for (const QString& model : **result)
        write(stdout, model + QStringLiteral("\n"));
    return success;
}

int CliApplication::status(const QStringList& arguments) {
    CommandParser command(QStringLiteral("status"),
                          QStringLiteral("Shows whether the active preset can run. Exits with 3 "
                                         "when it cannot, and with 1 when its key could not be "
                                         "read from the key store."),
                          QString());
    if (const auto code = command.parse(arguments))
        return *code;
    PresetStore* const presets = readPresets();
    if (!presets)
        return otherFailure;
    RewriteCoordinator& coordinator = services().coordinator();
    const std::optional<Preset> preset = presets->activePreset();
    const auto line = await(coordinator.readinessLine(preset));
    const auto reason = await(coordinator.unavailableReason(preset));
    write(stdout, line.value_or(QString()) + QStringLiteral("\n"));
    if (!reason || !*reason)
        return success;
    writeProblem((*reason)->message(), Hints::forReason(**reason, preset));
    return exitCodeFor(**reason);
}

} // namespace scrivel::cli
