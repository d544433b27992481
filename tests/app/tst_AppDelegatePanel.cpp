#include "app/AppDelegate.h"
#include "core/editor/MainWindowModel.h"
#include "core/editor/PresetEditorModel.h"
#include "core/presets/PresetStore.h"
#include "platform/linux/LinuxServices.h"
#include "support/FakeHotKeyService.h"
#include "support/InMemoryClipboard.h"
#include "ui/editor/MainWindow.h"
#include "ui/panel/FixPanelControlsRow.h"
#include "ui/panel/FixPanelView.h"
#include "ui/panel/PanelTextEditor.h"

#include <QDir>
#include <QPushButton>
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

// The panel as the app's composition root wires it to the rest, in this
// process: the real stores and pipeline over a throw-away home (no API key
// stored, so the built-in presets fail at once), the windows offscreen.
class AppDelegatePanelTest : public QObject {
    Q_OBJECT

public:
    static void initMain() {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home().filePath(QStringLiteral("config"))));
        qputenv("XDG_DATA_HOME", QFile::encodeName(home().filePath(QStringLiteral("data"))));
        qputenv("SCRIVEL_SECRET_STORE", "file");
    }

private Q_SLOTS:
    void init() {
        QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Scrivel"),
                  QStringLiteral("Scrivel"))
            .clear();
        QVERIFY(QDir(home().filePath(QStringLiteral("data"))).removeRecursively());
        m_services = std::make_unique<LinuxServices>();
        m_app =
            std::make_unique<AppDelegate>(*m_services, m_clipboard, m_hotKeys, PanelWindowTraits{});
        QSignalSpy launched(m_app.get(), &AppDelegate::launched);
        m_app->applicationDidFinishLaunching();
        QVERIFY(launched.wait());
    }

    void cleanup() {
        m_app.reset();
        m_services.reset();
    }

    void openPresetsShowsThePresetWhoseRunFailed() {
        const QList<Preset> presets = m_services->presets().presets();
        // The window last showed another preset.
        m_app->mainWindow().present(false);
        m_app->mainWindow().model().setSelection(MainSidebarItem::preset(presets[2].id));
        m_app->mainWindow().window()->close();

        m_services->presets().activate(presets[0].id);
        FixPanelController& panel = *m_app->fixPanel();
        panel.present(QPoint(100, 100));
        QTest::keyClicks(panel.view()->editor(), QStringLiteral("teh cat"));
        QTest::keyClick(panel.view()->editor(), Qt::Key_Return);
        QPushButton* openPresets = nullptr;
        QTRY_VERIFY((openPresets = openPresetsButton()) && openPresets->isVisible());
        openPresets->click();

        QTRY_VERIFY(m_app->mainWindow().window() && m_app->mainWindow().window()->isVisible());
        QCOMPARE(m_app->mainWindow().model().selection(), MainSidebarItem::preset(presets[0].id));
        QCOMPARE(m_app->mainWindow().window()->editorModel()->draft().id, presets[0].id);
    }

private:
    QPushButton* openPresetsButton() {
        for (auto* button : m_app->fixPanel()->view()->controls()->findChildren<QPushButton*>())
            if (button->text() == QStringLiteral("Open Presets…"))
                return button;
        return nullptr;
    }

    std::unique_ptr<LinuxServices> m_services;
    InMemoryClipboard m_clipboard;
    test::FakeHotKeyService m_hotKeys;
    std::unique_ptr<AppDelegate> m_app;
};

QTEST_MAIN(AppDelegatePanelTest)
#include "tst_AppDelegatePanel.moc"
