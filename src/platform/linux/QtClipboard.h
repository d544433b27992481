#pragma once

#include "core/desktop/Clipboard.h"

#include <QByteArray>
#include <QString>

namespace scrivel {

// The desktop clipboard through QClipboard. A concealed item carries the
// markers Linux clipboard managers honour: "x-kde-passwordManagerHint" set
// to "secret", and the empty "application/x-nspasteboard-concealed-type".
// The X11 clipboard is owned by the running process, so the application
// must stay alive for the text to remain pasteable. Needs a QGuiApplication.
class QtClipboard : public Clipboard {
public:
    static QString passwordManagerHintType() { return QStringLiteral("x-kde-passwordManagerHint"); }
    static QString concealedType() {
        return QStringLiteral("application/x-nspasteboard-concealed-type");
    }

    bool write(const ClipboardItem& item) override;
};

} // namespace scrivel
