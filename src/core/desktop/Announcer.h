#pragma once

#include <QString>

namespace scrivel {

// Spoken announcements for assistive technologies (a screen reader reads the
// text without moving focus).
class Announcer {
public:
    virtual ~Announcer() = default;
    virtual void announce(const QString& text) = 0;
};

} // namespace scrivel
