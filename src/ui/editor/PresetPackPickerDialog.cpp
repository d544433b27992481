#include "ui/editor/PresetPackPickerDialog.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace scrivel {

namespace {

QLabel* secondaryLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

} // namespace

QString PresetPackPickerDialog::displayName(const PresetPackDocument& pack) {
    const QString name = pack.name.value_or(QString());
    return name.isEmpty() ? tr("Untitled Pack") : name;
}

QString PresetPackPickerDialog::detailText(const PresetPackDocument& pack) {
    QString text = tr("%n preset(s)", nullptr, int(pack.presets.size()));
    const QString description = pack.description.value_or(QString());
    if (!description.isEmpty())
        text += QStringLiteral(". ") + description;
    return text;
}

PresetPackPickerDialog::PresetPackPickerDialog(const QList<PresetPackDocument>& packs,
                                               QWidget* parent)
    : QDialog(parent), m_packs(packs), m_choices(new QButtonGroup(this)) {
    setWindowTitle(tr("Add from Pack"));
    setModal(true);
    setMinimumWidth(420);

    auto* section = new QGroupBox(tr("Add from Pack"), this);
    auto* sectionLayout = new QVBoxLayout(section);
    if (m_packs.isEmpty()) {
        sectionLayout->addWidget(secondaryLabel(tr("No bundled packs found."), section));
    } else {
        for (qsizetype i = 0; i < m_packs.size(); ++i) {
            auto* option = new QRadioButton(displayName(m_packs[i]), section);
            m_choices->addButton(option, int(i));
            auto* detail = secondaryLabel(detailText(m_packs[i]), section);
            QFont callout = detail->font();
            callout.setPointSizeF(callout.pointSizeF() * 0.9);
            detail->setFont(callout);
            detail->setContentsMargins(24, 0, 0, 6);
            option->setAccessibleDescription(detail->text());
            sectionLayout->addWidget(option);
            sectionLayout->addWidget(detail);
        }
    }

    auto* note = secondaryLabel(
        tr("Adds copies of the pack’s presets. Your API keys are not changed."), this);

    auto* buttons = new QDialogButtonBox(this);
    m_cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    m_add = buttons->addButton(tr("Add Presets"), QDialogButtonBox::AcceptRole);
    m_add->setDefault(true);
    m_add->setEnabled(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(section);
    layout->addWidget(note);
    layout->addStretch(1);
    layout->addWidget(buttons);

    connect(m_choices, &QButtonGroup::idToggled, this,
            [this] { m_add->setEnabled(selection().has_value()); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (const std::optional<PresetPackDocument> pack = selection())
            Q_EMIT addRequested(*pack);
    });
}

std::optional<PresetPackDocument> PresetPackPickerDialog::selection() const {
    const int id = m_choices->checkedId();
    if (id < 0 || id >= m_packs.size())
        return std::nullopt;
    return m_packs[id];
}

} // namespace scrivel
