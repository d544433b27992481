#include "core/providers/ModelListResponse.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace scrivel {

std::optional<ModelListResponse> ModelListResponse::decode(const QByteArray& body) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonValue data = document.object().value(QStringLiteral("data"));
    if (!data.isArray())
        return std::nullopt;
    ModelListResponse response;
    for (const QJsonValue& model : data.toArray()) {
        const QJsonValue id = model.toObject().value(QStringLiteral("id"));
        if (!model.isObject() || !id.isString())
            return std::nullopt;
        response.ids.append(id.toString());
    }
    return response;
}

} // namespace scrivel
