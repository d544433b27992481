#include "core/presets/BuiltInPresets.h"

#include <QCoreApplication>

namespace scrivel {

QString builtInCloudProviderID() {
    return QStringLiteral("groq");
}
QString builtInCloudModel() {
    return QStringLiteral("openai/gpt-oss-120b");
}

QList<Preset> builtInPresets(bool onDeviceModelAvailable) {
    Preset fix;
    fix.id = QUuid::createUuid();
    fix.name = QCoreApplication::translate("BuiltInPresets", "Fix");
    fix.providerID =
        onDeviceModelAvailable ? Preset::onDeviceProviderID() : builtInCloudProviderID();
    fix.model = onDeviceModelAvailable ? QString() : builtInCloudModel();
    // Instructions are the model's prompt, tuned in English: not translated.
    fix.instructions = QStringLiteral(
        "You correct spelling, grammar, and punctuation only. Preserve meaning, tone, language, "
        "formatting, and line breaks. Do not add facts, labels, Markdown, or quotation marks "
        "around the result. Never write a preface such as \"Here is\" or \"Corrected\". Return "
        "only the revised text.");
    fix.temperature = 0.0;
    fix.validatesEdits = true;

    Preset concise;
    concise.id = QUuid::createUuid();
    concise.name = QCoreApplication::translate("BuiltInPresets", "Make Concise");
    concise.providerID = builtInCloudProviderID();
    concise.model = builtInCloudModel();
    // The model's prompt: not translated.
    concise.instructions = QStringLiteral(
        "Rewrite the text to be as concise as possible while preserving every fact, the original "
        "language, and the author's tone. Return only the rewritten text.");
    concise.temperature = 0.0;

    Preset prompt;
    prompt.id = QUuid::createUuid();
    prompt.name = QCoreApplication::translate("BuiltInPresets", "Improve Prompt");
    prompt.providerID = builtInCloudProviderID();
    prompt.model = builtInCloudModel();
    // The model's prompt: not translated.
    prompt.instructions = QStringLiteral(
        "Rewrite the text as a clear, well-structured prompt for an AI model. Keep the author's "
        "intent and constraints, state the task explicitly, specify the expected output format, "
        "and remove filler. Return only the improved prompt.");

    return {fix, concise, prompt};
}

} // namespace scrivel
