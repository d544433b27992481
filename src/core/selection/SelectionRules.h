#pragma once

#include "core/selection/SelectionDesktop.h"

#include <QString>
#include <QStringList>
#include <chrono>

namespace scrivel {

// What the panel makes of a selection it was given.
struct TakenSelection {
    enum class Kind {
        // Nothing to take: the panel opens as it does without a selection.
        nothing,
        text,
        // Refused: the panel opens empty and says the text is too long.
        tooLong,
    };

    Kind kind = Kind::nothing;
    QString text;

    friend bool operator==(const TakenSelection&, const TakenSelection&) = default;
};

// The rules of "start with the selected text" and "replace the selection
// when done": whose selection counts, what is taken, how long to wait, and
// which keys paste in which window.
namespace SelectionRules {

// How long the panel waits for the selection's text before it opens
// without it: well-behaved owners answer within a few milliseconds, and a
// panel shown once with its text does not grow under the user's eyes.
inline constexpr std::chrono::milliseconds showGrace{60};
// How long the owner may take at most: a text that arrives after the panel
// opened still goes into it while the user has not touched it; after this,
// the owner is given up on.
inline constexpr std::chrono::milliseconds readBound{300};
// How long the window the text came from may take to get the focus back
// before nothing is typed and the panel stays.
inline constexpr std::chrono::milliseconds focusBound{500};
// How often the focus is looked at meanwhile.
inline constexpr std::chrono::milliseconds focusCheckInterval{10};

// The most the panel takes: the longest text any provider accepts.
qsizetype byteLimit();

// Whether the selection belongs to the window that had the focus. The owner
// is often a window inside the focused one (compared by top-level window);
// an owner that is not on screen is a hidden helper window of its
// application (compared by the X connection that made the windows). Any
// other owner holds an old selection elsewhere.
bool isOwnedByFocusedWindow(const SelectionScene& scene);

// What the panel takes from what the owner gave: an empty or blank text, or
// anything but text, is nothing; more than byteLimit UTF-8 bytes is refused,
// never cut.
TakenSelection take(const PrimarySelection& selection, qsizetype byteLimit);

// Terminals paste with Ctrl+Shift+V; these, whose class is compared without
// regard to case (instance or class name), are the ones known to.
const QStringList& ctrlShiftVTerminals();
// Terminals where no key pastes the clipboard by default (their paste keys
// insert the PRIMARY selection): nothing is typed there.
const QStringList& terminalsWithoutClipboardKey();
PasteKeys pasteKeysFor(const QStringList& windowClass);

} // namespace SelectionRules

} // namespace scrivel
