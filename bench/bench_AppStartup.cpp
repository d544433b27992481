// Cold starts of the real scrivel on an X display with a tray host and no
// window manager, timed from X events (never by polling):
//   start → tray icon embedded (the icon window is reparented into the tray),
//   memory 3 s after start (PSS of the process, from /proc),
//   shortcut released → panel window mapped, first and warm,
// with the keyboard focus in a window of the benchmark's own that owns the
// PRIMARY selection (so the panel opens with that text, read from it), or
// with "--no-selection" without one.
//
//   bench_AppStartup SCRIVEL [runs] [--no-selection]
//
// Needs DISPLAY (with a tray host such as trayer already running), a session
// bus, and the default shortcut Ctrl+Alt+Return. bench/app-startup.sh sets
// all of that up on a private Xvfb.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

double msBetween(Clock::time_point a, Clock::time_point b) {
    return std::chrono::duration<double, std::milli>(b - a).count();
}

class Display {
public:
    Display() {
        m_c = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_c)) {
            std::fprintf(stderr, "no X display\n");
            std::exit(2);
        }
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_c, m_root, XCB_CW_EVENT_MASK, &mask);
        m_symbols = xcb_key_symbols_alloc(m_c);
        xcb_flush(m_c);
    }
    ~Display() {
        xcb_key_symbols_free(m_symbols);
        xcb_disconnect(m_c);
    }

    // A small window of ours with the keyboard focus, holding a selected
    // text: what the user has when they press the shortcut over a text.
    void selectText(const QByteArray& text) {
        m_selected = text;
        m_utf8 = atom("UTF8_STRING");
        if (!m_window) {
            m_window = xcb_generate_id(m_c);
            xcb_create_window(m_c, XCB_COPY_FROM_PARENT, m_window, m_root, 0, 600, 200, 100, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
            xcb_map_window(m_c, m_window);
        }
        focusOwnWindow();
    }
    // The panel took the focus; it comes back before each press.
    void focusOwnWindow() {
        if (!m_window)
            return;
        xcb_set_input_focus(m_c, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
        xcb_set_selection_owner(m_c, m_window, XCB_ATOM_PRIMARY, XCB_CURRENT_TIME);
        xcb_flush(m_c);
    }

    // Waits for the first event the predicate accepts; its arrival time, or
    // nothing after the time-out.
    template <typename Predicate>
    std::optional<Clock::time_point> waitFor(Predicate accept, int timeoutMs) {
        const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        while (true) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(m_c)) {
                const auto now = Clock::now();
                answerSelectionRequest(event);
                const bool accepted = accept(event);
                std::free(event);
                if (accepted)
                    return now;
            }
            const int left =
                int(std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now())
                        .count());
            if (left <= 0)
                return std::nullopt;
            pollfd fd{xcb_get_file_descriptor(m_c), POLLIN, 0};
            poll(&fd, 1, left);
        }
    }

    bool isReparentIntoTray(xcb_generic_event_t* event) const {
        if ((event->response_type & 0x7f) != XCB_REPARENT_NOTIFY)
            return false;
        return reinterpret_cast<xcb_reparent_notify_event_t*>(event)->parent != m_root;
    }
    static bool isMap(xcb_generic_event_t* event) {
        return (event->response_type & 0x7f) == XCB_MAP_NOTIFY;
    }
    static bool isUnmap(xcb_generic_event_t* event) {
        return (event->response_type & 0x7f) == XCB_UNMAP_NOTIFY;
    }

    // Ctrl+Alt+Return pressed and released; returns when the release is sent.
    Clock::time_point pressShortcut() {
        const xcb_keycode_t control = keycode(0xffe3), alt = keycode(0xffe9), ret = keycode(0xff0d);
        for (xcb_keycode_t key : {control, alt, ret})
            xcb_test_fake_input(m_c, XCB_KEY_PRESS, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        for (xcb_keycode_t key : {ret, alt, control})
            xcb_test_fake_input(m_c, XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(m_c);
        return Clock::now();
    }

    void drain() {
        waitFor([](auto*) { return false; }, 50);
    }

private:
    void answerSelectionRequest(xcb_generic_event_t* event) {
        if ((event->response_type & 0x7f) != XCB_SELECTION_REQUEST)
            return;
        const auto* request = reinterpret_cast<xcb_selection_request_event_t*>(event);
        xcb_selection_notify_event_t notify{};
        notify.response_type = XCB_SELECTION_NOTIFY;
        notify.requestor = request->requestor;
        notify.selection = request->selection;
        notify.target = request->target;
        notify.time = request->time;
        notify.property = XCB_ATOM_NONE;
        if (request->target == m_utf8 && request->property != XCB_ATOM_NONE) {
            xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, request->requestor, request->property,
                                m_utf8, 8, uint32_t(m_selected.size()), m_selected.constData());
            notify.property = request->property;
        }
        xcb_send_event(m_c, 0, request->requestor, 0, reinterpret_cast<const char*>(&notify));
        xcb_flush(m_c);
    }
    xcb_atom_t atom(const char* name) {
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
            m_c, xcb_intern_atom(m_c, 0, uint16_t(strlen(name)), name), nullptr);
        const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(reply);
        return result;
    }
    xcb_keycode_t keycode(xcb_keysym_t symbol) {
        xcb_keycode_t* codes = xcb_key_symbols_get_keycode(m_symbols, symbol);
        const xcb_keycode_t code = codes ? codes[0] : 0;
        std::free(codes);
        return code;
    }

    xcb_connection_t* m_c;
    xcb_window_t m_root;
    xcb_key_symbols_t* m_symbols;
    xcb_window_t m_window = 0;
    xcb_atom_t m_utf8 = XCB_ATOM_NONE;
    QByteArray m_selected;
};

double pssMiB(pid_t pid) {
    QFile rollup(QStringLiteral("/proc/%1/smaps_rollup").arg(pid));
    if (!rollup.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : rollup.readAll().split('\n')) {
        if (line.startsWith("Pss:"))
            return line.mid(4).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return -1;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s SCRIVEL [runs] [--no-selection]\n", argv[0]);
        return 2;
    }
    const int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    const bool withSelection = !(argc > 3 && std::strcmp(argv[3], "--no-selection") == 0);
    std::vector<double> tray, memory, firstPanel, warmPanel;
    Display display;
    if (withSelection)
        display.selectText("Teh cat sat on teh mat, and teh dog sat beside it.");

    for (int run = 0; run < runs; ++run) {
        // A user who has launched before: no first-launch panel.
        QTemporaryDir home;
        QDir().mkpath(home.filePath(QStringLiteral("config/Scrivel")));
        QFile settings(home.filePath(QStringLiteral("config/Scrivel/Scrivel.conf")));
        settings.open(QIODevice::WriteOnly);
        settings.write("[General]\nscrivel.panel.has-seen=true\n");
        settings.close();
        setenv("XDG_CONFIG_HOME", qPrintable(home.filePath(QStringLiteral("config"))), 1);
        setenv("XDG_DATA_HOME", qPrintable(home.filePath(QStringLiteral("data"))), 1);
        setenv("SCRIVEL_SECRET_STORE", "file", 1);

        display.drain();
        pid_t pid = 0;
        char* arguments[] = {argv[1], nullptr};
        const auto start = Clock::now();
        if (posix_spawn(&pid, argv[1], nullptr, nullptr, arguments, environ) != 0) {
            std::perror("posix_spawn");
            return 1;
        }
        const auto embedded =
            display.waitFor([&](auto* e) { return display.isReparentIntoTray(e); }, 10000);
        if (!embedded) {
            std::fprintf(stderr, "run %d: the tray icon was never embedded\n", run + 1);
            kill(pid, SIGTERM);
            waitpid(pid, nullptr, 0);
            return 1;
        }
        display.waitFor([](auto*) { return false; }, int(3000 - msBetween(start, Clock::now())));
        const double pss = pssMiB(pid);

        display.focusOwnWindow();
        const auto pressed = display.pressShortcut();
        const auto mapped = display.waitFor(Display::isMap, 5000);
        display.drain();
        display.pressShortcut();
        display.waitFor(Display::isUnmap, 5000);
        display.drain();
        display.focusOwnWindow();
        const auto pressedAgain = display.pressShortcut();
        const auto mappedAgain = display.waitFor(Display::isMap, 5000);

        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
        if (!mapped || !mappedAgain) {
            std::fprintf(stderr, "run %d: the shortcut did not show the panel\n", run + 1);
            return 1;
        }
        tray.push_back(msBetween(start, *embedded));
        memory.push_back(pss);
        firstPanel.push_back(msBetween(pressed, *mapped));
        warmPanel.push_back(msBetween(pressedAgain, *mappedAgain));
        std::printf("run %d: tray %.1f ms, PSS %.1f MiB, panel first %.1f ms, warm %.1f ms\n",
                    run + 1, tray.back(), memory.back(), firstPanel.back(), warmPanel.back());
    }
    std::printf("median of %d cold starts: start → tray icon %.1f ms; PSS after 3 s %.1f MiB; "
                "shortcut → panel %.1f ms first, %.1f ms warm (%s)\n",
                runs, median(tray), median(memory), median(firstPanel), median(warmPanel),
                withSelection ? "a focused window owns a selection" : "no selection");
    return 0;
}
