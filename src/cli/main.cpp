#include "cli/CliApplication.h"
#include "cli/ClipboardHolder.h"
#include "core/support/Translations.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QNetworkProxyFactory>

int main(int argc, char* argv[]) {
    // The background helper that serves a --copy result.
    if (argc == 2 && qstrcmp(argv[1], scrivel::cli::ClipboardHolder::serveCommand()) == 0)
        return scrivel::cli::ClipboardHolder::serve(argc, argv);

    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIVEL_VERSION));
    scrivel::Translations::install(app);
    // The pipeline's log lines are for debugging (SCRIVEL_LOG=1, or
    // QT_LOGGING_RULES, which still wins), not for a terminal user.
    if (qEnvironmentVariableIntValue("SCRIVEL_LOG") != 1)
        QLoggingCategory::setFilterRules(QStringLiteral("com.scrivel.*=false"));
    // Requests go through the system's proxy settings, as the desktop app's do.
    QNetworkProxyFactory::setUseSystemConfiguration(true);

    scrivel::cli::CliApplication cli;
    return cli.run(QCoreApplication::arguments());
}
