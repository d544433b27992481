#include "support/FakeTransformer.h"

namespace scrivel::test {

Future<std::optional<UnavailableReason>> FakeTransformer::unavailableReason(const Preset&) {
    return Future<std::optional<UnavailableReason>>::ready(reason);
}

TransformStream FakeTransformer::stream(const Preset& preset, const QString& text) {
    TransformStreamWriter writer;
    TransformStream stream = writer.stream();
    calls.append(Call{preset, text, writer});
    return stream;
}

void FakeTransformer::partials(const QStringList& texts) {
    TextAccumulator accumulator;
    for (const QString& text : texts) {
        // Each partial is the whole text so far: append what is new.
        accumulator.append(QStringView(text).mid(accumulator.size()));
        last().writer.push(TransformStreamEvent::partial(accumulator.snapshot()));
    }
}

void FakeTransformer::complete(const QString& text) {
    last().writer.push(TransformStreamEvent::completed(text));
    last().writer.finish();
}

void FakeTransformer::fail(const TransformFailure& failure) {
    last().writer.fail(failure);
}

} // namespace scrivel::test
