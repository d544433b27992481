#include "ui/panel/FixPanelView.h"

#include "core/panel/FixPanelControlsState.h"
#include "core/panel/FixPanelModel.h"
#include "core/presets/PresetStore.h"
#include "ui/panel/FixPanelControlsRow.h"
#include "ui/panel/PanelTextEditor.h"
#include "ui/tray/TintedIcon.h"
#include "ui/widgets/SettingsStatusLabel.h"

#include <QAction>
#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QSpacerItem>
#include <QTextCursor>
#include <QVBoxLayout>

namespace scrivel {

namespace {
constexpr int panelWidth = 440;
constexpr int padding = 16;
constexpr int spacing = 8;
constexpr int iconTop = 5;        // level with the first line of text
constexpr int frameInterval = 16; // ms, about one display frame
// The ring drawn around the focused control: outside it, in the spacing
// between controls.
constexpr qreal focusRingWidth = 2;
constexpr qreal focusRingGap = 3;
constexpr qreal focusRingRadius = 5;
} // namespace

FixPanelView::FixPanelView(FixPanelModel& model, PresetStore& presets, QWidget* parent)
    : QWidget(parent), m_model(model), m_presets(presets), m_editor(new PanelTextEditor(this)),
      m_outcome(new SettingsStatusLabel(this)),
      m_controls(new FixPanelControlsRow(model, presets, this)), m_hint(new QLabel(this)) {
    setFixedWidth(panelWidth);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->setSpacing(spacing);

    auto* editorRow = new QHBoxLayout;
    editorRow->setSpacing(spacing);
    // The icon is decoration: painted in a space of its own rather than
    // shown by a widget, it is no unnamed image to a screen reader.
    const int iconSide = fontMetrics().height() + 2;
    m_icon = tintedSvgPixmap(QStringLiteral(":/icons/panel-bubble.svg"),
                             palette().color(QPalette::Highlight), {iconSide, iconSide},
                             devicePixelRatioF());
    // A box layout adds no spacing next to a spacer: it is part of the space.
    m_iconSpace = new QSpacerItem(iconSide + spacing, iconTop + iconSide, QSizePolicy::Fixed,
                                  QSizePolicy::Fixed);
    editorRow->addItem(m_iconSpace);
    editorRow->addWidget(m_editor, 1);
    layout->addLayout(editorRow);

    auto* divider = new QFrame(this);
    divider->setFrameShape(QFrame::HLine);
    divider->setFrameShadow(QFrame::Plain);
    divider->setForegroundRole(QPalette::Mid);
    layout->addWidget(divider);
    layout->addWidget(m_outcome);
    layout->addWidget(m_controls);

    QFont callout = m_hint->font();
    callout.setPointSizeF(callout.pointSizeF() * 0.92);
    m_hint->setFont(callout);
    m_hint->setWordWrap(true);
    QPalette secondary = m_hint->palette();
    secondary.setColor(QPalette::WindowText, secondary.color(QPalette::PlaceholderText));
    m_hint->setPalette(secondary);
    layout->addWidget(m_hint);

    connect(m_editor, &PanelTextEditor::submitted, &m_model, &FixPanelModel::run);
    connect(m_editor, &QPlainTextEdit::textChanged, this, &FixPanelView::onEditorTextChanged);

    m_frameTimer.setSingleShot(true);
    m_frameTimer.setInterval(frameInterval);
    connect(&m_frameTimer, &QTimer::timeout, this, [this] {
        if (m_textPending)
            showModelText();
    });

    auto* exit = new QAction(this);
    exit->setShortcut(Qt::Key_Escape);
    exit->setShortcutContext(Qt::WindowShortcut);
    connect(exit, &QAction::triggered, this, &FixPanelView::exitRequested);
    addAction(exit);

    connect(&m_model, &FixPanelModel::textReplaced, this, &FixPanelView::onModelTextReplaced);
    connect(&m_model, &FixPanelModel::stageChanged, this, &FixPanelView::applyState);
    connect(&m_model, &FixPanelModel::originalTextChanged, this, &FixPanelView::applyState);
    connect(&m_model, &FixPanelModel::showsShortcutHintChanged, this,
            &FixPanelView::refreshShortcutHint);
    connect(&m_model, &FixPanelModel::presentationIDChanged, this, &FixPanelView::focusText);
    connect(&m_presets, &PresetStore::presetsChanged, this, &FixPanelView::rebuildPresetKeys);
    // Whether Run is enabled also depends on the active preset.
    connect(&m_presets, &PresetStore::activePresetIDChanged, this, &FixPanelView::applyState);
    connect(&m_presets, &PresetStore::presetsChanged, this, &FixPanelView::applyState);

    // The focus ring follows the focus between the panel's controls.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* from, QWidget* to) {
        if ((from && isAncestorOf(from)) || (to && isAncestorOf(to)))
            update();
    });

    rebuildPresetKeys();
    showModelText();
    applyState();
    refreshShortcutHint();
}

void FixPanelView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawPixmap(QPoint(m_iconSpace->geometry().left(), m_editor->geometry().top() + iconTop),
                       m_icon);

    // The text field has no frame and the Run button always looks like the
    // default button, so the focus is drawn here, around whichever control
    // has it, for every control alike.
    QWidget* focused = QApplication::focusWidget();
    if (!focused || !isAncestorOf(focused) || !isActiveWindow() || !focused->isVisible())
        return;
    const QRect box(focused->mapTo(this, QPoint(0, 0)), focused->size());
    painter.setPen(QPen(palette().color(QPalette::Highlight), focusRingWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(
        QRectF(box).adjusted(-focusRingGap, -focusRingGap, focusRingGap, focusRingGap),
        focusRingRadius, focusRingRadius);
}

void FixPanelView::setShortcutHint(const std::optional<QString>& shortcutHint) {
    m_shortcutHint = shortcutHint;
    refreshShortcutHint();
}

void FixPanelView::refreshShortcutHint() {
    const std::optional<QString> hint = m_model.showsShortcutHint() ? m_shortcutHint : std::nullopt;
    m_hint->setText(hint.value_or(QString()));
    m_hint->setVisible(hint.has_value());
}

void FixPanelView::flushText() {
    if (m_textPending)
        showModelText();
}

void FixPanelView::selectAllText() {
    flushText();
    m_editor->selectAll();
}

void FixPanelView::onModelTextReplaced() {
    m_textPending = true;
    if (!m_frameTimer.isActive()) {
        showModelText();
        m_frameTimer.start();
    }
}

void FixPanelView::showModelText() {
    m_textPending = false;
    const TextSnapshot& text = m_model.textSnapshot();
    m_applyingModelText = true;
    if (!m_shownText.isEmpty() && text.extends(m_shownText) && text.size() > m_shownText.size()) {
        // A streamed reply grows at its end: add only what is new.
        QTextCursor end(m_editor->document());
        end.movePosition(QTextCursor::End);
        end.insertText(text.view().sliced(m_shownText.size()).toString());
    } else if (!(text == m_shownText)) {
        m_editor->setPlainText(text.toString());
    }
    m_applyingModelText = false;
    m_shownText = text;
    m_editor->fitLinesTo(text.view());
    applyState();
}

void FixPanelView::onEditorTextChanged() {
    if (m_applyingModelText)
        return;
    m_model.editText(m_editor->exactText());
    m_shownText = m_model.textSnapshot();
    m_editor->fitLinesTo(m_shownText.view());
    applyState();
}

void FixPanelView::applyState() {
    const FixPanelControlsState state = FixPanelControlsState::of(m_model);
    const bool returnFocus = state.editorEnabled && !m_editor->isEnabled() && isActiveWindow();
    m_editor->setDisabledWhileWorking(!state.editorEnabled);
    // Disabling the field during a run took its focus; the result is edited
    // or replaced next, so the field gets it back.
    if (returnFocus)
        m_editor->setFocus(Qt::OtherFocusReason);
    m_editor->setPinsScrollToEnd(state.pinsScrollToEnd);
    m_outcome->setVisible(state.outcome.has_value());
    if (state.outcome)
        m_outcome->setStatus(*state.outcome);
    m_controls->apply(state);
}

void FixPanelView::rebuildPresetKeys() {
    qDeleteAll(m_presetKeys);
    m_presetKeys.clear();
    const QList<Preset>& presets = m_presets.presets();
    for (int i = 0; i < std::min<qsizetype>(9, presets.size()); ++i) {
        auto* key = new QAction(this);
        // Ctrl on Linux; Qt maps it to Command on the Mac.
        key->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)));
        key->setShortcutContext(Qt::WindowShortcut);
        const QUuid id = presets[i].id;
        connect(key, &QAction::triggered, this, [this, id] { m_model.selectPreset(id); });
        addAction(key);
        m_presetKeys.append(key);
    }
}

void FixPanelView::focusText() {
    // After the window has been shown and activated.
    QTimer::singleShot(0, this, [this] {
        if (m_editor->isEnabled())
            m_editor->setFocus(Qt::OtherFocusReason);
    });
}

} // namespace scrivel
