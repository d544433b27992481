#pragma once

#include <QString>
#include <expected>

namespace scrivel {

// What the system reports about Scrivel as a login item. The values are the
// system's own; a service may report one Scrivel does not know, which is why
// this is read as a plain number before it is trusted.
enum class LoginItemStatus : int {
    notRegistered = 0,
    enabled = 1,
    requiresApproval = 2,
    notFound = 3,
};

// The system's registration of Scrivel as an app started at login.
class LoginItemService {
public:
    virtual ~LoginItemService() = default;

    virtual LoginItemStatus status() const = 0;
    // Failures carry the system's own description, for the debug log only.
    virtual std::expected<void, QString> registerItem() = 0;
    virtual std::expected<void, QString> unregisterItem() = 0;
    // Shows the system's list of login items, where the user approves them.
    virtual void openSystemSettingsLoginItems() = 0;
};

} // namespace scrivel
