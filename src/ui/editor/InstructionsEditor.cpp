#include "ui/editor/InstructionsEditor.h"

#include "ui/panel/BoundedTextEditor.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace scrivel {

InstructionsEditor::InstructionsEditor(QWidget* parent)
    : QWidget(parent), m_editor(new QPlainTextEdit(this)) {
    auto* title = new QLabel(tr("Instructions"), this);
    QFont titleFont = title->font();
    titleFont.setBold(true);
    title->setFont(titleFont);

    m_editor->setAccessibleName(tr("Instructions"));
    m_editor->setTabChangesFocus(true);
    m_editor->setMinimumHeight(120);

    auto* caption =
        new QLabel(tr("Describe the transform. Panel text is sent with these instructions."), this);
    caption->setWordWrap(true);
    caption->setForegroundRole(QPalette::PlaceholderText);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(title);
    layout->addWidget(m_editor, 1);
    layout->addWidget(caption);

    // The text goes to the preset exactly as typed: no length cut (nothing
    // down the line limits instructions) and non-breaking spaces kept.
    connect(m_editor, &QPlainTextEdit::textChanged, this, [this] { Q_EMIT edited(text()); });
}

QString InstructionsEditor::text() const {
    return BoundedTextEditor::exactText(*m_editor->document());
}

void InstructionsEditor::setText(const QString& text) {
    if (text == this->text())
        return;
    QSignalBlocker blocker(m_editor);
    m_editor->setPlainText(text);
}

} // namespace scrivel
