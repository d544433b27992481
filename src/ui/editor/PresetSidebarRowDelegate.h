#pragma once

#include <QStyledItemDelegate>

namespace scrivel {

// Draws the sidebar's rows: the section heading, a preset's name over its
// provider line with the active check mark, and the Settings entry.
class PresetSidebarRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace scrivel
