#pragma once

#include "core/settings/LoginItemService.h"

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// Why turning launch at login on or off failed.
class LaunchAtLoginError {
    Q_DECLARE_TR_FUNCTIONS(LaunchAtLoginError)

public:
    enum class Kind {
        // The system reported a status Scrivel does not know.
        unknownStatus,
        // The entry could not be written (turning on) or removed (turning off).
        systemFailure,
    };

    static LaunchAtLoginError unknownStatus() { return LaunchAtLoginError(Kind::unknownStatus); }
    static LaunchAtLoginError systemFailure(bool registering, LoginItemFailure failure) {
        LaunchAtLoginError error(Kind::systemFailure);
        error.m_registering = registering;
        error.m_failure = std::move(failure);
        return error;
    }

    Kind kind() const { return m_kind; }
    const LoginItemFailure& failure() const { return m_failure; }
    // The system's own words, for the debug log; never shown.
    const QString& systemDescription() const { return m_failure.systemDescription; }

    // The sentence the settings show: what failed, on which file and why,
    // in Scrivel's words.
    QString message() const;

    friend bool operator==(const LaunchAtLoginError&, const LaunchAtLoginError&) = default;

private:
    explicit LaunchAtLoginError(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    bool m_registering = false;
    LoginItemFailure m_failure;
};

} // namespace scrivel
