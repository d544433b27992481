#include "core/settings/UpdaterController.h"

#include <QUrl>

#ifndef SCRIVEL_UPDATE_FEED_URL
#define SCRIVEL_UPDATE_FEED_URL ""
#endif
#ifndef SCRIVEL_UPDATE_PUBLIC_KEY
#define SCRIVEL_UPDATE_PUBLIC_KEY ""
#endif

namespace scrivel {

UpdaterController::UpdaterController(FrameworkFactory factory)
    : UpdaterController(QStringLiteral(SCRIVEL_UPDATE_FEED_URL),
                        QStringLiteral(SCRIVEL_UPDATE_PUBLIC_KEY), std::move(factory)) {}

UpdaterController::UpdaterController(QString feedURL, QString publicKey, FrameworkFactory factory)
    : m_feedURL(std::move(feedURL)), m_publicKey(std::move(publicKey)),
      m_factory(std::move(factory)) {}

bool UpdaterController::isConfigured() const {
    return isConfigured(m_feedURL, m_publicKey);
}

namespace {

// The documentation domain and the loopback names: addresses copied from an
// example or left over from local testing, never a real release channel.
bool isPlaceholderHost(const QString& host) {
    static const QString documentation = QStringLiteral("example.com");
    return host == documentation || host.endsWith(QLatin1Char('.') + documentation) ||
           host == QLatin1String("localhost") || host == QLatin1String("127.0.0.1") ||
           host == QLatin1String("::1"); // QUrl gives an IPv6 host without brackets
}

// The text between "//" and the path, query or fragment.
QString authorityOf(const QString& url) {
    const qsizetype start = url.indexOf(QLatin1String("//"));
    if (start < 0)
        return {};
    qsizetype end = start + 2;
    while (end < url.size() && url[end] != QLatin1Char('/') && url[end] != QLatin1Char('?') &&
           url[end] != QLatin1Char('#'))
        ++end;
    return url.mid(start + 2, end - start - 2);
}

} // namespace

bool UpdaterController::isConfigured(const QString& feedURL, const QString& publicKey) {
    const QString feed = feedURL.trimmed();
    const QString key = publicKey.trimmed();
    if (feed.isEmpty() || key.isEmpty())
        return false;

    const QUrl url(feed, QUrl::StrictMode);
    if (!url.isValid())
        return false;
    if (url.scheme().toLower() != QLatin1String("https"))
        return false;
    // An empty "user@" still names a user, which QUrl forgets.
    if (!url.userInfo().isEmpty() || authorityOf(feed).contains(QLatin1Char('@')))
        return false;
    if (url.hasFragment())
        return false;

    const QString host = url.host().toLower();
    if (host.isEmpty() || isPlaceholderHost(host))
        return false;

    const QString path = url.path();
    if (path.isEmpty() || path == QLatin1String("/"))
        return false;

    const auto decoded =
        QByteArray::fromBase64Encoding(key.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    // toLatin1 turns anything outside Latin-1 into '?', which Base64 rejects.
    return decoded && decoded.decoded.size() == 32 && decoded.decoded.toBase64() == key.toLatin1();
}

bool UpdaterController::ensureController() {
    if (m_framework)
        return true;
    if (!isConfigured() || !m_factory)
        return false;
    m_framework = m_factory();
    return m_framework != nullptr;
}

bool UpdaterController::canCheckForUpdates() const {
    return m_framework && m_framework->canCheckForUpdates();
}

void UpdaterController::startIfConfigured() {
    (void)ensureController();
}

void UpdaterController::checkForUpdates() {
    if (!ensureController())
        return;
    if (m_framework->canCheckForUpdates())
        m_framework->checkForUpdates();
}

void UpdaterController::setAutomaticallyChecks(bool checks) {
    if (ensureController())
        m_framework->setAutomaticallyChecksForUpdates(checks);
}

bool UpdaterController::automaticallyChecks() const {
    return m_framework && m_framework->automaticallyChecksForUpdates();
}

} // namespace scrivel
