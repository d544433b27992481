#include "core/presets/StoredPresetList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace scrivel {

namespace {

bool isBlank(QByteArrayView bytes) {
    return bytes.trimmed().isEmpty();
}

// The top-level elements of a JSON array as byte ranges, found without
// parsing them: strings and nesting are followed so that a comma inside an
// element does not split it. Data cut off before the closing bracket yields
// its whole elements, then the partial one. Nothing when the data does not
// start with '['.
std::optional<QList<QByteArrayView>> splitArray(QByteArrayView data) {
    qsizetype i = 0;
    while (i < data.size() && QChar::isSpace(uchar(data[i])))
        ++i;
    if (i == data.size() || data[i] != '[')
        return std::nullopt;
    QList<QByteArrayView> elements;
    const auto keep = [&](qsizetype from, qsizetype to) {
        if (!isBlank(data.sliced(from, to - from)))
            elements.append(data.sliced(from, to - from));
    };
    qsizetype start = ++i;
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (; i < data.size(); ++i) {
        const char c = data[i];
        if (inString) {
            if (escaped)
                escaped = false;
            else if (c == '\\')
                escaped = true;
            else if (c == '"')
                inString = false;
            continue;
        }
        switch (c) {
        case '"':
            inString = true;
            break;
        case '{':
        case '[':
            ++depth;
            break;
        case '}':
        case ']':
            if (depth == 0) {
                keep(start, i);
                return elements;
            }
            --depth;
            break;
        case ',':
            if (depth == 0) {
                keep(start, i);
                start = i + 1;
            }
            break;
        default:
            break;
        }
    }
    keep(start, data.size());
    return elements;
}

// The keys a preset is written with (Preset::toJson).
const QSet<QString>& knownKeys() {
    static const QSet<QString> keys{QStringLiteral("id"),
                                    QStringLiteral("name"),
                                    QStringLiteral("providerID"),
                                    QStringLiteral("customBaseURL"),
                                    QStringLiteral("model"),
                                    QStringLiteral("instructions"),
                                    QStringLiteral("reasoningEffort"),
                                    QStringLiteral("temperature"),
                                    QStringLiteral("validatesEdits")};
    return keys;
}

} // namespace

StoredPresetList StoredPresetList::read(const QByteArray& data) {
    StoredPresetList list;
    QSet<QString> unknown;
    const auto readElement = [&](const QJsonValue& element) {
        auto preset = Preset::fromJson(element);
        if (!preset) {
            ++list.unreadable;
            return;
        }
        list.presets.append(std::move(*preset));
        for (const QString& key : element.toObject().keys()) {
            if (!knownKeys().contains(key))
                unknown.insert(key);
        }
    };

    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error == QJsonParseError::NoError && document.isArray()) {
        for (const QJsonValue& element : document.array())
            readElement(element);
    } else {
        list.wellFormed = false;
        // Each element on its own: the ones before (and after) the damage
        // still read.
        for (QByteArrayView element : splitArray(data).value_or(QList<QByteArrayView>())) {
            QByteArray wrapped = "[" + element.toByteArray() + "]";
            const QJsonDocument one = QJsonDocument::fromJson(wrapped, &error);
            if (error.error != QJsonParseError::NoError || one.array().size() != 1)
                ++list.unreadable;
            else
                readElement(one.array().first());
        }
    }
    list.unknownKeys = QStringList(unknown.begin(), unknown.end());
    list.unknownKeys.sort();
    return list;
}

} // namespace scrivel
