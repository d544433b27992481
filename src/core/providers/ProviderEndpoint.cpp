#include "core/providers/ProviderEndpoint.h"

namespace scrivel {

size_t qHash(const ProviderEndpoint& endpoint, size_t seed) {
    return qHashMulti(seed, endpoint.id, endpoint.displayName, endpoint.baseURL,
                      int(endpoint.authenticationPolicy));
}

} // namespace scrivel
