#pragma once

#include "core/pipeline/RewriteCoordinator.h"
#include "core/support/Future.h"
#include "core/support/TextSnapshot.h"

#include <QObject>
#include <QString>
#include <QUuid>
#include <functional>
#include <optional>

namespace scrivel {

class Clipboard;
class PresetStore;

// The stage of the fix panel.
struct PanelStage {
    enum class Kind { input, working, copied, alreadyClean, failure };

    Kind kind = Kind::input;
    QString message;          // failure only
    bool needsAPIKey = false; // failure only: offer to open the presets

    static PanelStage input() { return {}; }
    static PanelStage working() { return {Kind::working, {}, false}; }
    static PanelStage copied() { return {Kind::copied, {}, false}; }
    static PanelStage alreadyClean() { return {Kind::alreadyClean, {}, false}; }
    static PanelStage failure(const QString& message, bool needsAPIKey) {
        return {Kind::failure, message, needsAPIKey};
    }

    friend bool operator==(const PanelStage&, const PanelStage&) = default;
};

// The state behind the floating panel: the text being edited, the stage of
// the current run and the text as it was before the run. A changed text is
// copied to the clipboard, concealed, as the run ends. Runs are numbered;
// only the newest may change the text or the stage, so a superseded or
// cancelled run that finishes late changes nothing. Main thread only.
class FixPanelModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(bool showsShortcutHint READ showsShortcutHint WRITE setShowsShortcutHint NOTIFY
                   showsShortcutHintChanged)
    Q_PROPERTY(QUuid presentationID READ presentationID NOTIFY presentationIDChanged)

public:
    using Stage = PanelStage;

    FixPanelModel(PresetStore& presets, RewriteCoordinator& coordinator, Clipboard& clipboard,
                  QObject* parent = nullptr);

    QString text() const;
    // The text as a snapshot: cheap to compare and to follow while a reply
    // streams in.
    const TextSnapshot& textSnapshot() const { return m_text; }
    void setText(const QString& text);

    const PanelStage& stage() const { return m_stage; }
    const std::optional<QString>& originalText() const { return m_originalText; }
    QUuid presentationID() const { return m_presentationID; }
    bool showsShortcutHint() const { return m_showsShortcutHint; }
    void setShowsShortcutHint(bool shows);
    const std::optional<TextSnapshot>& programmaticText() const { return m_programmaticText; }
    qint64 runGeneration() const { return m_runGeneration; }

    // A fresh presentation identifier, each time the panel is shown.
    void beginPresentation();

    bool canRun() const;
    void run();
    void cancel();
    void revert();
    void reset();
    // Called by the editor after every change of the text.
    void textDidChange();
    // Shows a failure that no run produced (a text refused before it got
    // into the panel). Editing the text clears it, as it does any failure.
    void refuse(const QString& message);
    void selectPreset(const QUuid& id);
    std::optional<QUuid> activePresetID() const;
    void setActivePresetID(const std::optional<QUuid>& id);
    // "Open Presets…" after a key problem: presetsRequested.
    void openPresets();

Q_SIGNALS:
    void textChanged();
    void stageChanged();
    void originalTextChanged();
    void presentationIDChanged();
    void showsShortcutHintChanged();
    void programmaticTextChanged();
    // Open the main window on the presets.
    void presetsRequested();

private:
    void setTextSnapshot(const TextSnapshot& text);
    void setStage(const PanelStage& stage);
    void setOriginalText(const std::optional<QString>& text);
    void setProgrammaticText(const std::optional<TextSnapshot>& text);
    // Puts text into the editor as the model's own change.
    void showProgrammatically(const TextSnapshot& text);
    void restoreOriginal();
    void finishRun(qint64 generation, const RewriteCoordinator::Result& result);

    PresetStore& m_presets;
    RewriteCoordinator& m_coordinator;
    Clipboard& m_clipboard;

    TextSnapshot m_text;
    mutable std::optional<QString> m_textCache;
    PanelStage m_stage;
    std::optional<QString> m_originalText;
    QUuid m_presentationID = QUuid::createUuid();
    bool m_showsShortcutHint = false;
    std::optional<TextSnapshot> m_programmaticText;
    Future<RewriteCoordinator::Result> m_operation;
    qint64 m_runGeneration = 0;
};

} // namespace scrivel
