#pragma once

#include "core/storage/SettingsStore.h"

#include <QObject>
#include <optional>

namespace scrivel {

// A settings store that passes everything to the store beneath and keeps
// track of its failures, so that one place can tell the user: failed() once
// when a run of failures starts (the settings could not be read, or a write
// or a copy failed after the last one succeeded), recovered() when a write
// succeeds again. A read failure lasts for the life of the store.
class ReportingSettingsStore : public QObject, public SettingsStore {
    Q_OBJECT

public:
    explicit ReportingSettingsStore(SettingsStore& store, QObject* parent = nullptr);

    // The failure the current run started with: the read failure, or the
    // first write that failed since the last one succeeded.
    const std::optional<SettingsStoreError>& failure() const { return m_failure; }

    std::optional<SettingsStoreError> readError() const override { return m_store.readError(); }
    std::optional<QByteArray> data(const QString& key) const override { return m_store.data(key); }
    std::optional<QString> text(const QString& key) const override { return m_store.text(key); }
    std::optional<bool> boolean(const QString& key) const override { return m_store.boolean(key); }
    bool contains(const QString& key) const override { return m_store.contains(key); }

    WriteResult setData(const QString& key, const QByteArray& value) override;
    WriteResult setText(const QString& key, const QString& value) override;
    WriteResult setBoolean(const QString& key, bool value) override;
    WriteResult remove(const QString& key) override;
    std::expected<QString, SettingsStoreError> keepCopy(const QString& prefix,
                                                        const QByteArray& bytes) override;

Q_SIGNALS:
    void failed(const scrivel::SettingsStoreError& error);
    void recovered();

private:
    template <typename T>
    T noted(T result, bool isSettingsWrite = true);

    SettingsStore& m_store;
    std::optional<SettingsStoreError> m_failure;
};

} // namespace scrivel
