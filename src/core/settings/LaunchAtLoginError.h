#pragma once

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
        // The system refused to register or unregister the item.
        systemFailure,
    };

    static LaunchAtLoginError unknownStatus() {
        return LaunchAtLoginError(Kind::unknownStatus, {});
    }
    static LaunchAtLoginError systemFailure(const QString& systemDescription) {
        return LaunchAtLoginError(Kind::systemFailure, systemDescription);
    }

    Kind kind() const { return m_kind; }
    // The system's own words, for the debug log; never shown.
    const QString& systemDescription() const { return m_systemDescription; }

    // The sentence the settings show for any failure.
    QString message() const;

    friend bool operator==(const LaunchAtLoginError&, const LaunchAtLoginError&) = default;

private:
    LaunchAtLoginError(Kind kind, QString description)
        : m_kind(kind), m_systemDescription(std::move(description)) {}

    Kind m_kind;
    QString m_systemDescription;
};

} // namespace scrivel
