#include "ui/editor/MainWindow.h"

#include "core/editor/MainWindowModel.h"
#include "core/editor/PresetEditorModel.h"
#include "core/presets/PresetStore.h"
#include "core/storage/SettingsStore.h"
#include "ui/editor/PresetEditorView.h"
#include "ui/editor/PresetSidebar.h"
#include "ui/tray/TintedIcon.h"
#include "ui/widgets/MessageBoxTitle.h"
#include "ui/widgets/WindowCommandKeys.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

namespace scrivel {

namespace {

// Edit commands go to whichever text field has the focus, as the first
// responder would take them.
void sendToFocus(const char* slot) {
    QWidget* focus = QApplication::focusWidget();
    if (!focus)
        return;
    const QByteArray signature = QByteArray(slot) + "()";
    if (focus->metaObject()->indexOfMethod(signature.constData()) >= 0)
        QMetaObject::invokeMethod(focus, slot);
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
    commandKeys->add(PresetEditorView::useKeys());
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
    // The view goes first: it holds on to the editor model.
    delete m_detailWidget;
    m_editorView = nullptr;
    m_editorModel.reset();
}

void MainWindow::buildMenus() {
    QMenu* app = menuBar()->addMenu(tr("Scrivel"));
    QAction* about = app->addAction(tr("About Scrivel"), this, [this] {
        QMessageBox::about(this, tr("About Scrivel"),
                           tr("Scrivel %1").arg(QCoreApplication::applicationVersion()));
    });
    about->setMenuRole(QAction::AboutRole);
    app->addSeparator();
    QAction* settings = app->addAction(tr("Settings…"), this, &MainWindow::settingsRequested);
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    settings->setMenuRole(QAction::PreferencesRole);
    app->addSeparator();
    app->addAction(tr("Hide Scrivel"), this, &QWidget::showMinimized)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
    // Other applications' windows are the desktop's business here.
    QAction* hideOthers = app->addAction(tr("Hide Others"));
    hideOthers->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_H));
    hideOthers->setEnabled(false);
    app->addAction(tr("Show All"), this, [this] {
        showNormal();
        raise();
        activateWindow();
    });
    app->addSeparator();
    QAction* quit = app->addAction(tr("Quit Scrivel"), qApp, &QCoreApplication::quit);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::QuitRole);

    QMenu* file = menuBar()->addMenu(tr("File"));
    file->addAction(tr("Import Presets…"), this, &MainWindow::importRequested)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    file->addAction(tr("Export Presets…"), this, &MainWindow::exportAllRequested)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    file->addSeparator();
    file->addAction(tr("Add from Pack…"), this, &MainWindow::addFromPackRequested);

    QMenu* edit = menuBar()->addMenu(tr("Edit"));
    m_editMenu = edit;
    edit->addAction(tr("Undo"), this, [] { sendToFocus("undo"); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    edit->addAction(tr("Redo"), this, [] { sendToFocus("redo"); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    edit->addSeparator();
    edit->addAction(tr("Cut"), this, [] { sendToFocus("cut"); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_X));
    edit->addAction(tr("Copy"), this, [] { sendToFocus("copy"); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_C));
    edit->addAction(tr("Paste"), this, [] { sendToFocus("paste"); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_V));
    edit->addAction(tr("Select All"), this, [] { sendToFocus("selectAll"); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_A));

    QMenu* window = menuBar()->addMenu(tr("Window"));
    window->addAction(tr("Close"), this, &QWidget::close)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    window->addAction(tr("Minimize"), this, &QWidget::showMinimized)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
    window->addSeparator();
    window->addAction(tr("Bring All to Front"), this, [this] {
        raise();
        activateWindow();
    });
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
