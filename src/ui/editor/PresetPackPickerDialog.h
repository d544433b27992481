#pragma once

#include "core/presets/PresetPackDocument.h"

#include <QDialog>
#include <QList>
#include <optional>

class QButtonGroup;
class QPushButton;

namespace scrivel {

// The sheet that offers the packs shipped with the application.
class PresetPackPickerDialog : public QDialog {
    Q_OBJECT

public:
    PresetPackPickerDialog(const QList<PresetPackDocument>& packs, QWidget* parent = nullptr);

    // The option text beneath a pack's name: its size and description.
    static QString detailText(const PresetPackDocument& pack);
    static QString displayName(const PresetPackDocument& pack);

    std::optional<PresetPackDocument> selection() const;
    QPushButton* addButton() const { return m_add; }
    QPushButton* cancelButton() const { return m_cancel; }
    QButtonGroup* choices() const { return m_choices; }

Q_SIGNALS:
    void addRequested(const scrivel::PresetPackDocument& pack);

private:
    QList<PresetPackDocument> m_packs;
    QButtonGroup* m_choices;
    QPushButton* m_add;
    QPushButton* m_cancel;
};

} // namespace scrivel
