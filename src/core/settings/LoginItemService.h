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

// Why the entry that starts Scrivel at login could not be written or removed.
struct LoginItemFailure {
    enum class Reason {
        // No more specific reason is known.
        unknown,
        // The folder that holds the entry does not exist and cannot be made.
        folderNotCreated,
        permissionDenied,
        diskFull,
    };

    // The entry's file, where the system keeps one.
    QString path;
    Reason reason = Reason::unknown;
    // The system's own words, for the debug log only.
    QString systemDescription;

    friend bool operator==(const LoginItemFailure&, const LoginItemFailure&) = default;
};

// The system's registration of Scrivel as an app started at login.
class LoginItemService {
public:
    virtual ~LoginItemService() = default;

    virtual LoginItemStatus status() const = 0;
    virtual std::expected<void, LoginItemFailure> registerItem() = 0;
    virtual std::expected<void, LoginItemFailure> unregisterItem() = 0;
    // Shows the system's list of login items, where the user approves them.
    virtual void openSystemSettingsLoginItems() = 0;
};

} // namespace scrivel
