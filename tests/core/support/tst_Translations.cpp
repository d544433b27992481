#include "core/editor/MainWindowModel.h"
#include "core/editor/PresetEditorModel.h"
#include "core/panel/FixPanelControlsState.h"
#include "core/presets/BuiltInPresets.h"
#include "core/providers/ProviderConnectionFailure.h"
#include "core/settings/LaunchAtLoginError.h"
#include "core/shortcuts/Shortcut.h"
#include "core/storage/KeyStorePlace.h"
#include "core/support/Translations.h"

#include <QTranslator>
#include <QtTest>

using namespace scrivel;

namespace {

// Takes every translator off the application again.
void removeTranslations() {
    QCoreApplication* app = QCoreApplication::instance();
    for (QTranslator* translator : app->findChildren<QTranslator*>()) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
}

QList<Preset> sharing(int count) {
    QList<Preset> presets;
    for (int i = 0; i < count; ++i) {
        Preset preset;
        preset.name = QStringLiteral("P%1").arg(i + 1);
        presets.append(preset);
    }
    return presets;
}

// Texts from each way a text finds its translation: a QObject's tr(), a
// class with Q_DECLARE_TR_FUNCTIONS, a file's own context, a plural, and
// Qt's own words for the modifiers.
QStringList sampleTexts() {
    return {
        FixPanelControlsState::of(PanelStage::copied(), true, true).outcome->message,
        *shortcutHintText(QStringLiteral("F9")),
        MainWindowModel::deleteConfirmationTitle(),
        ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain).message(),
        LaunchAtLoginError::systemFailure(
            true, {QStringLiteral("/a/x.desktop"), LoginItemFailure::Reason::diskFull, {}})
            .message(),
        PresetEditorModel::keyRemovalMessage(sharing(2)),
        builtInPresets(false).first().name,
        Shortcut{0x24, Shortcut::control | Shortcut::option}.nativeText(),
    };
}

} // namespace

class TranslationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { removeTranslations(); }

    void eachLanguageReachesEveryKindOfText_data() {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("loaded");
        QTest::addColumn<QStringList>("texts");
        const QStringList english{
            "Copied. Press Ctrl+V to replace your text.",
            "Press F9 anywhere to open Scrivel.",
            "Delete this preset?",
            "Couldn’t access the API key in the desktop’s keyring.",
            "Couldn’t write the autostart entry /a/x.desktop: the disk is full.",
            "2 other presets use this key and will stop working: P1, P2.",
            "Fix",
            "Ctrl+Alt+Return",
        };
        const QStringList german{
            "Kopiert. Drücken Sie Strg+V, um Ihren Text zu ersetzen.",
            "Drücken Sie an beliebiger Stelle F9, um Scrivel zu öffnen.",
            "Diese Voreinstellung löschen?",
            "Auf den API-Schlüssel im Schlüsselbund der Arbeitsumgebung konnte nicht zugegriffen "
            "werden.",
            "Der Autostart-Eintrag /a/x.desktop konnte nicht geschrieben werden: der Datenträger "
            "ist voll.",
            "2 weitere Voreinstellungen verwenden diesen Schlüssel und werden nicht mehr "
            "funktionieren: P1, P2.",
            "Korrigieren",
            "Strg+Alt+Return",
        };
        QTest::newRow("German") << QLocale(QLocale::German, QLocale::Germany) << "de" << german;
        QTest::newRow("Austrian German")
            << QLocale(QLocale::German, QLocale::Austria) << "de" << german;
        QTest::newRow("English") << QLocale(QLocale::English) << "en" << english;
        // No French translation: English, with its plural forms.
        QTest::newRow("French falls back to English")
            << QLocale(QLocale::French, QLocale::France) << "en" << english;
    }
    void eachLanguageReachesEveryKindOfText() {
        QFETCH(QLocale, locale);
        QFETCH(QString, loaded);
        QFETCH(QStringList, texts);
        setCurrentKeyStorePlace(KeyStorePlace::desktopKeyring);
        QCOMPARE(Translations::install(*QCoreApplication::instance(), locale), loaded);
        QCOMPARE(sampleTexts(), texts);
    }

    void germanPluralsHaveBothForms() {
        Translations::install(*QCoreApplication::instance(), QLocale(QLocale::German));
        QCOMPARE(PresetEditorModel::keyRemovalMessage(sharing(1)),
                 QStringLiteral("„P1“ verwendet diesen Schlüssel ebenfalls und wird nicht mehr "
                                "funktionieren."));
        QCOMPARE(QCoreApplication::translate("PresetLookup", "%n preset(s)", nullptr, 1),
                 QStringLiteral("1 Voreinstellung"));
        QCOMPARE(QCoreApplication::translate("PresetLookup", "%n preset(s)", nullptr, 5),
                 QStringLiteral("5 Voreinstellungen"));
    }
};

QTEST_GUILESS_MAIN(TranslationsTest)
#include "tst_Translations.moc"
