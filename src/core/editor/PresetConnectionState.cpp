#include "core/editor/PresetConnectionState.h"

namespace scrivel {

QString PresetConnectionState::message() const {
    if (m_kind != Kind::failed || !m_failure)
        return {};
    QString text = m_reason.value_or(m_failure->message());
    if (m_savedKeyUnchanged)
        text += QLatin1Char(' ') + tr("The saved API key is unchanged.");
    return text;
}

} // namespace scrivel
