#include "core/support/TextSnapshot.h"

namespace scrivel {

TextSnapshot::TextSnapshot(const QString& text)
    : m_buffer(std::make_shared<QString>(text)), m_size(text.size()) {}

QStringView TextSnapshot::view() const {
    if (!m_buffer)
        return {};
    return QStringView(m_buffer->constData(), m_size);
}

QString TextSnapshot::toString() const {
    return view().toString();
}

bool TextSnapshot::extends(const TextSnapshot& other) const {
    return m_buffer && m_buffer == other.m_buffer && m_size >= other.m_size;
}

bool operator==(const TextSnapshot& a, const TextSnapshot& b) {
    if (a.m_size != b.m_size)
        return false;
    if (a.m_buffer == b.m_buffer)
        return true;
    return a.view() == b.view();
}

} // namespace scrivel
