#pragma once

#include "core/transform/PresetTransforming.h"

#include <QList>
#include <QString>
#include <memory>
#include <optional>

namespace scrivel::test {

// A transformer driven by the test: each stream() call opens a run whose
// writer the test uses to push events, end or fail it, or leave it hanging.
class FakeTransformer : public PresetTransforming {
public:
    struct Call {
        Preset preset;
        QString text;
        TransformStreamWriter writer;
    };

    void prewarm(const Preset& preset) override { prewarmed.append(preset); }
    Future<std::optional<UnavailableReason>> unavailableReason(const Preset& preset) override;
    TransformStream stream(const Preset& preset, const QString& text) override;

    // The latest run.
    Call& last() { return calls.last(); }

    // Convenience scripts for the latest run.
    void partials(const QStringList& texts);
    void complete(const QString& text);
    void fail(const TransformFailure& failure);

    QList<Call> calls;
    QList<Preset> prewarmed;
    std::optional<UnavailableReason> reason;
};

} // namespace scrivel::test
