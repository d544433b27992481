#pragma once

#include "core/presets/Preset.h"
#include "core/presets/PresetPackError.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QUuid>
#include <expected>
#include <optional>

namespace scrivel {

// One preset inside a pack: a Preset whose identifier may be missing.
struct PresetPackItem {
    std::optional<QUuid> id;
    QString name;
    QString providerID;
    std::optional<QString> customBaseURL;
    QString model;
    QString instructions;
    std::optional<QString> reasoningEffort;
    std::optional<double> temperature;
    bool validatesEdits = false;

    friend bool operator==(const PresetPackItem&, const PresetPackItem&) = default;
};

// A shareable file of presets.
struct PresetPackDocument {
    static constexpr qint64 currentFormatVersion = 1;
    static QString packKind() { return QStringLiteral("scrivel.preset-pack"); }
    static QString fileSuffix() { return QStringLiteral(".scrivel.json"); }

    qint64 formatVersion = currentFormatVersion;
    QString kind = packKind();
    std::optional<QString> name;
    std::optional<QString> description;
    QList<PresetPackItem> presets;

    friend bool operator==(const PresetPackDocument&, const PresetPackDocument&) = default;

    // Any failure to read the bytes as a document is invalidJSON; problem,
    // when given, receives what exactly was wrong (in English, for
    // diagnostics: a missing or mistyped member and the preset it belongs to).
    static std::expected<PresetPackDocument, PresetPackError> decode(const QByteArray& bytes,
                                                                     QString* problem = nullptr);
    // Pretty printed with sorted keys; fails only for numbers JSON cannot
    // hold (a temperature that is not finite).
    std::optional<QByteArray> encode() const;

    // Kind, then version, then emptiness, then each item's name and provider.
    std::expected<void, PresetPackError> validate() const;

    // One item per preset, every field copied, identifiers included.
    static PresetPackDocument fromPresets(const QList<Preset>& presets,
                                          const std::optional<QString>& name = std::nullopt,
                                          const std::optional<QString>& description = std::nullopt);

    struct MadePresets {
        QList<Preset> added;
        QList<Preset> replaced;
    };
    // Presets for the items, names trimmed. With assigningNewIDs every item is
    // a new copy; otherwise an item whose identifier is known replaces that
    // preset.
    MadePresets makePresets(bool assigningNewIDs, const QSet<QUuid>& existingIDs) const;
};

} // namespace scrivel
