#pragma once

#include <QString>
#include <optional>

namespace scrivel {

// What the client needs for one completion: the preset's model,
// instructions, reasoning effort and temperature, and the user's text.
struct CompletionInput {
    QString model;
    QString instructions;
    QString userText;
    std::optional<QString> reasoningEffort;
    std::optional<double> temperature;
};

} // namespace scrivel
