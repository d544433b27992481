#include "core/editor/MainWindowModel.h"
#include "core/presets/PresetStore.h"
#include "core/storage/KeyStorePlace.h"
#include "core/support/Translations.h"
#include "support/FakeKeyStore.h"
#include "support/InMemorySettingsStore.h"
#include "support/ModalScript.h"
#include "ui/editor/MainWindow.h"
#include "ui/editor/MainWindowController.h"
#include "ui/editor/PresetEditorView.h"
#include "ui/editor/PresetPackPickerDialog.h"
#include "ui/editor/PresetSidebar.h"

#include <QAccessible>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

using namespace scrivel;
using test::ModalScript;

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

// The file dialog's name field, as a user types into it.
QLineEdit* fileNameField(QFileDialog* dialog) {
    return dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
}

// Types path into the name field and confirms, as a user would. (selectFile()
// leaves a focused name field as it is.)
void chooseFile(QFileDialog* dialog, const QString& path) {
    QLineEdit* field = fileNameField(dialog);
    QVERIFY(field);
    field->setText(path);
    static_cast<QDialog*>(dialog)->accept();
}

// Whether a label of widget says text.
bool says(const QWidget* widget, const QString& text) {
    const auto labels = widget->findChildren<QLabel*>();
    return std::ranges::any_of(labels, [&](const QLabel* label) { return label->text() == text; });
}

} // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void oneWindowWithItsTitleAndFrame();
    void transferMenuOffersExportSelectedOnlyForPresets();
    void deleteConfirmationTexts();
    void settingsEntryShowsTheSettingsPage();
    void anUnnamedPresetIsListedAsUntitled();
    void addPutsTheCursorInTheNewName();
    void everyTabStopShowsAndIsNamed();
    void theActivePresetIsAStateOfItsRow();
    void keysAndMenuMoveAPresetAndKeepItSelected_data();
    void keysAndMenuMoveAPresetAndKeepItSelected();
    void menuBarHoldsTheApplicationMenus();
    void editMenuOffersOnlyWhatTheFocusedFieldCanDo();
    void presetsMenuActsOnTheSelection();
    void aboutNamesTheLicenceAndWhereThingsAreKept();
    void packPickerTexts_data();
    void packPickerTexts();
    void packPickerSaysWhenEmptyAndAddsCopies();
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

void MainWindowTest::initTestCase() {
    // The English plural forms ("1 preset").
    Translations::install(*QCoreApplication::instance(), QLocale(QLocale::English));
}

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
    services.settingsFile = QStringLiteral("/home/u/.config/Scrivel/Scrivel.conf");
    services.keyFile = QStringLiteral("/home/u/.local/share/Scrivel/keys & more");
    return services;
}

void MainWindowTest::oneWindowWithItsTitleAndFrame() {
    QSignalSpy shown(m_controller.get(), &MainWindowController::windowShown);
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
    QTRY_VERIFY(!m_controller->window());
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
             QStringList(
                 {"Use This Preset", "Move Up", "Move Down", "Export Preset…", "Delete Preset"}));
}

void MainWindowTest::deleteConfirmationTexts() {
    m_controller->present(false);
    const Preset victim = m_store->presets()[1];
    m_controller->model().setSelection(MainSidebarItem::preset(victim.id));
    test::MessageBoxSeen box;
    ModalScript script({test::answerMessageBox(box, QStringLiteral("Delete Preset"))});
    QTest::mouseClick(m_controller->window()->sidebar()->deleteButton(), Qt::LeftButton);
    QTRY_VERIFY(!m_store->preset(victim.id));
    QCOMPARE(box.title, QStringLiteral("Delete Preset"));
    QVERIFY(box.titleFits);
    QCOMPARE(box.text, QStringLiteral("Delete this preset?"));
    QCOMPARE(box.informative, QStringLiteral("“%1” will be permanently deleted.").arg(victim.name));
    QVERIFY(box.buttons.contains(QStringLiteral("Cancel")));
}

void MainWindowTest::settingsEntryShowsTheSettingsPage() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    PresetSidebarList* list = window->sidebar()->list();
    list->setCurrentRow(list->count() - 1);
    QCOMPARE(m_controller->model().selection(), MainSidebarItem::settings());
    QCOMPARE(window->detail()->objectName(), QStringLiteral("settingsPage"));
    m_controller->model().setSelection(std::nullopt);
    QVERIFY(says(window->detail(), QStringLiteral("Select a preset")));
}

void MainWindowTest::anUnnamedPresetIsListedAsUntitled() {
    m_controller->present(false);
    Preset unnamed = m_store->presets()[1];
    unnamed.name = QStringLiteral(" ");
    m_store->update(unnamed);
    PresetSidebarList* list = m_controller->window()->sidebar()->list();
    QListWidgetItem* row = list->item(2); // after the heading and the first preset
    QCOMPARE(row->data(PresetSidebarList::idRole).toUuid(), unnamed.id);
    QCOMPARE(row->text(), QStringLiteral("Untitled Preset"));
    QVERIFY(row->data(Qt::AccessibleTextRole).toString().startsWith("Untitled Preset, "));
    QCOMPARE(MainWindowModel::deleteConfirmationMessage(unnamed),
             QStringLiteral("“Untitled Preset” will be permanently deleted."));
}

void MainWindowTest::keysAndMenuMoveAPresetAndKeepItSelected_data() {
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("Alt+Down") << "Alt+Down" << 0 << 1;
    QTest::newRow("Alt+Up") << "Alt+Up" << 2 << 1;
    QTest::newRow("Move Down") << "Move Down" << 1 << 2;
    QTest::newRow("Move Up") << "Move Up" << 1 << 0;
    QTest::newRow("Alt+Up on the first") << "Alt+Up" << 0 << 0;
}

void MainWindowTest::keysAndMenuMoveAPresetAndKeepItSelected() {
    QFETCH(QString, how);
    QFETCH(int, from);
    QFETCH(int, to);
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    PresetSidebar* sidebar = window->sidebar();
    PresetSidebarList* list = sidebar->list();
    const int rows = list->count();
    const Preset moved = m_store->presets()[from];
    m_controller->model().setSelection(MainSidebarItem::preset(moved.id));

    if (how.startsWith(QStringLiteral("Alt+"))) {
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        list->setFocus();
        QTest::keyClick(list, how.endsWith(QStringLiteral("Up")) ? Qt::Key_Up : Qt::Key_Down,
                        Qt::AltModifier);
    } else {
        QMenu* menu = sidebar->contextMenuFor(moved.id);
        const auto actions = menu->actions();
        const auto found = std::ranges::find_if(
            actions, [&](const QAction* action) { return action->text() == how; });
        QVERIFY(found != actions.end());
        QVERIFY((*found)->isEnabled());
        (*found)->trigger();
    }

    QCOMPARE(m_store->presets()[to].id, moved.id);
    // Every row is still there, in the store's order, and the moved one is
    // still the selected one, in the sidebar and in the editor.
    QCOMPARE(list->count(), rows);
    for (int i = 0; i < m_store->presets().size(); ++i)
        QCOMPARE(list->item(i + 1)->data(PresetSidebarList::idRole).toUuid(),
                 m_store->presets()[i].id);
    QCOMPARE(list->currentItem()->data(PresetSidebarList::idRole).toUuid(), moved.id);
    QCOMPARE(m_controller->model().selection(), MainSidebarItem::preset(moved.id));
    QCOMPARE(window->editorModel()->draft().id, moved.id);
}

void MainWindowTest::addPutsTheCursorInTheNewName() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    QTest::mouseClick(window->sidebar()->addButton(), Qt::LeftButton);
    QLineEdit* name = window->editorView()->nameField();
    QCOMPARE(window->editorModel()->draft().id, m_store->presets().last().id);
    QTRY_COMPARE(QApplication::focusWidget(), name);
    QCOMPARE(name->selectedText(), QStringLiteral("New Preset"));
}

void MainWindowTest::everyTabStopShowsAndIsNamed() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    window->editorView()->nameField()->setFocus();
    // What each stop is called for a screen reader (a focused link: its
    // text), once round the window.
    QStringList stops;
    for (int i = 0; i < 30; ++i) {
        QWidget* focus = QApplication::focusWidget();
        QVERIFY(focus && focus->isVisible());
        QVERIFY(!QAccessible::queryAccessibleInterface(focus)->text(QAccessible::Name).isEmpty());
        QString name = focus->accessibleName();
        if (auto* label = qobject_cast<QLabel*>(focus))
            name = label->selectedText();
        if (!stops.isEmpty() && name == stops.first() && focus == window->editorView()->nameField())
            break;
        stops.append(name);
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    QCOMPARE(stops, QStringList({"Name", "Provider", "API key", "Show API key", "Model",
                                 "Get an API key", "Instructions", "Presets", "Add Preset",
                                 "Delete Preset", "Preset Transfer"}));
}

void MainWindowTest::theActivePresetIsAStateOfItsRow() {
    m_controller->present(false);
    const QUuid active = m_store->presets()[1].id;
    m_store->activate(active);
    PresetSidebarList* list = m_controller->window()->sidebar()->list();
    QAccessibleInterface* rows = QAccessible::queryAccessibleInterface(list);
    QVERIFY(rows);
    int checked = 0;
    for (int i = 0; i < rows->childCount(); ++i) {
        QAccessibleInterface* row = rows->child(i);
        if (!row->state().checked)
            continue;
        ++checked;
        QVERIFY(row->text(QAccessible::Name).startsWith(m_store->presets()[1].name + ", "));
    }
    QCOMPARE(checked, 1);
}

void MainWindowTest::menuBarHoldsTheApplicationMenus() {
    m_controller->present(false);
    const QList<QAction*> menus = m_controller->window()->menuBar()->actions();
    QStringList titles;
    for (const QAction* menu : menus)
        titles.append(menu->text());
    QCOMPARE(titles, QStringList({"&File", "&Edit", "&Presets", "&Settings", "&Help"}));
    const QMenu* file = menus[0]->menu();
    QCOMPARE(actionTexts(file),
             QStringList({"Import Presets…", "Export Presets…", "Close Window", "Quit Scrivel"}));
    QCOMPARE(file->actions().first()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    QCOMPARE(file->actions().last()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    QCOMPARE(actionTexts(menus[1]->menu()),
             QStringList({"Undo", "Redo", "Cut", "Copy", "Paste", "Select All"}));
    QCOMPARE(actionTexts(menus[2]->menu()),
             QStringList({"Add Preset", "Use This Preset", "Delete Preset", "Add from Pack…"}));
    // Each command shows the key that runs it from any field of the window.
    QCOMPARE(menus[2]->menu()->actions()[1]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_U));
    const QAction* settings = menus[3]->menu()->actions().first();
    QCOMPARE(settings->text(), QStringLiteral("Configure Scrivel…"));
    QCOMPARE(settings->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma));
    QSignalSpy settingsRequested(m_controller->window(), &MainWindow::settingsRequested);
    const_cast<QAction*>(settings)->trigger();
    QCOMPARE(settingsRequested.count(), 1);
    QCOMPARE(actionTexts(menus[4]->menu()), QStringList({"About Scrivel"}));
}

void MainWindowTest::editMenuOffersOnlyWhatTheFocusedFieldCanDo() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    QVERIFY(QTest::qWaitForWindowActive(window));
    QMenu* edit = window->menuBar()->actions()[1]->menu();
    const auto enabled = [edit] {
        Q_EMIT edit->aboutToShow();
        QStringList names;
        for (const QAction* action : edit->actions())
            if (!action->isSeparator() && action->isEnabled())
                names.append(action->text());
        return names;
    };
    // Nothing focused that edits text: nothing to offer.
    window->sidebar()->setFocus();
    QCOMPARE(enabled(), QStringList());

    auto* field = new QLineEdit(window->detail());
    field->show();
    field->setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), field);
    QGuiApplication::clipboard()->clear();
    QCOMPARE(enabled(), QStringList()); // empty, nothing done, nothing to paste
    QTest::keyClicks(field, QStringLiteral("abc"));
    QCOMPARE(enabled(), QStringList({"Undo", "Select All"}));
    // The menu bar holding the focus (as it does after Escape) still acts on
    // the field.
    window->menuBar()->setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), window->menuBar());
    QCOMPARE(enabled(), QStringList({"Undo", "Select All"}));
    field->setFocus();
    field->selectAll();
    QCOMPARE(enabled(), QStringList({"Undo", "Cut", "Copy", "Select All"}));
    // The menu's commands reach the field.
    edit->actions()[3]->trigger(); // Cut
    QCOMPARE(field->text(), QString());
    QCOMPARE(enabled(), QStringList({"Undo", "Paste"}));
    edit->actions()[0]->trigger(); // Undo
    QCOMPARE(field->text(), QStringLiteral("abc"));
    QVERIFY(enabled().contains(QStringLiteral("Redo")));
    // A hidden key is never copied out.
    field->setEchoMode(QLineEdit::Password);
    field->selectAll();
    QVERIFY(!enabled().contains(QStringLiteral("Copy")));
}

void MainWindowTest::presetsMenuActsOnTheSelection() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    QMenu* presets = window->menuBar()->actions()[2]->menu();
    QAction* add = presets->actions()[0];
    QAction* use = presets->actions()[1];
    QAction* remove = presets->actions()[2];
    const QUuid second = m_store->presets()[1].id;
    m_controller->model().setSelection(MainSidebarItem::preset(second));
    Q_EMIT presets->aboutToShow();
    QVERIFY(use->isEnabled() && remove->isEnabled());
    use->trigger();
    QCOMPARE(m_store->activePresetID(), std::optional(second));
    Q_EMIT presets->aboutToShow();
    QVERIFY(!use->isEnabled()); // already the active one

    const qsizetype before = m_store->presets().size();
    add->trigger();
    QCOMPARE(m_store->presets().size(), before + 1);

    m_controller->model().setSelection(MainSidebarItem::settings());
    Q_EMIT presets->aboutToShow();
    QVERIFY(!use->isEnabled() && !remove->isEnabled());
}

void MainWindowTest::aboutNamesTheLicenceAndWhereThingsAreKept() {
    m_controller->present(false);
    MainWindow* window = m_controller->window();
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    const QString keyring = window->aboutText();
    QVERIFY(keyring.contains(QStringLiteral("Scrivel 1.2.3")));
    QVERIFY(keyring.contains(QStringLiteral("Rewrites text with a large language model.")));
    QVERIFY(keyring.contains(QStringLiteral("Licence: MIT")));
    QVERIFY(keyring.contains(
        QStringLiteral("Settings and presets are kept in /home/u/.config/Scrivel/Scrivel.conf.")));
    QVERIFY(keyring.contains(
        QStringLiteral("API keys are kept in the desktop’s keyring (Secret Service).")));
    setCurrentKeyStorePlace(KeyStorePlace::privateKeyFile);
    const QString keyFile = window->aboutText();
    setCurrentKeyStorePlace(KeyStorePlace::desktopKeyring);
    QVERIFY(
        keyFile.contains(QStringLiteral("API keys are kept in /home/u/.local/share/Scrivel/keys "
                                        "&amp; more, readable only by you.")));
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
                              << "1 preset";
}

void MainWindowTest::packPickerTexts() {
    QFETCH(PresetPackDocument, document);
    QFETCH(QString, name);
    QFETCH(QString, detail);
    QCOMPARE(PresetPackPickerDialog::displayName(document), name);
    QCOMPARE(PresetPackPickerDialog::detailText(document), detail);
}

void MainWindowTest::packPickerSaysWhenEmptyAndAddsCopies() {
    PresetPackPickerDialog empty({});
    QVERIFY(says(&empty, QStringLiteral("No bundled packs found.")));
    QVERIFY(!empty.addButton()->isEnabled());

    m_packs = {pack(QStringLiteral("Mail"), 2, std::nullopt)};
    const qsizetype before = m_store->presets().size();
    m_controller->addFromPack();
    m_controller->addFromPack(); // already showing: stays one picker
    QPointer<PresetPackPickerDialog> picker = m_controller->packPicker();
    QVERIFY(picker);
    QCOMPARE(m_controller->window()->findChildren<PresetPackPickerDialog*>().size(), 1);
    picker->findChildren<QRadioButton*>().first()->click();
    QVERIFY(picker->addButton()->isEnabled());
    picker->addButton()->click();
    QCOMPARE(m_store->presets().size(), before + 2);
    QTRY_VERIFY(!picker); // closed
    QCOMPARE(m_controller->model().selection(),
             MainSidebarItem::preset(m_store->presets()[before].id));
}

void MainWindowTest::importOfANonPackShowsTheAlertAndChangesNothing() {
    // A home without a Documents folder: the dialog starts in the home
    // folder itself, with nothing typed for the user.
    QTemporaryDir home;
    const QByteArray realHome = qgetenv("HOME");
    qputenv("HOME", QFile::encodeName(home.path()));
    auto restoreHome = qScopeGuard([&] { qputenv("HOME", realHome); });
    const QString path = home.filePath(QStringLiteral("notes.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"hello\": 1}");
    file.close();
    const QList<Preset> before = m_store->presets();

    QString title;
    QString acceptLabel;
    QString folder;
    QString typed;
    test::MessageBoxSeen box;
    ModalScript script({[&](QWidget* modal) {
                            auto* dialog = qobject_cast<QFileDialog*>(modal);
                            QVERIFY(dialog);
                            title = dialog->windowTitle();
                            acceptLabel = dialog->labelText(QFileDialog::Accept);
                            folder = dialog->directory().absolutePath();
                            typed = fileNameField(dialog)->text();
                            chooseFile(dialog, path);
                        },
                        test::answerMessageBox(box, QStringLiteral("Close"))});
    m_controller->importPresets();
    QTRY_VERIFY(script.done());
    QCOMPARE(title, QStringLiteral("Import Presets"));
    QCOMPARE(acceptLabel, QStringLiteral("Import"));
    QCOMPARE(folder, QDir(home.path()).absolutePath());
    QCOMPARE(typed, QString());
    QCOMPARE(box.title, QStringLiteral("Scrivel"));
    QVERIFY(box.titleFits);
    QCOMPARE(box.text, QStringLiteral("Couldn’t import presets"));
    QCOMPARE(box.informative, QStringLiteral("This file is not a valid Scrivel preset pack."));
    QCOMPARE(box.buttons, QStringList{QStringLiteral("Close")});
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
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Export Presets"));
        QCOMPARE(dialog->labelText(QFileDialog::Accept), QStringLiteral("Export"));
        proposed = fileNameField(dialog)->text();
        chooseFile(dialog, folder.filePath(proposed));
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
