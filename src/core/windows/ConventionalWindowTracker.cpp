#include "core/windows/ConventionalWindowTracker.h"

namespace scrivel {

bool ConventionalWindowTracker::insert(Identity window) {
    const bool wasEmpty = m_identifiers.isEmpty();
    m_identifiers.insert(window);
    return wasEmpty;
}

bool ConventionalWindowTracker::remove(Identity window) {
    return m_identifiers.remove(window) && m_identifiers.isEmpty();
}

} // namespace scrivel
