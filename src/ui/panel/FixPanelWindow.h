#pragma once

#include <QWidget>
#include <functional>

namespace scrivel {

// The floating panel's window: frameless, above other windows, kept out of
// the taskbar and window cycling, with a rounded background. Escape and the
// loss of focus are handed to its owner. Dragging the background moves it.
class FixPanelWindow : public QWidget {
    Q_OBJECT

public:
    // composited: whether a compositor blends translucent windows; without
    // one the corners are cut by a shape mask instead of drawn transparent.
    explicit FixPanelWindow(bool composited, QWidget* parent = nullptr);

    void setContent(QWidget* content);
    void setOnResignKey(std::function<void()> onResignKey) {
        m_onResignKey = std::move(onResignKey);
    }

    static constexpr int cornerRadius = 14;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    bool m_composited;
    std::function<void()> m_onResignKey;
    QPoint m_dragOffset;
    bool m_dragging = false;
};

} // namespace scrivel
