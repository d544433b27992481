#include "app/AppDelegate.h"
#include "core/editor/PresetEditorModel.h"
#include "core/presets/BuiltInPresets.h"
#include "core/providers/ProviderCatalog.h"
#include "core/transform/UnavailableReason.h"
#include "core/tray/StatusItemModel.h"
#include "platform/linux/LinuxServices.h"
#include "support/FakeHotKeyService.h"
#include "support/InMemoryClipboard.h"
#include "support/TestSupport.h"
#include "ui/editor/MainWindow.h"
#include "ui/tray/StatusItemController.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;

namespace {

// Settings and keys (in the private file store) of this run only.
QTemporaryDir& home() {
    static QTemporaryDir dir;
    return dir;
}

} // namespace

// The desktop app as its composition root wires it, in this process: the
// real stores and pipeline over a throw-away home, the tray and the windows
// offscreen. What one piece does for another is checked here, where the
// wiring lives.
class AppDelegateTrayTest : public QObject {
    Q_OBJECT

public:
    static void initMain() {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home().filePath(QStringLiteral("config"))));
        qputenv("XDG_DATA_HOME", QFile::encodeName(home().filePath(QStringLiteral("data"))));
        qputenv("SCRIVEL_SECRET_STORE", "file");
    }

private Q_SLOTS:
    void init();
    void cleanup();
    void renamingInTheMainWindowReachesTheTray();
    void reKeyingInTheMainWindowReachesTheTray();

private:
    // Launches the app and opens the main window on the active preset.
    PresetEditorModel& launchAndEdit();
    StatusItemModel& tray() { return m_app->statusItem()->model(); }

    std::unique_ptr<LinuxServices> m_services;
    InMemoryClipboard m_clipboard;
    test::FakeHotKeyService m_hotKeys;
    std::unique_ptr<AppDelegate> m_app;
};

// Each case starts as a first launch: no settings, no keys.
void AppDelegateTrayTest::init() {
    QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Scrivel"),
              QStringLiteral("Scrivel"))
        .clear();
    QVERIFY(QDir(home().filePath(QStringLiteral("data"))).removeRecursively());
    m_services = std::make_unique<LinuxServices>();
}

void AppDelegateTrayTest::cleanup() {
    m_app.reset();
    m_services.reset();
}

PresetEditorModel& AppDelegateTrayTest::launchAndEdit() {
    m_app = std::make_unique<AppDelegate>(*m_services, m_clipboard, m_hotKeys, PanelWindowTraits{});
    QSignalSpy launched(m_app.get(), &AppDelegate::launched);
    m_app->applicationDidFinishLaunching();
    [&] { QVERIFY(launched.wait()); }();
    m_app->activate();
    return *m_app->mainWindow().window()->editorModel();
}

void AppDelegateTrayTest::renamingInTheMainWindowReachesTheTray() {
    PresetEditorModel& editor = launchAndEdit();
    QTRY_COMPARE(tray().statusLine(), QStringLiteral("Status: Fix · Add API key"));
    editor.setName(QStringLiteral("Proofread"));
    QTRY_COMPARE(tray().statusLine(), QStringLiteral("Status: Proofread · Add API key"));
}

void AppDelegateTrayTest::reKeyingInTheMainWindowReachesTheTray() {
    const QString account =
        credentialAccount(*resolveEndpoint(builtInCloudProviderID(), std::nullopt));
    QVERIFY(test::waitFor(m_services->keys().saveKey(QStringLiteral("gsk-old"), account))
                .value()
                .has_value());
    PresetEditorModel& editor = launchAndEdit();
    QTRY_COMPARE(tray().statusLine(), QStringLiteral("Status: Fix · Ready"));
    QTRY_COMPARE(editor.apiKey(), QStringLiteral("gsk-old"));

    // The built-in presets share the key: emptying the field asks first.
    QSignalSpy asked(&editor, &PresetEditorModel::keyRemovalConfirmationRequested);
    editor.setAPIKey(QString());
    QCOMPARE(asked.size(), 1);
    editor.confirmKeyRemoval();
    QTRY_COMPARE(tray().statusLine(), QStringLiteral("Status: Fix · Add API key"));
    QTRY_COMPARE(tray().toolTip(), UnavailableReason::missingAPIKey().message());

    editor.setAPIKey(QStringLiteral("gsk-new"));
    QTRY_COMPARE(tray().statusLine(), QStringLiteral("Status: Fix · Ready"));
    QTRY_COMPARE(tray().toolTip(), QStringLiteral("Scrivel"));
}

QTEST_MAIN(AppDelegateTrayTest)
#include "tst_AppDelegateTray.moc"
