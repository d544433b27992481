#include "support/InMemoryClipboard.h"

namespace scrivel {

bool InMemoryClipboard::write(const ClipboardItem& item) {
    if (failWrites)
        return false;
    written.append(item);
    return true;
}

} // namespace scrivel
