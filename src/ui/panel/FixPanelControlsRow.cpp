#include "ui/panel/FixPanelControlsRow.h"

#include "core/panel/FixPanelModel.h"
#include "core/presets/PresetStore.h"
#include "ui/panel/BusyIndicator.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>

namespace scrivel {

FixPanelControlsRow::FixPanelControlsRow(FixPanelModel& model, PresetStore& presets,
                                         QWidget* parent)
    : QWidget(parent), m_model(model), m_presets(presets), m_picker(new QComboBox(this)),
      m_openPresets(new QPushButton(tr("Open Presets…"), this)),
      m_revert(new QPushButton(tr("Revert"), this)), m_run(new QPushButton(tr("Run"), this)),
      m_busy(new BusyIndicator(this)), m_running(new QLabel(tr("Running…"), this)),
      m_cancel(new QPushButton(tr("Cancel"), this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(m_picker);
    layout->addStretch(1);
    layout->addWidget(m_openPresets);
    layout->addWidget(m_revert);
    layout->addWidget(m_busy);
    layout->addWidget(m_running);
    layout->addWidget(m_cancel);
    layout->addWidget(m_run);

    QFont callout = m_picker->font();
    callout.setPointSizeF(callout.pointSizeF() * 0.92);
    m_picker->setFont(callout);
    m_picker->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_picker->setAccessibleName(tr("Preset"));
    m_picker->setToolTip(tr("Preset"));
    QPalette secondary = m_running->palette();
    secondary.setColor(QPalette::WindowText, secondary.color(QPalette::PlaceholderText));
    m_running->setPalette(secondary);
    m_run->setDefault(true);
    m_run->setAutoDefault(false);
    for (QPushButton* button : {m_openPresets, m_revert, m_cancel})
        button->setAutoDefault(false);

    connect(m_openPresets, &QPushButton::clicked, this, [this] { m_model.openPresets(); });
    connect(m_revert, &QPushButton::clicked, this, [this] { m_model.revert(); });
    connect(m_run, &QPushButton::clicked, this, [this] { m_model.run(); });
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_model.cancel(); });
    connect(m_picker, &QComboBox::activated, this, [this](int index) {
        const QUuid id = m_picker->itemData(index).toUuid();
        if (!id.isNull())
            m_model.setActivePresetID(id);
    });
    connect(&m_presets, &PresetStore::presetsChanged, this, &FixPanelControlsRow::rebuildPicker);
    connect(&m_presets, &PresetStore::activePresetIDChanged, this,
            &FixPanelControlsRow::selectActivePreset);
    rebuildPicker();
}

void FixPanelControlsRow::apply(const FixPanelControlsState& state) {
    m_picker->setEnabled(state.pickerEnabled);
    m_openPresets->setVisible(state.showsOpenPresets);
    m_revert->setVisible(state.showsRevert);
    m_run->setVisible(state.showsRun);
    m_run->setEnabled(state.runEnabled);
    m_busy->setVisible(state.showsProgress);
    m_running->setVisible(state.showsProgress);
    m_cancel->setVisible(state.showsProgress);
}

void FixPanelControlsRow::rebuildPicker() {
    const QSignalBlocker blocker(m_picker);
    m_picker->clear();
    for (const Preset& preset : m_presets.presets())
        m_picker->addItem(preset.displayName(), preset.id);
    selectActivePreset();
}

void FixPanelControlsRow::selectActivePreset() {
    const QSignalBlocker blocker(m_picker);
    const std::optional<QUuid> active = m_model.activePresetID();
    m_picker->setCurrentIndex(active ? m_picker->findData(*active) : -1);
}

} // namespace scrivel
