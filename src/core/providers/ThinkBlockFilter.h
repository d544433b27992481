#pragma once

#include "core/support/TextSnapshot.h"

namespace scrivel {

// Keeps a leading <think>…</think> block out of a streamed reply. Local
// reasoning models (served without a reasoning parser) put their reasoning
// there, at the start of the content; it is neither the result nor
// something to show while it streams. Only a block at the very start (after
// white space) counts; the white space after it goes too. A reply that
// opens a block and never closes it has no visible text.
class ThinkBlockFilter {
public:
    // Looks at the whole reply so far, after each append. True when the
    // visible text grew.
    bool update(const TextAccumulator& reply);
    // The visible text so far.
    TextSnapshot visible(const TextAccumulator& reply) const;

private:
    enum class State { undecided, thinking, afterBlock, noBlock };

    bool takeVisible(QStringView reply);

    State m_state = State::undecided;
    qsizetype m_scanFrom = 0; // where to look for the closing tag next
    qsizetype m_consumed = 0; // how much of the reply has been looked at
    bool m_skippingSpace = true;
    TextAccumulator m_visible;
};

} // namespace scrivel
