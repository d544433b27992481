#include "ui/editor/MainWindow.h"

#include "core/editor/MainWindowModel.h"
#include "core/editor/PresetEditorModel.h"
#include "core/presets/PresetStore.h"
#include "core/storage/KeyStorePlace.h"
#include "core/storage/SettingsStore.h"
#include "ui/editor/PresetEditorView.h"
#include "ui/editor/PresetSidebar.h"
#include "ui/tray/TintedIcon.h"
#include "ui/widgets/MessageBoxTitle.h"
#include "ui/widgets/WindowCommandKeys.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QTextEdit>
#include <QVBoxLayout>

namespace scrivel {

namespace {

// What the Edit menu's commands can do in the focused widget.
struct EditState {
    bool undo = false;
    bool redo = false;
    bool cut = false;
    bool copy = false;
    bool paste = false;
    bool selectAll = false;
};

// Reading the clipboard asks its owner, which may be slow: only done when
// the menu opens.
EditState editStateOf(const QWidget* focus, bool readClipboard) {
    EditState state;
    const bool clipboardHasText = !readClipboard || !QGuiApplication::clipboard()->text().isEmpty();
    if (const auto* line = qobject_cast<const QLineEdit*>(focus)) {
        // A hidden key is never copied out of its field.
        const bool shown = line->echoMode() == QLineEdit::Normal;
        state.undo = line->isUndoAvailable();
        state.redo = line->isRedoAvailable();
        state.copy = shown && line->hasSelectedText();
        state.cut = state.copy && !line->isReadOnly();
        state.paste = !line->isReadOnly() && clipboardHasText;
        state.selectAll = !line->text().isEmpty();
    } else if (const auto* text = qobject_cast<const QTextEdit*>(focus)) {
        state.undo = text->document()->isUndoAvailable();
        state.redo = text->document()->isRedoAvailable();
        state.copy = text->textCursor().hasSelection();
        state.cut = state.copy && !text->isReadOnly();
        state.paste = !text->isReadOnly() && text->canPaste();
        state.selectAll = !text->document()->isEmpty();
    } else if (const auto* plain = qobject_cast<const QPlainTextEdit*>(focus)) {
        state.undo = plain->document()->isUndoAvailable();
        state.redo = plain->document()->isRedoAvailable();
        state.copy = plain->textCursor().hasSelection();
        state.cut = state.copy && !plain->isReadOnly();
        state.paste = !plain->isReadOnly() && plain->canPaste();
        state.selectAll = !plain->document()->isEmpty();
    }
    return state;
}

// Edit commands go to the text field that had the focus last.
void sendTo(QWidget* target, const char* slot) {
    if (!target)
        return;
    const QByteArray signature = QByteArray(slot) + "()";
    if (target->metaObject()->indexOfMethod(signature.constData()) >= 0)
        QMetaObject::invokeMethod(target, slot);
}

QWidget* emptyState(QWidget* parent) {
    auto* widget = new QWidget(parent);
    auto* icon = new QLabel(widget);
    icon->setAlignment(Qt::AlignCenter);
    icon->setPixmap(tintedSvgIcon(QStringLiteral(":/icons/sliders.svg"),
                                  widget->palette().color(QPalette::PlaceholderText))
                        .pixmap(QSize(40, 40), widget->devicePixelRatioF()));
    auto* title = new QLabel(MainWindow::tr("Select a preset"), widget);
    title->setAlignment(Qt::AlignCenter);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.3);
    font.setBold(true);
    title->setFont(font);
    title->setForegroundRole(QPalette::PlaceholderText);
    auto* layout = new QVBoxLayout(widget);
    layout->addStretch(1);
    layout->addWidget(icon);
    layout->addWidget(title);
    layout->addStretch(1);
    return widget;
}

} // namespace

MainWindow::MainWindow(MainWindowModel& model, const MainWindowServices& services, QWidget* parent)
    : QMainWindow(parent), m_model(model), m_services(services),
      m_sidebar(new PresetSidebar(model, this)), m_detailArea(new QWidget(this)) {
    setWindowTitle(tr("Scrivel"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* detailLayout = new QVBoxLayout(m_detailArea);
    detailLayout->setContentsMargins(0, 0, 0, 0);
    auto* splitter = new QSplitter(this);
    splitter->setChildrenCollapsible(false);
    m_sidebar->setMinimumWidth(200);
    splitter->addWidget(m_sidebar);
    splitter->addWidget(m_detailArea);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({240, 640});
    setCentralWidget(splitter);
    buildMenus();
    // The window's commands win over the keys of its text fields; the edit
    // commands are the fields' own.
    auto* commandKeys = new WindowCommandKeys(this);
    for (const QAction* menu : menuBar()->actions()) {
        if (menu->menu() == m_editMenu)
            continue;
        for (const QAction* action : menu->menu()->actions())
            commandKeys->add(action->shortcut());
    }
    setMinimumSize(minimumContentSize().width(),
                   minimumContentSize().height() + menuBar()->sizeHint().height());

    connect(m_sidebar, &PresetSidebar::addFromPackRequested, this,
            &MainWindow::addFromPackRequested);
    connect(m_sidebar, &PresetSidebar::importRequested, this, &MainWindow::importRequested);
    connect(m_sidebar, &PresetSidebar::exportAllRequested, this, &MainWindow::exportAllRequested);
    connect(m_sidebar, &PresetSidebar::exportRequested, this, &MainWindow::exportRequested);
    // A new preset is named first.
    connect(m_sidebar, &PresetSidebar::presetAdded, this, [this] {
        if (!m_editorView)
            return;
        m_editorView->nameField()->setFocus(Qt::OtherFocusReason);
        m_editorView->nameField()->selectAll();
    });
    connect(&m_model, &MainWindowModel::selectionChanged, this, &MainWindow::showDetail);
    connect(&m_model, &MainWindowModel::deleteConfirmationChanged, this,
            &MainWindow::showDeleteConfirmation, Qt::QueuedConnection);
    connect(&m_model.store(), &PresetStore::activePresetIDChanged, this,
            &MainWindow::refreshActiveState);
    connect(&m_model.store(), &PresetStore::presetsChanged, this, [this] {
        // The edited preset was deleted or replaced by someone else.
        const std::optional<Preset> stored =
            m_editedPresetID ? m_model.store().preset(*m_editedPresetID) : std::nullopt;
        if (!m_editedPresetID || !m_editorModel)
            return;
        if (!stored || (*stored != m_editorModel->draft() && *stored != m_editorModel->lastSaved()))
            showDetail();
    });
    showDetail();
}

MainWindow::~MainWindow() {
    // Focus moves while the widgets go; the menus' actions may be gone by then.
    disconnect(m_focusWatch);
    // The view goes first: it holds on to the editor model.
    delete m_detailWidget;
    m_editorView = nullptr;
    m_editorModel.reset();
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("Import Presets…"), this, &MainWindow::importRequested)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    file->addAction(tr("Export Presets…"), this, &MainWindow::exportAllRequested)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    file->addSeparator();
    file->addAction(tr("Close Window"), this, &QWidget::close)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    QAction* quit = file->addAction(tr("Quit Scrivel"), qApp, &QCoreApplication::quit);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::QuitRole);

    m_editMenu = menuBar()->addMenu(tr("&Edit"));
    const auto editAction = [this](const QString& text, const char* slot, QKeySequence keys) {
        QAction* action =
            m_editMenu->addAction(text, this, [this, slot] { sendTo(m_editTarget, slot); });
        action->setShortcut(keys);
        return action;
    };
    m_undo = editAction(tr("Undo"), "undo", QKeySequence(Qt::CTRL | Qt::Key_Z));
    m_redo = editAction(tr("Redo"), "redo", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    m_editMenu->addSeparator();
    m_cut = editAction(tr("Cut"), "cut", QKeySequence(Qt::CTRL | Qt::Key_X));
    m_copy = editAction(tr("Copy"), "copy", QKeySequence(Qt::CTRL | Qt::Key_C));
    m_paste = editAction(tr("Paste"), "paste", QKeySequence(Qt::CTRL | Qt::Key_V));
    m_editMenu->addSeparator();
    m_selectAll = editAction(tr("Select All"), "selectAll", QKeySequence(Qt::CTRL | Qt::Key_A));
    connect(m_editMenu, &QMenu::aboutToShow, this, [this] { updateEditActions(true); });
    // Kept current while the menu is closed too, so that a shortcut of a
    // command with nothing to act on does nothing.
    // The menu bar and its menus take the focus while they are used (after
    // Escape, the bar keeps it): the commands stay with the field before.
    m_focusWatch = connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (qobject_cast<QMenuBar*>(now) || qobject_cast<QMenu*>(now))
            return;
        m_editTarget = now && isAncestorOf(now) ? now : nullptr;
        updateEditActions(false);
    });
    updateEditActions(false);

    m_presetsMenu = menuBar()->addMenu(tr("&Presets"));
    m_addPreset = m_presetsMenu->addAction(tr("Add Preset"), this, [this] { m_model.addPreset(); });
    m_addPreset->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
    m_usePreset = m_presetsMenu->addAction(tr("Use This Preset"), this, [this] {
        if (const std::optional<Preset> selected = m_model.selectedPreset())
            m_model.store().activate(selected->id);
    });
    // Shown with its key, which works from every field of the window.
    m_usePreset->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_U));
    m_deletePreset = m_presetsMenu->addAction(tr("Delete Preset"), this,
                                              [this] { m_model.requestDeletionOfSelection(); });
    m_presetsMenu->addSeparator();
    m_presetsMenu->addAction(tr("Add from Pack…"), this, &MainWindow::addFromPackRequested);
    // Kept current while the menu is closed too: a disabled command's key
    // does nothing.
    connect(m_presetsMenu, &QMenu::aboutToShow, this, &MainWindow::updatePresetActions);
    connect(&m_model, &MainWindowModel::selectionChanged, this, &MainWindow::updatePresetActions);
    connect(&m_model.store(), &PresetStore::activePresetIDChanged, this,
            &MainWindow::updatePresetActions);
    connect(&m_model.store(), &PresetStore::presetsChanged, this, &MainWindow::updatePresetActions);
    updatePresetActions();

    QMenu* settingsMenu = menuBar()->addMenu(tr("&Settings"));
    QAction* settings =
        settingsMenu->addAction(tr("Configure Scrivel…"), this, &MainWindow::settingsRequested);
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    settings->setMenuRole(QAction::PreferencesRole);

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("About Scrivel"), this, &MainWindow::showAbout)
        ->setMenuRole(QAction::AboutRole);
}

void MainWindow::updateEditActions(bool readClipboard) {
    const EditState state = editStateOf(m_editTarget, readClipboard);
    m_undo->setEnabled(state.undo);
    m_redo->setEnabled(state.redo);
    m_cut->setEnabled(state.cut);
    m_copy->setEnabled(state.copy);
    m_paste->setEnabled(state.paste);
    m_selectAll->setEnabled(state.selectAll);
}

void MainWindow::updatePresetActions() {
    const std::optional<Preset> selected = m_model.selectedPreset();
    m_usePreset->setEnabled(selected && !m_model.isActive(selected->id));
    m_deletePreset->setEnabled(m_model.canDeleteSelection());
}

QString MainWindow::aboutText() const {
    const auto paragraph = [](const QString& text) {
        return QStringLiteral("<p>") + text.toHtmlEscaped() + QStringLiteral("</p>");
    };
    QString text = QStringLiteral("<h3>") +
                   tr("Scrivel %1").arg(QCoreApplication::applicationVersion()).toHtmlEscaped() +
                   QStringLiteral("</h3>");
    text += paragraph(tr("Rewrites text with a large language model."));
    text += paragraph(tr("Licence: %1").arg(QStringLiteral("MIT")));
    if (!m_services.settingsFile.isEmpty())
        text += paragraph(tr("Settings and presets are kept in %1.").arg(m_services.settingsFile));
    if (currentKeyStorePlace() == KeyStorePlace::privateKeyFile && !m_services.keyFile.isEmpty())
        text +=
            paragraph(tr("API keys are kept in %1, readable only by you.").arg(m_services.keyFile));
    else
        text += paragraph(tr("API keys are kept in the desktop’s keyring (Secret Service)."));
    return text;
}

void MainWindow::showAbout() {
    QMessageBox::about(this, tr("About Scrivel"), aboutText());
}

void MainWindow::showDetail() {
    delete m_detailWidget;
    m_detailWidget = nullptr;
    m_editorView = nullptr;
    m_editorModel.reset();
    m_editedPresetID.reset();
    m_onDeviceStatus.cancel();

    const std::optional<MainSidebarItem>& selection = m_model.selection();
    const std::optional<Preset> preset = m_model.selectedPreset();
    if (preset && m_services.store && m_services.keys) {
        m_editedPresetID = preset->id;
        m_editorModel = std::make_unique<PresetEditorModel>(
            *preset, *m_services.store, *m_services.keys, m_services.loadModels,
            m_services.runTestTransform,
            PresetEditorModel::Options{m_services.editorDebounce, nullptr});
        const QUuid id = preset->id;
        auto* scroll = new QScrollArea(m_detailArea);
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        // The form's fields take the focus; the area around them shows none.
        scroll->setFocusPolicy(Qt::NoFocus);
        m_editorView = new PresetEditorView(
            *m_editorModel, [this, id] { m_model.store().activate(id); }, scroll);
        scroll->setWidget(m_editorView);
        m_detailWidget = scroll;
        refreshActiveState();
        if (m_services.onDeviceUnavailable) {
            m_onDeviceStatus = m_services.onDeviceUnavailable();
            m_onDeviceStatus.then(this, [this](std::optional<UnavailableReason> reason) {
                if (m_editorView)
                    m_editorView->setOnDeviceUnavailable(reason);
            });
        }
    } else if (selection && selection->kind() != MainSidebarItem::Kind::preset) {
        m_detailWidget = m_services.settingsPage ? m_services.settingsPage(m_detailArea)
                                                 : new QWidget(m_detailArea);
    } else {
        m_detailWidget = emptyState(m_detailArea);
    }
    m_detailArea->layout()->addWidget(m_detailWidget);
}

void MainWindow::refreshActiveState() {
    if (m_editorView && m_editedPresetID)
        m_editorView->setActive(m_model.isActive(*m_editedPresetID));
}

void MainWindow::showDeleteConfirmation() {
    const std::optional<Preset> pending = m_model.presetPendingDeletion();
    if (!pending)
        return;
    QMessageBox box(QMessageBox::Warning, tr("Delete Preset"),
                    MainWindowModel::deleteConfirmationTitle(), QMessageBox::NoButton, this);
    box.setInformativeText(MainWindowModel::deleteConfirmationMessage(*pending));
    QPushButton* remove = box.addButton(tr("Delete Preset"), QMessageBox::DestructiveRole);
    QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    makeRoomForTitle(box);
    box.exec();
    if (box.clickedButton() == remove)
        m_model.confirmDeletion();
    else
        m_model.cancelDeletion();
}

void MainWindow::restoreFrame() {
    const std::optional<QByteArray> saved =
        m_services.settings ? m_services.settings->data(frameKey()) : std::nullopt;
    if (saved && restoreGeometry(*saved))
        return;
    resize(initialSize().width(), initialSize().height() + menuBar()->sizeHint().height());
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        QRect frame = frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        move(frame.topLeft());
    }
}

void MainWindow::saveFrame() {
    if (m_services.settings)
        m_services.settings->setData(frameKey(), saveGeometry());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveFrame();
    QMainWindow::closeEvent(event);
}

} // namespace scrivel
