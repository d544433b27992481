#include "ui/settings/GlobalShortcutField.h"

#include "core/shortcuts/KeyboardShortcuts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace scrivel {

GlobalShortcutField::GlobalShortcutField(KeyboardShortcuts& shortcuts, RecorderFactory recorder,
                                         QWidget* parent)
    : QWidget(parent), m_shortcuts(shortcuts), m_makeRecorder(std::move(recorder)),
      m_text(new QLabel(this)), m_change(new QPushButton(tr("Change…"), this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    // The command is meant to be copied into the desktop's settings.
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setMinimumWidth(260);
    m_text->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_text->setAccessibleName(tr("Keyboard shortcut"));
    m_change->setAccessibleDescription(tr("Opens the desktop’s shortcut settings for Scrivel"));
    layout->addWidget(m_text, 1);
    layout->addWidget(m_change);
    connect(m_change, &QPushButton::clicked, this,
            [this] { m_shortcuts.configureInDesktop(QString()); });
    connect(&m_shortcuts, &KeyboardShortcuts::deliveryStatusChanged, this,
            &GlobalShortcutField::render);
    render();
}

void GlobalShortcutField::render() {
    const GlobalShortcutStatus status = m_shortcuts.deliveryStatus();
    const bool grabs = status.kind == GlobalShortcutStatus::Kind::keyGrabs;
    if (grabs && !m_recorder && m_makeRecorder) {
        m_recorder = m_makeRecorder(this);
        layout()->addWidget(m_recorder);
        // Made after the field was shown: shown by hand.
        m_recorder->show();
    } else if (!grabs && m_recorder) {
        delete m_recorder;
        m_recorder = nullptr;
    }
    m_text->setVisible(!grabs);
    m_text->setText(status.settingsText());
    m_change->setVisible(status.kind == GlobalShortcutStatus::Kind::desktopBound &&
                         status.canConfigure);
}

} // namespace scrivel
