#include "PlatformInfo.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIVEL_VERSION));

    QTextStream out(stdout);
    const QStringList args = QCoreApplication::arguments();
    if (args.contains(QStringLiteral("--version"))) {
        out << "scrivel-cli " << QCoreApplication::applicationVersion() << " ("
            << scrivel::platform::adapterSetName() << ")\n";
        return 0;
    }
    out << "Usage: scrivel-cli --version\n";
    return args.size() > 1 ? 2 : 0;
}
