#pragma once

#include <QSet>
#include <QStringList>

namespace scrivel {
class LinuxServices;
class PresetStore;
} // namespace scrivel

namespace scrivel::cli {

// Parses scrivel-cli's command line and runs one command. Returns the exit
// code.
class CliApplication {
public:
    int run(const QStringList& arguments);

private:
    int rewrite(const QStringList& arguments);
    int presets(const QStringList& arguments);
    int key(const QStringList& arguments);
    int models(const QStringList& arguments);
    int status(const QStringList& arguments);

    LinuxServices& services();
    // The presets for a command that reads them, after saying on standard
    // error what loading them found (every time, until the list is saved
    // again) and that the built-ins could not be saved. Nothing, after
    // saying why, when the settings cannot be read at all.
    PresetStore* readPresets();
    // Whether what a command changed is stored; if not, says why.
    bool saved(const PresetStore& store);
    // A line on standard error, unless this run has said it already.
    void sayOnce(const QString& message);

    LinuxServices* m_services = nullptr;
    QSet<QString> m_said;
};

} // namespace scrivel::cli
