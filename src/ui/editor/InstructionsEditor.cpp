#include "ui/editor/InstructionsEditor.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace scrivel {

namespace {

// Instructions are prompts, not documents; the editor refuses to grow past
// this so a stray paste cannot turn every request into a huge one.
constexpr int maximumInstructionCharacters = 20000;

} // namespace

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

    connect(m_editor, &QPlainTextEdit::textChanged, this, [this] {
        QString text = m_editor->toPlainText();
        if (text.size() > maximumInstructionCharacters) {
            text.truncate(maximumInstructionCharacters);
            QSignalBlocker blocker(m_editor);
            m_editor->setPlainText(text);
            m_editor->moveCursor(QTextCursor::End);
        }
        Q_EMIT edited(text);
    });
}

QString InstructionsEditor::text() const {
    return m_editor->toPlainText();
}

void InstructionsEditor::setText(const QString& text) {
    if (text == m_editor->toPlainText())
        return;
    QSignalBlocker blocker(m_editor);
    m_editor->setPlainText(text);
}

} // namespace scrivel
