#include "core/desktop/Clipboard.h"

namespace scrivel {

bool copyToClipboard(Clipboard& clipboard, const QString& text) {
    ClipboardItem item;
    item.plainText = text;
    item.concealed = true;
    item.currentHostOnly = true;
    return clipboard.write(item);
}

} // namespace scrivel
