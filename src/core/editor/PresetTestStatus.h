#pragma once

#include "core/transform/TransformFailure.h"

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// The outcome of the editor's test run, with the text shown under the test
// button.
class PresetTestStatus {
    Q_DECLARE_TR_FUNCTIONS(PresetTestStatus)

public:
    static PresetTestStatus works() { return PresetTestStatus(true, tr("Works")); }
    static PresetTestStatus noModel() {
        return PresetTestStatus(false, tr("Choose a model before testing."));
    }
    static PresetTestStatus failed(const TransformFailure& failure);

    bool succeeded() const { return m_succeeded; }
    const QString& text() const { return m_text; }

    friend bool operator==(const PresetTestStatus&, const PresetTestStatus&) = default;

private:
    PresetTestStatus(bool succeeded, QString text)
        : m_succeeded(succeeded), m_text(std::move(text)) {}

    bool m_succeeded;
    QString m_text;
};

} // namespace scrivel
