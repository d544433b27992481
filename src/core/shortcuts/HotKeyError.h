#pragma once

#include <QString>

namespace scrivel {

// Why the system refused to register a hot key.
struct HotKeyError {
    enum class Kind {
        // Another client holds the combination (X11 BadAccess).
        takenByAnotherClient,
        // The key code or a modifier has no key on this system.
        unknownKey,
        // Any other refusal by the display server.
        refused,
        // This session has no global shortcuts at all (the service has said
        // so once already).
        unavailable,
    };

    Kind kind = Kind::refused;
    // The system's own status number (the X error code), written in the
    // registration error line.
    int status = 0;

    // A short English wording for logs; never shown in a window.
    QString description() const;
};

} // namespace scrivel
