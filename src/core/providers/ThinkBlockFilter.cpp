#include "core/providers/ThinkBlockFilter.h"

namespace scrivel {

namespace {

const QStringView openTag = u"<think>";
const QStringView closeTag = u"</think>";

qsizetype firstNonSpace(QStringView text, qsizetype from = 0) {
    for (qsizetype i = from; i < text.size(); ++i) {
        if (!text[i].isSpace())
            return i;
    }
    return -1;
}

} // namespace

bool ThinkBlockFilter::update(const TextAccumulator& reply) {
    const QStringView text = reply.view();
    switch (m_state) {
    case State::noBlock:
        return true;
    case State::undecided: {
        const qsizetype start = firstNonSpace(text);
        if (start < 0)
            return false;
        const QStringView rest = text.sliced(start);
        if (rest.size() < openTag.size() && openTag.startsWith(rest))
            return false; // could still become the opening tag
        if (!rest.startsWith(openTag)) {
            m_state = State::noBlock;
            return true;
        }
        m_state = State::thinking;
        m_scanFrom = start + openTag.size();
        [[fallthrough]];
    }
    case State::thinking: {
        const qsizetype close = text.indexOf(closeTag, m_scanFrom);
        if (close < 0) {
            // The tag may be arriving in pieces: look again from just before
            // the end.
            m_scanFrom = std::max(m_scanFrom, text.size() - closeTag.size() + 1);
            return false;
        }
        m_state = State::afterBlock;
        m_consumed = close + closeTag.size();
        return takeVisible(text);
    }
    case State::afterBlock:
        return takeVisible(text);
    }
    return false;
}

bool ThinkBlockFilter::takeVisible(QStringView text) {
    QStringView added = text.sliced(m_consumed);
    m_consumed = text.size();
    if (m_skippingSpace) {
        const qsizetype start = firstNonSpace(added);
        if (start < 0)
            return false;
        added = added.sliced(start);
        m_skippingSpace = false;
    }
    m_visible.append(added);
    return !added.isEmpty();
}

TextSnapshot ThinkBlockFilter::visible(const TextAccumulator& reply) const {
    switch (m_state) {
    case State::undecided:
    case State::noBlock:
        return reply.snapshot();
    case State::thinking:
        return {};
    case State::afterBlock:
        break;
    }
    return m_visible.snapshot();
}

} // namespace scrivel
