#pragma once

#include "core/pipeline/FixResult.h"
#include "core/pipeline/OperationUIState.h"
#include "core/presets/Preset.h"
#include "core/support/DeadlineClock.h"
#include "core/support/Future.h"
#include "core/support/TextSnapshot.h"
#include "core/transform/PresetTransforming.h"
#include "core/transform/TransformFailure.h"

#include <QObject>
#include <QSet>
#include <chrono>
#include <expected>
#include <functional>
#include <optional>

namespace scrivel {

// Runs one rewrite from input text to final text: checks the input, reports
// the run's state (operationStateChanged, for the status item), streams the transformer's reply
// against a time-out, passes partial text on, and cleans and judges the final reply. Several runs
// may overlap; each is independent.
class RewriteCoordinator : public QObject {
    Q_OBJECT

public:
    using Result = std::expected<FixResult, TransformFailure>;
    using PartialTextHandler = std::function<void(const TextSnapshot&)>;
    // Turns a time-out in whole seconds into the duration actually waited.
    // Production waits the seconds themselves; tests shrink them.
    using TimeoutScale = std::function<std::chrono::milliseconds(int seconds)>;

    explicit RewriteCoordinator(PresetTransforming& transformer, QObject* parent = nullptr);
    ~RewriteCoordinator() override;

    void setTimeoutScale(TimeoutScale scale);
    // The clock that run deadlines are measured on; it must keep running
    // while the machine sleeps.
    void setDeadlineClock(DeadlineClock clock);
    // Checks every run's deadline against the clock now: a run whose time
    // ran out while the machine slept fails at once. Called on wake.
    void checkDeadlines();

    void prewarm(const std::optional<Preset>& preset);
    Future<std::optional<UnavailableReason>> unavailableReason(const std::optional<Preset>& preset);

    // Delivers the FixResult, or a failure: TransformFailure::rewrite with the
    // RewriteError, or TransformFailure::cancelled when the run was cancelled
    // from below. A run cancelled by its caller delivers nothing (its state
    // still goes back to idle).
    Future<Result> rewrite(const QString& input, const Preset& preset,
                           PartialTextHandler onPartialText = {});

    // "Status: <name> · Ready" and its siblings, for the status menu.
    Future<QString> readinessLine(const std::optional<Preset>& preset);

    // The time-out of a run in seconds: 25, 35 or 60 by the input's UTF-8
    // size, plus 60 for medium or high effort on a reasoning model.
    static int timeoutSeconds(const QString& input, const Preset& preset);

Q_SIGNALS:
    // Reported from inside a run: working, then how it ended (or idle when it
    // was cancelled). Runs may overlap; each reports its own states.
    void operationStateChanged(const scrivel::OperationUIState& state);

private:
    class Run;
    friend class Run;

    void publish(const OperationUIState& state);
    void report(const RewriteError& error);

    PresetTransforming& m_transformer;
    TimeoutScale m_timeoutScale;
    DeadlineClock m_clock;
    QSet<Run*> m_runs;
};

} // namespace scrivel
