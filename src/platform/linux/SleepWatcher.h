#pragma once

#include <QObject>

namespace scrivel {

// Tells when the machine has woken from suspend, from logind's
// PrepareForSleep signal on the system bus. Without a system bus or logind
// it stays silent.
class SleepWatcher : public QObject {
    Q_OBJECT

public:
    explicit SleepWatcher(QObject* parent = nullptr);

Q_SIGNALS:
    void resumed();

private Q_SLOTS:
    void onPrepareForSleep(bool sleeping);
};

} // namespace scrivel
