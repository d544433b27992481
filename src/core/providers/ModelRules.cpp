#include "core/providers/ModelRules.h"

#include <algorithm>
#include <iterator>

namespace scrivel {

namespace {

bool containsAny(QStringView identifier, const QStringList& markers) {
    const QString lowered = identifier.toString().toLower();
    return std::any_of(markers.begin(), markers.end(),
                       [&](const QString& marker) { return lowered.contains(marker); });
}

} // namespace

const QStringList& reasoningMarkers() {
    static const QStringList markers = {
        QStringLiteral("reasoning"), QStringLiteral("gpt-oss"), QStringLiteral("o1"),
        QStringLiteral("o3"),        QStringLiteral("o4-mini"), QStringLiteral("r1"),
    };
    return markers;
}

const QStringList& nonChatModelMarkers() {
    static const QStringList markers = {
        QStringLiteral("imagine-image"),
        QStringLiteral("imagine-video"),
        QStringLiteral("imagine-audio"),
        QStringLiteral("dall-e"),
        QStringLiteral("dalle"),
        QStringLiteral("stable-diffusion"),
        QStringLiteral("flux-"),
        QStringLiteral("midjourney"),
        QStringLiteral("image-generation"),
        QStringLiteral("video-generation"),
        QStringLiteral("text-embedding"),
        QStringLiteral("embedding"),
        QStringLiteral("moderation"),
        QStringLiteral("whisper"),
        QStringLiteral("tts"),
        QStringLiteral("transcri"),
        QStringLiteral("speech-to"),
        QStringLiteral("text-to-speech"),
        QStringLiteral("-image"),
        QStringLiteral("-video"),
        QStringLiteral("-audio"),
        QStringLiteral("-tts"),
        QStringLiteral("-embed"),
    };
    return markers;
}

bool supportsReasoningEffort(QStringView identifier) {
    return containsAny(identifier, reasoningMarkers());
}

bool isChatModel(QStringView identifier) {
    return !containsAny(identifier, nonChatModelMarkers());
}

QStringList chatModels(const QStringList& identifiers) {
    QStringList kept;
    std::copy_if(identifiers.begin(), identifiers.end(), std::back_inserter(kept),
                 [](const QString& identifier) { return isChatModel(identifier); });
    return kept;
}

} // namespace scrivel
