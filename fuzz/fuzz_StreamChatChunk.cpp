// Decodes random payloads as stream chunks: never a crash, and a decoded
// chunk's text is always the first choice's delta or message content.
#include "providers/StreamChatChunk.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto chunk = scrivel::StreamChatChunk::decode(
        QByteArrayView(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!chunk)
        return 0;
    const auto text = chunk->text();
    if (text && (!chunk->choices || chunk->choices->isEmpty()))
        std::abort();
    return 0;
}
