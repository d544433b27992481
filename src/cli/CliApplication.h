#pragma once

#include <QStringList>

namespace scrivel {
class LinuxServices;
}

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

    LinuxServices* m_services = nullptr;
};

} // namespace scrivel::cli
