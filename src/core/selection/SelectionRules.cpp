#include "core/selection/SelectionRules.h"

#include "core/providers/ChatCompletionRequest.h"
#include "core/support/UnicodeText.h"

namespace scrivel::SelectionRules {

namespace {

bool listed(const QStringList& list, const QStringList& windowClass) {
    for (const QString& name : windowClass) {
        if (!name.isEmpty() && list.contains(name, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

} // namespace

qsizetype byteLimit() {
    return ChatCompletionRequest::inputLimitBytes;
}

bool isOwnedByFocusedWindow(const SelectionScene& scene) {
    if (!scene.focused || !scene.owner)
        return false;
    const DesktopWindow& focused = *scene.focused;
    const DesktopWindow& owner = *scene.owner;
    if (focused.topLevel != 0 && focused.topLevel == owner.topLevel)
        return true;
    if (owner.viewable)
        return false;
    return focused.connection != 0 && focused.connection == owner.connection;
}

TakenSelection take(const PrimarySelection& selection, qsizetype byteLimit) {
    switch (selection.kind) {
    case PrimarySelection::Kind::notText:
        return {};
    case PrimarySelection::Kind::overLimit:
        return {TakenSelection::Kind::tooLong, {}};
    case PrimarySelection::Kind::text:
        break;
    }
    if (trimmedWhitespaceAndNewlines(selection.text).isEmpty())
        return {};
    // Counted here too: a reader that was handed Latin-1 counted its bytes,
    // not the UTF-8 ones.
    if (selection.text.toUtf8().size() > byteLimit)
        return {TakenSelection::Kind::tooLong, {}};
    return {TakenSelection::Kind::text, selection.text};
}

const QStringList& ctrlShiftVTerminals() {
    static const QStringList terminals{
        QStringLiteral("gnome-terminal"),
        QStringLiteral("gnome-terminal-server"),
        QStringLiteral("kgx"),
        QStringLiteral("konsole"),
        QStringLiteral("xfce4-terminal"),
        QStringLiteral("mate-terminal"),
        QStringLiteral("lxterminal"),
        QStringLiteral("qterminal"),
        QStringLiteral("terminator"),
        QStringLiteral("tilix"),
        QStringLiteral("alacritty"),
        QStringLiteral("kitty"),
        QStringLiteral("st-256color"),
        QStringLiteral("org.wezfurlong.wezterm"),
    };
    return terminals;
}

const QStringList& terminalsWithoutClipboardKey() {
    static const QStringList terminals{QStringLiteral("xterm"), QStringLiteral("uxterm"),
                                       QStringLiteral("urxvt"), QStringLiteral("rxvt")};
    return terminals;
}

PasteKeys pasteKeysFor(const QStringList& windowClass) {
    if (listed(terminalsWithoutClipboardKey(), windowClass))
        return PasteKeys::none;
    if (listed(ctrlShiftVTerminals(), windowClass))
        return PasteKeys::ctrlShiftV;
    return PasteKeys::ctrlV;
}

} // namespace scrivel::SelectionRules
