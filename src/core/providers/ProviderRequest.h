#pragma once

#include "core/providers/ProviderConnectionFailure.h"
#include "core/providers/ProviderEndpoint.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QNetworkRequest>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <chrono>
#include <functional>

class QNetworkAccessManager;
class QNetworkReply;

namespace scrivel {

// One HTTP exchange with a provider: the URL policy, redirects decided by
// us, an inactivity time-out and an overall deadline, the response size
// limit, and the classification of what went wrong. The body is either
// streamed to onBytes (chat completions) or collected (model lists).
class ProviderRequest : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype responseLimit = 524288;
    // How much of an error response's body is kept for the caller to read.
    static constexpr qsizetype errorBodyLimit = 16384;

    struct Timeouts {
        std::chrono::milliseconds inactivity{60000};
        std::chrono::milliseconds deadline{122000};
    };

    struct Outcome {
        enum class Kind {
            finished,    // a 2xx response was read to its end
            failed,      // classified failure before the body was open
            droppedOpen, // the transport failed while the body was being read
        };
        Kind kind = Kind::finished;
        int status = 0;
        ProviderConnectionFailure failure =
            ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::network);
        // Collected bodies; for a failed status, the start of the error body.
        QByteArray body;
        QString debugDescription;
    };

    ProviderRequest(QNetworkAccessManager& network, const ProviderEndpoint& endpoint,
                    QNetworkRequest request, QByteArray verb, QByteArray body, bool streamBody,
                    Timeouts timeouts, QObject* parent = nullptr);
    ~ProviderRequest() override;

    // Streamed bodies: runs for each arrival of bytes of a 2xx response.
    // Returning false stops the exchange without any outcome.
    std::function<bool(QByteArrayView)> onBytes;
    // Runs once a 2xx response head has been accepted.
    std::function<void(int status)> onOpen;
    // Runs once at the end, unless the exchange was cancelled.
    std::function<void(const Outcome&)> onDone;

    void start();
    // Aborts the exchange; no outcome follows.
    void cancel();

private:
    void send(const QUrl& url);
    void onMetaData();
    void onReadyRead();
    void onFinished();
    void onTimeout(bool deadline);
    void fail(const ProviderConnectionFailure& failure, const QString& description = {});
    void dropWhileOpen(const QString& description);
    void finish(Outcome outcome);
    void dropReply();

    QNetworkAccessManager& m_network;
    ProviderEndpoint m_endpoint;
    QNetworkRequest m_request;
    QByteArray m_verb;
    QByteArray m_body;
    bool m_streamBody;
    Timeouts m_timeouts;

    QPointer<QNetworkReply> m_reply;
    QTimer m_inactivity;
    QTimer m_deadline;
    QByteArray m_collected;
    QByteArray m_errorBody;
    int m_status = 0;
    int m_redirects = 0;
    bool m_open = false;
    bool m_done = false;
};

} // namespace scrivel
