#pragma once

#include "core/desktop/Clipboard.h"

#include <QList>

namespace scrivel {

// Clipboard double: keeps every item it was asked to write; `failWrites`
// makes the next writes report failure, as a busy system clipboard would.
class InMemoryClipboard final : public Clipboard {
public:
    bool write(const ClipboardItem& item) override;

    QList<ClipboardItem> written;
    bool failWrites = false;
};

} // namespace scrivel
