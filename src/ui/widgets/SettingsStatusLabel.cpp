#include "ui/widgets/SettingsStatusLabel.h"

#include "ui/tray/TintedIcon.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

namespace scrivel {

SettingsStatusLabel::SettingsStatusLabel(QWidget* parent)
    : QWidget(parent), m_icon(new QLabel(this)), m_text(new QLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(m_icon, 0, Qt::AlignTop);
    layout->addWidget(m_text, 1);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // One element for assistive technologies: the parts carry no names.
    m_icon->setAccessibleName(QString());
    m_text->setFocusPolicy(Qt::NoFocus);
    QFont callout = font();
    callout.setPointSizeF(callout.pointSizeF() * 0.92);
    setFont(callout);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    render();
}

void SettingsStatusLabel::setStatus(const SettingsStatus& status) {
    if (status == m_status)
        return;
    m_status = status;
    render();
}

QString SettingsStatusLabel::iconPath(SettingsStatus::Kind kind) {
    switch (kind) {
    case SettingsStatus::Kind::neutral:
        return QStringLiteral(":/icons/status-neutral.svg");
    case SettingsStatus::Kind::success:
        return QStringLiteral(":/icons/status-success.svg");
    case SettingsStatus::Kind::warning:
        return QStringLiteral(":/icons/status-warning.svg");
    case SettingsStatus::Kind::error:
        return QStringLiteral(":/icons/status-error.svg");
    }
    return {};
}

QColor SettingsStatusLabel::colour(SettingsStatus::Kind kind) const {
    const bool dark = palette().color(QPalette::Window).lightnessF() < 0.5;
    switch (kind) {
    case SettingsStatus::Kind::neutral:
        return palette().color(QPalette::PlaceholderText);
    case SettingsStatus::Kind::success:
        return dark ? QColor(0x4c, 0xd9, 0x64) : QColor(0x1f, 0x8a, 0x3b);
    case SettingsStatus::Kind::warning:
        return dark ? QColor(0xff, 0x9f, 0x0a) : QColor(0xc9, 0x6a, 0x00);
    case SettingsStatus::Kind::error:
        return dark ? QColor(0xff, 0x45, 0x3a) : QColor(0xd1, 0x2f, 0x26);
    }
    return {};
}

void SettingsStatusLabel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        render();
}

void SettingsStatusLabel::render() {
    const QColor tint = colour(m_status.kind);
    const int side = QFontMetrics(font()).height();
    m_icon->setPixmap(
        tintedSvgPixmap(iconPath(m_status.kind), tint, QSize(side, side), devicePixelRatioF()));
    m_text->setText(m_status.message);
    QPalette textPalette = m_text->palette();
    textPalette.setColor(QPalette::WindowText, tint);
    m_text->setPalette(textPalette);
    setAccessibleName(m_status.accessibleName());
}

} // namespace scrivel
