#include "core/presets/PresetPackDocument.h"

#include "core/support/JsonWriter.h"
#include "core/support/UnicodeText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>

namespace scrivel {

namespace {

// Reads one member. Missing or null optionals are absent; anything of the
// wrong type fails the whole document.
struct Reader {
    const QJsonObject& object;
    bool ok = true;
    QString problem; // the first member that failed, for the diagnostic

    void fail(const char* key, const QJsonValue& value, const char* expected) {
        if (!ok)
            return;
        ok = false;
        problem = value.isUndefined()
                      ? QStringLiteral("missing member \"%1\"").arg(QLatin1String(key))
                      : QStringLiteral("member \"%1\" is not %2")
                            .arg(QLatin1String(key), QLatin1String(expected));
    }

    QString text(const char* key) {
        const QJsonValue value = object.value(QLatin1String(key));
        if (!value.isString())
            fail(key, value, "a string");
        return value.toString();
    }
    std::optional<QString> optionalText(const char* key) {
        const QJsonValue value = object.value(QLatin1String(key));
        if (value.isUndefined() || value.isNull())
            return std::nullopt;
        if (!value.isString())
            fail(key, value, "a string");
        return value.toString();
    }
    std::optional<double> optionalNumber(const char* key) {
        const QJsonValue value = object.value(QLatin1String(key));
        if (value.isUndefined() || value.isNull())
            return std::nullopt;
        if (!value.isDouble())
            fail(key, value, "a number");
        return value.toDouble();
    }
    bool boolean(const char* key) {
        const QJsonValue value = object.value(QLatin1String(key));
        if (!value.isBool())
            fail(key, value, "true or false");
        return value.toBool();
    }
    // Any whole number that fits 64 bits, read exactly: the parser keeps
    // integer literals as integers, and toInteger() refuses fractions and
    // doubles out of range by returning its default.
    qint64 integer(const char* key) {
        const QJsonValue value = object.value(QLatin1String(key));
        const qint64 number = value.toInteger(0);
        if (!value.isDouble() || (number == 0 && value.toInteger(1) != 0))
            fail(key, value, "a whole number");
        return number;
    }
};

// A "\ud800" escape without its partner parses into a lone surrogate, text
// that no UTF-8 file can hold: writing it back would silently change it, so
// such a document is not valid JSON to us, wherever the text sits.
bool holdsOnlyWholeCharacters(const QJsonValue& value) {
    if (value.isString())
        return value.toString().isValidUtf16();
    if (value.isArray()) {
        const QJsonArray array = value.toArray();
        return std::all_of(array.begin(), array.end(), [](const QJsonValue& element) {
            return holdsOnlyWholeCharacters(element);
        });
    }
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (auto member = object.begin(); member != object.end(); ++member) {
            if (!member.key().isValidUtf16() || !holdsOnlyWholeCharacters(member.value()))
                return false;
        }
    }
    return true;
}

// The item, or what is wrong with it.
std::expected<PresetPackItem, QString> decodeItem(const QJsonValue& value) {
    if (!value.isObject())
        return std::unexpected(QStringLiteral("not an object"));
    const QJsonObject object = value.toObject();
    Reader read{object, true, {}};
    PresetPackItem item;
    if (const auto id = read.optionalText("id")) {
        const auto parsed = Preset::parseID(*id);
        if (!parsed)
            return std::unexpected(QStringLiteral("member \"id\" is not a UUID"));
        item.id = *parsed;
    }
    item.name = read.text("name");
    item.providerID = read.text("providerID");
    item.customBaseURL = read.optionalText("customBaseURL");
    item.model = read.text("model");
    item.instructions = read.text("instructions");
    item.reasoningEffort = read.optionalText("reasoningEffort");
    item.temperature = read.optionalNumber("temperature");
    item.validatesEdits = read.boolean("validatesEdits");
    if (!read.ok)
        return std::unexpected(read.problem);
    return item;
}

JsonValue encodeItem(const PresetPackItem& item) {
    JsonValue object = JsonValue::object();
    if (item.id)
        object.insert(QStringLiteral("id"), Preset::idText(*item.id));
    object.insert(QStringLiteral("name"), item.name);
    object.insert(QStringLiteral("providerID"), item.providerID);
    if (item.customBaseURL)
        object.insert(QStringLiteral("customBaseURL"), *item.customBaseURL);
    object.insert(QStringLiteral("model"), item.model);
    object.insert(QStringLiteral("instructions"), item.instructions);
    if (item.reasoningEffort)
        object.insert(QStringLiteral("reasoningEffort"), *item.reasoningEffort);
    if (item.temperature)
        object.insert(QStringLiteral("temperature"), *item.temperature);
    object.insert(QStringLiteral("validatesEdits"), item.validatesEdits);
    return object;
}

} // namespace

std::expected<PresetPackDocument, PresetPackError>
PresetPackDocument::decode(const QByteArray& bytes, QString* problem) {
    const auto invalid = [problem](const QString& why) {
        if (problem)
            *problem = why;
        return std::unexpected(PresetPackError::invalidJSON());
    };
    QJsonParseError error{};
    const QJsonDocument json = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return invalid(QStringLiteral("not valid JSON near byte %1").arg(error.offset));
    if (!json.isObject())
        return invalid(QStringLiteral("not a JSON object"));
    const QJsonObject object = json.object();
    if (!holdsOnlyWholeCharacters(object))
        return invalid(QStringLiteral("a text holds a lone surrogate escape"));
    Reader read{object, true, {}};
    PresetPackDocument document;
    document.formatVersion = read.integer("formatVersion");
    document.kind = read.text("kind");
    document.name = read.optionalText("name");
    document.description = read.optionalText("description");
    const QJsonValue presets = object.value(QStringLiteral("presets"));
    if (!presets.isArray())
        read.fail("presets", presets, "a list");
    if (!read.ok)
        return invalid(read.problem);
    const QJsonArray items = presets.toArray();
    for (qsizetype i = 0; i < items.size(); ++i) {
        auto item = decodeItem(items[i]);
        if (!item)
            return invalid(QStringLiteral("preset %1 of %2: %3")
                               .arg(i + 1)
                               .arg(items.size())
                               .arg(item.error()));
        document.presets.append(std::move(*item));
    }
    return document;
}

std::optional<QByteArray> PresetPackDocument::encode() const {
    JsonValue object = JsonValue::object();
    object.insert(QStringLiteral("formatVersion"), formatVersion);
    object.insert(QStringLiteral("kind"), kind);
    if (name)
        object.insert(QStringLiteral("name"), *name);
    if (description)
        object.insert(QStringLiteral("description"), *description);
    JsonValue items = JsonValue::array();
    for (const PresetPackItem& item : presets) {
        if (item.temperature && !std::isfinite(*item.temperature))
            return std::nullopt;
        items.append(encodeItem(item));
    }
    object.insert(QStringLiteral("presets"), items);
    JsonWriter::Options options;
    options.pretty = true;
    options.sortKeys = true;
    return JsonWriter::write(object, options);
}

std::expected<void, PresetPackError> PresetPackDocument::validate() const {
    if (kind != packKind())
        return std::unexpected(PresetPackError::wrongKind(kind));
    if (formatVersion != currentFormatVersion)
        return std::unexpected(PresetPackError::unsupportedFormatVersion(formatVersion));
    if (presets.isEmpty())
        return std::unexpected(PresetPackError::emptyPack());
    for (const PresetPackItem& item : presets) {
        if (trimmedWhitespaceAndNewlines(item.name).isEmpty())
            return std::unexpected(PresetPackError::invalidPreset(QStringLiteral("empty name")));
        if (trimmedWhitespaceAndNewlines(item.providerID).isEmpty())
            return std::unexpected(
                PresetPackError::invalidPreset(QStringLiteral("empty providerID")));
    }
    return {};
}

PresetPackDocument PresetPackDocument::fromPresets(const QList<Preset>& presets,
                                                   const std::optional<QString>& name,
                                                   const std::optional<QString>& description) {
    PresetPackDocument document;
    document.name = name;
    document.description = description;
    for (const Preset& preset : presets) {
        document.presets.append({preset.id, preset.name, preset.providerID, preset.customBaseURL,
                                 preset.model, preset.instructions, preset.reasoningEffort,
                                 preset.temperature, preset.validatesEdits});
    }
    return document;
}

PresetPackDocument::MadePresets
PresetPackDocument::makePresets(bool assigningNewIDs, const QSet<QUuid>& existingIDs) const {
    MadePresets made;
    QSet<QUuid> working = existingIDs;
    for (const PresetPackItem& item : presets) {
        Preset preset;
        preset.name = trimmedWhitespaceAndNewlines(item.name);
        preset.providerID = item.providerID;
        preset.customBaseURL = item.customBaseURL;
        preset.model = item.model;
        preset.instructions = item.instructions;
        preset.reasoningEffort = item.reasoningEffort;
        preset.temperature = item.temperature;
        preset.validatesEdits = item.validatesEdits;

        if (assigningNewIDs) {
            preset.id = QUuid::createUuid();
            made.added.append(preset);
        } else if (item.id && working.contains(*item.id)) {
            preset.id = *item.id;
            made.replaced.append(preset);
        } else {
            preset.id = item.id ? *item.id : QUuid::createUuid();
            working.insert(preset.id);
            made.added.append(preset);
        }
    }
    return made;
}

} // namespace scrivel
