#pragma once

#include "core/support/Future.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <optional>

namespace scrivel {

// Another application's window, as far as taking its selection and handing
// a result back to it go.
struct DesktopWindow {
    // The client's own top-level window (the one the window manager
    // manages), or the window itself where none is found.
    quint32 id = 0;
    // Its ancestor just below the root: a window manager's frame, or the
    // client's top-level window where nothing reparents it.
    quint32 topLevel = 0;
    // Whether topLevel is on screen. A selection owner that is not lives in
    // a hidden helper window of its application.
    bool viewable = false;
    // The X connection that created id (the resource-id base): windows of
    // one application share it.
    quint32 connection = 0;

    friend bool operator==(const DesktopWindow&, const DesktopWindow&) = default;
};

// Who had the keyboard focus and who owns the PRIMARY selection, read just
// before the panel takes the focus.
struct SelectionScene {
    std::optional<DesktopWindow> focused;
    std::optional<DesktopWindow> owner;
};

// What the owner of the PRIMARY selection gave when asked for text.
struct PrimarySelection {
    enum class Kind {
        text,
        // The owner refused every text form, or gave something else.
        notText,
        // More bytes than the reader was allowed to take; the text is empty.
        overLimit,
    };

    Kind kind = Kind::notText;
    QString text;

    static PrimarySelection ofText(const QString& text) { return {Kind::text, text}; }
    static PrimarySelection notText() { return {Kind::notText, {}}; }
    static PrimarySelection overLimit() { return {Kind::overLimit, {}}; }

    friend bool operator==(const PrimarySelection&, const PrimarySelection&) = default;
};

// The keys that paste the clipboard in a window.
enum class PasteKeys {
    // Nothing pastes the clipboard there by a key: nothing is typed.
    none,
    ctrlV,
    // Terminals keep Ctrl+V for the program running in them.
    ctrlShiftV,
};

// The desktop services behind taking the selected text into the panel and
// pasting a result back: an X11 adapter on X11, nothing elsewhere (no other
// session lets one application read another's focus or type into it).
class SelectionDesktop {
public:
    virtual ~SelectionDesktop() = default;

    // Reads who has the focus and who owns the selection. Quick: it waits
    // only for the display server, never for another application.
    virtual SelectionScene scene() = 0;
    // Asks the owner of the PRIMARY selection for its text. The owner may
    // take its time or never answer: callers bound the wait and cancel.
    // More than byteLimit UTF-8 bytes are not taken (overLimit).
    virtual Future<PrimarySelection> readPrimary(qsizetype byteLimit) = 0;

    // Whether the window still exists and is on screen.
    virtual bool isAlive(const DesktopWindow& window) = 0;
    // The window's class (WM_CLASS: instance name, then class name).
    virtual QStringList windowClass(const DesktopWindow& window) = 0;
    // Asks for the keyboard focus to go to the window.
    virtual void activate(const DesktopWindow& window) = 0;
    // Whether the window (or one inside its top-level window) has the focus.
    virtual bool hasFocus(const DesktopWindow& window) = 0;
    // Types the keys into whatever has the focus.
    virtual void typePaste(PasteKeys keys) = 0;
};

} // namespace scrivel
