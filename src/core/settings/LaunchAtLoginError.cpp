#include "core/settings/LaunchAtLoginError.h"

namespace scrivel {

QString LaunchAtLoginError::message() const {
    return tr("macOS couldn’t update the Login Item. Launch at login needs a signed copy in "
              "Applications.");
}

} // namespace scrivel
