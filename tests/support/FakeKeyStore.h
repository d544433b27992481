#pragma once

#include "core/providers/APIKeyProviding.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

namespace scrivel::test {

// An in-memory key store whose operations can be made to fail, and which
// records the order of what was asked of it. Answers arrive on the next turn
// of the event loop, as the real store's do.
class FakeKeyStore : public APIKeyProviding {
public:
    struct Operation {
        enum class Kind { read, save, remove } kind;
        QString account;
        QString key; // saves only
        friend bool operator==(const Operation&, const Operation&) = default;
    };

    Future<KeyResult> readKey(const QString& account) override;
    Future<VoidResult> saveKey(const QString& key, const QString& account) override;
    Future<VoidResult> deleteKey(const QString& account) override;

    // Operations of a kind that were asked for, in order.
    QList<Operation> operations(Operation::Kind kind) const;
    // While holding, operations take effect and answer only when released
    // (a keyring waiting on its unlock prompt); never, if never released.
    bool holding = false;
    int heldCount() const { return int(m_held.size()); }
    void releaseHeld();

    QHash<QString, QString> keys;
    QList<Operation> log;
    bool failReads = false;
    bool failSaves = false;
    bool failDeletes = false;

private:
    template <typename Result>
    Future<Result> answer(std::function<Result()> operation);

    QList<std::function<void()>> m_held;
};

} // namespace scrivel::test
