// Judges random replies against random inputs: the verdict's invariants
// hold whatever the text.
#include "core/pipeline/OutputCleaning.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const qsizetype split = bytes.indexOf('\0');
    const QString reply = QString::fromUtf8(split < 0 ? bytes : bytes.left(split));
    const QString input = split < 0 ? QString() : QString::fromUtf8(bytes.mid(split + 1));

    const QString cleaned = scrivel::cleanOutput(reply);
    const auto verdict = scrivel::validateEdit(reply, input);
    switch (verdict.kind) {
    case scrivel::EditVerdict::Kind::accepted:
        if (verdict.text.isEmpty() || verdict.text != cleaned)
            std::abort();
        break;
    case scrivel::EditVerdict::Kind::rejected:
        if (verdict.text != QLatin1String("empty") &&
            verdict.text != QLatin1String("meta-prefix") &&
            verdict.text != QLatin1String("length-delta") &&
            verdict.text != QLatin1String("line-breaks"))
            std::abort();
        break;
    case scrivel::EditVerdict::Kind::alreadyClean:
        if (scrivel::normalizedLineEndings(cleaned) != scrivel::normalizedLineEndings(input))
            std::abort();
        break;
    }
    if (scrivel::trimmedWhitespaceAndNewlines(cleaned) != cleaned)
        std::abort();
    // Every line-break character stands as a character of its own, so making
    // CR LF and CR into LF changes none of the counts.
    for (const QString& text : {reply, input, cleaned}) {
        if (scrivel::lineBreakCount(scrivel::normalizedLineEndings(text)) !=
            scrivel::lineBreakCount(text))
            std::abort();
    }
    return 0;
}
