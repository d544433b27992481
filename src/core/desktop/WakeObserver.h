#pragma once

#include <QObject>

namespace scrivel {

// Tells when the machine has woken from sleep.
class WakeObserver : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    void didWake();
};

} // namespace scrivel
