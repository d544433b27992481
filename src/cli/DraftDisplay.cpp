#include "cli/DraftDisplay.h"

#include "cli/Terminal.h"

#include <QList>
#include <QStringTokenizer>
#include <cwchar>
#include <sys/ioctl.h>
#include <unistd.h>

namespace scrivel::cli {

namespace {

const char* dim = "\x1b[2m";
const char* plain = "\x1b[0m";

// Display columns of one line: wide characters take two, combining marks
// none, tabs run to the next multiple of eight.
int lineWidth(QStringView line) {
    int width = 0;
    for (const uint c : line.toUcs4()) {
        if (c == uint(U'\t')) {
            width = (width / 8 + 1) * 8;
            continue;
        }
        const int w = ::wcwidth(wchar_t(c));
        width += w < 0 ? 0 : w;
    }
    return width;
}

} // namespace

DraftDisplay::DraftDisplay() : m_active(Terminal::isTerminal(stderr)) {}

void DraftDisplay::show(QStringView textSoFar) {
    if (!m_active || textSoFar.size() <= m_shown.size())
        return;
    const QStringView added = textSoFar.sliced(m_shown.size());
    if (m_shown.isEmpty())
        Terminal::write(stderr, QString::fromLatin1(dim));
    Terminal::write(stderr, added.toString());
    m_shown.append(added);
}

int DraftDisplay::rowsAt(int columns) const {
    int rows = 0;
    for (const QStringView line : QStringTokenizer(m_shown, u'\n')) {
        const int width = lineWidth(line);
        rows += width == 0 ? 1 : (width + columns - 1) / columns;
    }
    return rows;
}

void DraftDisplay::finish(const QString& labelWhenKept) {
    if (!m_active || m_shown.isEmpty())
        return;
    winsize size{};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const int rows = known ? rowsAt(size.ws_col) : 0;
    QString out = QString::fromLatin1(plain);
    if (known && rows < size.ws_row) {
        // Back to the draft's first row, then clear to the end of the screen.
        out += QStringLiteral("\r");
        if (rows > 1)
            out += QStringLiteral("\x1b[%1A").arg(rows - 1);
        out += QStringLiteral("\x1b[J");
    } else {
        out += QStringLiteral("\n") + labelWhenKept + QStringLiteral("\n");
    }
    Terminal::write(stderr, out);
    m_shown.clear();
}

} // namespace scrivel::cli
