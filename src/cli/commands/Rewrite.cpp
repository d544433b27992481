#include "cli/commands/Commands.h"

#include "cli/Await.h"
#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ClipboardHolder.h"
#include "cli/DraftDisplay.h"
#include "cli/ExitCode.h"
#include "cli/Hints.h"
#include "cli/PresetLookup.h"
#include "cli/Terminal.h"
#include "core/pipeline/RewriteCoordinator.h"
#include "platform/linux/LinuxServices.h"

namespace scrivel::cli::commands {

namespace {

using Terminal::write;
using Terminal::writeProblem;

// The preset --preset names, else the active one; the exit code after
// saying why there is none. Looked up before the input is read: a wrong
// name should not cost the user their typing.
std::expected<Preset, ExitCode> chosenPreset(Invocation& call) {
    PresetStore* const store = call.session.readPresets();
    if (!store)
        return std::unexpected(otherFailure);
    if (call.options.isSet(QStringLiteral("preset"))) {
        auto found = findPreset(*store, call.options.value(QStringLiteral("preset")));
        if (!found) {
            write(stderr, found.error() + QStringLiteral("\n"));
            return std::unexpected(usageError);
        }
        return *found;
    }
    if (const auto active = store->activePreset())
        return *active;
    writeProblem(CliText::tr("There are no presets."),
                 Hints::forReason(UnavailableReason::misconfigured({}), std::nullopt));
    return std::unexpected(usageError);
}

// The text of the file named, or of standard input when none is; nothing
// after saying it cannot be read.
std::optional<QString> readInput(const QStringList& files) {
    if (files.isEmpty() && Terminal::isTerminal(stdin))
        write(stderr, CliText::tr("Type or paste text, then Ctrl+D") + QLatin1Char('\n'));
    const auto bytes = Terminal::readAll(files.value(0));
    if (!bytes) {
        write(stderr,
              CliText::tr("Couldn’t read %1.").arg(files.value(0, CliText::tr("standard input"))) +
                  QLatin1Char('\n'));
        return std::nullopt;
    }
    return QString::fromUtf8(*bytes);
}

int reportFailure(const TransformFailure& failure, const Preset& preset) {
    if (failure.kind() == TransformFailure::Kind::cancelled) {
        write(stderr, CliText::tr("Cancelled.") + QLatin1Char('\n'));
        return cancelled;
    }
    const RewriteError error = failure.error().value_or(
        RewriteError::modelFailed(CliText::tr("Couldn’t transform this text. Try again.")));
    writeProblem(error.panelMessage(),
                 error.reason() ? Hints::forReason(*error.reason(), preset) : QString());
    return exitCodeFor(error);
}

// The result is on standard output already: a failed copy is a warning.
void copyResult(const QString& text) {
    switch (ClipboardHolder::copyInBackground(text)) {
    case ClipboardHolder::Outcome::copied:
        write(stderr, CliText::tr("Copied.") + QLatin1Char('\n'));
        break;
    case ClipboardHolder::Outcome::noDisplay:
        write(stderr,
              CliText::tr(
                  "Not copied: there is no display to hold a clipboard (DISPLAY is not set).") +
                  QLatin1Char('\n'));
        break;
    case ClipboardHolder::Outcome::failed:
        write(stderr, CliText::tr("Couldn’t copy the result. Select and copy it manually.") +
                          QLatin1Char('\n'));
        break;
    }
}

} // namespace

int rewrite(Invocation& call) {
    if (call.words.size() > 1) {
        write(stderr, CliText::tr("rewrite takes at most one FILE.") + QLatin1Char('\n'));
        return usageError;
    }
    const auto preset = chosenPreset(call);
    if (!preset)
        return preset.error();
    const auto input = readInput(call.words);
    if (!input)
        return otherFailure;

    // On a terminal the reply streams in as a dimmed draft on standard error,
    // which goes away when the cleaned result (or the error) is printed.
    // Elsewhere the partial text is not looked at: each event is the whole
    // reply so far, and touching it would make a long reply quadratic.
    DraftDisplay draft;
    RewriteCoordinator::PartialTextHandler onPartial;
    if (draft.isActive())
        onPartial = [&draft](const TextSnapshot& text) { draft.show(text.view()); };
    Future<RewriteCoordinator::Result> run =
        call.session.services().coordinator().rewrite(*input, *preset, std::move(onPartial));
    bool interrupted = false;
    const auto result = await(run, &interrupted);
    draft.finish(result && *result ? CliText::tr("Result:")
                                   : CliText::tr("The draft above was not used."));
    if (interrupted || !result) {
        run.cancel(); // aborts the request; nothing is written
        write(stderr, CliText::tr("Cancelled.") + QLatin1Char('\n'));
        return cancelled;
    }
    if (!*result)
        return reportFailure(result->error(), *preset);

    if ((*result)->kind() == FixResult::Kind::alreadyClean) {
        write(stdout, *input);
        write(stderr, CliText::tr("No change needed.") + QLatin1Char('\n'));
        return success;
    }
    const QString text = (*result)->text();
    write(stdout, text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n'));
    if (call.options.isSet(QStringLiteral("copy")))
        copyResult(text);
    return success;
}

} // namespace scrivel::cli::commands
