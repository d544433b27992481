#include "ui/tray/TintedIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

namespace scrivel {

QPixmap tintedSvgPixmap(const QString& resourcePath, const QColor& colour, const QSize& size,
                        qreal devicePixelRatio) {
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(resourcePath);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(0, 0), QSizeF(size)), colour);
    return pixmap;
}

namespace {

class TintedSvgEngine : public QIconEngine {
public:
    TintedSvgEngine(QString path, QColor colour) : m_path(std::move(path)), m_colour(colour) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const qreal dpr = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        QColor colour = m_colour;
        if (mode == QIcon::Disabled)
            colour.setAlphaF(colour.alphaF() * 0.4);
        painter->drawPixmap(rect, tintedSvgPixmap(m_path, colour, rect.size(), dpr));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new TintedSvgEngine(m_path, m_colour); }

private:
    QString m_path;
    QColor m_colour;
};

} // namespace

QIcon tintedSvgIcon(const QString& resourcePath, const QColor& colour) {
    return QIcon(new TintedSvgEngine(resourcePath, colour));
}

} // namespace scrivel
