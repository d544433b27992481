#include "ui/widgets/MessageBoxTitle.h"

#include <QGridLayout>
#include <QMessageBox>

namespace scrivel {

namespace {

// Room on both sides of a centred title for a title bar's icon and its
// minimise, maximise and close buttons.
constexpr int titleBarAllowance = 160;

} // namespace

void makeRoomForTitle(QMessageBox& box) {
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (!grid)
        return;
    // Title bars commonly set the title in bold.
    QFont font = box.font();
    font.setBold(true);
    const int width = QFontMetrics(font).horizontalAdvance(box.windowTitle()) + titleBarAllowance;
    grid->addItem(new QSpacerItem(width, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                  grid->rowCount(), 0, 1, grid->columnCount());
}

} // namespace scrivel
