#include "core/shortcuts/PortalTrigger.h"

#include "core/shortcuts/ShortcutKey.h"

#include <array>

namespace scrivel::PortalTrigger {

namespace {

struct Name {
    quint32 keysym;
    const char* name;
};

// The names of the keysyms that are not their own character, as xkbcommon
// spells them.
constexpr std::array names{
    Name{0x20, "space"},       Name{0x27, "apostrophe"},    Name{0x2c, "comma"},
    Name{0x2d, "minus"},       Name{0x2e, "period"},        Name{0x2f, "slash"},
    Name{0x3b, "semicolon"},   Name{0x3d, "equal"},         Name{0x5b, "bracketleft"},
    Name{0x5c, "backslash"},   Name{0x5d, "bracketright"},  Name{0x60, "grave"},
    Name{0xff08, "BackSpace"}, Name{0xff09, "Tab"},         Name{0xff0d, "Return"},
    Name{0xff1b, "Escape"},    Name{0xff50, "Home"},        Name{0xff51, "Left"},
    Name{0xff52, "Up"},        Name{0xff53, "Right"},       Name{0xff54, "Down"},
    Name{0xff55, "Page_Up"},   Name{0xff56, "Page_Down"},   Name{0xff57, "End"},
    Name{0xff63, "Insert"},    Name{0xff8d, "KP_Enter"},    Name{0xffaa, "KP_Multiply"},
    Name{0xffab, "KP_Add"},    Name{0xffad, "KP_Subtract"}, Name{0xffae, "KP_Decimal"},
    Name{0xffaf, "KP_Divide"}, Name{0xffbd, "KP_Equal"},    Name{0xffff, "Delete"},
};

} // namespace

std::optional<QString> keysymName(quint32 keysym) {
    // Digits and lower-case letters are named by their character.
    if ((keysym >= 0x30 && keysym <= 0x39) || (keysym >= 0x61 && keysym <= 0x7a))
        return QString(QChar(char16_t(keysym)));
    if (keysym >= 0xffb0 && keysym <= 0xffb9)
        return QStringLiteral("KP_%1").arg(keysym - 0xffb0);
    if (keysym >= 0xffbe && keysym <= 0xffd1)
        return QStringLiteral("F%1").arg(keysym - 0xffbe + 1);
    for (const Name& entry : names) {
        if (entry.keysym == keysym)
            return QString::fromLatin1(entry.name);
    }
    return std::nullopt;
}

std::optional<QString> fromShortcut(const Shortcut& shortcut) {
    const Shortcut normalized = shortcut.normalized();
    if (normalized.carbonModifiers & Shortcut::function)
        return std::nullopt;
    const auto key = ShortcutKey::forCarbonKeyCode(normalized.carbonKeyCode);
    if (!key)
        return std::nullopt;
    const auto name = keysymName(key->x11Keysym);
    if (!name)
        return std::nullopt;
    QStringList parts;
    if (normalized.carbonModifiers & Shortcut::control)
        parts << QStringLiteral("CTRL");
    if (normalized.carbonModifiers & Shortcut::option)
        parts << QStringLiteral("ALT");
    if (normalized.carbonModifiers & Shortcut::shift)
        parts << QStringLiteral("SHIFT");
    if (normalized.carbonModifiers & Shortcut::command)
        parts << QStringLiteral("LOGO");
    parts << *name;
    return parts.join(QLatin1Char('+'));
}

} // namespace scrivel::PortalTrigger
