#pragma once

#include "core/support/Future.h"

#include <QObject>
#include <optional>

namespace scrivel {

// Whether a Secret Service answers on the session bus. Asks once per
// process (pinging the service also starts an activatable one) and remembers
// the answer.
class SecretServiceProbe : public QObject {
    Q_OBJECT

public:
    explicit SecretServiceProbe(QObject* parent = nullptr);

    Future<bool> isAvailable();

private:
    std::optional<bool> m_answer;
    QList<Promise<bool>> m_waiting;
    bool m_asking = false;
};

} // namespace scrivel
