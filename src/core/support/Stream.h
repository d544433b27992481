#pragma once

#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace scrivel {

// A stream of events that ends once, either finished or failed with an Error.
// The producer holds a StreamWriter and pushes events; buffering is unbounded,
// so nothing is lost before the consumer subscribes. The consumer owns the
// move-only Stream handle: destroying it, or cancel(), stops the stream, and
// the producer hears of it through StreamWriter::onCancel(). After a
// cancellation no callback runs.
//
// Callbacks run on the context object's event loop, never inside push(), in
// the order the events were pushed; the end is delivered after the last event.

template <typename Event, typename Error>
class Stream;

namespace detail {

template <typename Event, typename Error>
struct StreamState {
    std::deque<Event> buffer;
    std::optional<std::optional<Error>> end; // set once: nullopt inside means finished
    std::function<void(Event)> onEvent;
    std::function<void(std::optional<Error>)> onEnd;
    QPointer<QObject> context;
    QMetaObject::Connection contextWatch;
    std::vector<std::function<void()>> cancelHandlers;
    bool subscribed = false;
    bool cancelled = false;
    bool done = false;
    bool scheduled = false;
    bool streamTaken = false;
    bool flushing = false;

    void cancel() {
        if (cancelled || done)
            return;
        cancelled = true;
        buffer.clear();
        if (!flushing) { // a callback that cancels must not destroy itself mid-call
            onEvent = nullptr;
            onEnd = nullptr;
        }
        QObject::disconnect(contextWatch);
        auto handlers = std::move(cancelHandlers);
        cancelHandlers.clear();
        for (auto& handler : handlers)
            handler();
    }

    static void flush(const std::shared_ptr<StreamState>& self) {
        self->flushing = true;
        while (!self->cancelled && !self->buffer.empty()) {
            Event event = std::move(self->buffer.front());
            self->buffer.pop_front();
            self->onEvent(std::move(event));
        }
        self->flushing = false;
        if (self->cancelled) {
            self->onEvent = nullptr;
            self->onEnd = nullptr;
            return;
        }
        if (!self->end || self->done)
            return;
        self->done = true;
        QObject::disconnect(self->contextWatch);
        self->cancelHandlers.clear();
        auto onEnd = std::move(self->onEnd);
        self->onEvent = nullptr;
        self->onEnd = nullptr;
        std::optional<Error> error = std::move(*self->end);
        if (onEnd)
            onEnd(std::move(error));
    }

    static void schedule(const std::shared_ptr<StreamState>& self) {
        if (!self->subscribed || self->cancelled || self->done || self->scheduled)
            return;
        if (self->buffer.empty() && !self->end)
            return;
        if (!self->context) {
            self->cancel();
            return;
        }
        self->scheduled = true;
        QMetaObject::invokeMethod(
            self->context.data(),
            [self] {
                self->scheduled = false;
                flush(self);
            },
            Qt::QueuedConnection);
    }
};

} // namespace detail

template <typename Event, typename Error>
class StreamWriter {
public:
    StreamWriter() : m_state(std::make_shared<detail::StreamState<Event, Error>>()) {}

    // The consumer's handle; may be taken once.
    Stream<Event, Error> stream();

    void push(Event event) const {
        if (isClosed())
            return;
        m_state->buffer.push_back(std::move(event));
        detail::StreamState<Event, Error>::schedule(m_state);
    }
    void finish() const { close(std::nullopt); }
    void fail(Error error) const { close(std::optional<Error>(std::move(error))); }

    bool isCancelled() const { return m_state->cancelled; }
    // True once the stream has ended or was cancelled; pushes are then ignored.
    bool isClosed() const { return m_state->cancelled || m_state->end.has_value(); }

    // Runs the handler synchronously when the consumer cancels; at once when it
    // already has.
    void onCancel(std::function<void()> handler) const {
        if (m_state->cancelled) {
            handler();
            return;
        }
        if (!m_state->done)
            m_state->cancelHandlers.push_back(std::move(handler));
    }

private:
    void close(std::optional<Error> error) const {
        if (isClosed())
            return;
        m_state->end.emplace(std::move(error));
        detail::StreamState<Event, Error>::schedule(m_state);
    }

    std::shared_ptr<detail::StreamState<Event, Error>> m_state;
};

template <typename Event, typename Error>
class Stream {
public:
    Stream() = default;
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    Stream(Stream&& other) noexcept : m_state(std::move(other.m_state)) {}
    Stream& operator=(Stream&& other) noexcept {
        if (this != &other) {
            cancel();
            m_state = std::move(other.m_state);
        }
        return *this;
    }
    ~Stream() { cancel(); }

    bool isValid() const { return m_state != nullptr; }
    bool isDone() const { return m_state && m_state->done; }

    // onEvent(Event) for each event in order, then onEnd(std::optional<Error>)
    // once: nullopt when the stream finished, the error when it failed.
    template <typename OnEvent, typename OnEnd>
    void subscribe(QObject* context, OnEvent&& onEvent, OnEnd&& onEnd) {
        Q_ASSERT(m_state && context && !m_state->subscribed);
        m_state->onEvent = std::function<void(Event)>(std::forward<OnEvent>(onEvent));
        m_state->onEnd = std::function<void(std::optional<Error>)>(std::forward<OnEnd>(onEnd));
        m_state->context = context;
        m_state->subscribed = true;
        std::weak_ptr<detail::StreamState<Event, Error>> weak = m_state;
        m_state->contextWatch = QObject::connect(context, &QObject::destroyed, [weak] {
            if (auto state = weak.lock())
                state->cancel();
        });
        detail::StreamState<Event, Error>::schedule(m_state);
    }

    // Stops the stream; no callback runs afterwards.
    void cancel() {
        if (m_state)
            m_state->cancel();
    }

private:
    friend class StreamWriter<Event, Error>;
    explicit Stream(std::shared_ptr<detail::StreamState<Event, Error>> state)
        : m_state(std::move(state)) {}

    std::shared_ptr<detail::StreamState<Event, Error>> m_state;
};

template <typename Event, typename Error>
Stream<Event, Error> StreamWriter<Event, Error>::stream() {
    Q_ASSERT(!m_state->streamTaken);
    m_state->streamTaken = true;
    return Stream<Event, Error>(m_state);
}

} // namespace scrivel
