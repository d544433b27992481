#pragma once

#include "core/pipeline/OnDeviceModel.h"
#include "core/support/Future.h"
#include "core/transform/TransformFailure.h"

#include <QObject>
#include <QTimer>
#include <expected>
#include <memory>
#include <optional>

namespace scrivel {

// Runs presets on the on-device model. Keeps one session warmed for the
// instructions last used, so that repeating a preset starts quickly.
class OnDeviceProvider : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype inputLimitBytes = 12000;

    using Result = std::expected<QString, TransformFailure>;

    explicit OnDeviceProvider(OnDeviceModel& model, QObject* parent = nullptr);

    // The user's sentence for an unavailable model.
    static QString availabilityMessage(const OnDeviceModel::Availability& availability);
    OnDeviceModel::Availability availability() const { return m_model.availability(); }

    // Warms a session for these instructions (nothing when unavailable).
    void prewarm(const QString& instructions);
    // Replaces any pending re-warm with one for these instructions.
    void schedulePrewarm(const QString& instructions);
    // The transformed text, as generated.
    Future<Result> transform(const QString& text, const QString& instructions);

    // What the model is asked for a text: a TransformedCopy (its one field,
    // transformedText, with its guide), the schema in the prompt, default
    // sampling at temperature 0, no token limit. The preset's own
    // temperature and reasoning effort play no part here.
    static OnDeviceModel::GenerationRequest generationRequest(const QString& text);

    // For tests: whether a warm session waits for these instructions.
    bool hasWarmSession(const QString& instructions) const;

private:
    class Request;

    OnDeviceModel& m_model;
    std::unique_ptr<OnDeviceModel::Session> m_warmSession;
    std::optional<QString> m_warmInstructions;
    QTimer m_prewarmTask;
    QString m_prewarmInstructions;
};

} // namespace scrivel
