#include "core/panel/FixPanelModel.h"

#include "core/desktop/Clipboard.h"
#include "core/presets/PresetStore.h"
#include "core/support/UnicodeText.h"

#include <QPointer>

namespace scrivel {

namespace {

bool sameText(const TextSnapshot& a, const TextSnapshot& b) {
    if (a.size() != b.size())
        return false;
    return a == b; // same buffer and size compares without reading characters
}

} // namespace

FixPanelModel::FixPanelModel(PresetStore& presets, RewriteCoordinator& coordinator,
                             Clipboard& clipboard, QObject* parent)
    : QObject(parent), m_presets(presets), m_coordinator(coordinator), m_clipboard(clipboard) {
    // A preset chosen anywhere else (the tray, the main window) is a change
    // of preset like one in the panel's own picker.
    connect(&m_presets, &PresetStore::activePresetIDChanged, this,
            &FixPanelModel::leaveShownOutcome);
}

QString FixPanelModel::text() const {
    if (!m_textCache)
        m_textCache = m_text.toString();
    return *m_textCache;
}

void FixPanelModel::setText(const QString& text) {
    replaceText(TextSnapshot(text));
}

void FixPanelModel::editText(const QString& text) {
    if (!setTextSnapshot(TextSnapshot(text)))
        return;
    if (m_stage.kind == PanelStage::Kind::working || m_stage.kind == PanelStage::Kind::input)
        return;
    setStage(PanelStage::input());
    setOriginalText(std::nullopt);
}

bool FixPanelModel::setTextSnapshot(const TextSnapshot& text) {
    if (sameText(m_text, text))
        return false;
    m_text = text;
    m_textCache.reset();
    Q_EMIT textChanged();
    return true;
}

void FixPanelModel::replaceText(const TextSnapshot& text) {
    if (setTextSnapshot(text))
        Q_EMIT textReplaced();
}

void FixPanelModel::setStage(const PanelStage& stage) {
    if (m_stage == stage)
        return;
    m_stage = stage;
    Q_EMIT stageChanged();
}

void FixPanelModel::setOriginalText(const std::optional<QString>& text) {
    if (m_originalText == text)
        return;
    m_originalText = text;
    Q_EMIT originalTextChanged();
}

void FixPanelModel::setShowsShortcutHint(bool shows) {
    if (m_showsShortcutHint == shows)
        return;
    m_showsShortcutHint = shows;
    Q_EMIT showsShortcutHintChanged();
}

void FixPanelModel::beginPresentation() {
    m_presentationID = QUuid::createUuid();
    Q_EMIT presentationIDChanged();
}

void FixPanelModel::restoreOriginal() {
    if (m_originalText)
        replaceText(TextSnapshot(*m_originalText));
}

bool FixPanelModel::canRun() const {
    return m_stage.kind != PanelStage::Kind::working && m_presets.activePreset().has_value() &&
           !trimmedWhitespaceAndNewlines(text()).isEmpty();
}

void FixPanelModel::run() {
    if (!canRun())
        return;
    const Preset preset = *m_presets.activePreset();
    m_runPresetID = preset.id;
    const QString input = text();
    setOriginalText(input);
    setShowsShortcutHint(false);
    setStage(PanelStage::working());
    const qint64 generation = ++m_runGeneration;

    QPointer<FixPanelModel> self(this);
    m_operation =
        m_coordinator.rewrite(input, preset, [self, generation](const TextSnapshot& text) {
            if (!self || generation != self->m_runGeneration ||
                self->m_stage.kind != PanelStage::Kind::working)
                return;
            self->replaceText(text);
        });
    m_operation.then(this, [this, generation](RewriteCoordinator::Result result) {
        finishRun(generation, result);
    });
}

void FixPanelModel::finishRun(qint64 generation, const RewriteCoordinator::Result& result) {
    if (generation != m_runGeneration)
        return; // superseded or cancelled
    if (result) {
        if (result->kind() == FixResult::Kind::fixed) {
            replaceText(TextSnapshot(result->text()));
            if (copyToClipboard(m_clipboard, result->text()))
                setStage(PanelStage::copied());
            else
                setStage(PanelStage::failure(
                    tr("Couldn’t copy the result. Select and copy it manually."), false));
        } else {
            restoreOriginal();
            setStage(PanelStage::alreadyClean());
        }
        return;
    }

    restoreOriginal();
    const TransformFailure& failure = result.error();
    switch (failure.kind()) {
    case TransformFailure::Kind::cancelled:
        setStage(PanelStage::input());
        return;
    case TransformFailure::Kind::rewrite: {
        const RewriteError& error = *failure.error();
        const bool needsKey = error.kind() == RewriteError::Kind::modelUnavailable &&
                              error.reason() &&
                              (error.reason()->kind() == UnavailableReason::Kind::missingAPIKey ||
                               error.reason()->kind() == UnavailableReason::Kind::rejectedAPIKey);
        setStage(PanelStage::failure(error.panelMessage(), needsKey));
        return;
    }
    case TransformFailure::Kind::other:
        setStage(PanelStage::failure(tr("Couldn’t transform this text. Try again."), false));
        return;
    }
}

void FixPanelModel::cancel() {
    ++m_runGeneration;
    m_operation.cancel();
    m_operation = {};
    restoreOriginal();
    setStage(PanelStage::input());
}

void FixPanelModel::revert() {
    if (!m_originalText)
        return;
    replaceText(TextSnapshot(*m_originalText));
    setOriginalText(std::nullopt);
    setStage(PanelStage::input());
}

void FixPanelModel::reset() {
    ++m_runGeneration;
    m_operation.cancel();
    m_operation = {};
    replaceText(TextSnapshot());
    setOriginalText(std::nullopt);
    setShowsShortcutHint(false);
    setStage(PanelStage::input());
}

void FixPanelModel::refuse(const QString& message) {
    if (m_stage.kind == PanelStage::Kind::working)
        return;
    setStage(PanelStage::failure(message, false));
}

void FixPanelModel::selectPreset(const QUuid& id) {
    m_presets.activate(id);
    leaveShownOutcome();
    QPointer<FixPanelModel> self(this);
    QMetaObject::invokeMethod(
        this,
        [self] {
            if (self)
                self->m_coordinator.prewarm(self->m_presets.activePreset());
        },
        Qt::QueuedConnection);
}

void FixPanelModel::leaveShownOutcome() {
    switch (m_stage.kind) {
    case PanelStage::Kind::copied:
    case PanelStage::Kind::alreadyClean:
    case PanelStage::Kind::failure:
        setStage(PanelStage::input());
        break;
    default:
        break;
    }
}

std::optional<QUuid> FixPanelModel::activePresetID() const {
    if (const auto active = m_presets.activePreset())
        return active->id;
    return std::nullopt;
}

void FixPanelModel::setActivePresetID(const std::optional<QUuid>& id) {
    if (!id || id == activePresetID() || !m_presets.preset(*id))
        return;
    selectPreset(*id);
}

void FixPanelModel::openPresets() {
    Q_EMIT presetsRequested(m_runPresetID);
}

} // namespace scrivel
