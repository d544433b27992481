#pragma once

#include "cli/CliSession.h"

#include <QStringList>

namespace scrivel::cli {

struct Command;

// Parses scrivel-cli's command line and runs one command from the table in
// commands/Commands.h.
class CliApplication {
public:
    // Returns the exit code.
    int run(const QStringList& arguments);

private:
    // Parses the command's options and runs the action its first word names.
    int runCommand(const Command& command, const QStringList& arguments);

    CliSession m_session;
};

} // namespace scrivel::cli
