#include "platform/linux/XdgAutostartLoginItemService.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <cerrno>

namespace scrivel {

namespace {

QString environmentConfigHome() {
    const QString configured = qEnvironmentVariable("XDG_CONFIG_HOME");
    // The base directory specification ignores relative paths.
    if (!configured.isEmpty() && QDir::isAbsolutePath(configured))
        return configured;
    return QDir::homePath() + QStringLiteral("/.config");
}

// The value of a desktop-entry string: \s \n \t \r \\ escapes.
QString unescapedValue(const QString& value) {
    QString result;
    result.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value[i];
        if (c != QLatin1Char('\\') || i + 1 == value.size()) {
            result += c;
            continue;
        }
        const QChar next = value[++i];
        switch (next.unicode()) {
        case 's':
            result += QLatin1Char(' ');
            break;
        case 'n':
            result += QLatin1Char('\n');
            break;
        case 't':
            result += QLatin1Char('\t');
            break;
        case 'r':
            result += QLatin1Char('\r');
            break;
        default:
            result += next;
        }
    }
    return result;
}

struct Entry {
    QString exec;
    bool hidden = false;
};

// The keys that matter in the [Desktop Entry] group.
Entry readEntry(const QByteArray& text) {
    Entry entry;
    bool inMainGroup = false;
    for (const QByteArray& rawLine : text.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            inMainGroup = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (!inMainGroup || equals < 0)
            continue;
        const QString key = line.left(equals).trimmed();
        const QString value = unescapedValue(line.mid(equals + 1).trimmed());
        if (key == QLatin1String("Exec"))
            entry.exec = value;
        else if (key == QLatin1String("Hidden"))
            entry.hidden = value == QLatin1String("true");
        // The switch in GNOME's startup applications turns an entry off
        // without hiding it.
        else if (key == QLatin1String("X-GNOME-Autostart-enabled") &&
                 value == QLatin1String("false"))
            entry.hidden = true;
    }
    return entry;
}

// What a failed write or removal in folder comes down to, in words the
// settings can use.
LoginItemFailure::Reason failureReason(int error, const QString& folder) {
    if (error == ENOSPC || error == EDQUOT)
        return LoginItemFailure::Reason::diskFull;
    if (error == EACCES || error == EPERM || error == EROFS || !QFileInfo(folder).isWritable())
        return LoginItemFailure::Reason::permissionDenied;
    return LoginItemFailure::Reason::unknown;
}

bool isRunnable(const QString& program) {
    if (program.contains(QLatin1Char('/'))) {
        const QFileInfo info(program);
        return info.isFile() && info.isExecutable();
    }
    return !QStandardPaths::findExecutable(program).isEmpty();
}

} // namespace

XdgAutostartLoginItemService::XdgAutostartLoginItemService(const QString& appID)
    : XdgAutostartLoginItemService(appID, environmentConfigHome(),
                                   launchExecutable(qEnvironmentVariable("APPIMAGE"),
                                                    QCoreApplication::applicationFilePath())) {}

XdgAutostartLoginItemService::XdgAutostartLoginItemService(const QString& appID,
                                                           const QString& configHome,
                                                           const QString& executable)
    : m_appID(appID), m_configHome(configHome), m_executable(executable) {}

QString XdgAutostartLoginItemService::entryPath() const {
    return m_configHome + QStringLiteral("/autostart/") + m_appID + QStringLiteral(".desktop");
}

QString XdgAutostartLoginItemService::launchExecutable(const QString& appImage,
                                                       const QString& runningBinary) {
    if (!appImage.isEmpty() && QFileInfo(appImage).isFile())
        return QFileInfo(appImage).absoluteFilePath();
    return runningBinary;
}

QString XdgAutostartLoginItemService::quotedExecArgument(const QString& argument) {
    QString quoted = QStringLiteral("\"");
    for (const QChar c : argument) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') ||
            c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\');
        // A field code would be expanded by the launcher.
        if (c == QLatin1Char('%'))
            quoted += QLatin1Char('%');
        quoted += c;
    }
    quoted += QLatin1Char('"');
    return quoted;
}

QStringList XdgAutostartLoginItemService::execArguments(const QString& execValue) {
    QStringList arguments;
    QString current;
    bool inArgument = false;
    bool quoted = false;
    for (qsizetype i = 0; i < execValue.size(); ++i) {
        const QChar c = execValue[i];
        if (quoted) {
            if (c == QLatin1Char('\\') && i + 1 < execValue.size()) {
                current += execValue[++i];
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                current += c;
            }
            continue;
        }
        if (c == QLatin1Char(' ')) {
            if (inArgument)
                arguments.append(std::exchange(current, {}));
            inArgument = false;
            continue;
        }
        inArgument = true;
        if (c == QLatin1Char('"'))
            quoted = true;
        else
            current += c;
    }
    if (quoted)
        return {};
    if (inArgument)
        arguments.append(current);
    for (QString& argument : arguments)
        argument.replace(QStringLiteral("%%"), QStringLiteral("%"));
    return arguments;
}

QByteArray XdgAutostartLoginItemService::entryText(const QString& executable) {
    // Exec is a string value: its backslashes are escaped once more.
    QString exec = quotedExecArgument(executable);
    exec.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    QString text = QStringLiteral("[Desktop Entry]\n"
                                  "Type=Application\n"
                                  "Name=Scrivel\n"
                                  "Comment=Rewrites text with a language model\n"
                                  "Exec=%1\n"
                                  "Icon=scrivel\n"
                                  "Terminal=false\n"
                                  "Hidden=false\n"
                                  "X-GNOME-Autostart-enabled=true\n")
                       .arg(exec);
    return text.toUtf8();
}

LoginItemStatus XdgAutostartLoginItemService::status() const {
    QFile file(entryPath());
    if (!file.exists())
        return LoginItemStatus::notRegistered;
    if (!file.open(QIODevice::ReadOnly))
        return LoginItemStatus::notFound;
    const Entry entry = readEntry(file.readAll());
    if (entry.hidden)
        return LoginItemStatus::notRegistered;
    const QStringList arguments = execArguments(entry.exec);
    if (arguments.isEmpty() || !isRunnable(arguments.first()))
        return LoginItemStatus::notFound;
    return LoginItemStatus::enabled;
}

std::expected<void, LoginItemFailure> XdgAutostartLoginItemService::registerItem() {
    const QString path = entryPath();
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        return std::unexpected(LoginItemFailure{path, LoginItemFailure::Reason::folderNotCreated,
                                                QStringLiteral("cannot create ") + folder});
    QSaveFile file(path);
    // QSaveFile writes a temporary file next to the entry, so errno right
    // after the failing call says why.
    errno = 0;
    if (!file.open(QIODevice::WriteOnly))
        return std::unexpected(
            LoginItemFailure{path, failureReason(errno, folder), file.errorString()});
    file.write(entryText(m_executable));
    errno = 0;
    if (!file.commit())
        return std::unexpected(
            LoginItemFailure{path, failureReason(errno, folder), file.errorString()});
    return {};
}

std::expected<void, LoginItemFailure> XdgAutostartLoginItemService::unregisterItem() {
    const QString path = entryPath();
    QFile file(path);
    errno = 0;
    if (file.exists() && !file.remove())
        return std::unexpected(LoginItemFailure{
            path, failureReason(errno, QFileInfo(path).absolutePath()), file.errorString()});
    return {};
}

} // namespace scrivel
