#include "core/tray/StatusItemModel.h"

#include "core/desktop/Announcer.h"
#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"

#include <QUuid>

namespace scrivel {

namespace {

QString restingToolTip() {
    return StatusItemModel::tr("Scrivel");
}

// Runs fn on the next turn of the event loop, and not at all once context is
// gone.
template <typename F>
void later(QObject* context, F&& fn) {
    QMetaObject::invokeMethod(context, std::forward<F>(fn), Qt::QueuedConnection);
}

} // namespace

StatusItemModel::StatusItemModel(RewriteCoordinator& coordinator, PresetStore& presets,
                                 Announcer& announcer, Sleep sleep, QObject* parent)
    : QObject(parent), m_coordinator(coordinator), m_presets(presets), m_announcer(announcer),
      m_sleep(std::move(sleep)), m_toolTip(restingToolTip()), m_accessibleValue(tr("Idle")),
      m_statusLine(tr("Status: Checking…")) {
    // Wherever a preset is renamed, re-configured or chosen, the menu and the
    // readiness follow.
    connect(&m_presets, &PresetStore::presetsChanged, this, &StatusItemModel::presetsDidChange);
    connect(&m_presets, &PresetStore::activePresetIDChanged, this,
            &StatusItemModel::presetsDidChange);
    refreshReadiness();
}

QList<StatusItemModel::PresetMenuItem> StatusItemModel::presetMenu() const {
    const std::optional<Preset> active = m_presets.activePreset();
    QList<PresetMenuItem> items;
    for (const Preset& preset : m_presets.presets())
        items.append(
            {preset.displayName(), Preset::idText(preset.id), active && active->id == preset.id});
    return items;
}

void StatusItemModel::presetsDidChange() {
    Q_EMIT menuChanged();
    // Once the change is complete (an import replaces the list, then the
    // active identifier).
    later(this, [this] { refreshReadiness(); });
}

void StatusItemModel::setButton(Look look, const QString& toolTip, const QString& accessibleValue) {
    if (look == m_look && toolTip == m_toolTip && accessibleValue == m_accessibleValue)
        return;
    m_look = look;
    m_toolTip = toolTip;
    m_accessibleValue = accessibleValue;
    Q_EMIT buttonChanged();
}

void StatusItemModel::applyState(const OperationUIState& state) {
    m_feedbackReset.cancel();
    m_isWorking = state.kind() == OperationUIState::Kind::working;

    std::optional<std::chrono::milliseconds> restAfter;
    QString announcement;
    switch (state.kind()) {
    case OperationUIState::Kind::idle:
        setButton(Look::wand, restingToolTip(), tr("Idle"));
        break;
    case OperationUIState::Kind::working:
        setButton(Look::progress, tr("Working"), tr("Working"));
        announcement = tr("Working");
        break;
    case OperationUIState::Kind::success:
        setButton(Look::checkMark, tr("Complete"), tr("Complete"));
        m_statusLine = tr("Status: Complete");
        announcement = tr("Done. Copied. Press Ctrl+V to paste.");
        restAfter = successRestDelay;
        break;
    case OperationUIState::Kind::alreadyClean:
        setButton(Look::checkMark, tr("No change"), tr("No change"));
        m_statusLine = tr("Status: No change");
        announcement = tr("No change needed. Nothing was copied.");
        restAfter = otherRestDelay;
        break;
    case OperationUIState::Kind::error:
        setButton(Look::triangle, state.message(), state.message());
        m_statusLine = tr("Status: %1").arg(state.message());
        announcement = state.message();
        restAfter = otherRestDelay;
        break;
    case OperationUIState::Kind::modelUnavailable: {
        const QString reason = state.reason() ? state.reason()->message() : QString();
        setButton(Look::triangle, reason, tr("Model unavailable"));
        m_statusLine = tr("Status: Model unavailable");
        announcement = tr("Model unavailable. %1").arg(reason);
        restAfter = otherRestDelay;
        break;
    }
    }

    if (restAfter) {
        // A readiness answer still on its way predates this result; the
        // return to rest reads readiness afresh.
        m_readiness.cancel();
        m_feedbackReset = m_sleep(*restAfter);
        m_feedbackReset.then(this, [this](std::monostate) { returnToRest(); });
    }
    if (!announcement.isEmpty())
        m_announcer.announce(announcement);
    Q_EMIT menuChanged();
}

void StatusItemModel::returnToRest() {
    setButton(Look::wand, restingToolTip(), tr("Idle"));
    later(this, [this] { refreshReadiness(); });
}

void StatusItemModel::refreshReadiness() {
    const std::optional<Preset> preset = m_presets.activePreset();
    // A newer refresh replaces an older one still waiting.
    m_readiness =
        chainFuture(m_coordinator.readinessLine(preset), this, [this, preset](const QString& line) {
            m_statusLine = line;
            return m_coordinator.unavailableReason(preset);
        });
    m_readiness.then(this, [this](const std::optional<UnavailableReason>& reason) {
        if (!m_isWorking) {
            if (!reason)
                setButton(m_look, restingToolTip(), tr("Ready"));
            else
                setButton(m_look, reason->message(), tr("Model unavailable"));
        }
        Q_EMIT menuChanged();
    });
}

void StatusItemModel::setNotice(const QString& notice) {
    if (notice == m_notice)
        return;
    m_notice = notice;
    Q_EMIT menuChanged();
}

void StatusItemModel::menuWillOpen() {
    m_isMenuOpen = true;
    Q_EMIT shortcutEnabledChanged(false);
    Q_EMIT menuChanged();
    later(this, [this] { refreshReadiness(); });
}

void StatusItemModel::menuDidClose() {
    m_isMenuOpen = false;
    Q_EMIT shortcutEnabledChanged(true);
    if (!m_pendingPresentation)
        return;
    const auto request = std::exchange(m_pendingPresentation, nullptr);
    // One turn for the menu to finish closing (and let go of the pointer and
    // keyboard), then the presentation.
    later(this, [this, request] { later(this, [this, request] { Q_EMIT(this->*request)(); }); });
}

void StatusItemModel::present(void (StatusItemModel::*request)()) {
    if (m_isMenuOpen)
        m_pendingPresentation = request;
    else
        Q_EMIT(this->*request)();
}

void StatusItemModel::openPanel() {
    present(&StatusItemModel::panelRequested);
}

void StatusItemModel::showSettings() {
    present(&StatusItemModel::settingsRequested);
}

void StatusItemModel::selectPreset(const QVariant& representedObject) {
    if (representedObject.typeId() != QMetaType::QString)
        return;
    const std::optional<QUuid> id = Preset::parseID(representedObject.toString());
    if (!id)
        return;
    m_presets.activate(*id);
    later(this, [this] { prewarmAndRefresh(); });
    Q_EMIT menuChanged();
}

void StatusItemModel::prewarmAndRefresh() {
    m_coordinator.prewarm(m_presets.activePreset());
    refreshReadiness();
}

} // namespace scrivel
