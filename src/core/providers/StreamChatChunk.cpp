#include "providers/StreamChatChunk.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace scrivel {

namespace {

// A member that is an object holding an optional "content" text. The outer
// optional is the member's presence (null counts as absent); a wrong type
// anywhere fails the whole decode.
bool decodeContentHolder(const QJsonObject& choice, const QString& key,
                         std::optional<std::optional<QString>>* out) {
    const QJsonValue holder = choice.value(key);
    if (holder.isUndefined() || holder.isNull())
        return true;
    if (!holder.isObject())
        return false;
    const QJsonValue content = holder.toObject().value(QStringLiteral("content"));
    if (content.isUndefined() || content.isNull()) {
        out->emplace(std::nullopt);
        return true;
    }
    if (!content.isString())
        return false;
    out->emplace(content.toString());
    return true;
}

} // namespace

std::optional<StreamChatChunk> StreamChatChunk::decode(QByteArrayView payload) {
    QJsonParseError error{};
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray::fromRawData(payload.data(), payload.size()), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;

    StreamChatChunk chunk;
    const QJsonValue choices = document.object().value(QStringLiteral("choices"));
    if (choices.isUndefined() || choices.isNull())
        return chunk;
    if (!choices.isArray())
        return std::nullopt;
    QList<Choice> decoded;
    for (const QJsonValue& value : choices.toArray()) {
        if (!value.isObject())
            return std::nullopt;
        Choice choice;
        if (!decodeContentHolder(value.toObject(), QStringLiteral("delta"), &choice.deltaContent) ||
            !decodeContentHolder(value.toObject(), QStringLiteral("message"),
                                 &choice.messageContent))
            return std::nullopt;
        decoded.append(choice);
    }
    chunk.choices = decoded;
    return chunk;
}

std::optional<QString> StreamChatChunk::text() const {
    if (!choices || choices->isEmpty())
        return std::nullopt;
    const Choice& first = choices->first();
    if (first.deltaContent && *first.deltaContent)
        return **first.deltaContent;
    if (first.messageContent && *first.messageContent)
        return **first.messageContent;
    return std::nullopt;
}

} // namespace scrivel
