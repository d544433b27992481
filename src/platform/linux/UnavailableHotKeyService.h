#pragma once

#include "core/shortcuts/HotKeyService.h"

namespace scrivel {

// Where no global grab is possible (a Wayland session): registrations succeed
// and never fire. Says so once, on standard error, when created.
class UnavailableHotKeyService : public HotKeyService {
    Q_OBJECT

public:
    explicit UnavailableHotKeyService(QObject* parent = nullptr);

    std::expected<void, HotKeyError> registerHotKey(const Shortcut&, quint32, quint32) override {
        return {};
    }
    void unregisterHotKey(quint32, quint32) override {}
    bool isTakenByAnotherClient(const Shortcut&) override { return false; }
};

} // namespace scrivel
