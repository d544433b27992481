#pragma once

#include <QWidget>

namespace scrivel {

// The floating panel's window: frameless, above other windows, kept out of
// the taskbar and window cycling, with a rounded background. The loss of
// focus is reported (deactivated). Dragging the background moves it.
class FixPanelWindow : public QWidget {
    Q_OBJECT

public:
    // composited: whether a compositor blends translucent windows; without
    // one the corners are cut by a shape mask instead of drawn transparent.
    explicit FixPanelWindow(bool composited, QWidget* parent = nullptr);

    void setContent(QWidget* content);
    // Takes the size the content asks for now. A hidden window's layouts wait
    // until it is shown; without this it would be measured at the size it had
    // when it was last on screen.
    void fitToContent();
    // Where the shown window goes when its content asks for another size:
    // given that size, the frame to take. Position and size then change in
    // one step, so the window is never seen at the new size in the old place.
    using PlacementRule = std::function<QRect(const QSize& size)>;
    void setPlacementRule(PlacementRule rule) { m_placementRule = std::move(rule); }

    static constexpr int cornerRadius = 14;

Q_SIGNALS:
    // The user started to drag the window somewhere else.
    void dragStarted();
    // The visible panel lost the keyboard focus to another window.
    void deactivated();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    bool m_composited;
    QWidget* m_content = nullptr;
    PlacementRule m_placementRule;

    QSize contentSize() const;
    void setFrame(const QRect& frame);
    QPoint m_dragOffset;
    bool m_dragging = false;
};

} // namespace scrivel
