#include "core/providers/StreamChatChunk.h"

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

// The server's words from an error member: its "message" when it is an
// object holding one, the text itself when it is a text, else nothing.
QString errorMessage(const QJsonValue& error) {
    if (error.isString())
        return error.toString();
    if (error.isObject()) {
        const QJsonValue message = error.toObject().value(QStringLiteral("message"));
        if (message.isString())
            return message.toString();
    }
    return {};
}

} // namespace

std::optional<StreamChatChunk> StreamChatChunk::decode(QByteArrayView payload) {
    QJsonParseError error{};
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray::fromRawData(payload.data(), payload.size()), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;

    StreamChatChunk chunk;
    const QJsonObject object = document.object();
    // A failure reported in the stream wins over whatever else the object
    // holds: servers differ in what they put beside it.
    const QJsonValue reported = object.value(QStringLiteral("error"));
    if (!reported.isUndefined() && !reported.isNull()) {
        chunk.error = errorMessage(reported);
        return chunk;
    }
    if (const QJsonValue kind = object.value(QStringLiteral("object"));
        kind.isString() && kind.toString() == QLatin1String("error")) {
        chunk.error = errorMessage(object);
        return chunk;
    }
    const QJsonValue choices = object.value(QStringLiteral("choices"));
    if (choices.isUndefined() || choices.isNull())
        return chunk;
    if (!choices.isArray())
        return std::nullopt;
    QList<Choice> decoded;
    bool first = true;
    for (const QJsonValue& value : choices.toArray()) {
        if (!value.isObject())
            return std::nullopt;
        if (first) {
            const QJsonValue reason = value.toObject().value(QStringLiteral("finish_reason"));
            if (reason.isString())
                chunk.finishReason = reason.toString();
            first = false;
        }
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
