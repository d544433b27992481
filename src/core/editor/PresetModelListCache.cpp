#include "core/editor/PresetModelListCache.h"

namespace scrivel {

PresetModelListCache& PresetModelListCache::shared() {
    static PresetModelListCache cache;
    return cache;
}

std::optional<QStringList> PresetModelListCache::lookup(const QString& account) const {
    const auto found = m_storage.constFind(account);
    if (found == m_storage.constEnd())
        return std::nullopt;
    return *found;
}

void PresetModelListCache::store(const QString& account, const QStringList& models) {
    m_storage.insert(account, models);
}

void PresetModelListCache::remove(const QString& account) {
    m_storage.remove(account);
}

} // namespace scrivel
