#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace scrivel {

// Our icons are single-colour SVG shapes; they take the colour of their
// context (the status colour, the accent, the tray's text colour) when drawn.
QPixmap tintedSvgPixmap(const QString& resourcePath, const QColor& colour, const QSize& size,
                        qreal devicePixelRatio);

// An icon that renders the SVG in one colour at whatever size it is asked for.
QIcon tintedSvgIcon(const QString& resourcePath, const QColor& colour);

} // namespace scrivel
