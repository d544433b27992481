// Decodes and validates random pack files. A pack that validates must
// survive encoding and decoding unchanged, and make one preset per item.
#include "core/presets/PresetPackDocument.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto document = scrivel::PresetPackDocument::decode(bytes);
    if (!document || !document->validate())
        return 0;
    const auto encoded = document->encode();
    if (!encoded)
        return 0; // a temperature JSON cannot hold
    const auto again = scrivel::PresetPackDocument::decode(*encoded);
    if (!again || !(*again == *document))
        std::abort();
    const auto made = document->makePresets(false, {});
    if (made.added.size() + made.replaced.size() != document->presets.size())
        std::abort();
    return 0;
}
