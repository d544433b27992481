#include "ui/panel/FixPanelController.h"

#include "core/panel/PanelPlacement.h"
#include "ui/panel/FixPanelView.h"
#include "ui/panel/FixPanelWindow.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace scrivel {

namespace {

// The primary screen first: it is the one used when the point lies on none.
QList<PanelScreen> currentScreens() {
    QList<PanelScreen> screens;
    QScreen* primary = QGuiApplication::primaryScreen();
    if (primary)
        screens.append({primary->geometry(), primary->availableGeometry()});
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != primary)
            screens.append({screen->geometry(), screen->availableGeometry()});
    }
    return screens;
}

} // namespace

FixPanelController::FixPanelController(PresetStore& presets, RewriteCoordinator& coordinator,
                                       Clipboard& clipboard, PanelWindowTraits traits,
                                       QObject* parent)
    : QObject(parent), m_presets(presets), m_model(presets, coordinator, clipboard),
      m_traits(std::move(traits)) {}

FixPanelController::~FixPanelController() {
    delete m_panel;
}

bool FixPanelController::isPanelVisible() const {
    return m_panel && m_panel->isVisible();
}

void FixPanelController::setShortcutHint(const std::optional<QString>& shortcutHint) {
    m_shortcutHint = shortcutHint;
    if (m_view)
        m_view->setShortcutHint(m_shortcutHint);
}

void FixPanelController::ensurePanel() {
    if (m_panel)
        return;
    m_panel = new FixPanelWindow(m_traits.composited);
    m_view = new FixPanelView(m_model, m_presets);
    m_view->setShortcutHint(m_shortcutHint);
    m_panel->setContent(m_view);
    connect(m_view, &FixPanelView::exitRequested, this, &FixPanelController::dismiss);
    connect(m_panel, &FixPanelWindow::deactivated, this, &FixPanelController::panelDeactivated);
    m_panel->setPlacementRule([this](const QSize& size) { return frameKeptOnScreen(size); });
    // After a drag the window's own position is the one to keep.
    connect(m_panel, &FixPanelWindow::dragStarted, this, [this] { m_origin.reset(); });
    if (m_traits.prepareWindow)
        m_traits.prepareWindow(m_panel);
}

void FixPanelController::present(const QPoint& globalPoint) {
    ensurePanel();
    m_view->flushText();
    // Measured with the text it shows now: a window that changes its size
    // while the window manager is still placing it can be put in the corner.
    m_panel->fitToContent();
    const QPoint origin = PanelPlacement::originNextTo(globalPoint, m_panel->frameGeometry().size(),
                                                       currentScreens());
    m_panel->move(origin);
    m_origin = origin;
    m_model.beginPresentation();
    const bool wasVisible = m_panel->isVisible();
    m_panel->show();
    m_panel->raise();
    m_panel->activateWindow();
    if (!wasVisible)
        Q_EMIT panelShown();
}

QRect FixPanelController::frameKeptOnScreen(const QSize& size) {
    // From the corner last asked for rather than the window's position: under
    // a window manager that position can still be an earlier one reported
    // back late while a reply grows the panel step after step.
    const QPoint from = m_origin.value_or(m_panel->frameGeometry().topLeft());
    m_origin = PanelPlacement::originKeepingInside(QRect(from, size), currentScreens());
    return QRect(*m_origin, size);
}

void FixPanelController::presentCentered(const std::optional<QString>& sampleText) {
    if (sampleText && m_model.text().isEmpty())
        m_model.setText(*sampleText);
    m_model.setShowsShortcutHint(true);
    present(PanelPlacement::centredAnchor(currentScreens()));
}

void FixPanelController::dismiss() {
    if (m_model.stage().kind == PanelStage::Kind::working) {
        m_model.cancel();
        return;
    }
    resetAndHide();
}

void FixPanelController::panelDeactivated() {
    if (m_handingBack || m_model.stage().kind == PanelStage::Kind::working)
        return;
    resetAndHide();
}

void FixPanelController::selectAllText() {
    if (m_view)
        m_view->selectAllText();
}

void FixPanelController::beginHandBack() {
    m_handingBack = true;
}

void FixPanelController::endHandBack(bool pasted) {
    if (!m_handingBack)
        return;
    m_handingBack = false;
    if (pasted) {
        resetAndHide();
        return;
    }
    if (m_panel && m_panel->isVisible()) {
        m_panel->raise();
        m_panel->activateWindow();
    }
}

void FixPanelController::toggle() {
    if (isPanelVisible()) {
        resetAndHide();
        return;
    }
    present(shortcutAnchor());
}

QPoint FixPanelController::shortcutAnchor() const {
    return m_traits.opensAtPointer ? QCursor::pos()
                                   : PanelPlacement::centredAnchor(currentScreens());
}

void FixPanelController::resetAndHide() {
    m_handingBack = false;
    m_model.reset();
    if (!m_panel || !m_panel->isVisible())
        return;
    m_panel->hide();
    Q_EMIT panelHidden();
}

} // namespace scrivel
