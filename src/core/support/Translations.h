#pragma once

#include <QLocale>
#include <QString>

class QCoreApplication;

namespace scrivel {

// Scrivel's texts in the user's language, from the folders of
// translationDirectories() (InstallLayout.h): an installed copy under
// share/scrivel/translations wins over the one compiled in. A language
// without a translation falls back to English, whose translation holds only
// the plural forms. Qt's own texts (standard dialog buttons) follow in the
// same language where the system has Qt's translations installed.
class Translations {
public:
    // Installs the translators on app for locale's languages (by default the
    // user's: LANGUAGE, LC_ALL, LC_MESSAGES, LANG). Returns the language
    // loaded, such as "de" or "en".
    static QString install(QCoreApplication& app, const QLocale& locale = QLocale::system());
};

} // namespace scrivel
