#include "ui/editor/PresetSidebarRowDelegate.h"

#include "ui/editor/PresetSidebar.h"
#include "ui/tray/TintedIcon.h"

#include <QApplication>
#include <QPainter>

namespace scrivel {

namespace {

using RowKind = PresetSidebarList::RowKind;

RowKind kindOf(const QModelIndex& index) {
    return RowKind(index.data(PresetSidebarList::kindRole).toInt());
}

QFont smallerFont(const QFont& font) {
    QFont smaller = font;
    smaller.setPointSizeF(font.pointSizeF() * 0.85);
    return smaller;
}

constexpr int horizontalPadding = 10;
constexpr int iconSize = 16;

} // namespace

QSize PresetSidebarRowDelegate::sizeHint(const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const {
    const QFontMetrics main(option.font);
    const QFontMetrics small(smallerFont(option.font));
    switch (kindOf(index)) {
    case RowKind::heading:
        return {100, small.height() + 12};
    case RowKind::spacer:
        return {100, 10};
    case RowKind::settings:
        return {100, main.height() + 12};
    case RowKind::preset:
        break;
    }
    return {100, main.height() + small.height() + 14};
}

void PresetSidebarRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const {
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    background.icon = QIcon();
    // The active row's check state is for screen readers; the row shows its
    // own check mark.
    background.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    const RowKind kind = kindOf(index);
    if (kind == RowKind::spacer)
        return;
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();
    if (kind != RowKind::heading)
        style->drawControl(QStyle::CE_ItemViewItem, &background, painter, widget);

    const bool selected = option.state & QStyle::State_Selected;
    const QPalette& palette = option.palette;
    const QColor primary =
        selected ? palette.color(QPalette::HighlightedText) : palette.color(QPalette::Text);
    const QColor secondary = selected ? palette.color(QPalette::HighlightedText)
                                      : palette.color(QPalette::PlaceholderText);
    const QRect area = option.rect.adjusted(horizontalPadding, 0, -horizontalPadding, 0);

    painter->save();
    const QString name = index.data(Qt::DisplayRole).toString();
    if (kind == RowKind::heading) {
        QFont font = smallerFont(option.font);
        font.setBold(true);
        painter->setFont(font);
        painter->setPen(palette.color(QPalette::PlaceholderText));
        painter->drawText(area.adjusted(0, 0, 0, -3), Qt::AlignLeft | Qt::AlignBottom, name);
    } else if (kind == RowKind::settings) {
        const QRect iconRect(area.left(), area.center().y() - iconSize / 2, iconSize, iconSize);
        tintedSvgIcon(QStringLiteral(":/icons/gear.svg"), primary).paint(painter, iconRect);
        painter->setFont(option.font);
        painter->setPen(primary);
        painter->drawText(area.adjusted(iconSize + 8, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                          name);
    } else {
        const bool active = index.data(PresetSidebarList::activeRole).toBool();
        QRect textArea = area;
        if (active) {
            const QRect iconRect(area.right() - iconSize, area.center().y() - iconSize / 2,
                                 iconSize, iconSize);
            const QColor accent = selected ? primary : palette.color(QPalette::Highlight);
            tintedSvgIcon(QStringLiteral(":/icons/status-success.svg"), accent)
                .paint(painter, iconRect);
            textArea.setRight(iconRect.left() - 6);
        }
        const QFontMetrics main(option.font);
        const QFont smallFont = smallerFont(option.font);
        const QFontMetrics small(smallFont);
        const int top = area.top() + (area.height() - main.height() - small.height() - 2) / 2;
        painter->setFont(option.font);
        painter->setPen(primary);
        painter->drawText(QRect(textArea.left(), top, textArea.width(), main.height()),
                          Qt::AlignLeft | Qt::AlignVCenter,
                          main.elidedText(name, Qt::ElideRight, textArea.width()));
        painter->setFont(smallFont);
        painter->setPen(secondary);
        const QString subtitle = index.data(PresetSidebarList::subtitleRole).toString();
        painter->drawText(
            QRect(textArea.left(), top + main.height() + 2, textArea.width(), small.height()),
            Qt::AlignLeft | Qt::AlignVCenter,
            small.elidedText(subtitle, Qt::ElideRight, textArea.width()));
    }
    painter->restore();
}

} // namespace scrivel
