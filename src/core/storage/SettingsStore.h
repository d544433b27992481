#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace scrivel {

// The user-defaults store: small values under string keys. Every write is
// durable when the call returns.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;

    virtual std::optional<QByteArray> data(const QString& key) const = 0;
    virtual std::optional<QString> text(const QString& key) const = 0;
    virtual std::optional<bool> boolean(const QString& key) const = 0;
    // Whether anything at all is stored under the key, readable or not.
    virtual bool contains(const QString& key) const {
        return data(key) || text(key) || boolean(key);
    }

    virtual void setData(const QString& key, const QByteArray& value) = 0;
    virtual void setText(const QString& key, const QString& value) = 0;
    virtual void setBoolean(const QString& key, bool value) = 0;
    virtual void remove(const QString& key) = 0;
};

} // namespace scrivel
