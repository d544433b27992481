#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace scrivel::test {

// A session bus and a gnome-keyring of a suite's own, so that the suite may
// lock the keyring or stop the service without touching the keyring of the
// session it runs in. The login collection is the default one and starts
// unlocked. Neither process sees a display: an unlock prompt can never be
// shown, so the keyring dismisses it at once.
class PrivateKeyring {
public:
    PrivateKeyring() = default;
    PrivateKeyring(const PrivateKeyring&) = delete;
    PrivateKeyring& operator=(const PrivateKeyring&) = delete;
    ~PrivateKeyring();

    // Starts the bus and the keyring. Empty when both run, else why not.
    QString start();
    QString busAddress() const { return m_address; }

    // Locks the default collection, as a screen lock or the user would.
    bool lockDefaultCollection();
    // Stops or resumes the keyring process: a service that does not answer.
    void setPaused(bool paused);

private:
    QTemporaryDir m_dir;
    QProcess m_bus;
    QProcess m_keyring;
    QString m_address;
    bool m_paused = false;
};

} // namespace scrivel::test
