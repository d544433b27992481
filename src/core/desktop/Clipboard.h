#pragma once

#include <QString>

namespace scrivel {

// One clipboard item as the system is asked to hold it.
struct ClipboardItem {
    QString plainText;
    // Marked so that clipboard-history tools and password-manager-aware
    // clients skip it.
    bool concealed = false;
    // Kept on this machine only (not offered to other devices).
    bool currentHostOnly = false;
};

// The system clipboard.
class Clipboard {
public:
    virtual ~Clipboard() = default;
    // Clears the clipboard and writes the one item; true when it now holds it.
    virtual bool write(const ClipboardItem& item) = 0;
};

// Copies a rewrite's result: plain text, concealed, this host only. Returns
// whether the write succeeded.
bool copyToClipboard(Clipboard& clipboard, const QString& text);

} // namespace scrivel
