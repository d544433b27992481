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

    static constexpr int cornerRadius = 14;

Q_SIGNALS:
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
    QPoint m_dragOffset;
    bool m_dragging = false;
};

} // namespace scrivel
