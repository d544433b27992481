#include "core/providers/ProviderRequest.h"

#include "core/providers/ProviderCatalog.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

namespace scrivel {

namespace {

constexpr int maximumRedirects = 10;

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

} // namespace

ProviderRequest::ProviderRequest(QNetworkAccessManager& network, const ProviderEndpoint& endpoint,
                                 QNetworkRequest request, QByteArray verb, QByteArray body,
                                 bool streamBody, Timeouts timeouts, QObject* parent)
    : QObject(parent), m_network(network), m_endpoint(endpoint), m_request(std::move(request)),
      m_verb(std::move(verb)), m_body(std::move(body)), m_streamBody(streamBody),
      m_timeouts(timeouts) {
    // Qt must never follow a redirect on its own: every target is checked
    // against the endpoint first, here.
    m_request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                           QNetworkRequest::ManualRedirectPolicy);
    m_request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                           QNetworkRequest::AlwaysNetwork);
    m_request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    m_request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    m_request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    m_request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    m_request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);

    m_inactivity.setSingleShot(true);
    m_deadline.setSingleShot(true);
    connect(&m_inactivity, &QTimer::timeout, this, [this] { onTimeout(false); });
    connect(&m_deadline, &QTimer::timeout, this, [this] { onTimeout(true); });
}

ProviderRequest::~ProviderRequest() {
    dropReply();
}

void ProviderRequest::start() {
    m_deadline.start(m_timeouts.deadline);
    send(m_request.url());
}

void ProviderRequest::send(const QUrl& url) {
    if (!url.isValid() || !allowsRequestURL(m_endpoint, url)) {
        fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::invalidEndpoint));
        return;
    }
    QNetworkRequest request = m_request;
    request.setUrl(url);
    m_status = 0;
    m_open = false;
    m_collected.clear();
    m_errorBody.clear();
    m_reply = m_network.sendCustomRequest(request, m_verb, m_body);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &ProviderRequest::onMetaData);
    connect(m_reply, &QIODevice::readyRead, this, &ProviderRequest::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &ProviderRequest::onFinished);
    connect(m_reply, &QNetworkReply::uploadProgress, this,
            [this] { m_inactivity.start(m_timeouts.inactivity); });
    m_inactivity.start(m_timeouts.inactivity);
}

void ProviderRequest::onMetaData() {
    if (m_done || !m_reply)
        return;
    m_inactivity.start(m_timeouts.inactivity);
    const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        return;
    m_status = status.toInt();
    if (isRedirect(m_status))
        return; // decided when the redirect response has finished
    const qint64 announced =
        m_reply->header(QNetworkRequest::ContentLengthHeader).isValid()
            ? m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong()
            : -1;
    const bool success = m_status >= 200 && m_status <= 299;

    if (m_streamBody) {
        // Streams: the status decides first, then the announced length.
        if (!success)
            return; // classified when it finishes; aborting here upsets QNetworkReply
        if (!allowsRequestURL(m_endpoint, m_reply->url())) {
            fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::invalidResponse));
            return;
        }
        if (announced > responseLimit) {
            fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::responseTooLarge));
            return;
        }
        m_open = true;
        if (onOpen)
            onOpen(m_status);
        return;
    }
    // Collected bodies: the announced length is refused before any byte.
    if (announced > responseLimit) {
        fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::responseTooLarge));
        return;
    }
    if (announced > 0)
        m_collected.reserve(announced);
    m_open = success;
}

void ProviderRequest::onReadyRead() {
    if (m_done || !m_reply)
        return;
    m_inactivity.start(m_timeouts.inactivity);
    if (!m_open || isRedirect(m_status)) {
        // A redirect's body is of no use; of an error's, the start may say
        // what the server refused.
        const QByteArray ignored = m_reply->readAll();
        if (m_status >= 400 && m_errorBody.size() < errorBodyLimit)
            m_errorBody.append(ignored.left(errorBodyLimit - m_errorBody.size()));
        return;
    }
    const QByteArray bytes = m_reply->readAll();
    if (m_streamBody) {
        if (onBytes && !onBytes(bytes))
            cancel();
        return;
    }
    if (m_collected.size() + bytes.size() > responseLimit) {
        fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::responseTooLarge));
        return;
    }
    m_collected.append(bytes);
}

void ProviderRequest::onFinished() {
    if (m_done || !m_reply)
        return;
    QNetworkReply* reply = m_reply;
    const QVariant statusAttribute = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (statusAttribute.isValid())
        m_status = statusAttribute.toInt();

    if (isRedirect(m_status)) {
        // Read raw: Qt's parsed Location header drops relative references
        // ("/v1/models"), which servers commonly send.
        const QUrl location = QUrl::fromEncoded(reply->rawHeader("Location").trimmed());
        const QUrl target = location.isValid() ? reply->url().resolved(location) : QUrl();
        if (target.isValid() && allowsRequestURL(m_endpoint, target) &&
            ++m_redirects <= maximumRedirects) {
            dropReply();
            send(target);
            return;
        }
        // A refused redirect: the redirect response is the final one.
        fail(ProviderConnectionFailure::status(m_status));
        return;
    }

    if (reply->error() != QNetworkReply::NoError) {
        if (m_status > 0 && !m_open && (m_status < 200 || m_status > 299)) {
            onReadyRead(); // whatever of the error body is still waiting
            fail(ProviderConnectionFailure::forHTTPStatus(m_status));
            return;
        }
        const QString description = reply->errorString();
        if (m_open && m_streamBody) {
            dropWhileOpen(description);
            return;
        }
        fail(ProviderConnectionFailure::of(reply->error() == QNetworkReply::TimeoutError
                                               ? ProviderConnectionFailure::Kind::timedOut
                                               : ProviderConnectionFailure::Kind::network),
             description);
        return;
    }

    if (m_status < 200 || m_status > 299) {
        onReadyRead();
        fail(ProviderConnectionFailure::forHTTPStatus(m_status));
        return;
    }
    if (!allowsRequestURL(m_endpoint, reply->url())) {
        fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::invalidResponse));
        return;
    }
    // Whatever arrived with the end.
    onReadyRead();
    if (m_done)
        return;
    Outcome outcome;
    outcome.kind = Outcome::Kind::finished;
    outcome.status = m_status;
    outcome.body = std::move(m_collected);
    finish(outcome);
}

void ProviderRequest::onTimeout(bool deadline) {
    if (m_done)
        return;
    const QString description =
        deadline ? QStringLiteral("deadline passed") : QStringLiteral("no data in time");
    if (m_open && m_streamBody) {
        dropWhileOpen(description);
        return;
    }
    fail(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::timedOut), description);
}

// The body had begun: what ends it now is not classified (the caller words
// it generically).
void ProviderRequest::dropWhileOpen(const QString& description) {
    Outcome outcome;
    outcome.kind = Outcome::Kind::droppedOpen;
    outcome.status = m_status;
    outcome.debugDescription = description;
    finish(outcome);
}

void ProviderRequest::fail(const ProviderConnectionFailure& failure, const QString& description) {
    Outcome outcome;
    outcome.kind = Outcome::Kind::failed;
    outcome.status = m_status;
    outcome.failure = failure;
    outcome.body = std::move(m_errorBody);
    outcome.debugDescription = description;
    finish(outcome);
}

void ProviderRequest::finish(Outcome outcome) {
    if (m_done)
        return;
    m_done = true;
    m_inactivity.stop();
    m_deadline.stop();
    dropReply();
    if (onDone)
        onDone(outcome);
}

void ProviderRequest::cancel() {
    m_done = true;
    m_inactivity.stop();
    m_deadline.stop();
    dropReply();
}

void ProviderRequest::dropReply() {
    if (!m_reply)
        return;
    QNetworkReply* reply = m_reply;
    m_reply = nullptr;
    // Disconnect first: abort() emits finished() at once, and nothing of
    // ours may run from inside it.
    reply->disconnect(this);
    if (reply->isRunning())
        reply->abort();
    reply->deleteLater();
}

} // namespace scrivel
