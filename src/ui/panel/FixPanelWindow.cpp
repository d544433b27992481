#include "ui/panel/FixPanelWindow.h"

#include <QAccessibleWidget>
#include <QEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <QWindow>

namespace scrivel {

namespace {

// A plain top-level widget is a "client" area to assistive technology (a
// filler to AT-SPI): the panel is a window, named by its title.
QAccessibleInterface* panelAccessible(const QString& className, QObject* object) {
    if (className == QLatin1String(FixPanelWindow::staticMetaObject.className()) &&
        object->isWidgetType())
        return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Window);
    return nullptr;
}

} // namespace

FixPanelWindow::FixPanelWindow(bool composited, QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_composited(composited) {
    static const bool accessibleAsWindow = (QAccessible::installFactory(&panelAccessible), true);
    Q_UNUSED(accessibleAsWindow);
    setAttribute(Qt::WA_TranslucentBackground, composited);
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    // Named apart from the main window, for window lists and scripts.
    setWindowTitle(tr("Scrivel Panel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    // The window takes the content's size itself (see event()): a layout
    // that fixed it would resize first, and only then could the window be
    // moved, two requests to the window manager and the grown panel seen
    // past the screen's edge in between.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
}

void FixPanelWindow::setContent(QWidget* content) {
    m_content = content;
    layout()->addWidget(content);
}

QSize FixPanelWindow::contentSize() const {
    return layout()->totalSizeHint();
}

void FixPanelWindow::setFrame(const QRect& frame) {
    // Position and size in one request; fixed afterwards, so the window
    // manager offers no resizing.
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    setGeometry(frame);
    setFixedSize(frame.size());
}

void FixPanelWindow::fitToContent() {
    // Inner layout first: the window's size is taken from the content's size
    // hint.
    if (m_content && m_content->layout())
        m_content->layout()->activate();
    layout()->activate();
    setFrame(QRect(pos(), contentSize()));
}

bool FixPanelWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate && isVisible())
        Q_EMIT deactivated();
    const bool handled = QWidget::event(event);
    // Every change of the content's size hint ends in a layout request here,
    // after the layout has measured the content again.
    if (event->type() == QEvent::LayoutRequest && isVisible()) {
        const QSize wanted = contentSize();
        if (wanted != size())
            setFrame(m_placementRule ? m_placementRule(wanted) : QRect(pos(), wanted));
    }
    return handled;
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
    Q_EMIT dragStarted();
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
