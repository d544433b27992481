#include "core/support/Sleep.h"

#include <QTimer>

namespace scrivel {

SleepFuture timerSleep(std::chrono::milliseconds duration) {
    Promise<std::monostate> promise;
    SleepFuture future = promise.future();
    auto* timer = new QTimer;
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, timer, [promise, timer] {
        promise.resolve(std::monostate{});
        timer->deleteLater();
    });
    promise.onCancel([timer = QPointer<QTimer>(timer)] {
        if (timer) {
            timer->stop();
            timer->deleteLater();
        }
    });
    timer->start(duration);
    return future;
}

} // namespace scrivel
