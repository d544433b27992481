#include "ui/editor/PresetConnectionView.h"

#include "core/editor/PresetEditorModel.h"
#include "ui/tray/TintedIcon.h"
#include "ui/widgets/MessageBoxTitle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>

namespace scrivel {

PresetConnectionView::PresetConnectionView(PresetEditorModel& model, QWidget* parent)
    : QObject(parent), m_model(model), m_apiKeyRow(new QWidget(parent)),
      m_keyField(new QLineEdit(m_apiKeyRow)), m_visibility(new QToolButton(m_apiKeyRow)),
      m_modelsRow(new QWidget(parent)), m_modelsProgress(new QProgressBar(m_modelsRow)),
      m_modelsMessage(new QLabel(m_modelsRow)) {
    m_keyField->setAccessibleName(tr("API key"));
    m_keyField->setEchoMode(QLineEdit::Password);
    m_keyField->setClearButtonEnabled(false);
    m_visibility->setAutoRaise(true);
    m_visibility->setCursor(Qt::ArrowCursor);

    auto* keyLayout = new QHBoxLayout(m_apiKeyRow);
    keyLayout->setContentsMargins(0, 0, 0, 0);
    keyLayout->addWidget(m_keyField, 1);
    keyLayout->addWidget(m_visibility);

    m_modelsProgress->setRange(0, 0);
    m_modelsProgress->setTextVisible(false);
    m_modelsProgress->setMaximumWidth(120);
    m_modelsProgress->setMaximumHeight(10);
    m_modelsProgress->setAccessibleName(tr("Loading models"));
    m_modelsMessage->setWordWrap(true);
    m_modelsMessage->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* modelsLayout = new QHBoxLayout(m_modelsRow);
    modelsLayout->setContentsMargins(0, 0, 0, 0);
    modelsLayout->addWidget(m_modelsProgress);
    modelsLayout->addWidget(m_modelsMessage, 1);

    connect(m_keyField, &QLineEdit::textEdited, this,
            [this](const QString& text) { m_model.setAPIKey(text); });
    connect(m_visibility, &QToolButton::clicked, this, [this] { setKeyVisible(!m_isKeyVisible); });
    connect(&m_model, &PresetEditorModel::keyRemovalConfirmationRequested, this,
            &PresetConnectionView::askToRemoveKey, Qt::QueuedConnection);
    for (auto signal : {&PresetEditorModel::apiKeyChanged, &PresetEditorModel::draftChanged,
                        &PresetEditorModel::connectionStateChanged})
        connect(&m_model, signal, this, &PresetConnectionView::render);
    render();
}

void PresetConnectionView::setKeyVisible(bool visible) {
    m_isKeyVisible = visible;
    render();
}

bool PresetConnectionView::hasModelsStatus() const {
    const auto kind = m_model.connectionState().kind();
    return kind == PresetConnectionState::Kind::connecting ||
           kind == PresetConnectionState::Kind::failed;
}

void PresetConnectionView::render() {
    if (m_keyField->text() != m_model.apiKey()) {
        QSignalBlocker blocker(m_keyField);
        m_keyField->setText(m_model.apiKey());
    }
    m_keyField->setPlaceholderText(
        PresetEditorModel::apiKeyPlaceholder(m_model.draft().providerID));
    // Only the presentation changes: the same field keeps its text and cursor.
    m_keyField->setEchoMode(m_isKeyVisible ? QLineEdit::Normal : QLineEdit::Password);
    const QString label = m_isKeyVisible ? tr("Hide API key") : tr("Show API key");
    m_visibility->setIcon(tintedSvgIcon(m_isKeyVisible ? QStringLiteral(":/icons/eye-slash.svg")
                                                       : QStringLiteral(":/icons/eye.svg"),
                                        m_visibility->palette().color(QPalette::ButtonText)));
    m_visibility->setToolTip(label);
    m_visibility->setAccessibleName(label);

    const PresetConnectionState& state = m_model.connectionState();
    const bool wasShowing = !m_modelsRow->isHidden();
    m_modelsProgress->setVisible(state.kind() == PresetConnectionState::Kind::connecting);
    m_modelsMessage->setVisible(state.kind() == PresetConnectionState::Kind::failed);
    m_modelsMessage->setText(state.message());
    if (wasShowing != hasModelsStatus())
        Q_EMIT modelsStatusChanged();
}

void PresetConnectionView::askToRemoveKey() {
    if (!m_model.isAwaitingKeyRemovalConfirmation())
        return;
    QMessageBox box(QMessageBox::Warning, tr("Remove API Key"),
                    PresetEditorModel::keyRemovalTitle(), QMessageBox::NoButton,
                    m_apiKeyRow->window());
    box.setInformativeText(PresetEditorModel::keyRemovalMessage(m_model.presetsSharingKey()));
    QPushButton* remove = box.addButton(tr("Remove Key"), QMessageBox::DestructiveRole);
    QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    makeRoomForTitle(box);
    box.exec();
    if (box.clickedButton() == remove)
        m_model.confirmKeyRemoval();
    else
        m_model.cancelKeyRemoval();
}

} // namespace scrivel
