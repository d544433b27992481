#include "core/storage/KeyStorePlace.h"

#include <atomic>

namespace scrivel {

namespace {

std::atomic<KeyStorePlace> place{KeyStorePlace::desktopKeyring};

} // namespace

KeyStorePlace currentKeyStorePlace() {
    return place.load(std::memory_order_relaxed);
}

void setCurrentKeyStorePlace(KeyStorePlace newPlace) {
    place.store(newPlace, std::memory_order_relaxed);
}

} // namespace scrivel
