#include "support/FakeHotKeyService.h"

namespace scrivel::test {

std::expected<void, HotKeyError> FakeHotKeyService::registerHotKey(const Shortcut& shortcut,
                                                                   quint32 signature, quint32 id) {
    registrationLog.append(shortcut);
    if (takenByOthers.contains(shortcut))
        return std::unexpected(HotKeyError{HotKeyError::Kind::takenByAnotherClient, 10});
    m_registrations.append(Registration{shortcut, signature, id});
    return {};
}

void FakeHotKeyService::unregisterHotKey(quint32 signature, quint32 id) {
    m_registrations.removeIf(
        [&](const Registration& r) { return r.signature == signature && r.id == id; });
}

bool FakeHotKeyService::isTakenByAnotherClient(const Shortcut& shortcut) {
    return takenByOthers.contains(shortcut);
}

QList<Shortcut> FakeHotKeyService::registered() const {
    QList<Shortcut> shortcuts;
    for (const Registration& r : m_registrations)
        shortcuts.append(r.shortcut);
    return shortcuts;
}

bool FakeHotKeyService::press(const Shortcut& shortcut) {
    return deliver(shortcut, EventKind::pressed);
}

bool FakeHotKeyService::release(const Shortcut& shortcut) {
    return deliver(shortcut, EventKind::released);
}

bool FakeHotKeyService::deliver(const Shortcut& shortcut, EventKind kind) {
    for (const Registration& r : std::as_const(m_registrations)) {
        if (r.shortcut == shortcut) {
            Q_EMIT hotKeyEvent(r.signature, r.id, kind);
            return true;
        }
    }
    return false;
}

} // namespace scrivel::test
