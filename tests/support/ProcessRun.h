#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QStringList>
#include <initializer_list>
#include <memory>

namespace scrivel::test {

// What a finished program left behind; exitCode is -1 when it crashed or had
// to be killed.
struct ProcessRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// The environment for a Scrivel binary that keeps its settings, presets and
// keys (in the file store) under home, uses the real display rather than the
// test platform (as an X11 session), and reaches the loopback server without
// a proxy.
QProcessEnvironment scrivelEnvironment(const QString& home);

// Runs program to its end with input on its standard input. The event loop
// keeps turning meanwhile: the loopback server the program talks to lives in
// this process. The program is killed after timeoutMs.
ProcessRun runProcess(const QString& program, const QStringList& arguments,
                      const QProcessEnvironment& environment, const QByteArray& input = {},
                      int timeoutMs = 20000);

// Writes a pack of one preset, "Local", for the OpenAI-compatible server at
// baseURL into folder and returns the file's path (empty if it could not be
// written).
QString writeLocalPresetPack(const QString& folder, const QString& baseURL);

// Whether every one of these programs is on the PATH.
bool hasPrograms(std::initializer_list<const char*> programs);

// Runs xdotool with these arguments and returns what it printed.
QByteArray xdotool(const QStringList& arguments);

// Asks a running program to end, and kills it when it has not after 5 s.
void stopProcess(QProcess& process);

// Starts openbox as the test display's window manager and returns once it
// manages windows (it then owns _NET_SUPPORTING_WM_CHECK); nothing when it
// could not start.
std::unique_ptr<QProcess> startWindowManager();

struct VisibleWindow {
    QString id;
    QRect geometry;
};

// The visible windows xdotool finds for these search arguments (such as
// {"--name", "^Scrivel$"}), in the order it lists them.
QList<VisibleWindow> visibleWindows(const QStringList& search);

} // namespace scrivel::test
