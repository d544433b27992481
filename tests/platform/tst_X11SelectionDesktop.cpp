#include "core/selection/SelectionRules.h"
#include "platform/linux/X11SelectionDesktop.h"
#include "support/TestSupport.h"

#include <QSocketNotifier>
#include <QtTest>
#include <cstdlib>
#include <cstring>
#include <xcb/xcb.h>

using namespace scrivel;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(PrimarySelection)

namespace {

xcb_atom_t intern(xcb_connection_t* c, const char* name) {
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(std::strlen(name)), name), nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

// Another application on the display, with its own connection: a window
// that can hold the focus and the PRIMARY selection, answers requests for
// it in one of several ways, and records the keys it is sent.
class OtherApplication : public QObject {
public:
    enum class Answer { utf8, latin1Only, refuse, wrongType, never, incremental };

    OtherApplication() : m_c(xcb_connect(nullptr, nullptr)) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;
        m_utf8 = intern(m_c, "UTF8_STRING");
        m_incr = intern(m_c, "INCR");
        m_notifier =
            std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_c), QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { pump(); });
    }
    ~OtherApplication() override {
        m_notifier.reset();
        xcb_disconnect(m_c);
    }

    // A mapped top-level window with a class, and a child inside it.
    xcb_window_t openWindow(const QByteArray& windowClass = "gedit\0Gedit"_ba) {
        window = xcb_generate_id(m_c);
        const uint32_t events = XCB_EVENT_MASK_KEY_PRESS;
        xcb_create_window(m_c, XCB_COPY_FROM_PARENT, window, m_root, 10, 10, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &events);
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                            8, uint32_t(windowClass.size() + 1), windowClass.constData());
        child = xcb_generate_id(m_c);
        xcb_create_window(m_c, XCB_COPY_FROM_PARENT, child, window, 0, 0, 50, 50, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &events);
        xcb_map_window(m_c, child);
        xcb_map_window(m_c, window);
        roundTrip();
        return window;
    }
    void focus(xcb_window_t target) {
        xcb_set_input_focus(m_c, XCB_INPUT_FOCUS_POINTER_ROOT, target, XCB_CURRENT_TIME);
        roundTrip();
    }
    // The selection, owned by the child widget as toolkits often do.
    void select(const QByteArray& bytes, Answer answer) {
        m_bytes = bytes;
        m_answer = answer;
        xcb_set_selection_owner(m_c, child, XCB_ATOM_PRIMARY, XCB_CURRENT_TIME);
        roundTrip();
    }
    void closeWindow() {
        xcb_destroy_window(m_c, window);
        roundTrip();
    }

    // Requests it has seen (answered or not), and their requestor windows.
    QList<xcb_window_t> requestors;
    // The modifier state of each key press received.
    QList<uint16_t> keyStates;
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_window_t child = XCB_WINDOW_NONE;
    static constexpr qsizetype chunk = 4000;

private:
    void roundTrip() {
        std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr));
        pump();
    }
    void pump() {
        while (xcb_generic_event_t* event = xcb_poll_for_event(m_c)) {
            switch (event->response_type & 0x7f) {
            case XCB_SELECTION_REQUEST:
                onRequest(*reinterpret_cast<xcb_selection_request_event_t*>(event));
                break;
            case XCB_PROPERTY_NOTIFY:
                onProperty(*reinterpret_cast<xcb_property_notify_event_t*>(event));
                break;
            case XCB_KEY_PRESS:
                keyStates.append(reinterpret_cast<xcb_key_press_event_t*>(event)->state);
                break;
            }
            std::free(event);
        }
        xcb_flush(m_c);
    }
    void notify(const xcb_selection_request_event_t& request, xcb_atom_t property) {
        xcb_selection_notify_event_t notify{};
        notify.response_type = XCB_SELECTION_NOTIFY;
        notify.requestor = request.requestor;
        notify.selection = request.selection;
        notify.target = request.target;
        notify.property = property;
        notify.time = request.time;
        xcb_send_event(m_c, 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
    }
    void put(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
             const QByteArray& bytes) {
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, requestor, property, type, 8,
                            uint32_t(bytes.size()), bytes.constData());
    }
    void onRequest(const xcb_selection_request_event_t& request) {
        requestors.append(request.requestor);
        const bool utf8 = request.target == m_utf8;
        const bool latin1 = request.target == XCB_ATOM_STRING;
        switch (m_answer) {
        case Answer::never:
            return;
        case Answer::refuse:
            notify(request, XCB_ATOM_NONE);
            return;
        case Answer::latin1Only:
            if (!latin1) {
                notify(request, XCB_ATOM_NONE);
                return;
            }
            break;
        case Answer::wrongType:
            put(request.requestor, request.property, XCB_ATOM_ATOM, "abcd");
            notify(request, request.property);
            return;
        case Answer::incremental: {
            const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(m_c, request.requestor, XCB_CW_EVENT_MASK, &events);
            const auto size = uint32_t(m_bytes.size());
            xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                m_incr, 32, 1, &size);
            m_sending = {request.requestor, request.property, 0};
            notify(request, request.property);
            return;
        }
        case Answer::utf8:
            if (!utf8) {
                notify(request, XCB_ATOM_NONE);
                return;
            }
            break;
        }
        put(request.requestor, request.property, request.target, m_bytes);
        notify(request, request.property);
    }
    void onProperty(const xcb_property_notify_event_t& event) {
        // The requestor took the last piece: the next one, then an empty one.
        if (event.window != m_sending.requestor || event.atom != m_sending.property ||
            event.state != XCB_PROPERTY_DELETE || m_sending.finished)
            return;
        const QByteArray piece = m_bytes.mid(m_sending.offset, chunk);
        m_sending.offset += chunk;
        m_sending.finished = piece.isEmpty();
        put(m_sending.requestor, m_sending.property, m_utf8, piece);
    }

    xcb_connection_t* m_c;
    xcb_window_t m_root;
    xcb_atom_t m_utf8;
    xcb_atom_t m_incr;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QByteArray m_bytes;
    Answer m_answer = Answer::utf8;
    struct {
        xcb_window_t requestor = XCB_WINDOW_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        qsizetype offset = 0;
        bool finished = false;
    } m_sending;
};

bool windowExists(xcb_window_t window) {
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    xcb_get_window_attributes_reply_t* reply =
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr);
    const bool exists = reply != nullptr;
    std::free(reply);
    xcb_disconnect(c);
    return exists;
}

} // namespace

// The X11 side of the selection flow against other clients on the test
// display (no window manager): whose selection it is, reading it in every
// form an owner may answer, giving up on one that hangs, and handing the
// focus and the paste keys back.
class X11SelectionDesktopTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (qEnvironmentVariableIsEmpty("DISPLAY"))
            QSKIP("needs an X display (scripts/test provides Xvfb)");
        QVERIFY(m_desktop.isConnected());
        QVERIFY(m_desktop.hasXTest());
    }

    void sceneTellsWhoseSelectionItIs() {
        OtherApplication editor;
        OtherApplication other;
        editor.openWindow();
        other.openWindow();
        editor.select("teh cat", OtherApplication::Answer::utf8);

        editor.focus(editor.child);
        SelectionScene scene = m_desktop.scene();
        QVERIFY(scene.focused && scene.owner);
        QCOMPARE(scene.focused->topLevel, editor.window);
        QCOMPARE(scene.owner->topLevel, editor.window);
        QCOMPARE(scene.owner->connection, scene.focused->connection);
        QVERIFY(SelectionRules::isOwnedByFocusedWindow(scene));

        other.focus(other.window);
        scene = m_desktop.scene();
        QCOMPARE(scene.focused->topLevel, other.window);
        QVERIFY(scene.owner->connection != scene.focused->connection);
        QVERIFY(!SelectionRules::isOwnedByFocusedWindow(scene));
    }

    void readsWhatTheOwnerGives_data() {
        QTest::addColumn<int>("answer");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<qsizetype>("limit");
        QTest::addColumn<PrimarySelection>("read");
        using A = OtherApplication::Answer;
        const QByteArray large = QByteArray("teh café ").repeated(3000); // 30,000 bytes
        QTest::newRow("UTF-8") << int(A::utf8) << "teh caf\xc3\xa9\n"_ba << qsizetype(100)
                               << PrimarySelection::ofText(u"teh café\n"_s);
        QTest::newRow("Latin-1 from an older owner")
            << int(A::latin1Only) << "caf\xe9"_ba << qsizetype(100)
            << PrimarySelection::ofText(u"café"_s);
        QTest::newRow("refused") << int(A::refuse) << "x"_ba << qsizetype(100)
                                 << PrimarySelection::notText();
        QTest::newRow("not text") << int(A::wrongType) << "x"_ba << qsizetype(100)
                                  << PrimarySelection::notText();
        QTest::newRow("over the limit")
            << int(A::utf8) << "0123456789a"_ba << qsizetype(10) << PrimarySelection::overLimit();
        QTest::newRow("in pieces") << int(A::incremental) << large << qsizetype(100000)
                                   << PrimarySelection::ofText(QString::fromUtf8(large));
        QTest::newRow("in pieces, over the limit")
            << int(A::incremental) << large << qsizetype(20000) << PrimarySelection::overLimit();
    }
    void readsWhatTheOwnerGives() {
        QFETCH(int, answer);
        QFETCH(QByteArray, bytes);
        QFETCH(qsizetype, limit);
        QFETCH(PrimarySelection, read);
        OtherApplication editor;
        editor.openWindow();
        editor.select(bytes, OtherApplication::Answer(answer));
        const std::optional<PrimarySelection> got = test::waitFor(m_desktop.readPrimary(limit));
        QVERIFY(got);
        QCOMPARE(got->kind, read.kind);
        QCOMPARE(got->text, read.text);
    }

    void aReadGivenUpOnLeavesNothingBehind() {
        OtherApplication hung;
        hung.openWindow();
        hung.select("teh cat", OtherApplication::Answer::never);
        Future<PrimarySelection> read = m_desktop.readPrimary(100);
        QTRY_COMPARE(hung.requestors.size(), 1);
        QVERIFY(windowExists(hung.requestors[0]));
        read.cancel();
        // A late answer would go to a window that no longer exists.
        QTRY_VERIFY(!windowExists(hung.requestors[0]));
        QVERIFY(!read.isDelivered());
    }

    void theFocusAndThePasteKeysGoBack() {
        OtherApplication editor;
        OtherApplication panel; // stands in for the panel that had the focus
        editor.openWindow("konsole\0konsole"_ba);
        panel.openWindow();
        editor.select("teh cat", OtherApplication::Answer::utf8);
        editor.focus(editor.child);
        const DesktopWindow source = *m_desktop.scene().focused;
        panel.focus(panel.window);
        QVERIFY(!m_desktop.hasFocus(source));

        QVERIFY(m_desktop.isAlive(source));
        QCOMPARE(m_desktop.windowClass(source), (QStringList{u"konsole"_s, u"konsole"_s}));
        m_desktop.activate(source);
        QTRY_VERIFY(m_desktop.hasFocus(source));

        m_desktop.typePaste(PasteKeys::ctrlV);
        m_desktop.typePaste(PasteKeys::ctrlShiftV);
        // Each press with the modifiers already down: Control, then V with
        // Control; Control, Shift with Control, then V with both.
        constexpr uint16_t control = XCB_MOD_MASK_CONTROL;
        constexpr uint16_t shift = XCB_MOD_MASK_SHIFT;
        QTRY_COMPARE(editor.keyStates.size(), 5);
        for (uint16_t& state : editor.keyStates)
            state &= control | shift;
        QCOMPARE(editor.keyStates, (QList<uint16_t>{0, control, 0, control, control | shift}));

        editor.closeWindow();
        QVERIFY(!m_desktop.isAlive(source));
    }

private:
    X11SelectionDesktop m_desktop;
};

QTEST_GUILESS_MAIN(X11SelectionDesktopTest)
#include "tst_X11SelectionDesktop.moc"
