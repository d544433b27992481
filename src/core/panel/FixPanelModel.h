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
// copied to the clipboard, concealed, as the run ends. The model tells its
// own changes of the text (a streamed reply, the result, the original back)
// from the user's: only the user's edits leave a result behind, and only its
// own changes are sent back to the field (textReplaced). Runs are numbered;
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
    // Puts a text in the field (the first launch's sample).
    void setText(const QString& text);
    // The user changed the text in the field: an edit after a run leaves its
    // result (the stage returns to input, there is nothing to revert to).
    void editText(const QString& text);

    const PanelStage& stage() const { return m_stage; }
    const std::optional<QString>& originalText() const { return m_originalText; }
    QUuid presentationID() const { return m_presentationID; }
    bool showsShortcutHint() const { return m_showsShortcutHint; }
    void setShowsShortcutHint(bool shows);
    qint64 runGeneration() const { return m_runGeneration; }

    // A fresh presentation identifier, each time the panel is shown.
    void beginPresentation();

    bool canRun() const;
    void run();
    void cancel();
    void revert();
    void reset();
    // Shows a failure that no run produced (a text refused before it got
    // into the panel). Editing the text clears it, as it does any failure.
    void refuse(const QString& message);
    void selectPreset(const QUuid& id);
    std::optional<QUuid> activePresetID() const;
    void setActivePresetID(const std::optional<QUuid>& id);
    // "Open Presets…" after a key problem: presetsRequested.
    void openPresets();

Q_SIGNALS:
    // Every change of the text, the user's included.
    void textChanged();
    // The text changed other than by the user's edit: the field shows it.
    void textReplaced();
    void stageChanged();
    void originalTextChanged();
    void presentationIDChanged();
    void showsShortcutHintChanged();
    // Open the main window on the presets, on the one the last run used
    // (null before any run).
    void presetsRequested(const QUuid& presetID);

private:
    // False when the text was already this.
    bool setTextSnapshot(const TextSnapshot& text);
    void setStage(const PanelStage& stage);
    void setOriginalText(const std::optional<QString>& text);
    // Puts text into the field as the model's own change.
    void replaceText(const TextSnapshot& text);
    void restoreOriginal();
    // A shown result or failure returns to editing (the text stays).
    void leaveShownOutcome();
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
    Future<RewriteCoordinator::Result> m_operation;
    qint64 m_runGeneration = 0;
    QUuid m_runPresetID;
};

} // namespace scrivel
