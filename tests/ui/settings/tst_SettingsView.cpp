#include "core/selection/SelectionPreferences.h"
#include "core/settings/GeneralSettingsModel.h"
#include "core/settings/UpdaterController.h"
#include "support/InMemorySettingsStore.h"
#include "ui/settings/SettingsView.h"
#include "ui/widgets/SettingsStatusLabel.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

using namespace scrivel;

namespace {

struct FakeLoginItems : LoginItemService {
    LoginItemStatus status() const override { return current; }
    std::expected<void, LoginItemFailure> registerItem() override {
        if (failWrites)
            return std::unexpected(LoginItemFailure{QStringLiteral("/ro/autostart/s.desktop"),
                                                    LoginItemFailure::Reason::permissionDenied,
                                                    QStringLiteral("Read-only file system")});
        current = LoginItemStatus::enabled;
        return {};
    }
    std::expected<void, LoginItemFailure> unregisterItem() override {
        current = LoginItemStatus::notRegistered;
        return {};
    }
    void openSystemSettingsLoginItems() override { ++opened; }
    LoginItemStatus current = LoginItemStatus::notRegistered;
    bool failWrites = false;
    int opened = 0;
};

// Keeps its automatic-check preference in the test's variable.
struct FakeFramework : UpdateFramework {
    explicit FakeFramework(bool& automatic) : automatic(automatic) {}
    bool canCheckForUpdates() const override { return true; }
    void checkForUpdates() override {}
    bool automaticallyChecksForUpdates() const override { return automatic; }
    void setAutomaticallyChecksForUpdates(bool checks) override { automatic = checks; }
    bool& automatic;
};

bool showsText(QWidget& view, const QString& text) {
    for (QLabel* label : view.findChildren<QLabel*>())
        if (label->isVisibleTo(&view) && label->text() == text)
            return true;
    return false;
}

QPushButton* button(QWidget& view, const QString& text) {
    for (QPushButton* b : view.findChildren<QPushButton*>())
        if (b->text() == text)
            return b;
    return nullptr;
}

// The launch switch by its accessible name, the updates one by its text.
QCheckBox* checkBox(QWidget& view, const QString& name) {
    for (QCheckBox* box : view.findChildren<QCheckBox*>())
        if (box->accessibleName() == name || box->text() == name)
            return box;
    return nullptr;
}

const QString launch = QStringLiteral("Launch at login");
const QString takeSelection = QStringLiteral("Start with the selected text");
const QString replaceSelection = QStringLiteral("Replace the selection when done");
const QString updates = QStringLiteral("Updates");

} // namespace

class SettingsViewTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void refusedChangeShowsTheErrorAndTheStatusReadBack() {
        FakeLoginItems items;
        items.failWrites = true;
        UpdaterController updater{QString(), QString()};
        SettingsView view(items, updater, [](QWidget* parent) { return new QLineEdit(parent); });
        view.show();
        QCheckBox* toggle = checkBox(view, launch);
        QVERIFY(toggle->isEnabled() && !toggle->isChecked());
        QVERIFY(view.findChild<QLineEdit*>()); // the recorder's row
        auto* status = view.findChild<SettingsStatusLabel*>();
        QVERIFY(!status->isVisibleTo(&view));

        toggle->click();
        QVERIFY(!toggle->isChecked());
        QVERIFY(status->isVisibleTo(&view));
        QCOMPARE(status->accessibleName(),
                 QStringLiteral("Error. Couldn’t write the autostart entry "
                                "/ro/autostart/s.desktop: permission denied."));

        items.failWrites = false;
        toggle->click();
        QVERIFY(toggle->isChecked());
        QVERIFY(!status->isVisibleTo(&view));
    }

    void approvalReplacesTheToggleWhenShownAgain() {
        FakeLoginItems items;
        UpdaterController updater{QString(), QString()};
        SettingsView view(items, updater, {});
        view.show();
        QVERIFY(checkBox(view, launch)->isVisibleTo(&view));
        view.hide();
        items.current = LoginItemStatus::requiresApproval;
        view.show();
        QVERIFY(!checkBox(view, launch)->isVisibleTo(&view));
        QPushButton* approve = button(view, QStringLiteral("Open Autostart Settings…"));
        QVERIFY(approve && approve->isVisibleTo(&view));
        approve->click();
        QCOMPARE(items.opened, 1);
        QVERIFY(
            showsText(view, QStringLiteral("Allow Scrivel in your desktop’s autostart settings.")));
        QVERIFY(showsText(view, view.generalModel().footerText()));
    }

    void updatesSectionFollowsTheConfiguration() {
        // No configuration, or a configuration but no framework to check
        // with (as on Linux): no section, no control that would do nothing.
        FakeLoginItems items;
        UpdaterController unconfigured{QString(), QString()};
        UpdaterController frameworkless(
            QStringLiteral("https://updates.scrivel.app/appcast.xml"),
            QStringLiteral("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="));
        for (UpdaterController* updater : {&unconfigured, &frameworkless}) {
            SettingsView plain(items, *updater, {});
            plain.show();
            QVERIFY(!showsText(plain, updates));
            QVERIFY(!button(plain, QStringLiteral("Check for Updates…")));
            QVERIFY(!checkBox(plain, QStringLiteral("Check for updates automatically")));
        }

        bool automatic = true; // the framework's stored preference
        UpdaterController configured(QStringLiteral("https://updates.scrivel.app/appcast.xml"),
                                     QStringLiteral("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="),
                                     [&] { return std::make_unique<FakeFramework>(automatic); });
        configured.startIfConfigured();
        SettingsView view(items, configured, {});
        view.show();
        QVERIFY(showsText(view, updates));
        QCheckBox* box = checkBox(view, QStringLiteral("Check for updates automatically"));
        QVERIFY(box->isChecked());
        box->click();
        QVERIFY(!automatic);
        QVERIFY(button(view, QStringLiteral("Check for Updates…"))->isEnabled());
    }

    void selectionRowsOnX11() {
        FakeLoginItems items;
        UpdaterController updater{QString(), QString()};
        InMemorySettingsStore settings;
        SelectionPreferences preferences(settings, true);
        SettingsView view(items, updater, {}, &preferences);
        view.show();
        QCheckBox* take = checkBox(view, takeSelection);
        QCheckBox* replace = checkBox(view, replaceSelection);
        QVERIFY(take && replace);
        QVERIFY(take->isChecked() && !replace->isChecked()); // the defaults
        QVERIFY(replace->isEnabled());

        replace->click();
        QCOMPARE(settings.boolean(SelectionPreferences::replaceSelectionKey()), true);
        take->click();
        QCOMPARE(settings.boolean(SelectionPreferences::takeSelectionKey()), false);
        // Nothing taken, nothing to replace: the switch keeps its value but
        // cannot be used.
        QVERIFY(replace->isChecked() && !replace->isEnabled());
        QVERIFY(!preferences.replacesSelection());
    }

    void selectionRowsSayWhyElsewhere() {
        FakeLoginItems items;
        UpdaterController updater{QString(), QString()};
        InMemorySettingsStore settings;
        SelectionPreferences preferences(settings, false);
        SettingsView view(items, updater, {}, &preferences);
        view.show();
        QVERIFY(!checkBox(view, takeSelection) && !checkBox(view, replaceSelection));
        int reasons = 0;
        for (QLabel* label : view.findChildren<QLabel*>())
            reasons += label->isVisibleTo(&view) && label->text() == u"Needs an X11 session";
        QCOMPARE(reasons, 2);
        QVERIFY(showsText(view, takeSelection) && showsText(view, replaceSelection));
        QVERIFY(!preferences.takesSelection());
    }
};

QTEST_MAIN(SettingsViewTest)
#include "tst_SettingsView.moc"
