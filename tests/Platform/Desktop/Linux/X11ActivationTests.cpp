// SPDX-License-Identifier: MIT
#include "Platform/Desktop/WindowActivation.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QWindow>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

/// What the display's library hands over to be freed.
template <class Reply>
using Owned = std::unique_ptr<Reply, decltype([](void* reply) { std::free(reply); })>;

/// A client of the display that looks on.
class Onlooker {
public:
    Onlooker()
        : m_connection(xcb_connect(nullptr, nullptr)) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        hasManager(); // the server has taken the mask once it has answered
    }
    Onlooker(const Onlooker&) = delete;
    Onlooker& operator=(const Onlooker&) = delete;
    ~Onlooker() { xcb_disconnect(m_connection); }

    /// Whether a window manager runs.
    bool hasManager() const { return number(m_root, "_NET_SUPPORTING_WM_CHECK").has_value(); }
    /// Which window has the focus, by the window manager's word.
    std::optional<uint32_t> activeWindow() const { return number(m_root, "_NET_ACTIVE_WINDOW"); }

    std::optional<uint32_t> number(xcb_window_t window, const char* property) const {
        const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            m_connection,
            xcb_get_property(m_connection, 0, window, atom(property), XCB_ATOM_ANY, 0, 1),
            nullptr));
        if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) != 4)
            return std::nullopt;
        uint32_t value = 0;
        std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
        return value;
    }

    /// Takes in what was sent to everybody until now.
    void look() {
        while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)})
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE)
                take(*reinterpret_cast<const xcb_client_message_event_t*>(event.get()));
    }

    /// The last startup information; complete once it holds a NUL.
    const QByteArray& startupInformation() const { return m_information; }
    /// The last wish for the focus: whose it is (1: the program's, 2: the user's), and its time.
    std::optional<std::pair<uint32_t, uint32_t>> wish() {
        look();
        return m_wish;
    }

private:
    xcb_atom_t atom(const char* name) const {
        const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            m_connection,
            xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(std::strlen(name)), name),
            nullptr));
        return reply->atom;
    }

    void take(const xcb_client_message_event_t& message) {
        const bool begins = message.type == atom("_NET_STARTUP_INFO_BEGIN");
        if (begins)
            m_information.clear();
        if (begins || message.type == atom("_NET_STARTUP_INFO"))
            m_information.append(reinterpret_cast<const char*>(message.data.data8), 20);
        if (message.type == atom("_NET_ACTIVE_WINDOW"))
            m_wish = {message.data.data32[0], message.data.data32[1]};
    }

    xcb_connection_t* m_connection;
    xcb_window_t m_root = 0;
    QByteArray m_information;
    std::optional<std::pair<uint32_t, uint32_t>> m_wish;
};

/// The server's time now: it counts on the same clock.
QByteArray serverTime() {
    QElapsedTimer timer;
    timer.start();
    return QByteArray::number(static_cast<uint>(timer.msecsSinceReference()));
}

} // namespace

/// With a real window manager on a display in memory.
class X11ActivationTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(QGuiApplication::platformName() == u"xcb",
                 "Run it in scripts/with-display --managed.");
        m_onlooker = std::make_unique<Onlooker>();
        QVERIFY(m_onlooker->hasManager());
    }

    void cleanupTestCase() { m_onlooker.reset(); }

    void init() {
        cleanup(); // does not come after an init() that failed
        m_window = std::make_unique<QWindow>();
        m_window->setGeometry(0, 0, 400, 300);
        m_window->show();
        QTRY_VERIFY_WITH_TIMEOUT(isActive(), processLimit);
        m_foreign = std::make_unique<QProcess>();
        m_foreign->start(QStringLiteral(FOREIGN_WINDOW), QStringList());
        QVERIFY(m_foreign->waitForReadyRead(processLimit)); // it has the focus
        QTRY_VERIFY_WITH_TIMEOUT(!isActive(), processLimit);
    }

    void cleanup() {
        if (m_foreign) {
            m_foreign->closeWriteChannel();
            m_foreign->waitForFinished(processLimit);
        }
        m_foreign.reset();
        m_window.reset();
    }

    void aWindowBehindAnotherProgramsGetsTheFocus_data() {
        QTest::addColumn<QByteArray>("token");
        QTest::newRow("with a time") << QByteArray("launcher-1_TIME");
        QTest::newRow("without a time") << QByteArray("launcher-1");
        QTest::newRow("time zero") << QByteArray("launcher-1_TIME0");
        QTest::newRow("nonsense for a time") << QByteArray("launcher-1_TIMEx");
        QTest::newRow("from a terminal") << QByteArray();
    }
    void aWindowBehindAnotherProgramsGetsTheFocus() {
        QFETCH(QByteArray, token);
        if (token.endsWith("_TIME"))
            token += serverTime();
        activateWindow(*m_window, token);
        QTRY_VERIFY_WITH_TIMEOUT(isActive(), processLimit);
        QTRY_VERIFY_WITH_TIMEOUT(m_window->isActive(), processLimit);
    }

    void aMinimisedWindowGetsTheFocus() {
        m_window->showMinimized();
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isExposed(), processLimit);
        activateWindow(*m_window, "launcher-1_TIME" + serverTime());
        QTRY_VERIFY_WITH_TIMEOUT(isActive(), processLimit);
        QTRY_VERIFY_WITH_TIMEOUT(m_window->isExposed(), processLimit);
    }

    void theTimeOfTheUsersActionIsTold() {
        const QByteArray time = serverTime();
        activateWindow(*m_window, "launcher-1_TIME" + time);
        QTRY_COMPARE_WITH_TIMEOUT(
            m_onlooker->number(static_cast<xcb_window_t>(m_window->winId()), "_NET_WM_USER_TIME"),
            time.toUInt(), processLimit);
        QTRY_COMPARE_WITH_TIMEOUT(m_onlooker->wish(), std::pair(1U, time.toUInt()), processLimit);
    }

    void aStartWithoutATimeIsTheUsersAction() {
        activateWindow(*m_window, {});
        QTRY_VERIFY_WITH_TIMEOUT(isActive(), processLimit);
        QTRY_COMPARE_WITH_TIMEOUT(m_onlooker->wish(), std::pair(2U, 0U), processLimit);
    }

    void theDesktopLearnsThatTheStartIsOver_data() {
        QTest::addColumn<QByteArray>("token");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("short") << QByteArray("a_TIME1") << QByteArray("remove: ID=\"a_TIME1\"");
        QTest::newRow("20 bytes with its end")
            << QByteArray("1234567") << QByteArray("remove: ID=\"1234567\"");
        QTest::newRow("long") << QByteArray(100, 'x')
                              << "remove: ID=\"" + QByteArray(100, 'x') + '"';
        QTest::newRow("quotes") << QByteArray("a\"b\\c")
                                << QByteArray("remove: ID=\"a\\\"b\\\\c\"");
    }
    void theDesktopLearnsThatTheStartIsOver() {
        QFETCH(QByteArray, token);
        QFETCH(QByteArray, message);
        activateWindow(*m_window, token);
        const auto hasCome = [this] {
            m_onlooker->look();
            return m_onlooker->startupInformation().contains('\0');
        };
        QTRY_VERIFY_WITH_TIMEOUT(hasCome(), processLimit);
        QCOMPARE(QByteArray(m_onlooker->startupInformation().constData()), message);
    }

private:
    bool isActive() const { return m_onlooker->activeWindow() == m_window->winId(); }

    std::unique_ptr<Onlooker> m_onlooker;
    std::unique_ptr<QWindow> m_window;
    std::unique_ptr<QProcess> m_foreign;
};

TELLWICK_TEST(X11ActivationTests, Widgets)
#include "X11ActivationTests.moc"
