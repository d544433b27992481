#pragma once

#include <QString>

namespace scrivel::cli {

// Copies a result for scrivel-cli. On X11 the clipboard lives in the process
// that owns it, so after copying, a background copy of this process keeps
// serving it until another program takes the clipboard over (as xclip
// does). Needs the QGuiApplication that main() makes for --copy.
namespace ClipboardHolder {

// True when the clipboard now holds the text (concealed, as the panel
// copies it).
bool copyInBackground(const QString& text);

} // namespace ClipboardHolder

} // namespace scrivel::cli
