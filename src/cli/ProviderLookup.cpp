#include "cli/ProviderLookup.h"

#include "cli/CliText.h"
#include "cli/Hints.h"
#include "core/providers/ProviderCatalog.h"

#include <QStringList>

namespace scrivel::cli {

std::expected<ProviderEndpoint, QString> findEndpoint(const QString& provider,
                                                      const QString& baseURL) {
    if (provider == customProviderID()) {
        if (const auto endpoint = resolveEndpoint(
                provider, baseURL.isEmpty() ? std::nullopt : std::optional(baseURL)))
            return *endpoint;
        return std::unexpected(Hints::baseURLProblem(baseURL) + QLatin1Char('\n') +
                               CliText::tr("Name it with --base-url URL."));
    }
    if (const auto endpoint = catalogEndpoint(provider))
        return *endpoint;
    return std::unexpected(
        CliText::tr("Unknown provider \"%1\". Providers: %2.").arg(provider, providerList()));
}

QString providerList() {
    QStringList ids;
    for (const ProviderEndpoint& endpoint : catalogEndpoints())
        ids << endpoint.id;
    ids << customProviderID();
    return ids.join(QStringLiteral(", "));
}

} // namespace scrivel::cli
