#pragma once

#include <QString>

namespace scrivel {

// An in-place status line: the outcome of an action, shown where it was taken
// (under the launch-at-login switch, as the panel's outcome line).
struct SettingsStatus {
    enum class Kind { neutral, success, warning, error };

    Kind kind = Kind::neutral;
    QString message;

    static SettingsStatus neutral(const QString& message) { return {Kind::neutral, message}; }
    static SettingsStatus success(const QString& message) { return {Kind::success, message}; }
    static SettingsStatus warning(const QString& message) { return {Kind::warning, message}; }
    static SettingsStatus error(const QString& message) { return {Kind::error, message}; }

    // What assistive technologies read: the kind as a word, then the message.
    QString accessibleName() const;

    friend bool operator==(const SettingsStatus&, const SettingsStatus&) = default;
};

} // namespace scrivel
