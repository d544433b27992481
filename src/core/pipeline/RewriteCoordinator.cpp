#include "core/pipeline/RewriteCoordinator.h"

#include "core/pipeline/OutputCleaning.h"
#include "core/providers/ModelRules.h"
#include "core/support/Log.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

namespace scrivel {

namespace {

QString couldNotFix() {
    return QCoreApplication::translate("RewriteCoordinator", "Couldn’t fix this text");
}

// Judges a final reply against the input. Without edit validation the reply
// is only trimmed; no preface is stripped.
std::expected<FixResult, RewriteError> judge(const QString& reply, const QString& input,
                                             const Preset& preset) {
    if (!preset.validatesEdits) {
        const QString trimmed = trimmedWhitespaceAndNewlines(reply);
        if (trimmed.isEmpty())
            return std::unexpected(RewriteError::outputRejected(QStringLiteral("empty")));
        if (trimmed == trimmedWhitespaceAndNewlines(input))
            return FixResult::alreadyClean();
        return FixResult::fixed(trimmed);
    }
    const EditVerdict verdict = validateEdit(reply, input);
    switch (verdict.kind) {
    case EditVerdict::Kind::accepted:
        return FixResult::fixed(verdict.text);
    case EditVerdict::Kind::alreadyClean:
        return FixResult::alreadyClean();
    case EditVerdict::Kind::rejected:
        break;
    }
    return std::unexpected(RewriteError::outputRejected(verdict.text));
}

} // namespace

// One rewrite in flight: the transformer's stream racing a timer. Deletes
// itself when it ends or its caller cancels it.
class RewriteCoordinator::Run : public QObject {
public:
    Run(RewriteCoordinator& coordinator, const QString& input, const Preset& preset,
        PartialTextHandler onPartialText, Promise<Result> promise)
        : QObject(&coordinator), m_coordinator(coordinator), m_input(input), m_preset(preset),
          m_onPartialText(std::move(onPartialText)), m_promise(std::move(promise)) {
        m_coordinator.m_runs.insert(this);
    }
    ~Run() override { m_coordinator.m_runs.remove(this); }

    // The timer only wakes the run up: whether the time is over is decided
    // on the deadline clock, which also counts time spent asleep.
    void checkDeadline() {
        if (m_finished)
            return;
        const std::chrono::milliseconds remaining = m_deadline - m_coordinator.m_clock();
        if (remaining <= std::chrono::milliseconds(0)) {
            fail(TransformFailure::rewrite(RewriteError::timeout()));
            return;
        }
        m_timer.start(remaining);
    }

    void start(std::chrono::milliseconds timeout) {
        QPointer<Run> self(this);
        m_promise.onCancel([self] {
            // The caller gave up: stop reading and report the run idle.
            if (!self || self->m_finished)
                return;
            self->m_finished = true;
            self->m_stream.cancel();
            self->m_timer.stop();
            self->m_coordinator.publish(OperationUIState::idle());
            self->deleteLater();
        });

        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] { checkDeadline(); });
        m_deadline = m_coordinator.m_clock() + timeout;
        m_timer.start(timeout);

        m_stream = m_coordinator.m_transformer.stream(m_preset, m_input);
        m_stream.subscribe(
            this, [this](const TransformStreamEvent& event) { onEvent(event); },
            [this](std::optional<TransformFailure> failure) {
                if (failure)
                    fail(*failure);
                else
                    onFinished();
            });
    }

private:
    void onEvent(const TransformStreamEvent& event) {
        m_receivedAny = true;
        if (event.kind() == TransformStreamEvent::Kind::partial) {
            m_latest = event.text();
            if (m_onPartialText)
                m_onPartialText(event.text());
        } else {
            m_final = event.text().toString();
        }
    }

    void onFinished() {
        if (!m_receivedAny) {
            fail(TransformFailure::rewrite(RewriteError::modelFailed(
                QCoreApplication::translate("RewriteCoordinator", "Empty model response"))));
            return;
        }
        const QString reply = m_final ? *m_final : m_latest.toString();
        auto judged = judge(reply, m_input, m_preset);
        if (!judged) {
            fail(TransformFailure::rewrite(judged.error()));
            return;
        }
        m_coordinator.publish(judged->kind() == FixResult::Kind::fixed
                                  ? OperationUIState::success()
                                  : OperationUIState::alreadyClean());
        finish(*judged);
    }

    void fail(const TransformFailure& failure) {
        switch (failure.kind()) {
        case TransformFailure::Kind::cancelled:
            m_coordinator.publish(OperationUIState::idle());
            finish(std::unexpected(TransformFailure::cancelled()));
            return;
        case TransformFailure::Kind::rewrite:
            if (failure.error()->kind() == RewriteError::Kind::cancelled) {
                m_coordinator.publish(OperationUIState::idle());
                finish(std::unexpected(TransformFailure::cancelled()));
                return;
            }
            m_coordinator.report(*failure.error());
            finish(std::unexpected(failure));
            return;
        case TransformFailure::Kind::other:
            qCDebug(rewriteLog).noquote()
                << privateValue(QStringLiteral("transform failed: ") + failure.debugDescription());
            m_coordinator.publish(OperationUIState::error(couldNotFix()));
            finish(std::unexpected(
                TransformFailure::rewrite(RewriteError::modelFailed(couldNotFix()))));
            return;
        }
    }

    void finish(Result result) {
        m_finished = true;
        m_timer.stop();
        m_stream.cancel();
        m_promise.resolve(std::move(result));
        deleteLater();
    }

    RewriteCoordinator& m_coordinator;
    const QString m_input;
    const Preset m_preset;
    PartialTextHandler m_onPartialText;
    Promise<Result> m_promise;
    TransformStream m_stream;
    QTimer m_timer;
    std::chrono::milliseconds m_deadline{0};
    TextSnapshot m_latest;
    std::optional<QString> m_final;
    bool m_receivedAny = false;
    bool m_finished = false;
};

RewriteCoordinator::RewriteCoordinator(PresetTransforming& transformer, QObject* parent)
    : QObject(parent), m_transformer(transformer),
      m_timeoutScale([](int seconds) { return std::chrono::milliseconds(seconds * 1000LL); }),
      m_clock(steadyDeadlineClock()) {}

RewriteCoordinator::~RewriteCoordinator() {
    // Runs still in flight go first, while the set they leave still exists
    // (QObject would delete them only after the members are gone).
    const QSet<Run*> runs = m_runs;
    for (Run* run : runs)
        delete run;
}

void RewriteCoordinator::setTimeoutScale(TimeoutScale scale) {
    m_timeoutScale = std::move(scale);
}

void RewriteCoordinator::setDeadlineClock(DeadlineClock clock) {
    m_clock = std::move(clock);
}

void RewriteCoordinator::checkDeadlines() {
    // A run that fails here deletes itself later, so the set stays valid,
    // but copy it anyway: failing reports to listeners that may start runs.
    const QSet<Run*> runs = m_runs;
    for (Run* run : runs) {
        if (m_runs.contains(run))
            run->checkDeadline();
    }
}

void RewriteCoordinator::prewarm(const std::optional<Preset>& preset) {
    if (preset)
        m_transformer.prewarm(*preset);
}

Future<std::optional<UnavailableReason>>
RewriteCoordinator::unavailableReason(const std::optional<Preset>& preset) {
    if (!preset) {
        return Future<std::optional<UnavailableReason>>::ready(UnavailableReason::misconfigured(
            QCoreApplication::translate("RewriteCoordinator", "Add a preset in Presets")));
    }
    return m_transformer.unavailableReason(*preset);
}

int RewriteCoordinator::timeoutSeconds(const QString& input, const Preset& preset) {
    const qsizetype bytes = input.toUtf8().size();
    int seconds = bytes < 500 ? 25 : bytes < 2500 ? 35 : 60;
    const bool effective = preset.reasoningEffort && !preset.reasoningEffort->isEmpty() &&
                           supportsReasoningEffort(preset.model);
    if (effective && (*preset.reasoningEffort == QLatin1String("medium") ||
                      *preset.reasoningEffort == QLatin1String("high")))
        seconds += 60;
    return seconds;
}

Future<RewriteCoordinator::Result> RewriteCoordinator::rewrite(const QString& input,
                                                               const Preset& preset,
                                                               PartialTextHandler onPartialText) {
    if (trimmedWhitespaceAndNewlines(input).isEmpty())
        return Future<Result>::ready(
            std::unexpected(TransformFailure::rewrite(RewriteError::emptyInput())));

    publish(OperationUIState::working());
    const int seconds = timeoutSeconds(input, preset);
    qCDebug(rewriteLog).noquote() << privateValue(
        QStringLiteral("model start len=%1 timeout=%2s").arg(input.toUtf8().size()).arg(seconds));

    Promise<Result> promise;
    Future<Result> future = promise.future();
    auto* run = new Run(*this, input, preset, std::move(onPartialText), std::move(promise));
    run->start(m_timeoutScale(seconds));
    return future;
}

Future<QString> RewriteCoordinator::readinessLine(const std::optional<Preset>& preset) {
    const QString name = preset ? preset->displayName()
                                : QCoreApplication::translate("RewriteCoordinator", "No preset");
    return mapFuture(
        unavailableReason(preset), this, [name](const std::optional<UnavailableReason>& reason) {
            if (!reason)
                return QCoreApplication::translate("RewriteCoordinator", "Status: %1 · Ready")
                    .arg(name);
            switch (reason->kind()) {
            case UnavailableReason::Kind::missingAPIKey:
            case UnavailableReason::Kind::rejectedAPIKey:
                return QCoreApplication::translate("RewriteCoordinator", "Status: %1 · Add API key")
                    .arg(name);
            default:
                return QCoreApplication::translate("RewriteCoordinator", "Status: %1 · Unavailable")
                    .arg(name);
            }
        });
}

void RewriteCoordinator::publish(const OperationUIState& state) {
    switch (state.kind()) {
    case OperationUIState::Kind::success:
        qCInfo(rewriteLog) << "fix success";
        break;
    case OperationUIState::Kind::alreadyClean:
        qCInfo(rewriteLog) << "already clean";
        break;
    case OperationUIState::Kind::error:
        qCCritical(rewriteLog) << "fix error";
        break;
    default:
        break;
    }
    Q_EMIT operationStateChanged(state);
}

void RewriteCoordinator::report(const RewriteError& error) {
    publish(OperationUIState::forError(error));
}

} // namespace scrivel
