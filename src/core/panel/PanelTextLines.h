#pragma once

#include <QStringView>

namespace scrivel {

// How many lines high the panel's text field is for a text: one line per 52
// UTF-8 bytes, at least one more than the line breaks among the first 2,000
// characters, between 1 and 8. It reads no further into the text than the
// answer needs, so pasting megabytes costs nothing here.
namespace PanelTextLines {

constexpr int minimumLines = 1;
constexpr int maximumLines = 8;
constexpr int bytesPerLine = 52;

int lineCount(QStringView text);

} // namespace PanelTextLines

} // namespace scrivel
