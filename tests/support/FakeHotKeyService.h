#pragma once

#include "app/HotKeyService.h"

#include <QHash>
#include <QList>
#include <QSet>

namespace scrivel::test {

// A hot-key service that grabs nothing: it records what is registered, can
// refuse chosen combinations as held by another client, and delivers presses
// and releases on request.
class FakeHotKeyService : public HotKeyService {
    Q_OBJECT

public:
    using HotKeyService::HotKeyService;

    std::expected<void, HotKeyError> registerHotKey(const Shortcut& shortcut, quint32 signature,
                                                    quint32 id) override;
    void unregisterHotKey(quint32 signature, quint32 id) override;
    bool isTakenByAnotherClient(const Shortcut& shortcut) override;

    // Combinations another client holds: registering them fails with
    // BadAccess (10).
    QSet<Shortcut> takenByOthers;
    // Every registration call in order, refused ones included.
    QList<Shortcut> registrationLog;

    QList<Shortcut> registered() const;
    bool isRegistered(const Shortcut& shortcut) const { return registered().contains(shortcut); }

    // Presses and releases the combination as the system would report it;
    // false when it is not registered.
    bool press(const Shortcut& shortcut);
    bool release(const Shortcut& shortcut);

private:
    bool deliver(const Shortcut& shortcut, EventKind kind);

    struct Registration {
        Shortcut shortcut;
        quint32 signature;
        quint32 id;
    };
    QList<Registration> m_registrations;
};

} // namespace scrivel::test
