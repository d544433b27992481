#pragma once

#include <QWidget>

class QPlainTextEdit;

namespace scrivel {

// The preset's instructions: a title, a multi-line editor and a caption.
class InstructionsEditor : public QWidget {
    Q_OBJECT

public:
    explicit InstructionsEditor(QWidget* parent = nullptr);

    QString text() const;
    // Replaces the text without reporting it as an edit.
    void setText(const QString& text);
    QPlainTextEdit* editor() const { return m_editor; }

Q_SIGNALS:
    void edited(const QString& text);

private:
    QPlainTextEdit* m_editor;
};

} // namespace scrivel
