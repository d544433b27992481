#pragma once

#include "core/support/JsonValue.h"

#include <QByteArray>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QUuid>
#include <expected>
#include <optional>

namespace scrivel {

// Why a stored preset (or list of presets) could not be read.
struct PresetDecodingError {
    enum class Problem { invalidJSON, notAnObject, notAnArray, missingKey, wrongType, invalidID };
    Problem problem;
    QString key; // the offending key, where there is one

    friend bool operator==(const PresetDecodingError&, const PresetDecodingError&) = default;
};

// One named way of rewriting text. A plain value: copied, compared and stored
// whole. The record neither trims nor validates its fields; the editor and
// the pack importer check what users type.
struct Preset {
    QUuid id;
    QString name;
    QString providerID;
    std::optional<QString> customBaseURL;
    QString model;
    QString instructions;
    std::optional<QString> reasoningEffort;
    std::optional<double> temperature;
    bool validatesEdits = false;

    // The name as lists show it: "Untitled Preset" for a name that is empty
    // or blank. The name itself stays as the user typed it.
    QString displayName() const;
    static QString untitledName();

    // The providerID of the operating system's on-device model.
    static QString onDeviceProviderID() { return QStringLiteral("onDevice"); }

    // All nine fields; temperature as an exact number.
    friend bool operator==(const Preset&, const Preset&) = default;

    // The JSON object with keys in field order and absent optionals left out.
    JsonValue toJson() const;
    static std::expected<Preset, PresetDecodingError> fromJson(const QJsonValue& value);

    // A JSON array of presets in list order, compact. Nothing when a
    // temperature is not a finite number: JSON has no way to hold it, and
    // writing null would read back as no temperature at all.
    static std::optional<QByteArray> encodeList(const QList<Preset>& presets);
    static std::expected<QList<Preset>, PresetDecodingError> decodeList(const QByteArray& data);

    // The standard textual form of an identifier (upper-case hexadecimal
    // groups 8-4-4-4-12), and its strict inverse (no braces, either case).
    static QString idText(const QUuid& id);
    static std::optional<QUuid> parseID(const QString& text);
};

} // namespace scrivel
