#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

namespace scrivel {

// One key a shortcut can use, under the three names it goes by: the Carbon
// virtual key code (the stored form, the same on every system), the Qt key
// that a key event reports, and the X keysym the X11 grab looks up. Keys that
// are not in the table map to nothing, so an unknown stored key code is never
// grabbed as some other key.
struct ShortcutKey {
    int carbonKeyCode = -1;
    int qtKey = 0;
    // Keypad keys report the same Qt key as their main-keyboard twins plus
    // the keypad modifier.
    bool keypad = false;
    quint32 x11Keysym = 0;
    // Qt's portable name ("Return", "PgUp", "F5", "A", "/").
    QString name;
    // The Mac's symbol for keys without a character ("↩", "⇥"); empty for
    // keys shown by their character.
    QString symbol;

    static std::optional<ShortcutKey> forCarbonKeyCode(int carbonKeyCode);
    // The key of a Qt key event. Shifted characters of the US layout ("!",
    // "{", "?") name the key they sit on, as do Backtab and the lower-case
    // letters some input methods report.
    static std::optional<ShortcutKey> forQtKey(int qtKey, bool keypad);
    static std::optional<ShortcutKey> forX11Keysym(quint32 keysym);
};

} // namespace scrivel
