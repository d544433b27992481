#include "ui/panel/PanelTextEditor.h"

#include "core/panel/PanelTextLines.h"

#include <QKeyEvent>

namespace scrivel {

PanelTextEditor::PanelTextEditor(QWidget* parent) : BoundedTextEditor(parent) {
    setPlaceholderText(tr("Paste or type text"));
    setAccessibleName(tr("Text"));
    // A disabled field would grey the reply out while it streams in.
    QPalette readable = palette();
    for (QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText})
        readable.setColor(QPalette::Disabled, role, readable.color(QPalette::Active, role));
    setPalette(readable);
    setLines(PanelTextLines::lineCount({}));
}

void PanelTextEditor::setDisabledWhileWorking(bool disabled) {
    setEnabled(!disabled);
}

void PanelTextEditor::fitLinesTo(QStringView text) {
    setLines(PanelTextLines::lineCount(text));
}

void PanelTextEditor::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isReturn) {
        BoundedTextEditor::keyPressEvent(event);
        return;
    }
    // The keypad's Enter carries the keypad flag; it is still a plain Enter.
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (modifiers == Qt::NoModifier) {
        event->accept();
        Q_EMIT submitted();
        return;
    }
    if (modifiers == Qt::ShiftModifier) {
        // A real line feed, not the editor's own line separator character.
        insertPlainText(QStringLiteral("\n"));
        event->accept();
        return;
    }
    // Other modifiers: not a submit; the editor does with it what it does.
    BoundedTextEditor::keyPressEvent(event);
}

} // namespace scrivel
