#include "cli/CliApplication.h"

#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/Terminal.h"
#include "cli/commands/Commands.h"

#include <QCoreApplication>

namespace scrivel::cli {

namespace {

using Terminal::write;

// Where the summaries begin in the overview; a longer synopsis has its
// summary on the line below.
constexpr qsizetype summaryColumn = 47;

// Parses a command's options, with its own help. On an error or a help
// request, prints it and gives the exit code to use.
std::optional<int> parse(QCommandLineParser& parser, const Command& command,
                         const QStringList& arguments) {
    const QString usage = CliText::tr("Usage: %1")
                              .arg(QStringLiteral("scrivel-cli %1 %2 %3")
                                       .arg(command.name, CliText::tr("[options]"), command.syntax)
                                       .trimmed());
    parser.setApplicationDescription(command.description);
    // Qt's own help option would also list --help-all, which shows Qt's
    // internal options.
    parser.addOption(QCommandLineOption({QStringLiteral("h"), QStringLiteral("help")},
                                        CliText::tr("Shows this help.")));
    parser.addOptions(command.options);
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
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

// The action the words name, and the words after its name. The unnamed
// action runs when there are no words, or takes them all when the command
// has no named actions.
std::optional<std::pair<const Action*, QStringList>> chooseAction(const Command& command,
                                                                  const QStringList& words) {
    const Action* unnamed = nullptr;
    bool hasNamed = false;
    for (const Action& action : command.actions) {
        if (action.name.isEmpty()) {
            unnamed = &action;
            continue;
        }
        hasNamed = true;
        if (!words.isEmpty() && action.name == words[0])
            return std::pair(&action, words.mid(1));
    }
    if (unnamed && (!hasNamed || words.isEmpty()))
        return std::pair(unnamed, words);
    return std::nullopt;
}

// The text 'scrivel-cli help' prints: every command and action of the
// table, one a line.
QString overview() {
    QString commandLines;
    for (const Command& command : commandTable()) {
        for (const Action& action : command.actions) {
            QString line = QStringLiteral("  ") + command.name;
            for (const QString& part : {action.name, action.synopsis}) {
                if (!part.isEmpty())
                    line += QLatin1Char(' ') + part;
            }
            if (line.size() + 2 > summaryColumn)
                commandLines += line + QLatin1Char('\n') + QString(summaryColumn, QLatin1Char(' '));
            else
                commandLines += line.leftJustified(summaryColumn);
            commandLines += action.summary + QLatin1Char('\n');
        }
    }
    return CliText::tr("Usage: scrivel-cli <command> [options]") + QStringLiteral("\n\n") +
           CliText::tr("Rewrites text with the presets, keys and providers of Scrivel.") +
           QStringLiteral("\n\n") + CliText::tr("Commands:") + QLatin1Char('\n') + commandLines +
           QLatin1Char('\n') +
           CliText::tr("Run 'scrivel-cli help <command>' for a command's options.") +
           QStringLiteral("\n\n") +
           CliText::tr("Exit codes: 0 success, 1 other failure, 2 usage error, 3 preset not "
                       "runnable,\n4 provider failure, 130 cancelled.") +
           QLatin1Char('\n');
}

} // namespace

int CliApplication::run(const QStringList& arguments) {
    const QString name = arguments.value(1);
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        write(stdout,
              QStringLiteral("scrivel-cli %1\n").arg(QCoreApplication::applicationVersion()));
        return success;
    }
    if (name == QLatin1String("help") && arguments.size() > 2)
        return run(QStringList{arguments.value(0), arguments[2], QStringLiteral("--help")});
    if (name.isEmpty() || name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help")) {
        write(name.isEmpty() ? stderr : stdout, overview());
        return name.isEmpty() ? usageError : success;
    }
    for (const Command& command : commandTable()) {
        if (command.name == name)
            return runCommand(command, QStringList{arguments.value(0)} + arguments.mid(2));
    }
    write(stderr,
          CliText::tr("Unknown command \"%1\".").arg(name) + QStringLiteral("\n\n") + overview());
    return usageError;
}

int CliApplication::runCommand(const Command& command, const QStringList& arguments) {
    QCommandLineParser parser;
    if (const auto code = parse(parser, command, arguments))
        return *code;
    const QStringList words = parser.positionalArguments();
    const auto chosen = chooseAction(command, words);
    if (!chosen) {
        write(stderr, CliText::tr("Unknown %1 action \"%2\".").arg(command.name, words.value(0)) +
                          QLatin1Char('\n'));
        return usageError;
    }
    Invocation call{m_session, parser, chosen->second};
    return chosen->first->run(call);
}

} // namespace scrivel::cli
