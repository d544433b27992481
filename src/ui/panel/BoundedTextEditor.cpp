#include "ui/panel/BoundedTextEditor.h"

#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>
#include <cmath>

namespace scrivel {

namespace {
constexpr int verticalInset = 4;
constexpr int borderedHorizontalInset = 5;
} // namespace

BoundedTextEditor::BoundedTextEditor(QWidget* parent) : QPlainTextEdit(parent) {
    setFrameShape(QFrame::NoFrame);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setTabChangesFocus(true);
    document()->setDocumentMargin(0);
    // The editor's own background takes the container's colour. (Leaving it
    // unpainted does not work: the text view paints opaquely and would leave
    // stale pixels behind.)
    QPalette blended = palette();
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        blended.setColor(group, QPalette::Base, blended.color(group, QPalette::Window));
    setPalette(blended);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The line count sizes the field from the text's length and line breaks,
    // not from how it wraps: wrapped lines can make the text taller than the
    // field at any size, and then it scrolls with a bar that says so.
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (m_pinsScrollToEnd)
            schedulePinning();
    });
    applyMetrics();
}

void BoundedTextEditor::setLines(int lines) {
    if (lines == m_lines)
        return;
    m_lines = lines;
    applyMetrics();
}

void BoundedTextEditor::setShowsBorder(bool shows) {
    if (shows == m_showsBorder)
        return;
    m_showsBorder = shows;
    applyMetrics();
    update();
}

void BoundedTextEditor::setPinsScrollToEnd(bool pins) {
    if (pins == m_pinsScrollToEnd)
        return;
    m_pinsScrollToEnd = pins;
    if (pins)
        schedulePinning();
}

int BoundedTextEditor::heightForLines(int lines) const {
    const int lineHeight = int(std::ceil(QFontMetricsF(font()).lineSpacing()));
    return lineHeight * lines + 2 * verticalInset;
}

QString BoundedTextEditor::exactText(const QTextDocument& document) {
    QString text = document.toRawText();
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    return text;
}

void BoundedTextEditor::applyMetrics() {
    const int horizontal = m_showsBorder ? borderedHorizontalInset : 0;
    // The text view counts a line as visible only with one pixel to spare
    // below it; that pixel comes out of the bottom inset, so the height stays
    // lines × line height + 8 and the last line is not scrolled away.
    setViewportMargins(horizontal, verticalInset, horizontal, verticalInset - 1);
    setFixedHeight(heightForLines(m_lines));
}

void BoundedTextEditor::schedulePinning() {
    // After the editor has laid out the new text; passes are not stacked.
    if (m_pinningScheduled)
        return;
    m_pinningScheduled = true;
    QTimer::singleShot(0, this, [this] {
        m_pinningScheduled = false;
        if (m_pinsScrollToEnd)
            pinToEnd();
    });
}

void BoundedTextEditor::pinToEnd() {
    if (hasFocus()) {
        QTextCursor cursor = textCursor();
        cursor.movePosition(QTextCursor::End);
        setTextCursor(cursor);
    }
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void BoundedTextEditor::paintEvent(QPaintEvent* event) {
    QPlainTextEdit::paintEvent(event);
    // Scrolled to a wrapped line inside a paragraph, the text view places it
    // below the line above without that line's leading, so the last pixel
    // row of the scrolled-away line shows above the first one: cover it.
    const QTextBlock block = firstVisibleBlock();
    if (!block.isValid() || !block.layout())
        return;
    const qreal blockTop = blockBoundingGeometry(block).translated(contentOffset()).top();
    const QTextLayout& layout = *block.layout();
    for (int i = 0; i < layout.lineCount(); ++i) {
        const int lineTop = qRound(blockTop + layout.lineAt(i).y());
        if (lineTop < 0)
            continue;
        if (lineTop > 0)
            QPainter(viewport()).fillRect(0, 0, viewport()->width(), lineTop, palette().base());
        return;
    }
}

bool BoundedTextEditor::event(QEvent* event) {
    const bool handled = QPlainTextEdit::event(event);
    if (event->type() == QEvent::Paint && m_showsBorder) {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Mid), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    }
    return handled;
}

} // namespace scrivel
