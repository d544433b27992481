#pragma once

#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QtGlobal>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace scrivel {

// The one pattern for asynchronous work in Scrivel.
//
// A producer makes a Promise<T>, hands out its Future<T> and later calls
// resolve(). The Future is a move-only handle owned by whoever started the
// work: destroying it, or calling cancel(), cancels the work. A cancelled
// operation never calls back; the producer learns of the cancellation through
// Promise::onCancel() and stops. Failures are values: T is usually a
// std::expected<Value, Error>.
//
// Continuations always run later on the event loop of their context object's
// thread (never inside resolve()), and not at all once the context is gone.

template <typename T>
class Future;

namespace detail {

template <typename T>
struct FutureState {
    std::optional<T> value;
    std::function<void(T)> continuation;
    QPointer<QObject> context;
    QMetaObject::Connection contextWatch;
    std::vector<std::function<void()>> cancelHandlers;
    bool cancelled = false;
    bool delivered = false;
    bool scheduled = false;
    bool futureTaken = false;

    void cancel() {
        if (cancelled || delivered)
            return;
        cancelled = true;
        continuation = nullptr;
        value.reset();
        QObject::disconnect(contextWatch);
        auto handlers = std::move(cancelHandlers);
        cancelHandlers.clear();
        for (auto& handler : handlers)
            handler();
    }

    static void schedule(const std::shared_ptr<FutureState>& self) {
        if (!self->value || !self->continuation || self->cancelled || self->delivered ||
            self->scheduled)
            return;
        if (!self->context) {
            self->cancel();
            return;
        }
        self->scheduled = true;
        QMetaObject::invokeMethod(
            self->context.data(),
            [self] {
                if (self->cancelled || self->delivered)
                    return;
                self->delivered = true;
                QObject::disconnect(self->contextWatch);
                self->cancelHandlers.clear();
                auto continuation = std::move(self->continuation);
                self->continuation = nullptr;
                T value = std::move(*self->value);
                self->value.reset();
                continuation(std::move(value));
            },
            Qt::QueuedConnection);
    }
};

} // namespace detail

template <typename T>
class Promise {
public:
    Promise() : m_state(std::make_shared<detail::FutureState<T>>()) {}

    // The consumer's handle; may be taken once.
    Future<T> future();

    // Delivers the value. Ignored after cancellation or a first resolve().
    void resolve(T value) const {
        if (m_state->cancelled || m_state->value || m_state->delivered)
            return;
        m_state->value.emplace(std::move(value));
        detail::FutureState<T>::schedule(m_state);
    }

    bool isCancelled() const { return m_state->cancelled; }
    bool isResolved() const { return m_state->value.has_value() || m_state->delivered; }

    // Runs the handler synchronously when the consumer cancels; at once when it
    // already has.
    void onCancel(std::function<void()> handler) const {
        if (m_state->cancelled) {
            handler();
            return;
        }
        if (!m_state->delivered)
            m_state->cancelHandlers.push_back(std::move(handler));
    }

private:
    std::shared_ptr<detail::FutureState<T>> m_state;
};

template <typename T>
class Future {
public:
    using ValueType = T;

    Future() = default;
    Future(const Future&) = delete;
    Future& operator=(const Future&) = delete;
    Future(Future&& other) noexcept : m_state(std::move(other.m_state)) {}
    Future& operator=(Future&& other) noexcept {
        if (this != &other) {
            cancel();
            m_state = std::move(other.m_state);
        }
        return *this;
    }
    ~Future() { cancel(); }

    // A future that already holds its value.
    static Future ready(T value) {
        Promise<T> promise;
        Future future = promise.future();
        promise.resolve(std::move(value));
        return future;
    }

    bool isValid() const { return m_state != nullptr; }
    bool isDelivered() const { return m_state && m_state->delivered; }
    bool isCancelled() const { return m_state && m_state->cancelled; }

    // Calls fn with the value once, on context's event loop. The handle stays
    // with the caller, whose destruction of it still cancels.
    template <typename F>
    void then(QObject* context, F&& fn) {
        Q_ASSERT(m_state && context);
        m_state->continuation = std::function<void(T)>(std::forward<F>(fn));
        m_state->context = context;
        QObject::disconnect(m_state->contextWatch);
        std::weak_ptr<detail::FutureState<T>> weak = m_state;
        m_state->contextWatch = QObject::connect(context, &QObject::destroyed, [weak] {
            if (auto state = weak.lock())
                state->cancel();
        });
        detail::FutureState<T>::schedule(m_state);
    }

    // Like then(), but gives the handle up: the work runs to its end and is
    // cancelled only when context is destroyed.
    template <typename F>
    void detach(QObject* context, F&& fn) && {
        then(context, std::forward<F>(fn));
        m_state.reset();
    }

    // Cancels the work; nothing is delivered afterwards. No effect once the
    // value has been delivered.
    void cancel() {
        if (m_state)
            m_state->cancel();
    }

private:
    friend class Promise<T>;
    explicit Future(std::shared_ptr<detail::FutureState<T>> state) : m_state(std::move(state)) {}

    std::shared_ptr<detail::FutureState<T>> m_state;
};

template <typename T>
Future<T> Promise<T>::future() {
    Q_ASSERT(!m_state->futureTaken);
    m_state->futureTaken = true;
    return Future<T>(m_state);
}

// Chains a transformation onto a future: the returned future holds
// fn(value). Cancelling the returned future cancels the source; fn runs on
// context's event loop.
template <typename T, typename F>
auto mapFuture(Future<T> source, QObject* context, F&& fn) -> Future<std::invoke_result_t<F, T>> {
    using U = std::invoke_result_t<F, T>;
    Promise<U> promise;
    Future<U> result = promise.future();
    auto held = std::make_shared<Future<T>>(std::move(source));
    promise.onCancel([held] { held->cancel(); });
    held->then(context, [promise, fn = std::forward<F>(fn)](T value) mutable {
        promise.resolve(fn(std::move(value)));
    });
    return result;
}

// Chains an asynchronous step onto a future: fn(value) returns the next
// future, whose value the returned future delivers. Cancelling the returned
// future cancels whichever step is running.
template <typename T, typename F>
auto chainFuture(Future<T> source, QObject* context, F&& fn) -> std::invoke_result_t<F, T> {
    using NextFuture = std::invoke_result_t<F, T>;
    using U = typename NextFuture::ValueType;
    Promise<U> promise;
    NextFuture result = promise.future();
    auto held = std::make_shared<Future<T>>(std::move(source));
    auto next = std::make_shared<NextFuture>();
    promise.onCancel([held, next] {
        held->cancel();
        next->cancel();
    });
    held->then(context, [promise, next, context, fn = std::forward<F>(fn)](T value) mutable {
        *next = fn(std::move(value));
        next->then(context, [promise](U nextValue) { promise.resolve(std::move(nextValue)); });
    });
    return result;
}

} // namespace scrivel
