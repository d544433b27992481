#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>

namespace scrivel::cli {

class CliSession;

// What a handler is given: the run's shared session, the parsed options and
// the words after the command's (and its action's) name.
struct Invocation {
    CliSession& session;
    const QCommandLineParser& options;
    QStringList words;
};

// Runs one command line; returns the exit code.
using Handler = int (*)(Invocation&);

// One thing a command does, as the overview lists it: "presets use NAME|ID".
struct Action {
    // Empty for what runs without an action word (or the whole command,
    // when it has no named actions).
    QString name;
    QString synopsis; // the arguments after the name
    QString summary;
    Handler run;
};

// A command: the first word of the command line. Its help text, usage line
// and options are shared by its actions.
struct Command {
    QString name;
    QString description;
    QString syntax;
    QList<QCommandLineOption> options;
    QList<Action> actions;
};

// Every command, in the order the overview lists them.
const QList<Command>& commandTable();

namespace commands {

int rewrite(Invocation& call);
int listPresets(Invocation& call);
int usePreset(Invocation& call);
int editPreset(Invocation& call);
int exportPresets(Invocation& call);
int importPack(Invocation& call);
int listPacks(Invocation& call);
int addPack(Invocation& call);
int manageKey(Invocation& call);
int listModels(Invocation& call);
int showStatus(Invocation& call);

} // namespace commands

} // namespace scrivel::cli
