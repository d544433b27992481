#include "ui/panel/BusyIndicator.h"

#include <QPainter>

namespace scrivel {

BusyIndicator::BusyIndicator(QWidget* parent) : QWidget(parent) {
    m_timer.setInterval(33);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_angle = (m_angle + 30) % 360;
        update();
    });
    setAccessibleName(tr("Running…"));
}

QSize BusyIndicator::sizeHint() const {
    const int side = fontMetrics().height();
    return {side, side};
}

void BusyIndicator::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int side = std::min(width(), height()) - 4;
    const QRectF circle((width() - side) / 2.0, (height() - side) / 2.0, side, side);
    QColor track = palette().color(QPalette::WindowText);
    track.setAlphaF(0.15);
    painter.setPen(QPen(track, 2));
    painter.drawEllipse(circle);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, -m_angle * 16, 100 * 16);
}

void BusyIndicator::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_timer.start();
}

void BusyIndicator::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_timer.stop();
}

} // namespace scrivel
