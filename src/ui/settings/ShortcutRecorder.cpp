#include "ui/settings/ShortcutRecorder.h"

#include "core/shortcuts/KeyboardShortcuts.h"
#include "ui/tray/TintedIcon.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>

namespace scrivel {

ShortcutRecorder::ShortcutRecorder(KeyboardShortcuts& shortcuts, const ShortcutName& name,
                                   ShortcutRecorderModel::MenuItemLookup menuItemUsing,
                                   QWidget* parent)
    : QLineEdit(parent),
      m_model(shortcuts, name, std::move(menuItemUsing),
              [&shortcuts](const Shortcut& s) { return shortcuts.isTakenByAnotherClient(s); }),
      m_clearAction(new QAction(this)) {
    setReadOnly(true);
    setAlignment(Qt::AlignCenter);
    setContextMenuPolicy(Qt::NoContextMenu);
    setAccessibleName(tr("Keyboard shortcut"));
    m_clearAction->setToolTip(tr("Remove Shortcut"));
    m_clearAction->setText(tr("Remove Shortcut"));
    addAction(m_clearAction, QLineEdit::TrailingPosition);
    connect(m_clearAction, &QAction::triggered, this, [this] { m_model.clear(); });
    connect(&m_model, &ShortcutRecorderModel::shortcutChanged, this, &ShortcutRecorder::render);
    connect(&m_model, &ShortcutRecorderModel::recordingChanged, this, [this](bool recording) {
        if (recording)
            qApp->installEventFilter(this);
        else
            qApp->removeEventFilter(this);
        render();
    });
    render();
}

QSize ShortcutRecorder::sizeHint() const {
    QSize size = QLineEdit::sizeHint();
    // Wide enough for the longest shortcut, with the modifiers in the words
    // the recorder shows them ("Strg+Alt+Umschalt+Meta+…" in German).
    const QString widest =
        QKeySequence(Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::META | Qt::Key_PageDown)
            .toString(QKeySequence::NativeText);
    const int width = std::max({fontMetrics().horizontalAdvance(widest),
                                fontMetrics().horizontalAdvance(tr("Press Shortcut…")),
                                fontMetrics().horizontalAdvance(tr("Record Shortcut"))});
    size.setWidth(width + 2 * size.height());
    return size;
}

void ShortcutRecorder::render() {
    const bool recording = m_model.isRecording();
    const QString text = m_model.text();
    // A centred line edit hides its placeholder while focused, so the prompt
    // is the text itself, in the placeholder's colour.
    m_restyling = true;
    setPalette(QPalette());
    if (recording) {
        QPalette prompt = palette();
        prompt.setColor(QPalette::Text, prompt.color(QPalette::PlaceholderText));
        setPalette(prompt);
    }
    m_restyling = false;
    setText(recording ? tr("Press Shortcut…") : text);
    setPlaceholderText(tr("Record Shortcut"));
    m_clearAction->setVisible(!recording && !text.isEmpty());
    m_clearAction->setIcon(tintedSvgIcon(QStringLiteral(":/icons/shortcut-clear.svg"),
                                         palette().color(QPalette::PlaceholderText)));
}

bool ShortcutRecorder::event(QEvent* event) {
    if (m_model.isRecording()) {
        // Every combination is ours to record: no menu shortcut of the
        // window, no Tab focus change before the model has seen the key.
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        if (event->type() == QEvent::KeyPress) {
            handle(static_cast<QKeyEvent*>(event));
            return true;
        }
    }
    return QLineEdit::event(event);
}

bool ShortcutRecorder::eventFilter(QObject* watched, QEvent* event) {
    // A click anywhere else ends recording, even on something that takes no
    // focus.
    if (m_model.isRecording() && event->type() == QEvent::MouseButtonRelease &&
        watched->isWidgetType()) {
        auto* widget = static_cast<QWidget*>(watched);
        if (widget != this && !isAncestorOf(widget))
            m_model.stopRecording();
    }
    return QLineEdit::eventFilter(watched, event);
}

void ShortcutRecorder::keyPressEvent(QKeyEvent* event) {
    if (m_model.isRecording()) {
        handle(event);
        return;
    }
    // Not recording but focused: Space or Return starts, as for a button.
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return) {
        m_model.startRecording();
        return;
    }
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        m_model.clear();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void ShortcutRecorder::handle(QKeyEvent* event) {
    using Outcome = ShortcutRecorderModel::Outcome;
    switch (m_model.handleKeyPress(event->key(), event->modifiers())) {
    case Outcome::cancelled:
        clearFocus();
        break;
    case Outcome::focusMovedOn:
        focusNextChild();
        break;
    case Outcome::needsModifier:
        QApplication::beep();
        break;
    case Outcome::usedByMenuItem:
        showMenuItemAlert(m_model.menuItemTitle());
        break;
    case Outcome::usedBySystem:
        showSystemAlert(*m_model.pending());
        break;
    case Outcome::ignored:
    case Outcome::cleared:
    case Outcome::stored:
        break;
    }
}

void ShortcutRecorder::showMenuItemAlert(const QString& title) {
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Shortcut in Use"),
                                tr("This shortcut can’t be used because the “%1” menu item "
                                   "already uses it.")
                                    .arg(title),
                                QMessageBox::Ok, window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->open();
}

void ShortcutRecorder::showSystemAlert(const Shortcut& shortcut) {
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Shortcut in Use"),
                                tr("This shortcut is already used by another app or by the "
                                   "system."),
                                QMessageBox::NoButton, window());
    box->setInformativeText(
        tr("Most system shortcuts can be changed in your desktop’s keyboard settings."));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    QPushButton* ok = box->addButton(tr("OK"), QMessageBox::RejectRole);
    QPushButton* useAnyway = box->addButton(tr("Use Anyway"), QMessageBox::AcceptRole);
    box->setDefaultButton(ok);
    connect(box, &QMessageBox::buttonClicked, this, [this, useAnyway, shortcut](auto* button) {
        if (button == useAnyway)
            m_model.forceStore(shortcut);
    });
    box->open();
}

void ShortcutRecorder::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    // Tabbing in records at once; focus coming back from our own alert or
    // another window leaves the field as it is. A click records from
    // mousePressEvent, and only on the field: a click on its clear button
    // also brings the focus here, and must clear, not record.
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        m_model.startRecording();
}

void ShortcutRecorder::focusOutEvent(QFocusEvent* event) {
    m_model.stopRecording();
    QLineEdit::focusOutEvent(event);
}

void ShortcutRecorder::mousePressEvent(QMouseEvent* event) {
    QLineEdit::mousePressEvent(event);
    if (hasFocus())
        m_model.startRecording();
}

void ShortcutRecorder::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_restyling)
        render();
}

} // namespace scrivel
