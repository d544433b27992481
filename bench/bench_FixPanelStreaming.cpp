// Streams a long reply into the real fix panel (window, view, text field) as
// many partial events spread over the event loop, the way a network reply
// arrives, and reports the longest event-loop stall and the total time until
// the whole reply is on screen. The panel repaints at most once a frame and
// appends only what is new, so the total grows linearly with the reply.
//
//   bench_FixPanelStreaming [events]      (offscreen unless QT_QPA_PLATFORM says otherwise)

#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"
#include "support/InMemoryClipboard.h"
#include "support/InMemorySettingsStore.h"
#include "ui/panel/FixPanelController.h"
#include "ui/panel/FixPanelView.h"
#include "ui/panel/PanelTextEditor.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTimer>
#include <cstdio>

using namespace scrivel;

namespace {

// Prose in paragraphs: words, spaces and a line break every few hundred
// characters, so the field wraps and lays out lines as it does for real text.
QString replyText(qsizetype size) {
    static const QString words[] = {QStringLiteral("the "),   QStringLiteral("quick "),
                                    QStringLiteral("brown "), QStringLiteral("fox "),
                                    QStringLiteral("jumps "), QStringLiteral("over "),
                                    QStringLiteral("lazy "),  QStringLiteral("dogs. ")};
    QString text;
    text.reserve(size);
    for (int i = 0; text.size() < size; ++i) {
        text += words[i % 8];
        if (i % 60 == 59)
            text += QLatin1Char('\n');
    }
    text.truncate(size);
    return text;
}

// Hands out the reply one partial event per event-loop turn.
class TimedTransformer : public PresetTransforming {
public:
    QString reply;
    int events = 0;

    void prewarm(const Preset&) override {}
    Future<std::optional<UnavailableReason>> unavailableReason(const Preset&) override {
        return Future<std::optional<UnavailableReason>>::ready(std::nullopt);
    }
    TransformStream stream(const Preset&, const QString&) override {
        m_writer = TransformStreamWriter();
        m_accumulator = TextAccumulator();
        m_sent = 0;
        TransformStream stream = m_writer.stream();
        m_timer.setInterval(0);
        QObject::disconnect(&m_timer, nullptr, nullptr, nullptr);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { pushNext(); });
        m_timer.start();
        return stream;
    }

private:
    void pushNext() {
        const qsizetype end = reply.size() * (m_sent + 1) / events;
        m_accumulator.append(
            QStringView(reply).sliced(m_accumulator.size(), end - m_accumulator.size()));
        m_writer.push(TransformStreamEvent::partial(m_accumulator.snapshot()));
        if (++m_sent == events) {
            m_timer.stop();
            m_writer.push(TransformStreamEvent::completed(reply));
            m_writer.finish();
        }
    }

    TransformStreamWriter m_writer;
    TextAccumulator m_accumulator;
    QTimer m_timer;
    int m_sent = 0;
};

struct Result {
    double totalMs = 0;
    double longestStallMs = 0;
};

Result runOnce(qsizetype bytes, int events) {
    InMemorySettingsStore settings;
    PresetStore presets(settings);
    presets.seedIfEmpty(false);
    presets.activate(presets.presets()[1].id); // no edit validation
    TimedTransformer transformer;
    transformer.reply = replyText(bytes);
    transformer.events = events;
    RewriteCoordinator coordinator(transformer);
    InMemoryClipboard clipboard;
    FixPanelController panel(presets, coordinator, clipboard);
    panel.present(QPoint(100, 100));
    panel.model().setText(QStringLiteral("input"));
    QCoreApplication::processEvents();

    // The longest gap between two turns of the event loop is the longest the
    // user would wait for a key press or a repaint.
    QElapsedTimer clock;
    QElapsedTimer sinceTurn;
    Result result;
    QTimer heartbeat;
    heartbeat.setInterval(0);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        result.longestStallMs = std::max(result.longestStallMs, sinceTurn.nsecsElapsed() / 1e6);
        sinceTurn.restart();
    });
    clock.start();
    sinceTurn.start();
    heartbeat.start();
    panel.model().run();
    while (panel.model().stage().kind == PanelStage::Kind::working)
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    panel.view()->flushText();
    QCoreApplication::processEvents();
    result.totalMs = clock.nsecsElapsed() / 1e6;
    heartbeat.stop();
    if (panel.view()->editor()->exactText() != transformer.reply) {
        std::fprintf(stderr, "the field does not show the whole reply\n");
        std::exit(1);
    }
    return result;
}

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("com.scrivel.*=false"));
    const int events = argc > 1 ? std::atoi(argv[1]) : 10000;

    std::printf("reply bytes  events  total ms  longest stall ms\n");
    double previous = 0;
    for (qsizetype kib : {128, 512}) {
        Result best{1e18, 0};
        for (int round = 0; round < 3; ++round) {
            const Result r = runOnce(kib * 1024, events);
            if (r.totalMs < best.totalMs)
                best = r;
        }
        std::printf("%11lld  %6d  %8.1f  %16.1f", static_cast<long long>(kib * 1024), events,
                    best.totalMs, best.longestStallMs);
        if (previous > 0)
            std::printf("   x%.2f time for x4 bytes", best.totalMs / previous);
        std::printf("\n");
        previous = best.totalMs;
    }
    return 0;
}
