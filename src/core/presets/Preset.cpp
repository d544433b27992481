#include "core/presets/Preset.h"

#include <cmath>

#include "core/support/JsonWriter.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QRegularExpression>

namespace scrivel {

QString Preset::displayName() const {
    return name.trimmed().isEmpty() ? untitledName() : name;
}

QString Preset::untitledName() {
    return QCoreApplication::translate("Preset", "Untitled Preset");
}

namespace {

using DecodeError = PresetDecodingError;

std::unexpected<DecodeError> fail(DecodeError::Problem problem, const QString& key = {}) {
    return std::unexpected(DecodeError{problem, key});
}

std::expected<QString, DecodeError> requiredString(const QJsonObject& object, const QString& key) {
    const auto it = object.constFind(key);
    if (it == object.constEnd())
        return fail(DecodeError::Problem::missingKey, key);
    if (!it->isString())
        return fail(DecodeError::Problem::wrongType, key);
    return it->toString();
}

// A missing key and null both mean "absent".
std::expected<std::optional<QString>, DecodeError> optionalString(const QJsonObject& object,
                                                                  const QString& key) {
    const auto it = object.constFind(key);
    if (it == object.constEnd() || it->isNull())
        return std::optional<QString>();
    if (!it->isString())
        return fail(DecodeError::Problem::wrongType, key);
    return std::optional<QString>(it->toString());
}

} // namespace

QString Preset::idText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

std::optional<QUuid> Preset::parseID(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(
        "^[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}$"));
    if (!pattern.match(text).hasMatch())
        return std::nullopt;
    const QUuid id = QUuid::fromString(text);
    if (id.isNull() && text != QStringLiteral("00000000-0000-0000-0000-000000000000"))
        return std::nullopt;
    return id;
}

JsonValue Preset::toJson() const {
    JsonValue object = JsonValue::object();
    object.insert(QStringLiteral("id"), idText(id));
    object.insert(QStringLiteral("name"), name);
    object.insert(QStringLiteral("providerID"), providerID);
    if (customBaseURL)
        object.insert(QStringLiteral("customBaseURL"), *customBaseURL);
    object.insert(QStringLiteral("model"), model);
    object.insert(QStringLiteral("instructions"), instructions);
    if (reasoningEffort)
        object.insert(QStringLiteral("reasoningEffort"), *reasoningEffort);
    if (temperature)
        object.insert(QStringLiteral("temperature"), *temperature);
    object.insert(QStringLiteral("validatesEdits"), validatesEdits);
    return object;
}

std::expected<Preset, PresetDecodingError> Preset::fromJson(const QJsonValue& value) {
    if (!value.isObject())
        return fail(DecodeError::Problem::notAnObject);
    const QJsonObject object = value.toObject();

    Preset preset;
    const auto idString = requiredString(object, QStringLiteral("id"));
    if (!idString)
        return std::unexpected(idString.error());
    const auto id = parseID(*idString);
    if (!id)
        return fail(DecodeError::Problem::invalidID, QStringLiteral("id"));
    preset.id = *id;

    for (auto [key, field] : {std::pair{QStringLiteral("name"), &Preset::name},
                              std::pair{QStringLiteral("providerID"), &Preset::providerID},
                              std::pair{QStringLiteral("model"), &Preset::model},
                              std::pair{QStringLiteral("instructions"), &Preset::instructions}}) {
        const auto text = requiredString(object, key);
        if (!text)
            return std::unexpected(text.error());
        preset.*field = *text;
    }

    const auto validates = object.constFind(QStringLiteral("validatesEdits"));
    if (validates == object.constEnd())
        return fail(DecodeError::Problem::missingKey, QStringLiteral("validatesEdits"));
    if (!validates->isBool())
        return fail(DecodeError::Problem::wrongType, QStringLiteral("validatesEdits"));
    preset.validatesEdits = validates->toBool();

    const auto baseURL = optionalString(object, QStringLiteral("customBaseURL"));
    if (!baseURL)
        return std::unexpected(baseURL.error());
    preset.customBaseURL = *baseURL;
    const auto effort = optionalString(object, QStringLiteral("reasoningEffort"));
    if (!effort)
        return std::unexpected(effort.error());
    preset.reasoningEffort = *effort;

    const auto temperature = object.constFind(QStringLiteral("temperature"));
    if (temperature != object.constEnd() && !temperature->isNull()) {
        if (!temperature->isDouble())
            return fail(DecodeError::Problem::wrongType, QStringLiteral("temperature"));
        preset.temperature = temperature->toDouble();
    }
    return preset;
}

std::optional<QByteArray> Preset::encodeList(const QList<Preset>& presets) {
    JsonValue array = JsonValue::array();
    for (const Preset& preset : presets) {
        if (preset.temperature && !std::isfinite(*preset.temperature))
            return std::nullopt;
        array.append(preset.toJson());
    }
    return JsonWriter::write(array);
}

std::expected<QList<Preset>, PresetDecodingError> Preset::decodeList(const QByteArray& data) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError)
        return fail(DecodeError::Problem::invalidJSON);
    if (!document.isArray())
        return fail(DecodeError::Problem::notAnArray);
    QList<Preset> presets;
    const QJsonArray array = document.array();
    presets.reserve(array.size());
    for (const QJsonValue& element : array) {
        auto preset = fromJson(element);
        if (!preset)
            return std::unexpected(preset.error());
        presets.append(std::move(*preset));
    }
    return presets;
}

} // namespace scrivel
