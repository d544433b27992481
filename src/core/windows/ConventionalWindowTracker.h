#pragma once

#include <QSet>

namespace scrivel {

// The set of conventional windows that are open, by object identity (two
// windows with the same title are still two windows).
class ConventionalWindowTracker {
public:
    using Identity = const void*;

    // True when the set went from empty to non-empty.
    bool insert(Identity window);
    // True when the window was present and the set is now empty.
    bool remove(Identity window);

    bool contains(Identity window) const { return m_identifiers.contains(window); }
    bool isEmpty() const { return m_identifiers.isEmpty(); }
    qsizetype count() const { return m_identifiers.size(); }

private:
    QSet<Identity> m_identifiers;
};

} // namespace scrivel
