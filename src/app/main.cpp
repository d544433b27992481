#include "app/AppDelegate.h"
#include "app/AppStateExport.h"
#include "app/SingleInstance.h"
#include "core/support/Translations.h"
#include "platform/linux/DesktopSession.h"
#include "platform/linux/LinuxServices.h"
#include "platform/linux/PortalHotKeyService.h"
#include "platform/linux/QtClipboard.h"
#include "platform/linux/UnavailableHotKeyService.h"
#include "platform/linux/X11Desktop.h"
#include "platform/linux/X11HotKeyService.h"
#include "platform/linux/X11SelectionDesktop.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QIcon>
#include <QLoggingCategory>
#include <QNetworkProxyFactory>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace {

// The texts of the command line, under the app's name.
struct Text {
    Q_DECLARE_TR_FUNCTIONS(scrivel)
};

// A line on standard error, in the user's language.
void complain(const QString& text) {
    std::fputs(qPrintable(QStringLiteral("scrivel: ") + text + QLatin1Char('\n')), stderr);
}

// QApplication aborts with a core dump when it finds no display; say it in
// one line instead, before anything is read or written.
bool hasDisplay(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], "-platform") == 0)
            return true;
    }
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty() && !platform.startsWith("xcb") && !platform.startsWith("wayland"))
        return true;
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

// Qt warns while it starts when $XDG_RUNTIME_DIR is unset or not private;
// the single-instance check below says in its own line what that means for
// Scrivel, so Qt's line is not repeated.
QtMessageHandler qtMessageHandler = nullptr;

void dropRuntimeFolderWarnings(QtMsgType type, const QMessageLogContext& context,
                               const QString& message) {
    if (type == QtWarningMsg && message.startsWith(QLatin1String("QStandardPaths: ")) &&
        (message.contains(QLatin1String("XDG_RUNTIME_DIR")) ||
         message.contains(QLatin1String("runtime directory"))))
        return;
    qtMessageHandler(type, context, message);
}

bool wantsVersionOrHelp(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--help" || argument == "-h" || argument == "--version" || argument == "-v")
            return true;
    }
    return false;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setOrganizationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationName(QStringLiteral("Scrivel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIVEL_VERSION));
    // The options are described once a translation is loaded.
    QCommandLineOption toggle(QStringLiteral("toggle"));
    QCommandLineParser parser;
    const auto describeOptions = [&] {
        toggle.setDescription(
            Text::tr("Show or hide the panel of the running Scrivel (starting it if needed). Bind "
                     "this to a desktop shortcut where global shortcuts are unavailable."));
        parser.setApplicationDescription(
            Text::tr("Rewrites text with a language model from a floating panel."));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOption(toggle);
    };

    if (!hasDisplay(argc, argv)) {
        // --help and --version need no display (a package check runs them
        // on a build machine): a plain core application answers them, and
        // process() exits. It also says, in the user's language, why there
        // is nothing else to do.
        QCoreApplication app(argc, argv);
        scrivel::Translations::install(app);
        if (wantsVersionOrHelp(argc, argv)) {
            describeOptions();
            parser.process(app);
        }
        complain(Text::tr("no display found (DISPLAY and WAYLAND_DISPLAY are unset); start "
                          "Scrivel from a desktop session."));
        return 1;
    }
    // The launcher's token, for the running Scrivel when this start only
    // hands over (the X11 plugin would take the startup id for itself).
    const QVariantMap launcherPlatformData = scrivel::DesktopSession::launcherPlatformData();
    qtMessageHandler = qInstallMessageHandler(dropRuntimeFolderWarnings);
    QGuiApplication::setDesktopFileName(QStringLiteral("com.scrivel.app"));
    QApplication app(argc, argv);
    scrivel::Translations::install(app);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/scrivel.svg")));
    describeOptions();
    parser.process(app);

    if (qEnvironmentVariableIntValue("SCRIVEL_LOG") != 1)
        QLoggingCategory::setFilterRules(QStringLiteral("com.scrivel.*=false"));
    QNetworkProxyFactory::setUseSystemConfiguration(true);

    using scrivel::SingleInstance;
    SingleInstance instance(SingleInstance::localSocketOfThisDisplay());
    const SingleInstance::Role role = instance.claim();
    if (role == SingleInstance::Role::secondary) {
        const bool answered =
            instance.forward(parser.isSet(toggle) ? SingleInstance::Command::toggle
                                                  : SingleInstance::Command::activate,
                             launcherPlatformData);
        if (!answered) {
            complain(Text::tr("the running Scrivel did not answer."));
            return 1;
        }
        return 0;
    }
    if (role == SingleInstance::Role::standalone) {
        // A --toggle that started an instance here would start one more on
        // every press: say why it cannot reach one instead.
        if (parser.isSet(toggle)) {
            complain(Text::tr("--toggle cannot reach a running Scrivel: %1.")
                         .arg(instance.standaloneReason()));
            return 1;
        }
        complain(Text::tr("%1; running without the single-instance check, and `scrivel --toggle` "
                          "cannot reach this instance.")
                     .arg(instance.standaloneReason()));
    }

    scrivel::LinuxServices services;
    scrivel::QtClipboard clipboard;
    scrivel::PanelWindowTraits panelTraits;
    panelTraits.composited = scrivel::X11Desktop::compositorRunning();
    panelTraits.prepareWindow = [](QWidget* window) {
        scrivel::X11Desktop::markAsFloatingPanel(window->winId());
    };
    // A Wayland client learns nothing of the pointer outside its windows (and
    // cannot place its own): the panel opens centred there.
    const bool waylandSession = scrivel::DesktopSession::isWayland();
    panelTraits.opensAtPointer = !waylandSession;

    // Global shortcuts: the desktop's portal in a Wayland session (native or
    // XWayland, where grabs are not global), key grabs on X11, and otherwise
    // none, with `scrivel --toggle` bound in the desktop's settings instead
    // (the services say so once).
    std::unique_ptr<scrivel::HotKeyService> hotKeys;
    scrivel::PortalHotKeyService* portal = nullptr;
    if (waylandSession) {
        auto portalService = std::make_unique<scrivel::PortalHotKeyService>(
            QDBusConnection::sessionBus(),
            scrivel::PortalHotKeyService::Options{
                QGuiApplication::desktopFileName(),
                scrivel::ShortcutName::rewriteFocusedField().rawValue,
                QCoreApplication::translate("main", "Open or close the Scrivel panel")});
        portal = portalService.get();
        hotKeys = std::move(portalService);
    } else {
        hotKeys = scrivel::X11HotKeyService::forApplication();
    }
    if (!hotKeys)
        hotKeys = std::make_unique<scrivel::UnavailableHotKeyService>();

    // The selected text in and the result back need X11: nothing else lets
    // one application read another's focus and type into it.
    const std::unique_ptr<scrivel::X11SelectionDesktop> selectionDesktop =
        scrivel::X11SelectionDesktop::forSession();

    scrivel::AppDelegate delegate(services, clipboard, *hotKeys, panelTraits);
    delegate.setSelectionDesktop(selectionDesktop.get());
    // The caller's token lets the window that comes up take the keyboard.
    QObject::connect(&instance, &scrivel::SingleInstance::activateRequested, &delegate,
                     [&delegate](const QString& token) {
                         scrivel::DesktopSession::adoptActivationToken(token);
                         delegate.activate();
                     });
    QObject::connect(&instance, &scrivel::SingleInstance::toggleRequested, &delegate,
                     [&delegate](const QString& token) {
                         scrivel::DesktopSession::adoptActivationToken(token);
                         delegate.togglePanel();
                         if (!delegate.fixPanel() || !delegate.fixPanel()->isPanelVisible())
                             scrivel::DesktopSession::forgetActivationToken();
                     });
    // Bound once the shortcut is attached, so the stored one is offered as
    // the preferred trigger; bound again at every start.
    if (portal)
        QObject::connect(&delegate, &scrivel::AppDelegate::launched, portal,
                         &scrivel::PortalHotKeyService::start);
    if (parser.isSet(toggle)) {
        // Started by --toggle with no Scrivel running: open the panel once the
        // launch is done, unless the first launch has already shown it.
        QObject::connect(&delegate, &scrivel::AppDelegate::launched, &delegate, [&delegate] {
            if (!delegate.fixPanel()->isPanelVisible())
                delegate.togglePanel();
        });
    }
    scrivel::AppStateExport stateExport(delegate);
    delegate.applicationDidFinishLaunching();
    return app.exec();
}
