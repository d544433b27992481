#include "dummy/InMemorySettingsStore.h"
#include "editor/MainWindow.h"
#include "editor/MainWindowController.h"
#include "editor/MainWindowModel.h"
#include "editor/PresetEditorView.h"
#include "editor/PresetPackPickerDialog.h"
#include "editor/PresetSidebar.h"
#include "presets/PresetStore.h"
#include "support/FakeKeyStore.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

using namespace scrivel;

namespace {

QStringList actionTexts(const QMenu* menu) {
    QStringList texts;
    for (const QAction* action : menu->actions())
        if (!action->isSeparator())
            texts.append(action->text());
    return texts;
}

PresetPackDocument pack(const std::optional<QString>& name, int size,
                        const std::optional<QString>& description) {
    PresetPackDocument document;
    document.name = name;
    document.description = description;
    for (int i = 0; i < size; ++i) {
        PresetPackItem item;
        item.name = QStringLiteral("Item %1").arg(i);
        item.providerID = QStringLiteral("openai");
        document.presets.append(item);
    }
    return document;
}

// Answers the modal dialogs that open, one after the other, with the given
// steps; each step sees the dialog that is up.
class ModalScript : public QObject {
public:
    using Step = std::function<void(QWidget*)>;
    explicit ModalScript(QList<Step> steps) : m_steps(std::move(steps)) {
        m_poll.setInterval(10);
        QObject::connect(&m_poll, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || modal == m_last || m_steps.isEmpty())
                return;
            m_last = modal;
            m_steps.takeFirst()(modal);
        });
        m_poll.start();
    }
    bool done() const { return m_steps.isEmpty(); }

private:
    QList<Step> m_steps;
    QTimer m_poll;
    QPointer<QWidget> m_last;
};

} // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void oneWindowWithItsTitleAndFrame();
    void transferMenuOffersExportSelectedOnlyForPresets();
    void deleteConfirmationTexts();
    void settingsEntryShowsTheSettingsPage();
    void menuBarHoldsTheApplicationMenus();
    void packPickerTexts_data();
    void packPickerTexts();
    void packPickerAddsCopies();
    void importOfANonPackShowsTheAlertAndChangesNothing();
    void exportProposesThePresetName();

private:
    MainWindowServices services();

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    test::FakeKeyStore m_keys;
    std::unique_ptr<MainWindowController> m_controller;
    QList<PresetPackDocument> m_packs;
};

void MainWindowTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_store->seedIfEmpty(false);
    m_keys = test::FakeKeyStore();
    m_packs.clear();
    m_controller = std::make_unique<MainWindowController>(services());
}

void MainWindowTest::cleanup() {
    m_controller.reset();
}

MainWindowServices MainWindowTest::services() {
    MainWindowServices services;
    services.store = m_store.get();
    services.keys = &m_keys;
    services.settings = m_settings.get();
    services.loadModels = [](const ProviderEndpoint&, const std::optional<QString>&) {
        return Future<PresetEditorModel::ModelsResult>::ready(QStringList{"m"});
    };
    services.runTestTransform = [](const Preset&, const QString&) {
        return Future<PresetEditorModel::TestResult>::ready(QStringLiteral("ok"));
    };
    services.settingsPage = [](QWidget* parent) {
        auto* page = new QLabel(QStringLiteral("settings page"), parent);
        page->setObjectName(QStringLiteral("settingsPage"));
        return page;
    };
    services.packs = [this] { return m_packs; };
    services.editorDebounce = std::chrono::milliseconds(10);
    return services;
}

void MainWindowTest::oneWindowWithItsTitleAndFrame() {
    QSignalSpy shown(m_controller.get(), &MainWindowController::windowShown);
    QSignalSpy closed(m_controller.get(), &MainWindowController::windowClosed);
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    QVERIFY(window);
    QCOMPARE(window->windowTitle(), QStringLiteral("Scrivel"));
    QVERIFY(window->minimumWidth() >= 720 && window->minimumHeight() >= 520);
    QCOMPARE(window->width(), 880);
    // Opened on the active preset.
    QCOMPARE(m_controller->model().selection(),
             MainSidebarItem::preset(m_store->activePreset()->id));
    QVERIFY(window->editorView());

    m_controller->present(true);
    QCOMPARE(m_controller->window(), window);
    QCOMPARE(shown.size(), 2);
    QCOMPARE(m_controller->model().selection(), MainSidebarItem::settings());

    window->resize(1000, 700);
    window->close();
    QTRY_COMPARE(closed.size(), 1);
    QVERIFY(!m_controller->window());
    QVERIFY(m_settings->contains(MainWindow::frameKey()));

    m_controller->present(false);
    QVERIFY(m_controller->window());
    QCOMPARE(m_controller->window()->size(), QSize(1000, 700));
}

void MainWindowTest::transferMenuOffersExportSelectedOnlyForPresets() {
    m_controller->present(false);
    PresetSidebar* sidebar = m_controller->window()->sidebar();
    const QStringList base{"Add from Pack…", "Import…", "Export All…"};
    Q_EMIT sidebar->transferMenu()->aboutToShow();
    QCOMPARE(actionTexts(sidebar->transferMenu()), base + QStringList{"Export Selected…"});
    m_controller->model().setSelection(MainSidebarItem::settings());
    Q_EMIT sidebar->transferMenu()->aboutToShow();
    QCOMPARE(actionTexts(sidebar->transferMenu()), base);

    const QUuid id = m_store->presets().first().id;
    QCOMPARE(actionTexts(sidebar->contextMenuFor(id)),
             QStringList({"Use This Preset", "Export Preset…", "Delete Preset"}));
}

void MainWindowTest::deleteConfirmationTexts() {
    m_controller->present(false);
    const Preset victim = m_store->presets()[1];
    m_controller->model().setSelection(MainSidebarItem::preset(victim.id));
    QString title, informative;
    QStringList buttons;
    QTimer::singleShot(50, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(box);
        title = box->text();
        informative = box->informativeText();
        for (QAbstractButton* button : box->buttons())
            buttons.append(button->text());
        for (QAbstractButton* button : box->buttons())
            if (button->text() == QStringLiteral("Delete Preset"))
                button->click();
    });
    QTest::mouseClick(m_controller->window()->sidebar()->deleteButton(), Qt::LeftButton);
    QTRY_VERIFY(!m_store->preset(victim.id));
    QCOMPARE(title, QStringLiteral("Delete this preset?"));
    QCOMPARE(informative, QStringLiteral("“%1” will be permanently deleted.").arg(victim.name));
    QVERIFY(buttons.contains(QStringLiteral("Cancel")));
}

void MainWindowTest::settingsEntryShowsTheSettingsPage() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    PresetSidebarList* list = window->sidebar()->list();
    list->setCurrentRow(list->count() - 1);
    QCOMPARE(m_controller->model().selection(), MainSidebarItem::settings());
    QCOMPARE(window->detail()->objectName(), QStringLiteral("settingsPage"));
    m_controller->model().setSelection(std::nullopt);
    QVERIFY(window->detail()->findChildren<QLabel*>().size() >= 1);
    bool emptyState = false;
    for (const QLabel* label : window->detail()->findChildren<QLabel*>())
        emptyState |= label->text() == QStringLiteral("Select a preset");
    QVERIFY(emptyState);
}

void MainWindowTest::menuBarHoldsTheApplicationMenus() {
    m_controller->present(false);
    const QList<QAction*> menus = m_controller->window()->menuBar()->actions();
    QStringList titles;
    for (const QAction* menu : menus)
        titles.append(menu->text());
    QCOMPARE(titles, QStringList({"Scrivel", "File", "Edit", "Window"}));
    const QMenu* file = menus[1]->menu();
    QCOMPARE(actionTexts(file),
             QStringList({"Import Presets…", "Export Presets…", "Add from Pack…"}));
    QCOMPARE(file->actions().first()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    const QAction* settings = menus[0]->menu()->actions()[2];
    QCOMPARE(settings->text(), QStringLiteral("Settings…"));
    QCOMPARE(settings->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma));
}

void MainWindowTest::packPickerTexts_data() {
    QTest::addColumn<PresetPackDocument>("document");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("detail");
    QTest::newRow("described") << pack(QStringLiteral("Mail"), 3, QStringLiteral("For work."))
                               << "Mail"
                               << "3 presets. For work.";
    QTest::newRow("no description") << pack(QStringLiteral("Mail"), 2, QString()) << "Mail"
                                    << "2 presets";
    QTest::newRow("untitled") << pack(std::nullopt, 1, std::nullopt) << "Untitled Pack"
                              << "1 presets";
}

void MainWindowTest::packPickerTexts() {
    QFETCH(PresetPackDocument, document);
    QFETCH(QString, name);
    QFETCH(QString, detail);
    QCOMPARE(PresetPackPickerDialog::displayName(document), name);
    QCOMPARE(PresetPackPickerDialog::detailText(document), detail);

    PresetPackPickerDialog empty({});
    bool saysNone = false;
    for (const QLabel* label : empty.findChildren<QLabel*>())
        saysNone |= label->text() == QStringLiteral("No bundled packs found.");
    QVERIFY(saysNone);
    QVERIFY(!empty.addButton()->isEnabled());
}

void MainWindowTest::packPickerAddsCopies() {
    m_packs = {pack(QStringLiteral("Mail"), 2, std::nullopt)};
    const qsizetype before = m_store->presets().size();
    m_controller->addFromPack();
    m_controller->addFromPack(); // already showing: stays one picker
    PresetPackPickerDialog* picker = m_controller->window()->packPicker();
    QVERIFY(picker);
    QVERIFY(m_controller->model().isShowingPackPicker());
    picker->findChildren<QRadioButton*>().first()->click();
    QVERIFY(picker->addButton()->isEnabled());
    picker->addButton()->click();
    QCOMPARE(m_store->presets().size(), before + 2);
    QTRY_VERIFY(!m_controller->model().isShowingPackPicker());
    QCOMPARE(m_controller->model().selection(),
             MainSidebarItem::preset(m_store->presets()[before].id));
}

void MainWindowTest::importOfANonPackShowsTheAlertAndChangesNothing() {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("notes.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"hello\": 1}");
    file.close();
    const QList<Preset> before = m_store->presets();

    QString title, message, acceptLabel;
    QStringList buttons;
    ModalScript script({[&](QWidget* modal) {
                            auto* dialog = qobject_cast<QFileDialog*>(modal);
                            QVERIFY(dialog);
                            acceptLabel = dialog->labelText(QFileDialog::Accept);
                            dialog->selectFile(path);
                            static_cast<QDialog*>(dialog)->accept();
                        },
                        [&](QWidget* modal) {
                            auto* box = qobject_cast<QMessageBox*>(modal);
                            QVERIFY(box);
                            title = box->text();
                            message = box->informativeText();
                            for (QAbstractButton* button : box->buttons())
                                buttons.append(button->text());
                            box->buttons().first()->click();
                        }});
    m_controller->importPresets();
    QTRY_VERIFY(script.done());
    QCOMPARE(acceptLabel, QStringLiteral("Import"));
    QCOMPARE(title, QStringLiteral("Couldn’t import presets"));
    QCOMPARE(message, QStringLiteral("This file is not a valid Scrivel preset pack."));
    QCOMPARE(buttons, QStringList{QStringLiteral("Close")});
    QCOMPARE(m_store->presets(), before);
}

void MainWindowTest::exportProposesThePresetName() {
    Preset preset = m_store->presets().first();
    preset.name = QStringLiteral("Mail/Work: Short");
    m_store->update(preset);
    QTemporaryDir folder;
    QString proposed;
    ModalScript script({[&](QWidget* modal) {
        auto* dialog = qobject_cast<QFileDialog*>(modal);
        QVERIFY(dialog);
        QCOMPARE(dialog->labelText(QFileDialog::Accept), QStringLiteral("Export"));
        proposed = QFileInfo(dialog->selectedFiles().value(0)).fileName();
        dialog->selectFile(folder.filePath(proposed));
        static_cast<QDialog*>(dialog)->accept();
    }});
    m_controller->exportPresets({preset.id});
    QTRY_VERIFY(script.done());
    QCOMPARE(proposed, QStringLiteral("Mail-Work- Short.scrivel.json"));
    QFile written(folder.filePath(proposed));
    QVERIFY(written.open(QIODevice::ReadOnly));
    const auto document = PresetPackDocument::decode(written.readAll());
    QVERIFY(document.has_value());
    QCOMPARE(document->presets.size(), 1);
    QCOMPARE(document->presets.first().name, preset.name);
}

QTEST_MAIN(MainWindowTest)
#include "tst_MainWindow.moc"
