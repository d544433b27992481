#pragma once

#include "core/settings/SettingsStatus.h"

#include <QWidget>

class QLabel;

namespace scrivel {

// A status line: the status's icon and message in its colour, read by
// assistive technologies as one element ("Error. " and the message).
class SettingsStatusLabel : public QWidget {
    Q_OBJECT

public:
    explicit SettingsStatusLabel(QWidget* parent = nullptr);

    void setStatus(const SettingsStatus& status);
    const SettingsStatus& status() const { return m_status; }

    static QString iconPath(SettingsStatus::Kind kind);
    QColor colour(SettingsStatus::Kind kind) const;

protected:
    void changeEvent(QEvent* event) override;

private:
    void render();

    SettingsStatus m_status;
    QLabel* m_icon;
    QLabel* m_text;
};

} // namespace scrivel
