#include "cli/PresetLookup.h"

#include "core/providers/ProviderCatalog.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace scrivel::cli {

namespace {

// The lookup's texts, translated under one context.
struct LookupText {
    Q_DECLARE_TR_FUNCTIONS(PresetLookup)
};

QList<Preset> presetsNamed(const PresetStore& store, const QString& name) {
    QList<Preset> matches;
    for (const Preset& preset : store.presets()) {
        if (preset.name.compare(name, Qt::CaseInsensitive) == 0)
            matches.append(preset);
    }
    return matches;
}

} // namespace

std::expected<Preset, QString> findPreset(const PresetStore& store, const QString& nameOrID) {
    if (const auto id = Preset::parseID(nameOrID)) {
        if (const auto preset = store.preset(*id))
            return *preset;
    }
    const QList<Preset> matches = presetsNamed(store, nameOrID);
    if (matches.size() == 1)
        return matches.first();
    if (matches.isEmpty()) {
        return std::unexpected(
            LookupText::tr("No preset \"%1\". See 'scrivel-cli presets'.").arg(nameOrID));
    }
    // Picking one silently could run or export the wrong one.
    QString message =
        LookupText::tr("%n presets are named \"%1\"; give the id of the one you mean:", nullptr,
                       int(matches.size()))
            .arg(nameOrID);
    for (const Preset& preset : matches) {
        QString provider = providerDisplayName(preset);
        if (!preset.model.isEmpty())
            provider += QStringLiteral(" \u00B7 ") + preset.model;
        message += QStringLiteral("\n  %1  %2 (%3)")
                       .arg(Preset::idText(preset.id), preset.displayName(), provider);
    }
    return std::unexpected(message);
}

bool namesPreset(const PresetStore& store, const QString& word) {
    if (const auto id = Preset::parseID(word); id && store.preset(*id))
        return true;
    return !presetsNamed(store, word).isEmpty();
}

QString presetCount(qsizetype count) {
    return LookupText::tr("%n preset(s)", nullptr, int(count));
}

QString shellQuoted(const QString& word) {
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_./:@%+=,-]+$"));
    if (plain.match(word).hasMatch())
        return word;
    QString quoted = word;
    quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

} // namespace scrivel::cli
