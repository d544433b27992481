#pragma once

#include "core/desktop/WakeObserver.h"

namespace scrivel {

// Wake from sleep as systemd-logind announces it on the system bus
// (PrepareForSleep with false). Without a system bus or logind it simply
// never fires.
class LogindWakeObserver : public WakeObserver {
    Q_OBJECT

public:
    explicit LogindWakeObserver(QObject* parent = nullptr);

    bool isObserving() const { return m_observing; }

private Q_SLOTS:
    void prepareForSleep(bool sleeping);

private:
    bool m_observing = false;
};

} // namespace scrivel
