#pragma once

#include "cli/Terminal.h"
#include "core/support/Future.h"

#include <QEventLoop>
#include <QObject>
#include <optional>

namespace scrivel::cli {

// Waits for a future on a local event loop. Nothing when interrupted
// (SIGINT or SIGTERM).
template <typename T>
std::optional<T> await(Future<T>& future, bool* interrupted = nullptr) {
    std::optional<T> value;
    QEventLoop loop;
    QObject context;
    future.then(&context, [&](T delivered) {
        value = std::move(delivered);
        loop.quit();
    });
    Terminal::onInterrupt([&] {
        if (interrupted)
            *interrupted = true;
        loop.quit();
    });
    if (!value)
        loop.exec();
    return value;
}

template <typename T>
std::optional<T> await(Future<T>&& future) {
    Future<T> held = std::move(future);
    return await(held);
}

} // namespace scrivel::cli
