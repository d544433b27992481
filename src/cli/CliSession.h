#pragma once

#include <QSet>
#include <QString>

namespace scrivel {
class LinuxServices;
class PresetStore;
} // namespace scrivel

namespace scrivel::cli {

// What the commands of one scrivel-cli run share: the services, built on
// first use, and the problems already said on standard error.
class CliSession {
public:
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

private:
    LinuxServices* m_services = nullptr;
    QSet<QString> m_said;
};

} // namespace scrivel::cli
