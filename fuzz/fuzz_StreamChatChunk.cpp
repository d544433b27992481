// Decodes random payloads as stream chunks: never a crash, and whenever the
// fast chunk scanner decides a payload, it agrees with the general decoder.
#include "core/providers/ChunkScanner.h"
#include "core/providers/StreamChatChunk.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArrayView payload(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto chunk = scrivel::StreamChatChunk::decode(payload);
    const auto scanned = scrivel::ChunkScanner::scan(payload);
    using Outcome = scrivel::ChunkScanner::Outcome;
    switch (scanned.outcome) {
    case Outcome::notHandled:
        break;
    case Outcome::wrongType:
        if (chunk)
            std::abort();
        break;
    case Outcome::noText:
        if (!chunk || chunk->text() || chunk->error || chunk->finishReason != scanned.finishReason)
            std::abort();
        break;
    case Outcome::text:
        if (!chunk || chunk->text() != std::optional<QString>(scanned.text) || chunk->error ||
            chunk->finishReason != scanned.finishReason)
            std::abort();
        break;
    }
    return 0;
}
