#pragma once

#include "ui/panel/BoundedTextEditor.h"

#include <functional>

namespace scrivel {

// The panel's text field: Return without modifiers submits, Shift+Return
// breaks the line, and the height follows the text from one to eight lines.
class PanelTextEditor : public BoundedTextEditor {
    Q_OBJECT

public:
    explicit PanelTextEditor(QWidget* parent = nullptr);

    void setOnSubmit(std::function<void()> onSubmit) { m_onSubmit = std::move(onSubmit); }
    // Disabled while a run streams its reply in; the reply stays readable.
    void setDisabledWhileWorking(bool disabled);
    // Sizes the field for this text by the panel's line rule.
    void fitLinesTo(QStringView text);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::function<void()> m_onSubmit;
};

} // namespace scrivel
