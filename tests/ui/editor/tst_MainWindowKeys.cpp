#include "core/editor/MainWindowModel.h"
#include "core/presets/PresetStore.h"
#include "support/FakeKeyStore.h"
#include "support/InMemorySettingsStore.h"
#include "ui/editor/InstructionsEditor.h"
#include "ui/editor/MainWindow.h"
#include "ui/editor/PresetConnectionView.h"
#include "ui/editor/PresetEditorView.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;

// The window's command keys against the keys of its text fields. On X11 a
// line edit claims Ctrl+U (clear the line) and Ctrl+E (go to its end) for
// itself, so this suite runs on the X11 platform: offscreen has neither
// binding and would pass whatever the window did.
class MainWindowKeysTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void windowCommandsWinOverTextFields_data();
    void windowCommandsWinOverTextFields();
    void editingKeysStayWithTheField();

private:
    QWidget* field(const QString& name) const;

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    test::FakeKeyStore m_keys;
    MainWindowServices m_services;
    std::unique_ptr<MainWindowModel> m_model;
    std::unique_ptr<MainWindow> m_window;
};

void MainWindowKeysTest::initTestCase() {
    if (QGuiApplication::platformName() != QStringLiteral("xcb"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
}

void MainWindowKeysTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_store->seedIfEmpty(false);
    m_keys = test::FakeKeyStore();
    m_keys.keys.insert(QStringLiteral("groq"), QStringLiteral("gsk-saved"));
    m_services = {};
    m_services.store = m_store.get();
    m_services.keys = &m_keys;
    m_services.loadModels = [](const ProviderEndpoint&, const std::optional<QString>&) {
        return Future<PresetEditorModel::ModelsResult>::ready(QStringList{"m"});
    };
    m_services.runTestTransform = [](const Preset&, const QString&) {
        return Future<PresetEditorModel::TestResult>::ready(QStringLiteral("ok"));
    };
    m_services.editorDebounce = std::chrono::milliseconds(10);
    m_model = std::make_unique<MainWindowModel>(*m_store);
    // A preset that is not the active one: "Use Preset" has work to do.
    m_model->setSelection(MainSidebarItem::preset(m_store->presets()[1].id));
    m_window = std::make_unique<MainWindow>(*m_model, m_services);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void MainWindowKeysTest::cleanup() {
    m_window.reset();
    m_model.reset();
}

QWidget* MainWindowKeysTest::field(const QString& name) const {
    PresetEditorView* editor = m_window->editorView();
    if (name == QStringLiteral("Name"))
        return editor->nameField();
    if (name == QStringLiteral("API key"))
        return editor->connectionView()->keyField();
    return editor->instructions()->editor();
}

QString textOf(QWidget* widget) {
    if (auto* line = qobject_cast<QLineEdit*>(widget))
        return line->text();
    return qobject_cast<QPlainTextEdit*>(widget)->toPlainText();
}

void MainWindowKeysTest::windowCommandsWinOverTextFields_data() {
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<int>("key");
    for (const QString& name :
         {QStringLiteral("Name"), QStringLiteral("API key"), QStringLiteral("Instructions")}) {
        QTest::addRow("Ctrl+U in %s", qPrintable(name)) << name << int(Qt::Key_U);
        QTest::addRow("Ctrl+E in %s", qPrintable(name)) << name << int(Qt::Key_E);
    }
}

void MainWindowKeysTest::windowCommandsWinOverTextFields() {
    QFETCH(QString, fieldName);
    QFETCH(int, key);
    const QUuid shown = m_store->presets()[1].id;
    QWidget* target = field(fieldName);
    QTRY_VERIFY(!textOf(target).isEmpty());
    const QString before = textOf(target);
    target->setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), target);
    QSignalSpy exportAll(m_window.get(), &MainWindow::exportAllRequested);

    QTest::keyClick(target, Qt::Key(key), Qt::ControlModifier);

    if (key == Qt::Key_U)
        QCOMPARE(m_store->activePreset()->id, shown);
    else
        QCOMPARE(exportAll.size(), 1);
    // The field kept its text, and so did the store.
    QCOMPARE(textOf(target), before);
    QVERIFY(!QTest::qWaitFor(
        [&] {
            return m_store->preset(shown)->name.isEmpty() ||
                   m_keys.keys.value(QStringLiteral("groq")) != QStringLiteral("gsk-saved");
        },
        50));
}

void MainWindowKeysTest::editingKeysStayWithTheField() {
    QLineEdit* name = m_window->editorView()->nameField();
    name->setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), name);
    name->setCursorPosition(0);
    // Ctrl+K (delete to the end of the line) is the field's own key.
    QTest::keyClick(name, Qt::Key_K, Qt::ControlModifier);
    QCOMPARE(name->text(), QString());
}

int main(int argc, char** argv) {
    // The X11 key bindings come with the X11 platform theme only.
    if (qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    MainWindowKeysTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_MainWindowKeys.moc"
