#include "CliApplication.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QNetworkProxyFactory>
#include <memory>

int main(int argc, char* argv[]) {
    // --copy needs the GUI side of Qt for the clipboard; everything else runs
    // without a display.
    bool wantsClipboard = false;
    for (int i = 1; i < argc; ++i)
        wantsClipboard = wantsClipboard || qstrcmp(argv[i], "--copy") == 0;
    const bool hasDisplay =
        qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    std::unique_ptr<QCoreApplication> app;
    if (wantsClipboard && hasDisplay)
        app = std::make_unique<QGuiApplication>(argc, argv);
    else
        app = std::make_unique<QCoreApplication>(argc, argv);

    QCoreApplication::setOrganizationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIVEL_VERSION));
    // The pipeline's log lines are for debugging (SCRIVEL_LOG=1, or
    // QT_LOGGING_RULES, which still wins), not for a terminal user.
    if (qEnvironmentVariableIntValue("SCRIVEL_LOG") != 1)
        QLoggingCategory::setFilterRules(QStringLiteral("com.scrivel.*=false"));
    // Requests go through the system's proxy settings, as the desktop app's do.
    QNetworkProxyFactory::setUseSystemConfiguration(true);

    scrivel::cli::CliApplication cli;
    return cli.run(QCoreApplication::arguments());
}
