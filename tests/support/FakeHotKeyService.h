#pragma once

#include "core/shortcuts/HotKeyService.h"

#include <QList>
#include <QSet>
#include <QStringList>

namespace scrivel::test {

// A hot-key service that grabs nothing: it records what is registered, can
// refuse chosen combinations as held by another client, and delivers presses
// and releases on request.
class FakeHotKeyService : public HotKeyService {
    Q_OBJECT

public:
    using HotKeyService::HotKeyService;

    std::expected<void, HotKeyError> registerHotKey(const Shortcut& shortcut, quint32 signature,
                                                    quint32 id) override {
        registrationLog.append(shortcut);
        if (takenByOthers.contains(shortcut))
            return std::unexpected(HotKeyError{HotKeyError::Kind::takenByAnotherClient, 10});
        m_registrations.append({shortcut, signature, id});
        return {};
    }
    void unregisterHotKey(quint32 signature, quint32 id) override {
        m_registrations.removeIf(
            [&](const Registration& r) { return r.signature == signature && r.id == id; });
    }
    bool isTakenByAnotherClient(const Shortcut& shortcut) override {
        return takenByOthers.contains(shortcut);
    }
    GlobalShortcutStatus status() const override { return m_status; }
    void configureInDesktop(const QString& activationToken) override {
        configureRequests.append(activationToken);
    }

    // How the fake delivers shortcuts (key grabs until set).
    void setStatus(const GlobalShortcutStatus& status) {
        m_status = status;
        Q_EMIT statusChanged();
    }
    // The tokens of every request for the desktop's dialog.
    QStringList configureRequests;

    // Combinations another client holds: registering them fails with
    // BadAccess (10).
    QSet<Shortcut> takenByOthers;
    // Every registration call in order, refused ones included.
    QList<Shortcut> registrationLog;

    QList<Shortcut> registered() const {
        QList<Shortcut> shortcuts;
        for (const Registration& r : m_registrations)
            shortcuts.append(r.shortcut);
        return shortcuts;
    }
    bool isRegistered(const Shortcut& shortcut) const { return registered().contains(shortcut); }

    // Presses and releases the combination as the system would report it;
    // false when it is not registered.
    bool press(const Shortcut& shortcut) { return deliver(shortcut, EventKind::pressed); }
    bool release(const Shortcut& shortcut) { return deliver(shortcut, EventKind::released); }

private:
    struct Registration {
        Shortcut shortcut;
        quint32 signature;
        quint32 id;
    };

    bool deliver(const Shortcut& shortcut, EventKind kind) {
        for (const Registration& r : std::as_const(m_registrations)) {
            if (r.shortcut == shortcut) {
                Q_EMIT hotKeyEvent(r.signature, r.id, kind);
                return true;
            }
        }
        return false;
    }

    QList<Registration> m_registrations;
    GlobalShortcutStatus m_status;
};

} // namespace scrivel::test
