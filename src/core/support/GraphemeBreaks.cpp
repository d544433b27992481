#include "core/support/GraphemeBreaks.h"

#include <unicode/ubrk.h>

namespace scrivel {

namespace {

// Opening an iterator loads ICU's rules; cloning an open one is cheap.
UBreakIterator* cloneOfPrototype() {
    thread_local std::unique_ptr<UBreakIterator, void (*)(UBreakIterator*)> prototype = [] {
        UErrorCode status = U_ZERO_ERROR;
        UBreakIterator* opened = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
        return std::unique_ptr<UBreakIterator, void (*)(UBreakIterator*)>(
            U_SUCCESS(status) ? opened : nullptr, [](UBreakIterator* it) { ubrk_close(it); });
    }();
    if (!prototype)
        return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    UBreakIterator* clone = ubrk_clone(prototype.get(), &status);
    return U_SUCCESS(status) ? clone : nullptr;
}

} // namespace

void GraphemeBreaks::Close::operator()(UBreakIterator* iterator) const {
    ubrk_close(iterator);
}

GraphemeBreaks::GraphemeBreaks(QStringView text) : m_size(text.size()) {
    m_iterator.reset(cloneOfPrototype());
    if (!m_iterator)
        return;
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(m_iterator.get(), reinterpret_cast<const UChar*>(text.utf16()),
                 int32_t(text.size()), &status);
    if (U_FAILURE(status))
        m_iterator.reset();
}

GraphemeBreaks::~GraphemeBreaks() = default;

qsizetype GraphemeBreaks::next() {
    if (!m_iterator)
        return -1; // ICU could not start: no character boundaries are known
    const int32_t boundary = ubrk_next(m_iterator.get());
    return boundary == UBRK_DONE ? -1 : qsizetype(boundary);
}

bool GraphemeBreaks::isBoundary(qsizetype position) {
    if (position <= 0 || position >= m_size || !m_iterator)
        return true;
    return ubrk_isBoundary(m_iterator.get(), int32_t(position)) != 0;
}

qsizetype GraphemeBreaks::count(QStringView text) {
    if (text.isEmpty())
        return 0;
    GraphemeBreaks breaks(text);
    qsizetype count = 0;
    while (breaks.next() >= 0)
        ++count;
    return count;
}

} // namespace scrivel
