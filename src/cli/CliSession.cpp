#include "cli/CliSession.h"

#include "cli/CliText.h"
#include "cli/Terminal.h"
#include "platform/linux/LinuxServices.h"

namespace scrivel::cli {

using Terminal::write;

LinuxServices& CliSession::services() {
    if (!m_services) {
        m_services = new LinuxServices; // lives for the process
        // Said once, on the terminal: the damaged file is left for the user
        // to look at or move aside.
        m_services->setKeyFileDamageHandler([](const QString& path) {
            write(stderr, CliText::tr("The private key file “%1” is damaged and can’t be read. "
                                      "It was left as it is; move it aside to store keys in a "
                                      "new one.")
                                  .arg(path) +
                              QLatin1Char('\n'));
        });
        m_services->presets().seedIfEmpty(m_services->onDeviceModel().availability().isAvailable());
    }
    return *m_services;
}

PresetStore* CliSession::readPresets() {
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

bool CliSession::saved(const PresetStore& store) {
    const auto error = store.saveError();
    if (error)
        sayOnce(error->message());
    return !error;
}

void CliSession::sayOnce(const QString& message) {
    if (m_said.contains(message))
        return;
    m_said.insert(message);
    write(stderr, message + QStringLiteral("\n"));
}

} // namespace scrivel::cli
