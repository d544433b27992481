#pragma once

#include "core/support/Future.h"

#include <QList>
#include <QString>
#include <expected>
#include <memory>
#include <optional>

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
        cancelled,       // the model stopped on its own account (it is unloading, say)
    };

    // One property of the structured reply, with the guide text the model
    // is given for it.
    struct SchemaProperty {
        QString name;
        QString guide;
        friend bool operator==(const SchemaProperty&, const SchemaProperty&) = default;
    };

    // What guided generation needs: the structure to generate, whether its
    // schema goes into the prompt, and the sampling.
    struct GenerationRequest {
        QString prompt;
        QString typeName;                 // the structure, "TransformedCopy"
        QList<SchemaProperty> properties; // its fields; the reply is the first one
        bool includeSchemaInPrompt = true;
        bool greedySampling = false;              // false: the model's default sampling
        std::optional<double> temperature;        // nothing: the model's default
        std::optional<int> maximumResponseTokens; // nothing: no limit
        friend bool operator==(const GenerationRequest&, const GenerationRequest&) = default;
    };

    // The generated value of the first property.
    using Response = std::expected<QString, GenerationError>;

    // A conversation context that applies its instructions to every prompt.
    class Session {
    public:
        virtual ~Session() = default;
        // Loads the model and the instructions ahead of the first request.
        virtual void prewarm() = 0;
        // Generates the structured reply the request describes; destroying
        // the future cancels the generation.
        virtual Future<Response> respond(const GenerationRequest& request) = 0;
    };

    virtual ~OnDeviceModel() = default;

    // May be asked from any thread.
    virtual Availability availability() const = 0;
    virtual std::unique_ptr<Session> makeSession(const QString& instructions) = 0;
};

} // namespace scrivel
