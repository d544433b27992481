#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace scrivel {

// One screen as placement sees it: its whole area and the part windows may
// use (without panels and docks). Qt's global coordinates, y downwards.
struct PanelScreen {
    QRect geometry;
    QRect availableGeometry;
};

// Where the floating panel goes. Pure functions over the screens, so the
// rules are tested without a display.
namespace PanelPlacement {

// The top-left corner for a panel of the given size shown next to a point:
// 24 px left of and 12 px below the point, pulled inside the available area of
// the screen under the point (else the primary screen, the first in the list)
// with 8 px margins. When the panel is larger than that area, its right edge
// and its top stay inside. Without any screen the area is the empty rectangle
// at the origin.
QPoint originNextTo(const QPoint& point, const QSize& panelSize, const QList<PanelScreen>& screens);

// The top-left corner for a shown panel whose frame changed size: the same
// margins on the screen under its top-left corner (else the primary screen),
// so a panel that grew past the bottom edge moves up by as much, and one that
// still fits stays where it is.
QPoint originKeepingInside(const QRect& frame, const QList<PanelScreen>& screens);

// The point a centred presentation is placed next to: the horizontal middle
// of the primary screen's available area, 15 % of its height above the
// vertical middle.
QPoint centredAnchor(const QList<PanelScreen>& screens);

} // namespace PanelPlacement

} // namespace scrivel
