// Pushes a long streamed reply through the rewrite coordinator and the fix
// panel model and reports time and peak memory. The reply arrives as many
// partial events, each carrying the whole text so far; the work must grow
// linearly with the reply, not with the square of it.
//
//   bench_RewritePipeline [events]

#include "core/panel/FixPanelModel.h"
#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"
#include "support/InMemoryClipboard.h"
#include "support/InMemorySettingsStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>
#include <cstdio>
#include <sys/resource.h>

using namespace scrivel;

namespace {

// Streams `bytes` of reply in `events` partial events, then completes.
class StreamingTransformer : public PresetTransforming {
public:
    qsizetype bytes = 0;
    int events = 0;

    void prewarm(const Preset&) override {}
    Future<std::optional<UnavailableReason>> unavailableReason(const Preset&) override {
        return Future<std::optional<UnavailableReason>>::ready(std::nullopt);
    }
    TransformStream stream(const Preset&, const QString&) override {
        TransformStreamWriter writer;
        TransformStream stream = writer.stream();
        const qsizetype chunk = bytes / events;
        const QString piece(chunk, QLatin1Char('x'));
        TextAccumulator accumulator;
        for (int i = 0; i < events; ++i) {
            accumulator.append(piece);
            writer.push(TransformStreamEvent::partial(accumulator.snapshot()));
        }
        writer.push(TransformStreamEvent::completed(accumulator.view().toString()));
        writer.finish();
        return stream;
    }
};

long peakResidentKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

double runOnce(qsizetype bytes, int events) {
    InMemorySettingsStore settings;
    PresetStore presets(settings);
    presets.seedIfEmpty(false);
    presets.activate(presets.presets()[1].id); // no edit validation: any reply is accepted
    StreamingTransformer transformer;
    transformer.bytes = bytes;
    transformer.events = events;
    RewriteCoordinator coordinator(transformer);
    InMemoryClipboard clipboard;
    FixPanelModel model(presets, coordinator, clipboard);
    model.setText(QStringLiteral("input"));

    QElapsedTimer timer;
    timer.start();
    model.run();
    while (model.stage().kind == PanelStage::Kind::working)
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    if (clipboard.written.size() != 1 || model.text().size() != bytes / events * events) {
        std::fprintf(stderr, "unexpected result\n");
        std::exit(1);
    }
    return ms;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("com.scrivel.*=false")); // measure, not log
    const int events = argc > 1 ? std::atoi(argv[1]) : 10000;
    const long baseline = peakResidentKiB();

    std::printf("reply bytes  events  best ms   MB/s\n");
    double previous = 0;
    for (qsizetype kib : {128, 512, 2048}) {
        double best = 1e18;
        for (int round = 0; round < 3; ++round)
            best = std::min(best, runOnce(kib * 1024, events));
        std::printf("%11lld  %6d  %7.2f  %6.1f", static_cast<long long>(kib * 1024), events, best,
                    double(kib) / 1024.0 / (best / 1000.0));
        if (previous > 0)
            std::printf("   x%.2f time for x4 bytes", best / previous);
        std::printf("\n");
        previous = best;
    }
    std::printf("peak resident memory: %ld KiB (%ld KiB above start-up)\n", peakResidentKiB(),
                peakResidentKiB() - baseline);
    return 0;
}
