#pragma once

#include "core/support/Future.h"

#include <chrono>
#include <functional>
#include <variant>

namespace scrivel {

// A cancellable wait: the future delivers once the duration has passed;
// cancelling it (or dropping it) stops the timer.
using SleepFuture = Future<std::monostate>;
using Sleep = std::function<SleepFuture(std::chrono::milliseconds)>;

// The real wait, on a precise (monotonic) timer of the calling thread.
SleepFuture timerSleep(std::chrono::milliseconds duration);

} // namespace scrivel
