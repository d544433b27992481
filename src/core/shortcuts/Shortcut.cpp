#include "core/shortcuts/Shortcut.h"

#include "core/shortcuts/ShortcutKey.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <array>
#include <limits>

namespace scrivel {

namespace {

struct ModifierPair {
    int carbon;
    quint64 eventFlag;
};
constexpr std::array modifierTable{
    ModifierPair{Shortcut::control, Shortcut::controlFlag},
    ModifierPair{Shortcut::option, Shortcut::optionFlag},
    ModifierPair{Shortcut::shift, Shortcut::shiftFlag},
    ModifierPair{Shortcut::command, Shortcut::commandFlag},
    ModifierPair{Shortcut::function, Shortcut::functionFlag},
};

#ifdef Q_OS_MACOS
constexpr Qt::KeyboardModifier qtControl = Qt::MetaModifier;
constexpr Qt::KeyboardModifier qtCommand = Qt::ControlModifier;
#else
constexpr Qt::KeyboardModifier qtControl = Qt::ControlModifier;
constexpr Qt::KeyboardModifier qtCommand = Qt::MetaModifier;
#endif

std::optional<int> integerMember(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (number != static_cast<double>(static_cast<qint64>(number)) ||
        number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(number);
}

} // namespace

Shortcut Shortcut::normalized() const {
    return Shortcut{carbonKeyCode, carbonFromEventFlags(eventFlagsFromCarbon(carbonModifiers))};
}

quint64 Shortcut::eventFlagsFromCarbon(int carbonModifiers) {
    quint64 flags = 0;
    for (const ModifierPair& pair : modifierTable) {
        if (carbonModifiers & pair.carbon)
            flags |= pair.eventFlag;
    }
    return flags;
}

int Shortcut::carbonFromEventFlags(quint64 eventFlags) {
    int carbon = 0;
    for (const ModifierPair& pair : modifierTable) {
        if (eventFlags & pair.eventFlag)
            carbon |= pair.carbon;
    }
    return carbon;
}

int Shortcut::carbonFromQtModifiers(Qt::KeyboardModifiers modifiers) {
    int carbon = 0;
    if (modifiers & qtControl)
        carbon |= control;
    if (modifiers & Qt::AltModifier)
        carbon |= option;
    if (modifiers & Qt::ShiftModifier)
        carbon |= shift;
    if (modifiers & qtCommand)
        carbon |= command;
    return carbon;
}

Qt::KeyboardModifiers Shortcut::qtModifiersFromCarbon(int carbonModifiers) {
    Qt::KeyboardModifiers modifiers;
    if (carbonModifiers & control)
        modifiers |= qtControl;
    if (carbonModifiers & option)
        modifiers |= Qt::AltModifier;
    if (carbonModifiers & shift)
        modifiers |= Qt::ShiftModifier;
    if (carbonModifiers & command)
        modifiers |= qtCommand;
    return modifiers;
}

std::optional<Shortcut> Shortcut::fromQtKey(int qtKey, Qt::KeyboardModifiers modifiers) {
    const auto key = ShortcutKey::forQtKey(qtKey, modifiers.testFlag(Qt::KeypadModifier));
    if (!key)
        return std::nullopt;
    return Shortcut{key->carbonKeyCode, carbonFromQtModifiers(modifiers)};
}

std::optional<QKeyCombination> Shortcut::qtKeyCombination() const {
    const auto key = ShortcutKey::forCarbonKeyCode(carbonKeyCode);
    if (!key)
        return std::nullopt;
    Qt::KeyboardModifiers modifiers = qtModifiersFromCarbon(carbonModifiers);
    if (key->keypad)
        modifiers |= Qt::KeypadModifier;
    return QKeyCombination(modifiers, static_cast<Qt::Key>(key->qtKey));
}

QByteArray Shortcut::toJson() const {
    return QByteArray("{\"carbonKeyCode\":") + QByteArray::number(carbonKeyCode) +
           QByteArray(",\"carbonModifiers\":") + QByteArray::number(carbonModifiers) + '}';
}

std::optional<Shortcut> Shortcut::fromJson(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const auto keyCode = integerMember(object, QStringLiteral("carbonKeyCode"));
    const auto modifiers = integerMember(object, QStringLiteral("carbonModifiers"));
    if (!keyCode || !modifiers)
        return std::nullopt;
    return Shortcut{*keyCode, *modifiers};
}

QString Shortcut::nativeText() const {
    // Qt's order on X11 and Windows: Ctrl, Alt, Shift, Meta, in Qt's own
    // words, so the hint and the settings read like the menus' shortcuts
    // ("Strg+Alt+Return" in German).
    const auto qtWord = [](const char* word) {
        return QCoreApplication::translate("QShortcut", word) + QLatin1Char('+');
    };
    QString text;
    if (carbonModifiers & control)
        text += qtWord(QT_TRANSLATE_NOOP("QShortcut", "Ctrl"));
    if (carbonModifiers & option)
        text += qtWord(QT_TRANSLATE_NOOP("QShortcut", "Alt"));
    if (carbonModifiers & shift)
        text += qtWord(QT_TRANSLATE_NOOP("QShortcut", "Shift"));
    if (carbonModifiers & command)
        text += qtWord(QT_TRANSLATE_NOOP("QShortcut", "Meta"));
    if (carbonModifiers & function)
        text += QStringLiteral("Fn+");
    const auto key = ShortcutKey::forCarbonKeyCode(carbonKeyCode);
    if (!key)
        return text + QStringLiteral("\uFFFD");
    // Named keys as Qt's translations name them, where installed.
    return text + QCoreApplication::translate("QShortcut", key->name.toLatin1().constData());
}

QString Shortcut::symbolText() const {
    QString text;
    if (carbonModifiers & control)
        text += QStringLiteral("⌃");
    if (carbonModifiers & option)
        text += QStringLiteral("⌥");
    if (carbonModifiers & shift)
        text += QStringLiteral("⇧");
    if (carbonModifiers & command)
        text += QStringLiteral("⌘");
    if (carbonModifiers & function)
        text += QStringLiteral("\U0001F310\uFE0E");
    const auto key = ShortcutKey::forCarbonKeyCode(carbonKeyCode);
    if (!key)
        return text + QStringLiteral("\uFFFD");
    if (key->qtKey == Qt::Key_Space)
        return text + tr("Space");
    if (!key->symbol.isEmpty())
        return text + key->symbol;
    // Keypad keys show their character like the main keyboard's.
    return text + (key->keypad ? key->name.mid(4) : key->name);
}

QString Shortcut::displayText() const {
#ifdef Q_OS_MACOS
    return symbolText();
#else
    return nativeText();
#endif
}

QString Shortcut::description() const {
    return QStringLiteral("%1 (key code %2, modifiers %3)")
        .arg(nativeText())
        .arg(carbonKeyCode)
        .arg(carbonModifiers);
}

} // namespace scrivel
