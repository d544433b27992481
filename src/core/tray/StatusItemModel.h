#pragma once

#include "core/pipeline/OperationUIState.h"
#include "core/support/Future.h"
#include "core/support/Sleep.h"
#include "core/transform/UnavailableReason.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>
#include <chrono>
#include <optional>

namespace scrivel {

class Announcer;
class PresetStore;
class RewriteCoordinator;

// The status item's state: the button's look, tooltip and accessible value
// for the current run and the active preset's readiness, the menu's status
// line and preset list, and the menu-tracking rules (the shortcut is off and
// presentations wait while the menu is open). The tray view renders it.
class StatusItemModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(Look look READ look NOTIFY buttonChanged)
    Q_PROPERTY(QString toolTip READ toolTip NOTIFY buttonChanged)
    Q_PROPERTY(QString accessibleValue READ accessibleValue NOTIFY buttonChanged)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY menuChanged)

public:
    enum class Look { wand, progress, checkMark, triangle };
    Q_ENUM(Look)

    struct PresetMenuItem {
        QString title;
        // The preset's identifier in its standard textual form.
        QString representedObject;
        bool checked = false;
        friend bool operator==(const PresetMenuItem&, const PresetMenuItem&) = default;
    };

    static constexpr std::chrono::milliseconds successRestDelay{2000};
    static constexpr std::chrono::milliseconds otherRestDelay{3000};

    // Reads the active preset's readiness through the coordinator. The runs'
    // states come in through applyState. sleep stands in for the clock in
    // tests.
    StatusItemModel(RewriteCoordinator& coordinator, PresetStore& presets, Announcer& announcer,
                    Sleep sleep = timerSleep, QObject* parent = nullptr);

    Look look() const { return m_look; }
    const QString& toolTip() const { return m_toolTip; }
    const QString& accessibleValue() const { return m_accessibleValue; }
    // The notice while there is one, otherwise the run's or readiness's line.
    const QString& statusLine() const { return m_notice.isEmpty() ? m_statusLine : m_notice; }
    bool isWorking() const { return m_isWorking; }
    bool isMenuOpen() const { return m_isMenuOpen; }
    // Every preset in store order, the active one checked.
    QList<PresetMenuItem> presetMenu() const;

    // Shows one run state; a result look returns to rest after its delay
    // unless a newer state comes first.
    void applyState(const OperationUIState& state);
    // Reads the status line and the active preset's readiness again: when
    // the presets change (followed here), when an API key changes (the app
    // connects the key store), when the menu opens and after a result.
    void refreshReadiness();
    // Puts a notice in the status line, in front of every run state and
    // readiness line, until it is cleared with an empty one: a problem the
    // user has not seen in a window yet.
    void setNotice(const QString& notice);

    void menuWillOpen();
    void menuDidClose();
    // The menu's "Open Panel" and "Settings…": asked for once the menu has
    // closed (panelRequested, settingsRequested).
    void openPanel();
    void showSettings();
    // representedObject is a preset item's; anything but a UUID text is
    // ignored.
    void selectPreset(const QVariant& representedObject);

Q_SIGNALS:
    // The look, tooltip or accessible value changed.
    void buttonChanged();
    // The status line or the preset list changed: render the menu again.
    void menuChanged();
    // Show the panel centred, with the shortcut hint and no sample text.
    void panelRequested();
    // Open the main window on its settings.
    void settingsRequested();
    // The global shortcut is off while the menu is open, so that pressing it
    // there does not open the panel behind the menu.
    void shortcutEnabledChanged(bool enabled);

private:
    void presetsDidChange();
    void setButton(Look look, const QString& toolTip, const QString& accessibleValue);
    void returnToRest();
    void prewarmAndRefresh();
    void present(void (StatusItemModel::*request)());

    RewriteCoordinator& m_coordinator;
    PresetStore& m_presets;
    Announcer& m_announcer;
    Sleep m_sleep;

    Look m_look = Look::wand;
    QString m_toolTip;
    QString m_accessibleValue;
    QString m_statusLine;
    QString m_notice;
    bool m_isWorking = false;
    bool m_isMenuOpen = false;
    // The request waiting for the menu to close.
    void (StatusItemModel::*m_pendingPresentation)() = nullptr;
    SleepFuture m_feedbackReset;
    Future<std::optional<UnavailableReason>> m_readiness;
};

} // namespace scrivel
