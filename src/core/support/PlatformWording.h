#pragma once

#include <QString>

namespace scrivel {

// Texts are written with the Mac's key names ("Press ⌘V", "⌘1–⌘9"). Every text
// that names a key passes through here before it is shown, so other systems
// read their own key names ("Press Ctrl+V") without a second copy of each
// message.
QString platformKeyWording(const QString& text);

} // namespace scrivel
