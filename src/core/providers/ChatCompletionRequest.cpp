#include "core/providers/ChatCompletionRequest.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

#include "core/providers/ModelRules.h"
#include "core/support/JsonWriter.h"

#include <algorithm>

namespace scrivel {

QString ChatCompletionRequest::userPromptTemplate() {
    // Read by the model, never by the user: not translated.
    return QStringLiteral("Apply your instructions to the content of <input> and return only the "
                          "result.\n\n<input>\n");
}

std::expected<ChatCompletionRequest, RewriteError>
ChatCompletionRequest::make(const CompletionInput& input) {
    if (input.userText.toUtf8().size() > inputLimitBytes)
        return std::unexpected(RewriteError::inputTooLarge());

    ChatCompletionRequest request;
    request.model = input.model;
    // Budget twice the text's UTF-16 length, within 4,096 and 32,768 tokens.
    request.maxTokens = std::min<qint64>(std::max<qint64>(2 * input.userText.size(), 4096), 32768);
    if (input.reasoningEffort && !input.reasoningEffort->isEmpty() &&
        supportsReasoningEffort(input.model))
        request.reasoningEffort = input.reasoningEffort;
    // A temperature that is not a finite number has no JSON form; the
    // provider's default stands in rather than a null.
    if (input.temperature && std::isfinite(*input.temperature))
        request.temperature = input.temperature;
    request.stream = true;
    request.messages = {
        {QStringLiteral("system"), input.instructions},
        {QStringLiteral("user"),
         userPromptTemplate() + input.userText + QStringLiteral("\n</input>")},
    };
    return request;
}

QByteArray ChatCompletionRequest::encode() const {
    JsonValue body = JsonValue::object();
    body.insert(QStringLiteral("model"), model);
    if (temperature && std::isfinite(*temperature))
        body.insert(QStringLiteral("temperature"), *temperature);
    body.insert(budgetAsMaxCompletionTokens ? QStringLiteral("max_completion_tokens")
                                            : QStringLiteral("max_tokens"),
                maxTokens);
    body.insert(QStringLiteral("stream"), stream);
    JsonValue list = JsonValue::array();
    for (const Message& message : messages) {
        JsonValue object = JsonValue::object();
        object.insert(QStringLiteral("role"), message.role);
        object.insert(QStringLiteral("content"), message.content);
        list.append(object);
    }
    body.insert(QStringLiteral("messages"), list);
    if (reasoningEffort)
        body.insert(QStringLiteral("reasoning_effort"), *reasoningEffort);
    return JsonWriter::write(body);
}

bool ChatCompletionRequest::refusesMaxTokens(const QByteArray& errorBody) {
    const QJsonObject error =
        QJsonDocument::fromJson(errorBody).object().value(QStringLiteral("error")).toObject();
    return error.value(QStringLiteral("code")).toString() ==
               QLatin1String("unsupported_parameter") &&
           error.value(QStringLiteral("param")).toString() == QLatin1String("max_tokens");
}

} // namespace scrivel
