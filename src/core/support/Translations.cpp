#include "core/support/Translations.h"

#include "core/support/InstallLayout.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace scrivel {

namespace {

const QString baseName = QStringLiteral("scrivel");

// Loads the first of locale's languages that has a translation.
bool loadFor(QTranslator& translator, const QLocale& locale) {
    for (const QString& folder : translationDirectories())
        if (translator.load(locale, baseName, QStringLiteral("_"), folder))
            return true;
    return false;
}

} // namespace

QString Translations::install(QCoreApplication& app, const QLocale& locale) {
    auto* scrivel = new QTranslator(&app);
    if (!loadFor(*scrivel, locale) && !loadFor(*scrivel, QLocale(QLocale::English))) {
        delete scrivel;
        return {};
    }
    app.installTranslator(scrivel);
    // "de_DE" or "de": the language of the file that was found.
    const QLocale loaded(scrivel->language());
    if (loaded.language() != QLocale::English) {
        auto* qt = new QTranslator(&app);
        if (qt->load(loaded, QStringLiteral("qtbase"), QStringLiteral("_"),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            app.installTranslator(qt);
        else
            delete qt;
    }
    return QLocale::languageToCode(loaded.language());
}

} // namespace scrivel
