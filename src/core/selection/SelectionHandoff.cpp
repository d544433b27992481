#include "core/selection/SelectionHandoff.h"

#include "core/panel/FixPanelModel.h"
#include "core/selection/SelectionPreferences.h"
#include "core/transform/RewriteError.h"

#include <utility>

namespace scrivel {

SelectionHandoff::SelectionHandoff(SelectionDesktop* desktop, SelectionPreferences& preferences,
                                   FixPanelModel& model, Bounds bounds, QObject* parent)
    : QObject(parent), m_desktop(desktop), m_preferences(preferences), m_model(model),
      m_bounds(bounds) {
    m_showGrace.setSingleShot(true);
    m_showGrace.setInterval(m_bounds.showGrace);
    connect(&m_showGrace, &QTimer::timeout, this, &SelectionHandoff::showPanel);
    m_readBound.setSingleShot(true);
    m_readBound.setInterval(m_bounds.read);
    connect(&m_readBound, &QTimer::timeout, this, &SelectionHandoff::giveUpReading);
    m_focusWait.setInterval(m_bounds.focusCheck);
    connect(&m_focusWait, &QTimer::timeout, this, &SelectionHandoff::checkFocus);
    connect(&m_model, &FixPanelModel::stageChanged, this, &SelectionHandoff::onStageChanged);
}

SelectionHandoff::~SelectionHandoff() = default;

void SelectionHandoff::openPanel(std::function<void()> show) {
    panelDidClose();
    m_show = std::move(show);
    if (!m_desktop || !m_preferences.takesSelection()) {
        showPanel();
        return;
    }
    const SelectionScene scene = m_desktop->scene();
    if (!SelectionRules::isOwnedByFocusedWindow(scene)) {
        showPanel();
        return;
    }
    m_candidate = scene.focused;
    const qint64 generation = m_generation;
    m_read = m_desktop->readPrimary(SelectionRules::byteLimit());
    m_read.then(this, [this, generation](const PrimarySelection& selection) {
        receive(generation, selection);
    });
    m_readBound.start();
    m_showGrace.start();
}

void SelectionHandoff::panelDidClose() {
    ++m_generation;
    m_show = nullptr;
    m_showGrace.stop();
    m_readBound.stop();
    m_read.cancel();
    m_candidate.reset();
    m_source.reset();
    // The panel is gone already: nothing is typed and nothing is told.
    m_focusWait.stop();
}

void SelectionHandoff::showPanel() {
    m_showGrace.stop();
    if (std::function<void()> show = std::exchange(m_show, nullptr))
        show();
}

void SelectionHandoff::giveUpReading() {
    m_read.cancel();
    m_candidate.reset();
    showPanel();
}

void SelectionHandoff::receive(qint64 generation, const PrimarySelection& selection) {
    if (generation != m_generation)
        return;
    m_readBound.stop();
    const std::optional<DesktopWindow> candidate = std::exchange(m_candidate, std::nullopt);
    const TakenSelection taken = SelectionRules::take(selection, SelectionRules::byteLimit());
    // Whatever the user did in an open panel meanwhile (typing, pasting, a
    // run) wins.
    const bool untouched =
        m_model.text().isEmpty() && m_model.stage().kind == PanelStage::Kind::input;
    if (taken.kind == TakenSelection::Kind::nothing || !untouched) {
        showPanel();
        return;
    }
    if (taken.kind == TakenSelection::Kind::tooLong) {
        m_model.refuse(RewriteError::inputTooLarge().panelMessage());
        showPanel();
        return;
    }
    m_model.setText(taken.text);
    m_source = candidate;
    showPanel();
    Q_EMIT selectionTaken();
}

void SelectionHandoff::onStageChanged() {
    if (m_model.stage().kind != PanelStage::Kind::copied || !m_source || isHandingBack() ||
        !m_preferences.replacesSelection())
        return;
    // After the model has finished its own reaction to the result.
    const qint64 generation = m_generation;
    QTimer::singleShot(0, this, [this, generation] { handBack(generation); });
}

void SelectionHandoff::handBack(qint64 generation) {
    if (generation != m_generation || !m_source || isHandingBack() ||
        m_model.stage().kind != PanelStage::Kind::copied)
        return;
    if (!m_desktop->isAlive(*m_source))
        return;
    m_pasteKeys = SelectionRules::pasteKeysFor(m_desktop->windowClass(*m_source));
    if (m_pasteKeys == PasteKeys::none)
        return;
    Q_EMIT handBackStarted();
    m_desktop->activate(*m_source);
    m_focusClock.start();
    m_focusWait.start();
}

void SelectionHandoff::checkFocus() {
    if (!m_source) {
        m_focusWait.stop();
        return;
    }
    if (m_desktop->hasFocus(*m_source)) {
        endHandBack(true);
        return;
    }
    if (m_focusClock.elapsed() >= m_bounds.focus.count())
        endHandBack(false);
}

void SelectionHandoff::endHandBack(bool pasted) {
    m_focusWait.stop();
    if (pasted)
        m_desktop->typePaste(m_pasteKeys);
    Q_EMIT handBackFinished(pasted);
}

} // namespace scrivel
