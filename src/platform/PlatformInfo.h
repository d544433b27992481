#pragma once

#include <QString>

namespace scrivel::platform {

// The name of the adapter set this build uses, for --version and bug reports.
QString adapterSetName();

} // namespace scrivel::platform
