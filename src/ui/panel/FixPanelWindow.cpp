#include "ui/panel/FixPanelWindow.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <QWindow>

namespace scrivel {

FixPanelWindow::FixPanelWindow(bool composited, QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_composited(composited) {
    setAttribute(Qt::WA_TranslucentBackground, composited);
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    // Named apart from the main window, for window lists and scripts.
    setWindowTitle(QStringLiteral("Scrivel Panel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void FixPanelWindow::setContent(QWidget* content) {
    layout()->addWidget(content);
}

bool FixPanelWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate && isVisible())
        Q_EMIT deactivated();
    return QWidget::event(event);
}

void FixPanelWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor background = palette().color(QPalette::Window);
    QColor edge = palette().color(QPalette::Mid);
    if (m_composited) {
        background.setAlphaF(0.94);
        edge.setAlphaF(0.6);
    }
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.fillPath(shape, background);
    painter.setPen(QPen(edge, 1));
    painter.drawPath(shape);
}

void FixPanelWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (m_composited)
        return;
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()), cornerRadius, cornerRadius);
    setMask(QRegion(shape.toFillPolygon().toPolygon()));
}

void FixPanelWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    // The window manager moves the window where it can; otherwise we do.
    if (windowHandle() && windowHandle()->startSystemMove())
        return;
    m_dragging = true;
    m_dragOffset = event->globalPosition().toPoint() - frameGeometry().topLeft();
}

void FixPanelWindow::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging && (event->buttons() & Qt::LeftButton))
        move(event->globalPosition().toPoint() - m_dragOffset);
    else
        m_dragging = false;
}

} // namespace scrivel
