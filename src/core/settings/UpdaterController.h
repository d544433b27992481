#pragma once

#include "core/settings/UpdateFramework.h"

#include <QString>
#include <functional>
#include <memory>

namespace scrivel {

// Decides whether this build may update itself and holds the update
// framework's controller once one is made. The feed address and the EdDSA
// public key are fixed when the app is built; a build without them (every
// development build) is not configured and never makes a controller.
class UpdaterController {
public:
    // Makes the framework's standard controller, already started. Empty where
    // the platform has no update framework.
    using FrameworkFactory = std::function<std::unique_ptr<UpdateFramework>()>;

    // The build's own configuration.
    explicit UpdaterController(FrameworkFactory factory = {});
    // A given configuration, for tests and tools.
    UpdaterController(QString feedURL, QString publicKey, FrameworkFactory factory = {});

    // Whether the feed address and key describe a real release channel: an
    // https address on a real host with a path, and a 32-byte Ed25519 key in
    // Base64. Checked each time it is asked.
    bool isConfigured() const;
    static bool isConfigured(const QString& feedURL, const QString& publicKey);

    // Whether this build can check for updates at all: configured, and with
    // an update framework to do the checking. Where it cannot, updates come
    // from the package or the distribution and no update control is shown.
    bool offersUpdates() const { return isConfigured() && (m_framework || m_factory); }

    bool hasController() const { return m_framework != nullptr; }
    // A controller exists and the framework can check right now.
    bool canCheckForUpdates() const;

    // Makes the controller when configured; called once at launch.
    void startIfConfigured();
    void checkForUpdates();
    void setAutomaticallyChecks(bool checks);
    bool automaticallyChecks() const;

private:
    // Makes the controller when configured and none exists; true when one
    // exists afterwards.
    bool ensureController();

    QString m_feedURL;
    QString m_publicKey;
    FrameworkFactory m_factory;
    std::unique_ptr<UpdateFramework> m_framework;
};

} // namespace scrivel
