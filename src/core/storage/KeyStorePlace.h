#pragma once

namespace scrivel {

// Where this process keeps API keys: the desktop's keyring (reached through
// the Secret Service), or Scrivel's own private key file where no keyring
// runs. The platform records it as soon as it knows which store it uses, so
// that a failed key access names the store the user can go and check.
enum class KeyStorePlace {
    desktopKeyring,
    privateKeyFile,
};

// The keyring until told otherwise.
KeyStorePlace currentKeyStorePlace();
void setCurrentKeyStorePlace(KeyStorePlace place);

} // namespace scrivel
