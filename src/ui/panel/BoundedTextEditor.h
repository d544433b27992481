#pragma once

#include <QPlainTextEdit>

namespace scrivel {

// A plain-text editor of a fixed number of lines: body font, a placeholder
// while empty, an optional rounded border, and optionally the end of the text
// kept in view (with the insertion point there when it has focus) each time
// the text changes.
class BoundedTextEditor : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit BoundedTextEditor(QWidget* parent = nullptr);

    int lines() const { return m_lines; }
    void setLines(int lines);
    bool showsBorder() const { return m_showsBorder; }
    void setShowsBorder(bool shows);
    bool pinsScrollToEnd() const { return m_pinsScrollToEnd; }
    void setPinsScrollToEnd(bool pins);

    // ceil(line height of the body font) × lines + 8.
    int heightForLines(int lines) const;
    // The text as the user sees it, with every line break a line feed and
    // non-breaking spaces kept (toPlainText() would turn them into spaces).
    QString exactText() const { return exactText(*document()); }
    static QString exactText(const QTextDocument& document);

protected:
    // The border is drawn on the editor itself, around the viewport and its
    // insets.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void applyMetrics();
    void schedulePinning();
    void pinToEnd();

    int m_lines = 1;
    bool m_showsBorder = false;
    bool m_pinsScrollToEnd = false;
    bool m_pinningScheduled = false;
};

} // namespace scrivel
