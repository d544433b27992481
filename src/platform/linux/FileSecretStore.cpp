#include "linux/FileSecretStore.h"

#include "support/JsonWriter.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
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

FileSecretStore::FileSecretStore(const QString& directory) : m_directory(directory) {}

QString FileSecretStore::filePath() const {
    return m_directory + QStringLiteral("/secrets.json");
}

// The file maps accounts to base64 values. A missing file is an empty store;
// an unreadable one is a failure, so nothing overwrites what could not be read.
std::optional<QHash<QString, QByteArray>> FileSecretStore::load() const {
    QHash<QString, QByteArray> items;
    QFile file(filePath());
    if (!file.exists())
        return items;
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it)
        items.insert(it.key(), QByteArray::fromBase64(it.value().toString().toLatin1()));
    return items;
}

bool FileSecretStore::store(const QHash<QString, QByteArray>& items) const {
    if (!QDir().mkpath(m_directory))
        return false;
    QFile::setPermissions(m_directory, directoryPermissions);

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

Future<SecretStore::ReadResult> FileSecretStore::read(const QString& account) {
    const auto items = load();
    if (!items)
        return Future<ReadResult>::ready(std::unexpected(ioError));
    const auto it = items->constFind(account);
    if (it == items->constEnd())
        return Future<ReadResult>::ready(std::optional<QByteArray>());
    return Future<ReadResult>::ready(std::optional<QByteArray>(*it));
}

Future<SecretStore::WriteResult> FileSecretStore::write(const QString& account,
                                                        const QByteArray& value) {
    auto items = load();
    if (!items)
        return Future<WriteResult>::ready(std::unexpected(ioError));
    items->insert(account, value);
    if (!store(*items))
        return Future<WriteResult>::ready(std::unexpected(ioError));
    return Future<WriteResult>::ready({});
}

Future<SecretStore::WriteResult> FileSecretStore::remove(const QString& account) {
    auto items = load();
    if (!items)
        return Future<WriteResult>::ready(std::unexpected(ioError));
    if (!items->contains(account))
        return Future<WriteResult>::ready({});
    items->remove(account);
    if (!store(*items))
        return Future<WriteResult>::ready(std::unexpected(ioError));
    return Future<WriteResult>::ready({});
}

} // namespace scrivel
