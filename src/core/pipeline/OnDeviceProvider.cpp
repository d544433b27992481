#include "core/pipeline/OnDeviceProvider.h"

#include "core/support/Log.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>

namespace scrivel {

namespace {

// The texts of this file, under the context they have always had.
struct OnDeviceText {
    Q_DECLARE_TR_FUNCTIONS(OnDeviceProvider)
};

QString promptFor(const QString& text) {
    // Read by the model, never by the user: not translated.
    return QStringLiteral("Apply your instructions to the content of <input> and return only the "
                          "result.\n\n<input>\n") +
           text + QStringLiteral("\n</input>");
}

} // namespace

// One request: owns its session while the model answers.
class OnDeviceProvider::Request : public QObject {
public:
    Request(OnDeviceProvider& provider, std::unique_ptr<OnDeviceModel::Session> session,
            QString text, QString instructions, Promise<Result> promise)
        : QObject(&provider), m_provider(provider), m_session(std::move(session)),
          m_text(std::move(text)), m_instructions(std::move(instructions)),
          m_promise(std::move(promise)) {
        QPointer<Request> self(this);
        m_promise.onCancel([self] {
            if (!self)
                return;
            self->m_response.cancel();
            self->m_provider.schedulePrewarm(self->m_instructions);
            self->deleteLater();
        });
    }

    void start() {
        m_elapsed.start();
        m_response = m_session->respond(generationRequest(m_text));
        m_response.then(this, [this](OnDeviceModel::Response response) { finish(response); });
    }

private:
    void finish(const OnDeviceModel::Response& response) {
        m_provider.schedulePrewarm(m_instructions);
        if (response) {
            qCDebug(rewriteLog).noquote()
                << privateValue(QStringLiteral("model done elapsed=%1ms in=%2 out=%3")
                                    .arg(m_elapsed.elapsed())
                                    .arg(m_text.toUtf8().size())
                                    .arg(response->toUtf8().size()));
            m_promise.resolve(*response);
        } else {
            if (response.error() == OnDeviceModel::GenerationError::cancelled) {
                m_promise.resolve(std::unexpected(TransformFailure::cancelled()));
                deleteLater();
                return;
            }
            QString message;
            switch (response.error()) {
            case OnDeviceModel::GenerationError::contextWindowExceeded:
                message = OnDeviceText::tr("Text is too long");
                break;
            case OnDeviceModel::GenerationError::unsupportedLanguage:
                message = OnDeviceText::tr("Unsupported language");
                break;
            default:
                message = OnDeviceText::tr("Couldn’t fix this text");
                break;
            }
            m_promise.resolve(
                std::unexpected(TransformFailure::rewrite(RewriteError::modelFailed(message))));
        }
        deleteLater();
    }

    OnDeviceProvider& m_provider;
    std::unique_ptr<OnDeviceModel::Session> m_session;
    QString m_text;
    QString m_instructions;
    Promise<Result> m_promise;
    Future<OnDeviceModel::Response> m_response;
    QElapsedTimer m_elapsed;
};

OnDeviceModel::GenerationRequest OnDeviceProvider::generationRequest(const QString& text) {
    OnDeviceModel::GenerationRequest request;
    request.prompt = promptFor(text);
    request.typeName = QStringLiteral("TransformedCopy");
    // The schema's description is read by the model: not translated.
    request.properties = {{QStringLiteral("transformedText"),
                           QStringLiteral("The full transformed text only. No preface, no "
                                          "commentary.")}};
    request.includeSchemaInPrompt = true;
    request.greedySampling = false;
    request.temperature = 0.0;
    request.maximumResponseTokens = std::nullopt;
    return request;
}

OnDeviceProvider::OnDeviceProvider(OnDeviceModel& model, QObject* parent)
    : QObject(parent), m_model(model) {
    m_prewarmTask.setSingleShot(true);
    m_prewarmTask.setInterval(0);
    connect(&m_prewarmTask, &QTimer::timeout, this, [this] { prewarm(m_prewarmInstructions); });
}

QString OnDeviceProvider::availabilityMessage(const OnDeviceModel::Availability& availability) {
    switch (availability.kind) {
    case OnDeviceModel::Availability::Kind::deviceNotEligible:
        return OnDeviceText::tr("This device can’t run the on-device model");
    case OnDeviceModel::Availability::Kind::notEnabled:
        return OnDeviceText::tr("The on-device model is turned off");
    case OnDeviceModel::Availability::Kind::modelNotReady:
        return OnDeviceText::tr("Model not ready");
    case OnDeviceModel::Availability::Kind::available:
    case OnDeviceModel::Availability::Kind::other:
        break;
    }
    return availability.description;
}

void OnDeviceProvider::prewarm(const QString& instructions) {
    if (!m_model.availability().isAvailable())
        return;
    auto session = m_model.makeSession(instructions);
    session->prewarm();
    m_warmSession = std::move(session);
    m_warmInstructions = instructions;
}

void OnDeviceProvider::schedulePrewarm(const QString& instructions) {
    m_prewarmInstructions = instructions;
    m_prewarmTask.start(); // restarting replaces the pending one
}

bool OnDeviceProvider::hasWarmSession(const QString& instructions) const {
    return m_warmSession && m_warmInstructions == instructions;
}

Future<OnDeviceProvider::Result> OnDeviceProvider::transform(const QString& text,
                                                             const QString& instructions) {
    if (text.toUtf8().size() > inputLimitBytes)
        return Future<Result>::ready(
            std::unexpected(TransformFailure::rewrite(RewriteError::inputTooLarge())));
    const auto availability = m_model.availability();
    if (!availability.isAvailable())
        return Future<Result>::ready(
            std::unexpected(TransformFailure::rewrite(RewriteError::modelUnavailable(
                UnavailableReason::modelNotReady(availabilityMessage(availability))))));

    std::unique_ptr<OnDeviceModel::Session> session;
    if (m_warmSession && m_warmInstructions == instructions) {
        // A warm session serves one request only.
        session = std::move(m_warmSession);
        m_warmInstructions.reset();
    } else {
        session = m_model.makeSession(instructions);
        session->prewarm();
    }
    Promise<Result> promise;
    Future<Result> future = promise.future();
    auto* request = new Request(*this, std::move(session), text, instructions, promise);
    request->start();
    return future;
}

} // namespace scrivel
