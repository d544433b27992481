#pragma once

#include "core/providers/ProviderEndpoint.h"

#include <QString>
#include <expected>

namespace scrivel::cli {

// The endpoint a key or models command line names: a catalog provider, or
// the custom one at baseURL. The error is the message to print.
std::expected<ProviderEndpoint, QString> findEndpoint(const QString& provider,
                                                      const QString& baseURL);

// The provider identifiers a command line accepts, comma separated.
QString providerList();

} // namespace scrivel::cli
