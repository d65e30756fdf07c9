// SPDX-License-Identifier: MIT
// The question to a compositor, against one that says what the test wants.
#include "Platform/Desktop/Linux/WaylandFrames.h"
#include "Platform/Desktop/UniqueFd.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <thread>

using namespace std::chrono_literals;
using platform::UniqueFd;
using platform::waylandDrawsFrames;

namespace {

QByteArray word(uint32_t value) {
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

QByteArray text(const QByteArray& value) {
    QByteArray bytes = value + '\0';
    const auto length = static_cast<uint32_t>(bytes.size());
    bytes.append((4 - bytes.size() % 4) % 4, '\0');
    return word(length) + bytes;
}

QByteArray message(uint32_t object, uint32_t event, const QByteArray& arguments = {}) {
    const auto size = static_cast<uint32_t>(8 + arguments.size());
    return word(object) + word(size << 16U | event) + arguments;
}

QByteArray global(uint32_t number, const QByteArray& name) {
    return message(2, 0, word(number) + text(name) + word(1));
}

// The first question and its answer.
const QByteArray listing = message(1, 1, word(2)) + message(1, 0, word(3));
const QByteArray deleted = message(1, 1, word(3));
const QByteArray done = message(3, 0, word(7)) + deleted;
const QByteArray windows = global(11, "wl_compositor") + global(12, "xdg_wm_base");
const QByteArray decorations = global(13, "zxdg_decoration_manager_v1");

// The second: a window of the application "an.app" that leaves the choice of decorations, never
// shown.
const QByteArray binding =
    message(2, 0, word(11) + text("wl_compositor") + word(1) + word(4)) +
    message(2, 0, word(12) + text("xdg_wm_base") + word(1) + word(5)) +
    message(2, 0, word(13) + text("zxdg_decoration_manager_v1") + word(1) + word(6));
const QByteArray window = message(4, 0, word(7)) + message(5, 2, word(8) + word(7)) +
                          message(8, 1, word(9)) + message(9, 3, text("an.app")) +
                          message(6, 1, word(10) + word(9)) + message(10, 2) + message(7, 6);
const QByteArray size = message(9, 0, word(0) + word(0) + word(0));
const QByteArray configured = message(8, 0, word(1));
QByteArray decoration(uint32_t mode) {
    return message(10, 0, word(mode));
}

QList<QByteArray> bytesOf(const QByteArray& whole) {
    QList<QByteArray> bytes;
    for (const char byte : whole)
        bytes.append(QByteArray(1, byte));
    return bytes;
}

/// Listens at a path and takes one connection: each question gets its answer, in pieces.
class ScriptedCompositor {
public:
    struct Turn {
        QByteArray question;
        QList<QByteArray> answer;
    };

    explicit ScriptedCompositor(QList<Turn> turns, bool staysOpen = true)
        : m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path().constData(), sizeof address.sun_path - 1);
        if (bind(m_listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            listen(m_listener.get(), 1) != 0)
            qFatal("cannot listen");
        m_thread = std::thread([this, turns = std::move(turns), staysOpen] {
            const UniqueFd client(accept(m_listener.get(), nullptr, nullptr));
            for (const auto& [question, answer] : turns) {
                QByteArray asked(question.size(), Qt::Uninitialized);
                const ssize_t count = recv(client.get(), asked.data(),
                                           static_cast<size_t>(asked.size()), MSG_WAITALL);
                asked.truncate(std::max<ssize_t>(0, count));
                m_asked.append(asked);
                for (const QByteArray& piece : answer)
                    static_cast<void>(send(client.get(), piece.constData(),
                                           static_cast<size_t>(piece.size()), MSG_NOSIGNAL));
            }
            char more = 0; // the client goes first
            while (staysOpen && recv(client.get(), &more, 1, 0) > 0)
                m_asked.append(QByteArray(1, more));
        });
    }
    ~ScriptedCompositor() {
        if (m_thread.joinable())
            m_thread.join();
    }

    QByteArray path() const { return QFile::encodeName(m_folder.filePath(QStringLiteral("w"))); }

    /// All that has been asked, once the client is gone.
    QList<QByteArray> asked() {
        m_thread.join();
        return m_asked;
    }

private:
    QTemporaryDir m_folder;
    UniqueFd m_listener;
    QList<QByteArray> m_asked;
    std::thread m_thread;
};

std::optional<bool> drawsFrames(const ScriptedCompositor& compositor,
                                std::chrono::milliseconds limit = 5s) {
    return waylandDrawsFrames(compositor.path(), "an.app", limit);
}

} // namespace

class WaylandFramesTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oneThatCannotDrawThemIsAskedNoFurther() {
        for (const QByteArray& answer : {done, windows + done}) {
            ScriptedCompositor compositor({{listing, {answer}}});
            QCOMPARE(drawsFrames(compositor), std::optional(false));
            QCOMPARE(compositor.asked(), QList{listing});
        }
    }

    void oneThatCanDrawThemIsAskedByAWindowThatIsNeverShown() {
        ScriptedCompositor compositor({{listing, {windows + decorations + done}},
                                       {binding + window, {decoration(2) + configured}}});
        QCOMPARE(drawsFrames(compositor), std::optional(true));
        QCOMPARE(compositor.asked(), (QList{listing, binding + window}));
    }

    void itsLastWordBeforeTheWindowIsConfiguredCounts_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QByteArray>("later"); // to a further question; empty: there is none
        QTest::addColumn<std::optional<bool>>("draws");
        const auto row = [](const char* name, std::optional<bool> draws, const QByteArray& answer,
                            const QByteArray& later = {}) {
            QTest::newRow(name) << answer << later << draws;
        };
        const QByteArray end = message(11, 0, word(8));
        row("it does", true, size + decoration(2) + configured);
        row("it refuses", false, size + decoration(1) + configured);
        row("it does after all", true, decoration(1) + size + decoration(2) + configured);
        row("it refuses after all", false, decoration(2) + decoration(1) + size + configured);
        row("what comes later is for later", true, decoration(2) + configured + decoration(1));
        row("it says so at the end", false, size + configured + decoration(1), end);
        row("it says so late", false, size + configured, decoration(1) + configured + end);
        row("the window is configured twice", true, configured + configured, decoration(2) + end);
        row("it says nothing", std::nullopt, size + configured, end + decoration(1));
        row("it says nothing of the mode", std::nullopt, message(10, 0) + configured, end);
        row("an error", std::nullopt,
            decoration(2) + message(1, 0, word(10) + word(0) + text("no")) + configured);
    }
    void itsLastWordBeforeTheWindowIsConfiguredCounts() {
        QFETCH(QByteArray, answer);
        QFETCH(QByteArray, later);
        QFETCH(std::optional<bool>, draws);
        const QByteArray globals = windows + decorations + done;
        const QByteArray last = later.isEmpty() ? later : message(1, 0, word(11));
        {
            const ScriptedCompositor compositor(
                {{listing, {globals}}, {binding + window, {answer}}, {last, {later}}});
            QCOMPARE(drawsFrames(compositor), draws);
        }
        const ScriptedCompositor slow({{listing, bytesOf(globals)},
                                       {binding + window, bytesOf(answer)},
                                       {last, bytesOf(later)}});
        QCOMPARE(drawsFrames(slow), draws);
    }

    void anAnswerLongerThanOneReadIsTold() {
        QByteArray answer;
        for (uint32_t i = 100; i < 600; ++i)
            answer += global(i, "interface_" + QByteArray::number(i));
        const ScriptedCompositor compositor({{listing, {answer + windows + decorations + done}},
                                             {binding + window, {decoration(1) + configured}}});
        QCOMPARE(drawsFrames(compositor), std::optional(false));
    }

    void noAnswerIsNone_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("it goes at once") << QByteArray();
        QTest::newRow("it goes in between") << global(1, "wl_shm");
        QTest::newRow("an error") << message(1, 0, word(1) + word(0) + word(0)) + done;
        QTest::newRow("a message of no size") << word(2) + word(0) + done;
        QTest::newRow("a name beyond its message")
            << message(2, 0, word(1) + word(0xfffffff0U) + word(1));
    }
    void noAnswerIsNone() {
        QFETCH(QByteArray, answer);
        const ScriptedCompositor compositor({{listing, {answer}}}, false);
        QCOMPARE(drawsFrames(compositor), std::nullopt);
    }

    void aSilentCompositorIsWaitedForNoLongerThanTheLimit() {
        const ScriptedCompositor compositor({{listing, {global(1, "wl_shm")}}});
        QCOMPARE(drawsFrames(compositor, 10ms), std::nullopt);
    }

    void whereNobodyListensThereIsNone() {
        for (const QByteArray& path :
             {QByteArray("/nonexistent/wayland-0"), QByteArray(), QByteArray(500, 'x')})
            QCOMPARE(waylandDrawsFrames(path, "an.app", 5s), std::nullopt);
    }
};

TELLWICK_TEST(WaylandFramesTests, Nothing)
#include "WaylandFramesTests.moc"
