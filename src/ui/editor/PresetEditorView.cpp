#include "ui/editor/PresetEditorView.h"

#include "core/editor/PresetEditorModel.h"
#include "core/providers/ProviderCatalog.h"
#include "ui/editor/InstructionsEditor.h"
#include "ui/editor/PresetConnectionView.h"
#include "ui/widgets/LinkLabel.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace scrivel {

PresetEditorView::PresetEditorView(PresetEditorModel& model, std::function<void()> onUse,
                                   QWidget* parent)
    : QWidget(parent), m_model(model), m_onUse(std::move(onUse)) {
    auto* presetBox = new QGroupBox(tr("Preset"), this);
    m_presetForm = new QFormLayout(presetBox);
    m_name = new QLineEdit(presetBox);
    m_name->setAccessibleName(tr("Name"));
    // How a preset without a name is listed.
    m_name->setPlaceholderText(Preset::untitledName());
    m_presetForm->addRow(tr("Name"), m_name);
    m_use = new QPushButton(tr("Use Preset"), presetBox);
    m_use->setToolTip(tr("Run this preset from the hotkey"));
    m_useRow = new QWidget(presetBox);
    auto* useLayout = new QHBoxLayout(m_useRow);
    useLayout->setContentsMargins(0, 0, 0, 0);
    useLayout->addWidget(m_use);
    useLayout->addStretch(1);
    m_presetForm->addRow(QString(), m_useRow);

    auto* modelBox = new QGroupBox(tr("Model"), this);
    auto* modelBoxLayout = new QVBoxLayout(modelBox);
    m_modelForm = new QFormLayout();
    modelBoxLayout->addLayout(m_modelForm);
    m_provider = new QComboBox(modelBox);
    m_provider->setAccessibleName(tr("Provider"));
    for (const PresetProviderChoice& choice : providerChoices())
        m_provider->addItem(choice.name, choice.id);
    m_modelForm->addRow(tr("Provider"), m_provider);
    m_baseURL = new QLineEdit(modelBox);
    m_baseURL->setAccessibleName(tr("Base URL"));
    m_baseURL->setPlaceholderText(QStringLiteral("http://127.0.0.1:11434/v1"));
    m_modelForm->addRow(tr("Base URL"), m_baseURL);
    m_connection = new PresetConnectionView(model, modelBox);
    m_modelForm->addRow(tr("API key"), m_connection->apiKeyRow());
    m_modelForm->addRow(tr("Models"), m_connection->modelsRow());
    m_modelPicker = new QComboBox(modelBox);
    m_modelPicker->setAccessibleName(tr("Model"));
    m_modelPicker->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_modelPicker->setMinimumContentsLength(24);
    m_modelForm->addRow(tr("Model"), m_modelPicker);
    m_test = new QPushButton(tr("Test Preset"), modelBox);
    m_test->setToolTip(tr("Checks that this preset can reach the provider."));
    auto* testButtonRow = new QWidget(modelBox);
    auto* testButtonLayout = new QHBoxLayout(testButtonRow);
    testButtonLayout->setContentsMargins(0, 0, 0, 0);
    testButtonLayout->addWidget(m_test);
    testButtonLayout->addStretch(1);
    m_modelForm->addRow(QString(), testButtonRow);
    m_testRow = new QWidget(modelBox);
    m_testProgress = new QProgressBar(m_testRow);
    m_testProgress->setRange(0, 0);
    m_testProgress->setTextVisible(false);
    m_testProgress->setMaximumWidth(80);
    m_testProgress->setMaximumHeight(10);
    m_testProgress->setAccessibleName(tr("Running test"));
    m_testProgressLabel = new QLabel(tr("Running test"), m_testRow);
    // A server that never answers would otherwise hold the test until the
    // request times out.
    m_cancelTest = new QPushButton(tr("Cancel"), m_testRow);
    m_cancelTest->setToolTip(tr("Stop the test"));
    m_testStatus = new QLabel(m_testRow);
    m_testStatus->setWordWrap(true);
    m_testStatus->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* testRowLayout = new QHBoxLayout(m_testRow);
    testRowLayout->setContentsMargins(0, 0, 0, 0);
    testRowLayout->addWidget(m_testProgress);
    testRowLayout->addWidget(m_testProgressLabel);
    testRowLayout->addWidget(m_cancelTest);
    testRowLayout->addWidget(m_testStatus, 1);
    testRowLayout->addStretch();
    m_modelForm->addRow(tr("Test"), m_testRow);
    m_footer = new LinkLabel(modelBox);
    m_footer->setWordWrap(true);
    m_footer->setForegroundRole(QPalette::PlaceholderText);
    m_footer->setTextFormat(Qt::RichText);
    m_footer->setOpenExternalLinks(true);
    modelBoxLayout->addWidget(m_footer);

    m_instructions = new InstructionsEditor(this);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(presetBox);
    layout->addWidget(modelBox);
    layout->addWidget(m_instructions, 1);

    connect(m_name, &QLineEdit::textEdited, &m_model, &PresetEditorModel::setName);
    connect(m_use, &QPushButton::clicked, this, [this] {
        if (m_onUse)
            m_onUse();
    });
    // Always enabled, so that the keys never fall through to a text field
    // (where Ctrl+U would clear it); on the active preset they do nothing.
    connect(m_provider, &QComboBox::activated, this,
            [this](int index) { m_model.setProviderID(m_provider->itemData(index).toString()); });
    connect(m_baseURL, &QLineEdit::textEdited, &m_model, &PresetEditorModel::setCustomBaseURL);
    connect(m_modelPicker, &QComboBox::activated, this,
            [this](int index) { m_model.setModel(m_modelPicker->itemData(index).toString()); });
    connect(m_test, &QPushButton::clicked, &m_model, &PresetEditorModel::runTest);
    connect(m_cancelTest, &QPushButton::clicked, &m_model, &PresetEditorModel::cancelTest);
    connect(m_instructions, &InstructionsEditor::edited, &m_model,
            &PresetEditorModel::setInstructions);
    connect(m_connection, &PresetConnectionView::modelsStatusChanged, this,
            &PresetEditorView::render);
    for (auto signal :
         {&PresetEditorModel::draftChanged, &PresetEditorModel::connectionStateChanged,
          &PresetEditorModel::apiKeyChanged, &PresetEditorModel::hasStoredCredentialChanged,
          &PresetEditorModel::testStatusChanged, &PresetEditorModel::isTestingChanged})
        connect(&m_model, signal, this, &PresetEditorView::render);
    connect(&m_model, &PresetEditorModel::availableModelsChanged, this,
            &PresetEditorView::renderModels);
    connect(&m_model, &PresetEditorModel::draftChanged, this, &PresetEditorView::renderModels);
    render();
    renderModels();
}

void PresetEditorView::setActive(bool active) {
    m_isActive = active;
    render();
}

void PresetEditorView::setOnDeviceUnavailable(const std::optional<UnavailableReason>& reason) {
    m_onDeviceUnavailable = reason;
    render();
}

QLabel* PresetEditorView::footer() const {
    return m_footer;
}

bool PresetEditorView::isBaseURLRowVisible() const {
    return m_modelForm->isRowVisible(m_baseURL);
}

bool PresetEditorView::isModelsRowVisible() const {
    return m_modelForm->isRowVisible(m_connection->modelsRow());
}

bool PresetEditorView::isAPIKeyRowVisible() const {
    return m_modelForm->isRowVisible(m_connection->apiKeyRow());
}

void PresetEditorView::render() {
    // Focus follows the test's one button: Test Preset gives way to Cancel
    // while a test runs, and Cancel back to Test Preset when it ends, rather
    // than dropping to whatever comes next.
    const bool testHadFocus = m_test->hasFocus();
    const bool cancelHadFocus = m_cancelTest->hasFocus();
    const Preset& draft = m_model.draft();
    const bool onDevice = draft.providerID == Preset::onDeviceProviderID();
    const bool custom = draft.providerID == customProviderID();

    if (m_name->text() != draft.name) {
        QSignalBlocker blocker(m_name);
        m_name->setText(draft.name);
    }
    m_instructions->setText(draft.instructions);
    m_presetForm->setRowVisible(m_useRow, !m_isActive);

    const int providerIndex = m_provider->findData(draft.providerID);
    if (providerIndex < 0) {
        // A preset from a pack may name a provider this build does not know;
        // it stays visible rather than silently turning into another one.
        QSignalBlocker blocker(m_provider);
        m_provider->addItem(draft.providerID, draft.providerID);
        m_provider->setCurrentIndex(m_provider->count() - 1);
    } else if (m_provider->currentIndex() != providerIndex) {
        QSignalBlocker blocker(m_provider);
        m_provider->setCurrentIndex(providerIndex);
    }

    m_modelForm->setRowVisible(m_baseURL, custom);
    const QString baseURL = draft.customBaseURL.value_or(QString());
    if (m_baseURL->text() != baseURL) {
        QSignalBlocker blocker(m_baseURL);
        m_baseURL->setText(baseURL);
    }
    // The on-device model needs neither a key nor a model list.
    m_modelForm->setRowVisible(m_connection->apiKeyRow(), !onDevice);
    m_modelForm->setRowVisible(m_connection->modelsRow(),
                               !onDevice && m_connection->hasModelsStatus());
    m_modelForm->setRowVisible(m_modelPicker, !onDevice);

    m_test->setEnabled(m_model.canRunTest());
    const bool testing = m_model.isTesting();
    m_testProgress->setVisible(testing);
    m_testProgressLabel->setVisible(testing);
    m_cancelTest->setVisible(testing);
    if (testing && testHadFocus)
        m_cancelTest->setFocus(Qt::OtherFocusReason);
    else if (!testing && cancelHadFocus)
        m_test->setFocus(Qt::OtherFocusReason);
    m_testStatus->setVisible(!testing);
    m_testStatus->setText(m_model.testStatus() ? m_model.testStatus()->text() : QString());
    m_modelForm->setRowVisible(m_testRow, testing || m_model.testStatus().has_value());

    QString footer =
        PresetEditorModel::modelFooter(draft.providerID, m_onDeviceUnavailable).toHtmlEscaped();
    const std::optional<QUrl> page =
        onDevice || custom ? std::nullopt : apiKeyPage(draft.providerID);
    if (page)
        footer += QStringLiteral(" <a href=\"%1\">%2</a>")
                      .arg(page->toString(QUrl::FullyEncoded).toHtmlEscaped(),
                           tr("Get an API key").toHtmlEscaped());
    m_footer->setText(footer);
    // Without a link there is nothing for the keyboard to reach.
    m_footer->setTextInteractionFlags(page ? Qt::TextBrowserInteraction
                                           : Qt::TextSelectableByMouse);
}

void PresetEditorView::renderModels() {
    const QString current = m_model.draft().model;
    QStringList models = m_model.availableModels();
    // The chosen model stays visible while the list is loading or when the
    // provider no longer lists it.
    if (!current.isEmpty() && !models.contains(current))
        models.prepend(current);
    QSignalBlocker blocker(m_modelPicker);
    m_modelPicker->clear();
    m_modelPicker->addItem(tr("Choose a model"), QString());
    for (const QString& model : models)
        m_modelPicker->addItem(model, model);
    m_modelPicker->setCurrentIndex(qMax(0, m_modelPicker->findData(current)));
}

} // namespace scrivel
