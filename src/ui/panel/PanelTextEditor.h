#pragma once

#include "ui/panel/BoundedTextEditor.h"

namespace scrivel {

// The panel's text field: Return without modifiers submits, Shift+Return
// breaks the line, and the height follows the text from one to eight lines.
class PanelTextEditor : public BoundedTextEditor {
    Q_OBJECT

public:
    explicit PanelTextEditor(QWidget* parent = nullptr);

    // Disabled while a run streams its reply in; the reply stays readable.
    void setDisabledWhileWorking(bool disabled);
    // Sizes the field for this text by the panel's line rule.
    void fitLinesTo(QStringView text);

Q_SIGNALS:
    // Return without modifiers: run.
    void submitted();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace scrivel
