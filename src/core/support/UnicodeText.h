#pragma once

#include <QString>
#include <QStringView>

namespace scrivel {

// Removes white space and line breaks (the Unicode White_Space characters)
// from both ends.
QString trimmedWhitespaceAndNewlines(const QString& text);

// Length in user-perceived characters (grapheme clusters).
qsizetype graphemeCount(QStringView text);

} // namespace scrivel
