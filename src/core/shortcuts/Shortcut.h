#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QHashFunctions>
#include <QString>
#include <Qt>
#include <optional>

namespace scrivel {

// A key combination in the form it is stored on every system: a Carbon
// virtual key code and a Carbon modifier mask. A value; equal shortcuts are
// the same combination.
struct Shortcut {
    Q_DECLARE_TR_FUNCTIONS(Shortcut)

public:
    // The Carbon modifier bits; every other bit is dropped by normalisation.
    enum CarbonModifier : int {
        command = 0x100,
        shift = 0x200,
        option = 0x800,
        control = 0x1000,
        function = 0x20000,
    };
    // The same modifiers as Mac application event flags.
    enum EventFlag : quint64 {
        shiftFlag = 0x20000,
        controlFlag = 0x40000,
        optionFlag = 0x80000,
        commandFlag = 0x100000,
        functionFlag = 0x800000,
    };

    int carbonKeyCode = 0;
    int carbonModifiers = 0;

    friend bool operator==(const Shortcut&, const Shortcut&) = default;

    // The shortcut with its modifier mask reduced to the known bits, as every
    // shortcut read from the system is before it is compared.
    Shortcut normalized() const;
    static quint64 eventFlagsFromCarbon(int carbonModifiers);
    static int carbonFromEventFlags(quint64 eventFlags);

    // Qt's modifiers: Ctrl is Control, Alt is Option, Meta (the Super key) is
    // Command; the Mac build swaps Ctrl and Meta back, as Qt does there.
    static int carbonFromQtModifiers(Qt::KeyboardModifiers modifiers);
    static Qt::KeyboardModifiers qtModifiersFromCarbon(int carbonModifiers);

    // The shortcut of a Qt key event, when its key is one a shortcut can use.
    static std::optional<Shortcut> fromQtKey(int qtKey, Qt::KeyboardModifiers modifiers);
    // The Qt key and modifiers of the shortcut (for a QKeySequence), or
    // nothing for a key code this system does not know.
    std::optional<QKeyCombination> qtKeyCombination() const;

    // The stored form: the JSON text {"carbonKeyCode":36,"carbonModifiers":6144}.
    QByteArray toJson() const;
    // Nothing unless the text is a JSON object with both members as integers.
    static std::optional<Shortcut> fromJson(const QByteArray& json);

    // Qt's native wording on this system ("Ctrl+Alt+Return").
    QString nativeText() const;
    // The Mac's symbols, modifiers first ("⌃⌥↩").
    QString symbolText() const;
    // What the panel's hint and the recorder show: symbols on the Mac, the
    // native wording elsewhere.
    QString displayText() const;
    // For log and error lines: the wording and the stored numbers.
    QString description() const;
};

inline size_t qHash(const Shortcut& shortcut, size_t seed = 0) {
    return qHashMulti(seed, shortcut.carbonKeyCode, shortcut.carbonModifiers);
}

} // namespace scrivel
