#pragma once

#include <QString>
#include <QStringView>

namespace scrivel::cli {

// Shows a streamed reply on a terminal's standard error as a dimmed draft,
// and takes it away again once the run ends, so that what remains on the
// screen is the result (or the error) alone. Where the draft has scrolled
// off the screen it cannot be erased; it is then marked as a draft instead.
class DraftDisplay {
public:
    // Inactive (shows nothing) unless standard error is a terminal.
    DraftDisplay();

    bool isActive() const { return m_active; }
    // The whole text so far; only what is new is written and kept, so a
    // reply streamed in many pieces costs time in proportion to its length.
    void show(QStringView textSoFar);
    // Ends the draft: erases it or, when it cannot be erased, writes the
    // label below it.
    void finish(const QString& labelWhenKept);

private:
    // Terminal rows the draft takes at the given width.
    int rowsAt(int columns) const;

    bool m_active = false;
    QString m_shown;
};

} // namespace scrivel::cli
