#pragma once

#include "core/panel/FixPanelModel.h"
#include "ui/panel/FixPanelView.h"
#include "ui/panel/FixPanelWindow.h"

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <functional>
#include <optional>

namespace scrivel {

class Clipboard;
class FixPanelView;
class PresetStore;
class RewriteCoordinator;

// How the panel's window fits the desktop it runs on.
struct PanelWindowTraits {
    // Whether translucent windows are blended by a compositor.
    bool composited = false;
    // Platform hints for the new window (every desktop, out of the taskbar),
    // applied before it is first shown.
    std::function<void(QWidget*)> prepareWindow;
    // Whether the toggle opens the panel next to the pointer; where the app
    // cannot know the pointer's place (Wayland) it opens centred.
    bool opensAtPointer = true;
};

// Owns the floating panel and its model: creates the window on first use,
// places it next to the pointer or near the top middle of the screen, and
// hides it (emptying it) on Escape, on the loss of focus, or on the toggle.
// A run in progress keeps the panel up against Escape and the loss of focus.
class FixPanelController : public QObject {
    Q_OBJECT

public:
    FixPanelController(PresetStore& presets, RewriteCoordinator& coordinator, Clipboard& clipboard,
                       PanelWindowTraits traits = {}, QObject* parent = nullptr);
    ~FixPanelController() override;

    FixPanelModel& model() { return m_model; }
    // The window, once it has been created.
    FixPanelWindow* panel() const { return m_panel; }
    FixPanelView* view() const { return m_view; }
    bool isPanelVisible() const;

    // The hint's sentence about the global shortcut, or nothing; set again
    // whenever the shortcut or the way it is delivered changes.
    void setShortcutHint(const std::optional<QString>& shortcutHint);

    void present(const QPoint& globalPoint);
    void presentCentered(const std::optional<QString>& sampleText);
    void dismiss();
    // The global shortcut: hide a visible panel whatever it is doing (a run is
    // cancelled), otherwise show it at the pointer.
    void toggle();
    // Where the shortcut shows the panel: the pointer, or the middle of the
    // screen where the pointer cannot be known (Wayland).
    QPoint shortcutAnchor() const;

    // The text was put in from another window's selection: it is shown all
    // selected, so typing or pasting replaces it.
    void selectAllText();
    // While the focus goes back to the window a result is pasted into, the
    // panel stays up without it.
    void beginHandBack();
    // pasted: the panel hides and empties as a dismissal does. Otherwise it
    // takes the focus back and keeps showing its result.
    void endHandBack(bool pasted);
    bool isHandingBack() const { return m_handingBack; }

Q_SIGNALS:
    void panelShown();
    void panelHidden();

private:
    void ensurePanel();
    void panelDeactivated();
    // A shown panel that grows (a long reply streaming in) moves up rather
    // than past the bottom of the screen.
    QRect frameKeptOnScreen(const QSize& size);
    void resetAndHide();

    PresetStore& m_presets;
    FixPanelModel m_model;
    PanelWindowTraits m_traits;
    std::optional<QString> m_shortcutHint;
    QPointer<FixPanelWindow> m_panel;
    // The top-left corner last given to the shown panel; none after a drag.
    std::optional<QPoint> m_origin;
    FixPanelView* m_view = nullptr;
    bool m_handingBack = false;
};

} // namespace scrivel
