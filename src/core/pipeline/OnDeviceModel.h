#pragma once

#include "support/Future.h"

#include <QString>
#include <expected>
#include <memory>

namespace scrivel {

// The operating system's own language model, where there is one.
class OnDeviceModel {
public:
    struct Availability {
        enum class Kind { available, deviceNotEligible, notEnabled, modelNotReady, other };
        Kind kind = Kind::other;
        QString description; // the system's own words, for Kind::other

        bool isAvailable() const { return kind == Kind::available; }
    };

    enum class GenerationError {
        contextWindowExceeded,
        guardrailViolation,
        unsupportedLanguage,
        otherGeneration, // any other generation error
        otherFailure,    // any other failure
    };

    using Response = std::expected<QString, GenerationError>;

    // A conversation context that applies its instructions to every prompt.
    class Session {
    public:
        virtual ~Session() = default;
        // Loads the model and the instructions ahead of the first request.
        virtual void prewarm() = 0;
        // Generates the structured reply (a single "transformedText" field)
        // at temperature 0 with no token limit; destroying the future
        // cancels the generation.
        virtual Future<Response> respond(const QString& prompt) = 0;
    };

    virtual ~OnDeviceModel() = default;

    // May be asked from any thread.
    virtual Availability availability() const = 0;
    virtual std::unique_ptr<Session> makeSession(const QString& instructions) = 0;
};

} // namespace scrivel
