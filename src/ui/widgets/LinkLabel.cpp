#include "ui/widgets/LinkLabel.h"

#include <QFocusEvent>

namespace scrivel {

void LinkLabel::focusInEvent(QFocusEvent* event) {
    QLabel::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason)
        focusNextPrevChild(true);
    else if (event->reason() == Qt::BacktabFocusReason)
        focusNextPrevChild(false);
}

} // namespace scrivel
