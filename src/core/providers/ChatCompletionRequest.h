#pragma once

#include "core/providers/CompletionInput.h"
#include "core/transform/RewriteError.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <expected>
#include <optional>

namespace scrivel {

// The body of a streamed chat-completions request.
struct ChatCompletionRequest {
    struct Message {
        QString role;
        QString content;
        friend bool operator==(const Message&, const Message&) = default;
    };

    static constexpr qsizetype inputLimitBytes = 200000;

    QString model;
    std::optional<double> temperature;
    qint64 maxTokens = 0;
    // Some reasoning models refuse "max_tokens" and take the same budget as
    // "max_completion_tokens"; the client switches when told so.
    bool budgetAsMaxCompletionTokens = false;
    std::optional<QString> reasoningEffort;
    bool stream = true;
    QList<Message> messages;

    // The opening of the user message; the text and "\n</input>" follow it.
    static QString userPromptTemplate();

    // Fails with inputTooLarge when the text is over 200,000 UTF-8 bytes.
    static std::expected<ChatCompletionRequest, RewriteError> make(const CompletionInput& input);

    // Compact JSON with the keys in a fixed order.
    QByteArray encode() const;

    // Whether an error body is the refusal of "max_tokens" as an unsupported
    // parameter, which "max_completion_tokens" answers.
    static bool refusesMaxTokens(const QByteArray& errorBody);
};

} // namespace scrivel
