#include "ui/settings/SettingsView.h"

#include "core/selection/SelectionPreferences.h"
#include "core/settings/GeneralSettingsModel.h"
#include "core/settings/UpdaterController.h"
#include "ui/widgets/SettingsStatusLabel.h"

#include <QCheckBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace scrivel {

namespace {

QLabel* secondaryLabel(const QString& text, QWidget* parent, bool small = false) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setForegroundRole(QPalette::PlaceholderText);
    if (small) {
        QFont font = label->font();
        font.setPointSizeF(font.pointSizeF() * 0.92);
        label->setFont(font);
    }
    return label;
}

QLabel* sectionHeader(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    label->setAccessibleName(text);
    return label;
}

// A rounded box holding a section's rows, like the grouped forms of
// settings windows.
QFrame* groupBox(QWidget* parent) {
    auto* box = new QFrame(parent);
    box->setObjectName(QStringLiteral("settingsGroup"));
    box->setStyleSheet(
        QStringLiteral("QFrame#settingsGroup { background: palette(base); "
                       "border: 1px solid palette(midlight); border-radius: 8px; }"));
    return box;
}

// A section: its bold header above a group box whose rows the caller fills.
struct SectionParts {
    QWidget* section;
    QVBoxLayout* layout;
    QFrame* box;
    QVBoxLayout* rows;
};

SectionParts makeSection(const QString& title) {
    auto* section = new QWidget;
    auto* layout = new QVBoxLayout(section);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(sectionHeader(title, section));
    QFrame* box = groupBox(section);
    auto* rows = new QVBoxLayout(box);
    rows->setContentsMargins(14, 10, 14, 10);
    rows->setSpacing(10);
    return {section, layout, box, rows};
}

// A row: the label on the left, the control on the right.
QHBoxLayout* row(const QString& title, QWidget* control, QWidget* parent) {
    auto* layout = new QHBoxLayout;
    auto* label = new QLabel(title, parent);
    label->setBuddy(control);
    layout->addWidget(label);
    layout->addStretch(1);
    layout->addWidget(control);
    if (control->accessibleName().isEmpty())
        control->setAccessibleName(title);
    return layout;
}

} // namespace

SettingsView::SettingsView(LoginItemService& loginItems, UpdaterController& updater,
                           RecorderFactory shortcutRecorder, SelectionPreferences* selection,
                           QWidget* parent)
    : QWidget(parent), m_general(new GeneralSettingsModel(loginItems, this)), m_updater(updater),
      m_selection(selection) {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(24, 20, 24, 20);
    column->setSpacing(6);
    column->addWidget(makeGeneralSection(shortcutRecorder));
    if (m_updater.offersUpdates()) {
        column->addSpacing(18);
        column->addWidget(makeUpdatesSection());
    }
    column->addStretch(1);

    auto* scroll = new QScrollArea(this);
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);

    connect(m_general, &GeneralSettingsModel::changed, this, &SettingsView::renderGeneral);
    renderGeneral();
    renderUpdates();
    if (m_selection) {
        connect(m_selection, &SelectionPreferences::changed, this, &SettingsView::renderSelection);
        renderSelection();
    }
}

QWidget* SettingsView::makeGeneralSection(const RecorderFactory& shortcutRecorder) {
    const SectionParts parts = makeSection(tr("General"));
    QWidget* section = parts.section;
    QVBoxLayout* layout = parts.layout;
    QFrame* box = parts.box;
    QVBoxLayout* rows = parts.rows;

    QWidget* recorder = shortcutRecorder ? shortcutRecorder(box) : nullptr;
    if (recorder)
        rows->addLayout(row(tr("Keyboard shortcut"), recorder, box));
    if (m_selection)
        addSelectionRows(rows, box);

    auto* launchControls = new QWidget(box);
    auto* launchLayout = new QHBoxLayout(launchControls);
    launchLayout->setContentsMargins(0, 0, 0, 0);
    m_launchToggle = new QCheckBox(launchControls);
    m_approvalButton = new QPushButton(tr("Open Autostart Settings…"), launchControls);
    m_unavailable = secondaryLabel(tr("Unavailable"), launchControls);
    launchLayout->addWidget(m_launchToggle);
    launchLayout->addWidget(m_approvalButton);
    launchLayout->addWidget(m_unavailable);
    m_launchToggle->setAccessibleName(tr("Launch at login"));
    rows->addLayout(row(tr("Launch at login"), launchControls, box));
    connect(m_launchToggle, &QCheckBox::clicked, m_general,
            &GeneralSettingsModel::setLaunchAtLogin);
    connect(m_approvalButton, &QPushButton::clicked, m_general,
            &GeneralSettingsModel::openSystemSettingsLoginItems);

    m_status = new SettingsStatusLabel(box);
    rows->addWidget(m_status);
    layout->addWidget(box);

    m_generalFooter = secondaryLabel(QString(), section, true);
    m_generalFooter->setContentsMargins(4, 2, 4, 0);
    layout->addWidget(m_generalFooter);
    return section;
}

void SettingsView::addSelectionRows(QVBoxLayout* rows, QWidget* box) {
    const std::optional<QString> unavailable = m_selection->unavailableReason();
    // Where the desktop does not allow it, the rows say why instead of
    // offering switches that would do nothing.
    auto control = [&](QCheckBox*& toggle, const QString& title) -> QWidget* {
        if (unavailable) {
            QLabel* reason = secondaryLabel(*unavailable, box);
            reason->setWordWrap(false);
            return reason;
        }
        toggle = new QCheckBox(box);
        toggle->setAccessibleName(title);
        return toggle;
    };
    const QString take = tr("Start with the selected text");
    const QString replace = tr("Replace the selection when done");
    rows->addLayout(row(take, control(m_takeSelection, take), box));
    rows->addLayout(row(replace, control(m_replaceSelection, replace), box));
    if (m_takeSelection)
        connect(m_takeSelection, &QCheckBox::clicked, m_selection,
                &SelectionPreferences::setTakeSelection);
    if (m_replaceSelection)
        connect(m_replaceSelection, &QCheckBox::clicked, m_selection,
                &SelectionPreferences::setReplaceSelection);
}

QWidget* SettingsView::makeUpdatesSection() {
    const SectionParts parts = makeSection(tr("Updates"));
    QWidget* section = parts.section;
    QVBoxLayout* layout = parts.layout;
    QFrame* box = parts.box;
    QVBoxLayout* rows = parts.rows;
    m_automaticChecks = new QCheckBox(tr("Check for updates automatically"), box);
    m_checkNow = new QPushButton(tr("Check for Updates…"), box);
    rows->addWidget(m_automaticChecks);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addWidget(m_checkNow);
    buttonRow->addStretch(1);
    rows->addLayout(buttonRow);
    connect(m_automaticChecks, &QCheckBox::clicked, this, [this](bool checks) {
        m_updater.setAutomaticallyChecks(checks);
        renderUpdates();
    });
    connect(m_checkNow, &QPushButton::clicked, this, [this] {
        m_updater.checkForUpdates();
        renderUpdates();
    });
    layout->addWidget(box);

    QLabel* footer =
        secondaryLabel(tr("Update checks send no information about your system."), section, true);
    footer->setContentsMargins(4, 2, 4, 0);
    layout->addWidget(footer);
    return section;
}

void SettingsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // Read each time the page is shown: an approval given in the system's
    // settings shows up when the user comes back.
    m_general->refresh();
    if (!m_shownBefore) {
        m_shownBefore = true;
        renderUpdates();
    }
}

void SettingsView::renderGeneral() {
    using Control = GeneralSettingsModel::LaunchControl;
    const Control control = m_general->launchControl();
    m_launchToggle->setVisible(control == Control::pendingToggle || control == Control::toggle);
    m_launchToggle->setEnabled(control == Control::toggle);
    m_launchToggle->setChecked(m_general->isLaunchAtLoginOn());
    m_approvalButton->setVisible(control == Control::approvalButton);
    m_unavailable->setVisible(control == Control::unavailable);

    const auto& status = m_general->status();
    m_status->setVisible(status.has_value());
    if (status)
        m_status->setStatus(*status);
    m_generalFooter->setText(m_general->footerText());
}

void SettingsView::renderSelection() {
    if (!m_takeSelection || !m_replaceSelection)
        return;
    m_takeSelection->setChecked(m_selection->takeSelectionSetting());
    m_replaceSelection->setChecked(m_selection->replaceSelectionSetting());
    // Only a selection taken into the panel can be replaced.
    m_replaceSelection->setEnabled(m_selection->takeSelectionSetting());
}

void SettingsView::renderUpdates() {
    if (!m_automaticChecks)
        return;
    m_automaticChecks->setChecked(m_updater.automaticallyChecks());
    m_checkNow->setEnabled(m_updater.canCheckForUpdates());
}

} // namespace scrivel
