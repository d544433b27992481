#pragma once

#include <QLabel>

namespace scrivel {

// A label whose links are reached with Tab. A plain label with keyboard
// links takes the focus itself first, showing nothing, and only the next
// Tab reaches its first link; this one goes straight to the first link
// (Shift+Tab: to the last).
class LinkLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

protected:
    void focusInEvent(QFocusEvent* event) override;
};

} // namespace scrivel
