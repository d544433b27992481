#pragma once

#include "core/selection/SelectionDesktop.h"
#include "core/selection/SelectionRules.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>

namespace scrivel {

class FixPanelModel;
class SelectionPreferences;

// Brings the text selected in the focused window into the panel, and hands
// a copied result back to that window.
//
// openPanel() looks at who had the focus and who owns the selection. If
// they are the same application, the selection's text is asked for and the
// panel is shown once it is in the model, or after the show grace without
// it; a text that comes later still lands in a panel the user has not
// touched, until the read bound gives the owner up.
//
// With "replace the selection" on, a run whose result was copied gives the
// focus back to that window (the panel stays up meanwhile:
// handBackStarted) and, once it has it, types the window's paste keys
// (handBackFinished(true): the panel can go). A window that is gone or has
// no paste key gets nothing typed and the panel simply stays; one that does
// not take the focus within the focus bound gets nothing typed either
// (handBackFinished(false): the panel takes the focus back).
class SelectionHandoff : public QObject {
    Q_OBJECT

public:
    struct Bounds {
        std::chrono::milliseconds showGrace = SelectionRules::showGrace;
        std::chrono::milliseconds read = SelectionRules::readBound;
        std::chrono::milliseconds focus = SelectionRules::focusBound;
        std::chrono::milliseconds focusCheck = SelectionRules::focusCheckInterval;
    };

    // desktop may be null: no session where the flow works.
    SelectionHandoff(SelectionDesktop* desktop, SelectionPreferences& preferences,
                     FixPanelModel& model, Bounds bounds, QObject* parent = nullptr);
    SelectionHandoff(SelectionDesktop* desktop, SelectionPreferences& preferences,
                     FixPanelModel& model, QObject* parent = nullptr)
        : SelectionHandoff(desktop, preferences, model, Bounds{}, parent) {}
    ~SelectionHandoff() override;

    // The shortcut asks for the panel; call while the focus is still where
    // the user left it. show is called once: at once when there is nothing
    // to read, otherwise when the text is in the model or the show grace
    // has passed. A later openPanel() or panelDidClose() drops it.
    void openPanel(std::function<void()> show);
    // Call whenever the panel hides: whatever is under way for it stops.
    void panelDidClose();

    // The window whose selection the panel holds (after it was taken).
    const std::optional<DesktopWindow>& source() const { return m_source; }
    bool isReading() const { return m_readBound.isActive(); }
    bool isHandingBack() const { return m_focusWait.isActive(); }

Q_SIGNALS:
    // The selection's text is now the panel's, and the panel is shown: the
    // text is to be selected whole, so typing replaces it.
    void selectionTaken();
    // The focus is going back to the source window; the panel stays up
    // without it until handBackFinished.
    void handBackStarted();
    // pasted: the result was typed into the source window and the panel can
    // go. Otherwise the panel takes the focus back and shows its result.
    void handBackFinished(bool pasted);

private:
    void showPanel();
    void giveUpReading();
    void receive(qint64 generation, const PrimarySelection& selection);
    void onStageChanged();
    void handBack(qint64 generation);
    void checkFocus();
    void endHandBack(bool pasted);

    SelectionDesktop* m_desktop;
    SelectionPreferences& m_preferences;
    FixPanelModel& m_model;
    Bounds m_bounds;

    // Every opening and closing of the panel makes older work stale.
    qint64 m_generation = 0;
    std::function<void()> m_show;
    QTimer m_showGrace;
    Future<PrimarySelection> m_read;
    QTimer m_readBound;
    std::optional<DesktopWindow> m_candidate;
    std::optional<DesktopWindow> m_source;
    QTimer m_focusWait;
    QElapsedTimer m_focusClock;
    PasteKeys m_pasteKeys = PasteKeys::none;
};

} // namespace scrivel
