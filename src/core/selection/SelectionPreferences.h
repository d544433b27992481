#pragma once

#include <QObject>
#include <QString>
#include <optional>

namespace scrivel {

class SettingsStore;

// The two settings of the selection flow: start the panel with the text
// selected in the focused window (on by default), and paste the result over
// it when done (off by default). Both need a desktop that lets Scrivel read
// other windows' focus and type into them (X11); elsewhere they read as off
// and say why.
class SelectionPreferences : public QObject {
    Q_OBJECT

public:
    static QString takeSelectionKey() { return QStringLiteral("scrivel.panel.take-selection"); }
    static QString replaceSelectionKey() {
        return QStringLiteral("scrivel.panel.replace-selection");
    }

    SelectionPreferences(SettingsStore& settings, bool available, QObject* parent = nullptr);

    bool isAvailable() const { return m_available; }
    // The sentence the settings rows show instead of their switches, or
    // nothing where the flow works.
    std::optional<QString> unavailableReason() const;

    // What is stored (or the default), whatever the session.
    bool takeSelectionSetting() const;
    bool replaceSelectionSetting() const;
    // What applies now.
    bool takesSelection() const { return m_available && takeSelectionSetting(); }
    // Only a panel that took a selection has one to replace.
    bool replacesSelection() const { return takesSelection() && replaceSelectionSetting(); }

    void setTakeSelection(bool on);
    void setReplaceSelection(bool on);

Q_SIGNALS:
    void changed();

private:
    SettingsStore& m_settings;
    bool m_available;
};

} // namespace scrivel
