#include "core/shortcuts/ShortcutKey.h"

#include <Qt>
#include <array>

namespace scrivel {

namespace {

struct Entry {
    int carbonKeyCode;
    int qtKey;
    bool keypad;
    quint32 x11Keysym;
    const char* name;
    const char* symbol;
};

// Carbon key codes of the ANSI keyboard. X keysyms are the values of
// <X11/keysymdef.h>; the core names them by number to stay free of X headers.
constexpr std::array entries{
    Entry{0x00, Qt::Key_A, false, 0x61, "A", ""},
    Entry{0x01, Qt::Key_S, false, 0x73, "S", ""},
    Entry{0x02, Qt::Key_D, false, 0x64, "D", ""},
    Entry{0x03, Qt::Key_F, false, 0x66, "F", ""},
    Entry{0x04, Qt::Key_H, false, 0x68, "H", ""},
    Entry{0x05, Qt::Key_G, false, 0x67, "G", ""},
    Entry{0x06, Qt::Key_Z, false, 0x7a, "Z", ""},
    Entry{0x07, Qt::Key_X, false, 0x78, "X", ""},
    Entry{0x08, Qt::Key_C, false, 0x63, "C", ""},
    Entry{0x09, Qt::Key_V, false, 0x76, "V", ""},
    Entry{0x0B, Qt::Key_B, false, 0x62, "B", ""},
    Entry{0x0C, Qt::Key_Q, false, 0x71, "Q", ""},
    Entry{0x0D, Qt::Key_W, false, 0x77, "W", ""},
    Entry{0x0E, Qt::Key_E, false, 0x65, "E", ""},
    Entry{0x0F, Qt::Key_R, false, 0x72, "R", ""},
    Entry{0x10, Qt::Key_Y, false, 0x79, "Y", ""},
    Entry{0x11, Qt::Key_T, false, 0x74, "T", ""},
    Entry{0x12, Qt::Key_1, false, 0x31, "1", ""},
    Entry{0x13, Qt::Key_2, false, 0x32, "2", ""},
    Entry{0x14, Qt::Key_3, false, 0x33, "3", ""},
    Entry{0x15, Qt::Key_4, false, 0x34, "4", ""},
    Entry{0x16, Qt::Key_6, false, 0x36, "6", ""},
    Entry{0x17, Qt::Key_5, false, 0x35, "5", ""},
    Entry{0x18, Qt::Key_Equal, false, 0x3d, "=", ""},
    Entry{0x19, Qt::Key_9, false, 0x39, "9", ""},
    Entry{0x1A, Qt::Key_7, false, 0x37, "7", ""},
    Entry{0x1B, Qt::Key_Minus, false, 0x2d, "-", ""},
    Entry{0x1C, Qt::Key_8, false, 0x38, "8", ""},
    Entry{0x1D, Qt::Key_0, false, 0x30, "0", ""},
    Entry{0x1E, Qt::Key_BracketRight, false, 0x5d, "]", ""},
    Entry{0x1F, Qt::Key_O, false, 0x6f, "O", ""},
    Entry{0x20, Qt::Key_U, false, 0x75, "U", ""},
    Entry{0x21, Qt::Key_BracketLeft, false, 0x5b, "[", ""},
    Entry{0x22, Qt::Key_I, false, 0x69, "I", ""},
    Entry{0x23, Qt::Key_P, false, 0x70, "P", ""},
    Entry{0x24, Qt::Key_Return, false, 0xff0d, "Return", "↩"},
    Entry{0x25, Qt::Key_L, false, 0x6c, "L", ""},
    Entry{0x26, Qt::Key_J, false, 0x6a, "J", ""},
    Entry{0x27, Qt::Key_Apostrophe, false, 0x27, "'", ""},
    Entry{0x28, Qt::Key_K, false, 0x6b, "K", ""},
    Entry{0x29, Qt::Key_Semicolon, false, 0x3b, ";", ""},
    Entry{0x2A, Qt::Key_Backslash, false, 0x5c, "\\", ""},
    Entry{0x2B, Qt::Key_Comma, false, 0x2c, ",", ""},
    Entry{0x2C, Qt::Key_Slash, false, 0x2f, "/", ""},
    Entry{0x2D, Qt::Key_N, false, 0x6e, "N", ""},
    Entry{0x2E, Qt::Key_M, false, 0x6d, "M", ""},
    Entry{0x2F, Qt::Key_Period, false, 0x2e, ".", ""},
    Entry{0x30, Qt::Key_Tab, false, 0xff09, "Tab", "⇥"},
    Entry{0x31, Qt::Key_Space, false, 0x20, "Space", ""},
    Entry{0x32, Qt::Key_QuoteLeft, false, 0x60, "`", ""},
    Entry{0x33, Qt::Key_Backspace, false, 0xff08, "Backspace", "⌫"},
    Entry{0x35, Qt::Key_Escape, false, 0xff1b, "Esc", "⎋"},
    Entry{0x41, Qt::Key_Period, true, 0xffae, "Num+.", ""},
    Entry{0x43, Qt::Key_Asterisk, true, 0xffaa, "Num+*", ""},
    Entry{0x45, Qt::Key_Plus, true, 0xffab, "Num++", ""},
    Entry{0x4B, Qt::Key_Slash, true, 0xffaf, "Num+/", ""},
    Entry{0x4C, Qt::Key_Enter, true, 0xff8d, "Enter", "⌤"},
    Entry{0x4E, Qt::Key_Minus, true, 0xffad, "Num+-", ""},
    Entry{0x51, Qt::Key_Equal, true, 0xffbd, "Num+=", ""},
    Entry{0x52, Qt::Key_0, true, 0xffb0, "Num+0", ""},
    Entry{0x53, Qt::Key_1, true, 0xffb1, "Num+1", ""},
    Entry{0x54, Qt::Key_2, true, 0xffb2, "Num+2", ""},
    Entry{0x55, Qt::Key_3, true, 0xffb3, "Num+3", ""},
    Entry{0x56, Qt::Key_4, true, 0xffb4, "Num+4", ""},
    Entry{0x57, Qt::Key_5, true, 0xffb5, "Num+5", ""},
    Entry{0x58, Qt::Key_6, true, 0xffb6, "Num+6", ""},
    Entry{0x59, Qt::Key_7, true, 0xffb7, "Num+7", ""},
    Entry{0x5B, Qt::Key_8, true, 0xffb8, "Num+8", ""},
    Entry{0x5C, Qt::Key_9, true, 0xffb9, "Num+9", ""},
    Entry{0x7A, Qt::Key_F1, false, 0xffbe, "F1", "F1"},
    Entry{0x78, Qt::Key_F2, false, 0xffbf, "F2", "F2"},
    Entry{0x63, Qt::Key_F3, false, 0xffc0, "F3", "F3"},
    Entry{0x76, Qt::Key_F4, false, 0xffc1, "F4", "F4"},
    Entry{0x60, Qt::Key_F5, false, 0xffc2, "F5", "F5"},
    Entry{0x61, Qt::Key_F6, false, 0xffc3, "F6", "F6"},
    Entry{0x62, Qt::Key_F7, false, 0xffc4, "F7", "F7"},
    Entry{0x64, Qt::Key_F8, false, 0xffc5, "F8", "F8"},
    Entry{0x65, Qt::Key_F9, false, 0xffc6, "F9", "F9"},
    Entry{0x6D, Qt::Key_F10, false, 0xffc7, "F10", "F10"},
    Entry{0x67, Qt::Key_F11, false, 0xffc8, "F11", "F11"},
    Entry{0x6F, Qt::Key_F12, false, 0xffc9, "F12", "F12"},
    Entry{0x69, Qt::Key_F13, false, 0xffca, "F13", "F13"},
    Entry{0x6B, Qt::Key_F14, false, 0xffcb, "F14", "F14"},
    Entry{0x71, Qt::Key_F15, false, 0xffcc, "F15", "F15"},
    Entry{0x6A, Qt::Key_F16, false, 0xffcd, "F16", "F16"},
    Entry{0x40, Qt::Key_F17, false, 0xffce, "F17", "F17"},
    Entry{0x4F, Qt::Key_F18, false, 0xffcf, "F18", "F18"},
    Entry{0x50, Qt::Key_F19, false, 0xffd0, "F19", "F19"},
    Entry{0x5A, Qt::Key_F20, false, 0xffd1, "F20", "F20"},
    // The Mac's Help key sits where PC keyboards have Insert.
    Entry{0x72, Qt::Key_Insert, false, 0xff63, "Ins", "Ins"},
    Entry{0x73, Qt::Key_Home, false, 0xff50, "Home", "↖"},
    Entry{0x74, Qt::Key_PageUp, false, 0xff55, "PgUp", "⇞"},
    Entry{0x75, Qt::Key_Delete, false, 0xffff, "Del", "⌦"},
    Entry{0x77, Qt::Key_End, false, 0xff57, "End", "↘"},
    Entry{0x79, Qt::Key_PageDown, false, 0xff56, "PgDown", "⇟"},
    Entry{0x7B, Qt::Key_Left, false, 0xff51, "Left", "←"},
    Entry{0x7C, Qt::Key_Right, false, 0xff53, "Right", "→"},
    Entry{0x7D, Qt::Key_Down, false, 0xff54, "Down", "↓"},
    Entry{0x7E, Qt::Key_Up, false, 0xff52, "Up", "↑"},
};

// What Shift makes of the keys of the US layout: a key event reports the
// shifted character, the shortcut names the key.
struct ShiftedAlias {
    int shifted;
    int base;
};
constexpr std::array shiftedAliases{
    ShiftedAlias{Qt::Key_Exclam, Qt::Key_1},
    ShiftedAlias{Qt::Key_At, Qt::Key_2},
    ShiftedAlias{Qt::Key_NumberSign, Qt::Key_3},
    ShiftedAlias{Qt::Key_Dollar, Qt::Key_4},
    ShiftedAlias{Qt::Key_Percent, Qt::Key_5},
    ShiftedAlias{Qt::Key_AsciiCircum, Qt::Key_6},
    ShiftedAlias{Qt::Key_Ampersand, Qt::Key_7},
    ShiftedAlias{Qt::Key_Asterisk, Qt::Key_8},
    ShiftedAlias{Qt::Key_ParenLeft, Qt::Key_9},
    ShiftedAlias{Qt::Key_ParenRight, Qt::Key_0},
    ShiftedAlias{Qt::Key_Underscore, Qt::Key_Minus},
    ShiftedAlias{Qt::Key_Plus, Qt::Key_Equal},
    ShiftedAlias{Qt::Key_BraceLeft, Qt::Key_BracketLeft},
    ShiftedAlias{Qt::Key_BraceRight, Qt::Key_BracketRight},
    ShiftedAlias{Qt::Key_Bar, Qt::Key_Backslash},
    ShiftedAlias{Qt::Key_Colon, Qt::Key_Semicolon},
    ShiftedAlias{Qt::Key_QuoteDbl, Qt::Key_Apostrophe},
    ShiftedAlias{Qt::Key_Less, Qt::Key_Comma},
    ShiftedAlias{Qt::Key_Greater, Qt::Key_Period},
    ShiftedAlias{Qt::Key_Question, Qt::Key_Slash},
    ShiftedAlias{Qt::Key_AsciiTilde, Qt::Key_QuoteLeft},
    ShiftedAlias{Qt::Key_Backtab, Qt::Key_Tab},
};

ShortcutKey toKey(const Entry& entry) {
    return ShortcutKey{entry.carbonKeyCode,
                       entry.qtKey,
                       entry.keypad,
                       entry.x11Keysym,
                       QString::fromUtf8(entry.name),
                       QString::fromUtf8(entry.symbol)};
}

template <typename Matches>
std::optional<ShortcutKey> find(Matches matches) {
    for (const Entry& entry : entries) {
        if (matches(entry))
            return toKey(entry);
    }
    return std::nullopt;
}

} // namespace

std::optional<ShortcutKey> ShortcutKey::forCarbonKeyCode(int carbonKeyCode) {
    return find([&](const Entry& e) { return e.carbonKeyCode == carbonKeyCode; });
}

std::optional<ShortcutKey> ShortcutKey::forQtKey(int qtKey, bool keypad) {
    if (!keypad) {
        for (const ShiftedAlias& alias : shiftedAliases) {
            if (alias.shifted == qtKey) {
                qtKey = alias.base;
                break;
            }
        }
    }
    if (qtKey >= 'a' && qtKey <= 'z')
        qtKey -= 'a' - 'A';
    // Keypad keys whose Qt key never differs from the main keyboard's are
    // still told apart by the keypad flag; Enter only exists on the keypad.
    if (qtKey == Qt::Key_Enter)
        keypad = true;
    return find([&](const Entry& e) { return e.qtKey == qtKey && e.keypad == keypad; });
}

std::optional<ShortcutKey> ShortcutKey::forX11Keysym(quint32 keysym) {
    // Upper-case Latin letters name the same key as their lower-case keysym.
    if (keysym >= 0x41 && keysym <= 0x5a)
        keysym += 0x20;
    return find([&](const Entry& e) { return e.x11Keysym == keysym; });
}

} // namespace scrivel
