#pragma once

#include "core/shortcuts/HotKeyService.h"

namespace scrivel {

// Where no global shortcut can be had (a Wayland desktop without the shortcut
// portal, or no session bus for it): every registration is refused as
// unavailable, and the status says so, so that nothing promises a shortcut.
// Says so once, on standard error, when created.
class UnavailableHotKeyService : public HotKeyService {
    Q_OBJECT

public:
    explicit UnavailableHotKeyService(QObject* parent = nullptr);

    std::expected<void, HotKeyError> registerHotKey(const Shortcut&, quint32, quint32) override {
        return std::unexpected(HotKeyError{HotKeyError::Kind::unavailable, 0});
    }
    void unregisterHotKey(quint32, quint32) override {}
    bool isTakenByAnotherClient(const Shortcut&) override { return false; }
    GlobalShortcutStatus status() const override {
        return GlobalShortcutStatus::unavailable(GlobalShortcutStatus::Reason::noPortal);
    }
};

} // namespace scrivel
