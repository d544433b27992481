#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <optional>

namespace scrivel {

// The last model list fetched per key-store account, so that a second preset
// of the same provider shows its models at once. Lives for the process;
// entries are replaced by the next successful fetch. Main thread only.
class PresetModelListCache {
public:
    static PresetModelListCache& shared();

    std::optional<QStringList> lookup(const QString& account) const;
    void store(const QString& account, const QStringList& models);
    void remove(const QString& account);
    void clear() { m_storage.clear(); }

private:
    QHash<QString, QStringList> m_storage;
};

} // namespace scrivel
