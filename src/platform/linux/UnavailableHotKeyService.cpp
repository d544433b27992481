#include "platform/linux/UnavailableHotKeyService.h"

#include <cstdio>

namespace scrivel {

UnavailableHotKeyService::UnavailableHotKeyService(QObject* parent) : HotKeyService(parent) {
    std::fputs("scrivel: this session offers no global shortcuts; bind \"scrivel --toggle\" to a "
               "shortcut in your desktop’s keyboard settings instead.\n",
               stderr);
}

} // namespace scrivel
