#include "core/panel/PanelPlacement.h"

#include <algorithm>

namespace scrivel::PanelPlacement {

namespace {

constexpr int horizontalOffset = 24;
constexpr int verticalOffset = 12;
constexpr int margin = 8;

// QRect's right() and bottom() are the last pixel inside; the edges here are
// the first pixel outside, as in the geometry of a window frame.
int rightEdge(const QRect& r) {
    return r.x() + r.width();
}
int bottomEdge(const QRect& r) {
    return r.y() + r.height();
}

QRect availableAreaFor(const QPoint& point, const QList<PanelScreen>& screens) {
    for (const PanelScreen& screen : screens) {
        if (screen.geometry.contains(point))
            return screen.availableGeometry;
    }
    if (!screens.isEmpty())
        return screens.first().availableGeometry;
    return QRect(0, 0, 0, 0);
}

QPoint clampedInto(const QRect& area, QPoint origin, const QSize& panelSize) {
    int x = origin.x();
    int y = origin.y();
    x = std::max(x, area.x() + margin);
    x = std::min(x, rightEdge(area) - panelSize.width() - margin);
    // Clamp the bottom first, so a panel taller than the area keeps its top
    // (and the text field in it) on screen.
    y = std::min(y, bottomEdge(area) - panelSize.height() - margin);
    y = std::max(y, area.y() + margin);
    return {x, y};
}

} // namespace

QPoint originNextTo(const QPoint& point, const QSize& panelSize,
                    const QList<PanelScreen>& screens) {
    const QPoint proposed(point.x() - horizontalOffset, point.y() + verticalOffset);
    return clampedInto(availableAreaFor(point, screens), proposed, panelSize);
}

QPoint originKeepingInside(const QRect& frame, const QList<PanelScreen>& screens) {
    return clampedInto(availableAreaFor(frame.topLeft(), screens), frame.topLeft(), frame.size());
}

QPoint centredAnchor(const QList<PanelScreen>& screens) {
    const QRect area = screens.isEmpty() ? QRect(0, 0, 0, 0) : screens.first().availableGeometry;
    const double middleX = area.x() + area.width() / 2.0;
    const double middleY = area.y() + area.height() / 2.0;
    return QPoint(qRound(middleX), qRound(middleY - 0.15 * area.height()));
}

} // namespace scrivel::PanelPlacement
