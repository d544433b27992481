#pragma once

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// Why the settings could not be read or written.
class SettingsStoreError {
    Q_DECLARE_TR_FUNCTIONS(SettingsStoreError)

public:
    enum class Kind {
        // The stored settings exist but cannot be read (permissions, a folder
        // in the file's place, a file that does not parse). Nothing is
        // written over them.
        unreadable,
        // A value could not be written (a read-only or missing folder, a file
        // where the folder belongs, a full disk).
        unwritable,
    };

    SettingsStoreError(Kind kind, QString path) : m_kind(kind), m_path(std::move(path)) {}

    Kind kind() const { return m_kind; }
    // The file (or, for a copy, the file that was to be written), as the user
    // would look for it.
    const QString& path() const { return m_path; }

    // The one sentence every audience shows, naming the path.
    QString message() const;

    friend bool operator==(const SettingsStoreError&, const SettingsStoreError&) = default;

private:
    Kind m_kind;
    QString m_path;
};

} // namespace scrivel
