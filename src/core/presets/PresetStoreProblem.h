#pragma once

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// What loading the stored presets found that the next save would lose, and
// what became of the stored data.
class PresetStoreProblem {
    Q_DECLARE_TR_FUNCTIONS(PresetStoreProblem)

public:
    enum class Kind {
        // Some or all stored presets could not be read; the others were
        // kept, and the stored data was copied unchanged to path().
        presetsUnreadable,
        // Every preset was read, but they hold fields a newer version wrote,
        // which saving drops; the stored data was copied to path().
        newerFields,
        // The data could not be copied to path(): the stored list is not
        // written over until a copy can be made.
        copyFailed,
    };

    PresetStoreProblem(Kind kind, QString path, int unreadable = 0, int kept = 0)
        : m_kind(kind), m_path(std::move(path)), m_unreadable(unreadable), m_kept(kept) {}

    Kind kind() const { return m_kind; }
    // The copy of the stored data (or the file it could not be written to).
    const QString& path() const { return m_path; }
    // Presets that could not be read and presets kept.
    int unreadable() const { return m_unreadable; }
    int kept() const { return m_kept; }

    // One line for an alert or a terminal, naming the file.
    QString message() const;
    // A short status line for the tray, naming the file but not its folder.
    QString statusLine() const;

    friend bool operator==(const PresetStoreProblem&, const PresetStoreProblem&) = default;

private:
    Kind m_kind;
    QString m_path;
    int m_unreadable;
    int m_kept;
};

} // namespace scrivel
