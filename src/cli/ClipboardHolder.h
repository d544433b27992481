#pragma once

#include <QString>

namespace scrivel::cli {

// Copies a result for scrivel-cli. On X11 the clipboard lives in the process
// that owns it, so the copy is made by a background helper (this binary
// started again as "scrivel-cli __serve-clipboard") that keeps serving it
// until another program takes the clipboard over, as xclip does.
namespace ClipboardHolder {

inline const char* serveCommand() {
    return "__serve-clipboard";
}

enum class Outcome { copied, noDisplay, failed };

// Starts the helper, hands it the text and waits until it holds the
// clipboard. copied when the clipboard now holds the text (concealed, as the
// panel copies it).
Outcome copyInBackground(const QString& text);

// The helper's side: reads the text from standard input, copies it, reports
// "ok" on standard output and serves the clipboard until it is taken over.
// Runs its own QGuiApplication; returns the exit code.
int serve(int argc, char* argv[]);

} // namespace ClipboardHolder

} // namespace scrivel::cli
