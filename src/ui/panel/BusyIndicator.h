#pragma once

#include <QTimer>
#include <QWidget>

namespace scrivel {

// A small spinning arc: progress without a known end.
class BusyIndicator : public QWidget {
    Q_OBJECT

public:
    explicit BusyIndicator(QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QTimer m_timer;
    int m_angle = 0;
};

} // namespace scrivel
