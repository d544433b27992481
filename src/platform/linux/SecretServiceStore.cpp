#include "platform/linux/SecretServiceStore.h"

#include "core/support/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QMap>
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

using Attributes = QMap<QString, QString>;

} // namespace

SecretServiceStore::SecretServiceStore(const QString& service, QObject* parent)
    : QObject(parent), m_service(service) {
    qDBusRegisterMetaType<Attributes>();
}

Future<std::expected<SecretServiceStore::Matches, int>>
SecretServiceStore::matchingItems(const QString& account) {
    using Result = std::expected<Matches, int>;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Future<Result>::ready(std::unexpected(notAvailable));
    // The attributes QtKeychain gives every item it stores.
    QDBusMessage search = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
        QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("SearchItems"));
    search << QVariant::fromValue(
        Attributes{{QStringLiteral("user"), account}, {QStringLiteral("server"), m_service}});
    Promise<Result> promise;
    auto future = promise.future();
    auto* watcher =
        new QDBusPendingCallWatcher(bus.asyncCall(search, int(m_timeout.count())), this);
    connect(
        watcher, &QDBusPendingCallWatcher::finished, this,
        [promise](QDBusPendingCallWatcher* call) {
            call->deleteLater();
            const QDBusPendingReply<QList<QDBusObjectPath>, QList<QDBusObjectPath>> reply = *call;
            if (reply.isError()) {
                qCDebug(rewriteLog).noquote() << privateValue(
                    QStringLiteral("secret service search error=%1").arg(reply.error().name()));
                promise.resolve(std::unexpected(reply.error().type() == QDBusError::NoReply ||
                                                        reply.error().type() == QDBusError::Timeout
                                                    ? interactionNotAllowed
                                                    : internalError));
                return;
            }
            promise.resolve(
                Matches{!reply.argumentAt<0>().isEmpty(), !reply.argumentAt<1>().isEmpty()});
        });
    return future;
}

Future<std::optional<int>> SecretServiceStore::remainingItem(const QString& account) {
    return mapFuture(matchingItems(account), this,
                     [](std::expected<Matches, int> matches) -> std::optional<int> {
                         if (!matches)
                             return matches.error();
                         if (matches->locked)
                             return locked;
                         // An unlocked item that QtKeychain could not see:
                         // nothing to rely on either way.
                         if (matches->unlocked)
                             return internalError;
                         return std::nullopt;
                     });
}

Future<SecretStore::ReadResult> SecretServiceStore::read(const QString& account) {
    Promise<ReadResult> promise;
    auto future = promise.future();
    auto* job = new ReadPasswordJob(m_service, this);
    job->setKey(account);
    QPointer<SecretServiceStore> self(this);
    runJob(job, m_timeout, [self, account, promise](Job* finished) {
        if (!finished) {
            promise.resolve(std::unexpected(interactionNotAllowed));
            return;
        }
        if (finished->error() == EntryNotFound) {
            if (!self) {
                promise.resolve(std::unexpected(internalError));
                return;
            }
            self->remainingItem(account).detach(self, [promise](std::optional<int> remaining) {
                if (remaining)
                    promise.resolve(std::unexpected(*remaining));
                else
                    promise.resolve(std::optional<QByteArray>());
            });
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
    QPointer<SecretServiceStore> self(this);
    runJob(job, m_timeout, [self, account, promise](Job* finished) {
        if (!finished) {
            promise.resolve(std::unexpected(interactionNotAllowed));
            return;
        }
        if (finished->error() != NoError && finished->error() != EntryNotFound) {
            promise.resolve(std::unexpected(statusFor(*finished)));
            return;
        }
        // A locked item is left in place without an error.
        if (!self) {
            promise.resolve(std::unexpected(internalError));
            return;
        }
        self->remainingItem(account).detach(self, [promise](std::optional<int> remaining) {
            if (remaining)
                promise.resolve(std::unexpected(*remaining));
            else
                promise.resolve({});
        });
    });
    return future;
}

} // namespace scrivel
