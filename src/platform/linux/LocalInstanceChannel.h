#pragma once

#include "platform/linux/InstanceRequest.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <expected>
#include <functional>

class QLocalServer;
class QLocalSocket;

namespace scrivel {

// A single-instance channel that needs no session bus: a Unix socket in the
// user's runtime folder ($XDG_RUNTIME_DIR), one per display. The instance
// that claims it first listens on it; a later start finds that instance and
// sends it requests. A socket left behind by an instance that ended without
// closing it (a crash, a kill) is taken over.
//
// Each request line is answered with one line: {"ok":true}, or {"ok":false,
// "error":"…"} for a request the instance does not understand. A line longer
// than 64 KiB, or a connection that sends nothing for 10 s, is dropped.
class LocalInstanceChannel : public QObject {
    Q_OBJECT

public:
    // Runs a received request; false when its command is unknown.
    using Handler = std::function<bool(const InstanceRequest&)>;

    enum class Claim { listening, foundRunning, failed };

    // The socket's path in runtimeDir for this display, or why there is
    // none (a phrase such as "XDG_RUNTIME_DIR is unset"). Anyone who can
    // reach the socket can drive the app, so the folder must exist, belong
    // to this user and be closed to everyone else.
    static std::expected<QString, QString> socketPath(const QString& runtimeDir,
                                                      const QString& display);

    explicit LocalInstanceChannel(QString path, QObject* parent = nullptr);
    ~LocalInstanceChannel() override;

    const QString& path() const { return m_path; }
    void setHandler(Handler handler) { m_handler = std::move(handler); }

    // Connects to the instance listening on the socket, or, when none does,
    // removes a stale socket and listens. A lock file beside the socket
    // keeps two starts at once from both listening. Blocks for at most a
    // few seconds.
    Claim claim();
    // Why claim() failed.
    const QString& errorString() const { return m_error; }

    // Sends a request to the instance claim() found and waits up to
    // timeoutMs for its answer; true when the instance understood it.
    bool send(const InstanceRequest& request, int timeoutMs = 5000);

private:
    void acceptConnections();

    QString m_path;
    QString m_error;
    Handler m_handler;
    QLocalServer* m_server = nullptr;
    QPointer<QLocalSocket> m_peer;
};

} // namespace scrivel
