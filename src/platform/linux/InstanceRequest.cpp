#include "platform/linux/InstanceRequest.h"

#include <QJsonDocument>

namespace scrivel {

QByteArray InstanceRequest::encode() const {
    QJsonObject object = data;
    object.insert(QStringLiteral("command"), command);
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<InstanceRequest> InstanceRequest::decode(QByteArrayView line) {
    const QJsonDocument document = QJsonDocument::fromJson(line.toByteArray().trimmed());
    if (!document.isObject())
        return std::nullopt;
    QJsonObject object = document.object();
    const QJsonValue command = object.take(QStringLiteral("command"));
    if (!command.isString() || command.toString().isEmpty())
        return std::nullopt;
    return InstanceRequest{command.toString(), object};
}

} // namespace scrivel
