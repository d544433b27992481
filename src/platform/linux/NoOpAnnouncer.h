#pragma once

#include "core/desktop/Announcer.h"

namespace scrivel {

// Qt offers no announcements to Linux screen readers; the texts stay in the
// accessible values of the controls that show them.
class NoOpAnnouncer : public Announcer {
public:
    void announce(const QString&) override {}
};

} // namespace scrivel
