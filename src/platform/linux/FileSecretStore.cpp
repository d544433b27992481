#include "platform/linux/FileSecretStore.h"

#include "core/providers/KeychainError.h"
#include "core/support/JsonWriter.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace scrivel {

namespace {

constexpr auto directoryPermissions =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
constexpr auto filePermissions = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

} // namespace

FileSecretStore::FileSecretStore()
    : FileSecretStore(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                      QStringLiteral("/Scrivel/credentials")) {}

FileSecretStore::FileSecretStore(const QString& directory)
    : m_directory(directory), m_onDamage([](const QString& path) {
          qWarning("The private key file %s is damaged and can't be read; it was left as it is.",
                   qUtf8Printable(path));
      }) {}

void FileSecretStore::setDamageHandler(std::function<void(const QString& path)> handler) {
    m_onDamage = std::move(handler);
}

QString FileSecretStore::filePath() const {
    return m_directory + QStringLiteral("/secrets.json");
}

// The file maps accounts to base64 values. A missing file is an empty store;
// an unreadable one is a failure, so nothing overwrites what could not be read.
std::expected<FileSecretStore::Items, int> FileSecretStore::load() {
    Items items;
    QFile file(filePath());
    if (!file.exists())
        return items;
    const auto damaged = [this] {
        if (!m_damageReported && m_onDamage) {
            m_damageReported = true;
            m_onDamage(filePath());
        }
        return std::unexpected(KeychainError::unreadableStore);
    };
    if (!file.open(QIODevice::ReadOnly))
        return damaged();
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return damaged();
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!it.value().isString())
            return damaged();
        items.insert(it.key(), QByteArray::fromBase64(it.value().toString().toLatin1()));
    }
    return items;
}

bool FileSecretStore::store(const Items& items) const {
    JsonValue object = JsonValue::object();
    for (auto it = items.begin(); it != items.end(); ++it)
        object.insert(it.key(), QString::fromLatin1(it.value().toBase64()));
    JsonWriter::Options options;
    options.sortKeys = true;

    QSaveFile file(filePath());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.setPermissions(filePermissions);
    file.write(JsonWriter::write(object, options));
    if (!file.commit())
        return false;
    return QFile::setPermissions(filePath(), filePermissions);
}

SecretStore::WriteResult FileSecretStore::change(const std::function<bool(Items&)>& change) {
    if (!QDir().mkpath(m_directory))
        return std::unexpected(ioError);
    QFile::setPermissions(m_directory, directoryPermissions);
    // The lock spans read, change and replace: a change made meanwhile by
    // another process is read before this one is written.
    QLockFile lock(filePath() + QStringLiteral(".lock"));
    if (!lock.tryLock(m_lockTimeoutMs))
        return std::unexpected(ioError);
    auto items = load();
    if (!items)
        return std::unexpected(items.error());
    if (!change(*items))
        return {};
    if (!store(*items))
        return std::unexpected(ioError);
    return {};
}

Future<SecretStore::ReadResult> FileSecretStore::read(const QString& account) {
    const auto items = load();
    if (!items)
        return Future<ReadResult>::ready(std::unexpected(items.error()));
    const auto it = items->constFind(account);
    if (it == items->constEnd())
        return Future<ReadResult>::ready(std::optional<QByteArray>());
    return Future<ReadResult>::ready(std::optional<QByteArray>(*it));
}

Future<SecretStore::WriteResult> FileSecretStore::write(const QString& account,
                                                        const QByteArray& value) {
    return Future<WriteResult>::ready(change([&](Items& items) {
        items.insert(account, value);
        return true;
    }));
}

Future<SecretStore::WriteResult> FileSecretStore::remove(const QString& account) {
    if (!QFile::exists(filePath()))
        return Future<WriteResult>::ready({});
    return Future<WriteResult>::ready(
        change([&](Items& items) { return items.remove(account) > 0; }));
}

} // namespace scrivel
