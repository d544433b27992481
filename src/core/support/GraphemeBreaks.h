#pragma once

#include <QString>
#include <QStringView>
#include <memory>

struct UBreakIterator;

namespace scrivel {

// The boundaries of user-perceived characters (extended grapheme clusters)
// in a text, from ICU's character break iterator. Qt's own boundary finder
// is not used: after some complex-script letters it falls back to single
// UTF-16 units for the rest of the text.
class GraphemeBreaks {
public:
    // The text must outlive the object.
    explicit GraphemeBreaks(QStringView text);
    ~GraphemeBreaks();
    GraphemeBreaks(const GraphemeBreaks&) = delete;
    GraphemeBreaks& operator=(const GraphemeBreaks&) = delete;

    // The next boundary after the current position (starting at 0), or -1
    // at the end.
    qsizetype next();
    // Whether a character starts at position (the ends always count).
    bool isBoundary(qsizetype position);

    // The number of user-perceived characters.
    static qsizetype count(QStringView text);

private:
    struct Close {
        void operator()(UBreakIterator* iterator) const;
    };
    std::unique_ptr<UBreakIterator, Close> m_iterator;
    qsizetype m_size;
};

} // namespace scrivel
