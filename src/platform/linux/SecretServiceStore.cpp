#include "platform/linux/SecretServiceStore.h"

#include "core/support/Log.h"

#include <QPointer>
#include <QTimer>
#include <qt6keychain/keychain.h>

namespace scrivel {

namespace {

using namespace QKeychain;

int statusFor(const Job& job) {
    switch (job.error()) {
    case NoError:
        return 0;
    case EntryNotFound:
        return -25300;
    case AccessDenied:
    case AccessDeniedByUser:
        return SecretServiceStore::authorizationFailed;
    case NoBackendAvailable:
        return SecretServiceStore::notAvailable;
    case CouldNotDeleteEntry:
    case OtherError:
    case NotImplemented:
        break;
    }
    return SecretServiceStore::internalError;
}

// Runs a configured job and hands its outcome to onDone once: when it
// finishes, or with interactionNotAllowed when it does not finish in time.
template <typename OnDone>
void runJob(Job* job, std::chrono::milliseconds timeout, OnDone onDone) {
    auto done = std::make_shared<bool>(false);
    auto* timer = new QTimer(job);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, job, [job, done, onDone]() mutable {
        if (*done)
            return;
        *done = true;
        qCWarning(rewriteLog) << "secret service job timed out";
        onDone(nullptr);
        Q_UNUSED(job);
    });
    QObject::connect(job, &Job::finished, job, [done, onDone](Job* finished) mutable {
        if (*done)
            return;
        *done = true;
        if (finished->error() != NoError && finished->error() != EntryNotFound)
            qCDebug(rewriteLog).noquote()
                << privateValue(QStringLiteral("secret service error=%1 %2")
                                    .arg(int(finished->error()))
                                    .arg(finished->errorString()));
        onDone(finished);
    });
    job->setAutoDelete(true);
    job->setInsecureFallback(false);
    timer->start(timeout);
    job->start();
}

} // namespace

SecretServiceStore::SecretServiceStore(const QString& service, QObject* parent)
    : QObject(parent), m_service(service) {}

Future<SecretStore::ReadResult> SecretServiceStore::read(const QString& account) {
    Promise<ReadResult> promise;
    auto future = promise.future();
    auto* job = new ReadPasswordJob(m_service, this);
    job->setKey(account);
    runJob(job, m_timeout, [promise](Job* finished) {
        if (!finished) {
            promise.resolve(std::unexpected(interactionNotAllowed));
            return;
        }
        if (finished->error() == EntryNotFound) {
            promise.resolve(std::optional<QByteArray>());
            return;
        }
        if (finished->error() != NoError) {
            promise.resolve(std::unexpected(statusFor(*finished)));
            return;
        }
        promise.resolve(
            std::optional<QByteArray>(static_cast<ReadPasswordJob*>(finished)->binaryData()));
    });
    return future;
}

Future<SecretStore::WriteResult> SecretServiceStore::write(const QString& account,
                                                           const QByteArray& value) {
    Promise<WriteResult> promise;
    auto future = promise.future();
    // The Secret Service replaces an existing item with the same attributes,
    // which makes every write an update-or-add.
    auto* job = new WritePasswordJob(m_service, this);
    job->setKey(account);
    job->setBinaryData(value);
    runJob(job, m_timeout, [promise](Job* finished) {
        if (!finished)
            promise.resolve(std::unexpected(interactionNotAllowed));
        else if (finished->error() != NoError)
            promise.resolve(std::unexpected(statusFor(*finished)));
        else
            promise.resolve({});
    });
    return future;
}

Future<SecretStore::WriteResult> SecretServiceStore::remove(const QString& account) {
    Promise<WriteResult> promise;
    auto future = promise.future();
    auto* job = new DeletePasswordJob(m_service, this);
    job->setKey(account);
    runJob(job, m_timeout, [promise](Job* finished) {
        if (!finished)
            promise.resolve(std::unexpected(interactionNotAllowed));
        else if (finished->error() != NoError && finished->error() != EntryNotFound)
            promise.resolve(std::unexpected(statusFor(*finished)));
        else
            promise.resolve({});
    });
    return future;
}

} // namespace scrivel
