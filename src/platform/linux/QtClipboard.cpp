#include "platform/linux/QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace scrivel {

bool QtClipboard::write(const ClipboardItem& item) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!clipboard)
        return false;

    auto* mime = new QMimeData;
    if (item.concealed) {
        mime->setData(passwordManagerHintType(), QByteArrayLiteral("secret"));
        mime->setData(concealedType(), QByteArray());
    }
    mime->setText(item.plainText);
    // Selections and other devices do not apply: only the clipboard proper is
    // written, which never leaves this host on X11 or Wayland.
    clipboard->clear(QClipboard::Clipboard);
    clipboard->setMimeData(mime, QClipboard::Clipboard); // takes ownership

    const QMimeData* now = clipboard->mimeData(QClipboard::Clipboard);
    return now && now->hasText() && now->text() == item.plainText;
}

} // namespace scrivel
