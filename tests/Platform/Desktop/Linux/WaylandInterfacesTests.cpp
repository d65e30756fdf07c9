// SPDX-License-Identifier: MIT
// The question to a compositor, against one that says what the test wants.
#include "Platform/Desktop/Linux/WaylandInterfaces.h"
#include "Platform/Desktop/UniqueFd.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <thread>

using namespace std::chrono_literals;
using platform::UniqueFd;
using platform::waylandInterfaces;

namespace {

QByteArray word(uint32_t value) {
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

QByteArray message(uint32_t object, uint32_t event, const QByteArray& arguments) {
    const auto size = static_cast<uint32_t>(8 + arguments.size());
    return word(object) + word(size << 16U | event) + arguments;
}

QByteArray global(uint32_t number, const QByteArray& name) {
    QByteArray text = name + '\0';
    const auto length = static_cast<uint32_t>(text.size());
    text.append((4 - text.size() % 4) % 4, '\0');
    return message(2, 0, word(number) + word(length) + text + word(1));
}

const QByteArray done = message(3, 0, word(7));
const QByteArray deleted = message(1, 1, word(3));

/// Listens at a path, takes one connection and its question, and answers in pieces.
class ScriptedCompositor {
public:
    explicit ScriptedCompositor(QList<QByteArray> pieces, bool staysOpen = false)
        : m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path().constData(), sizeof address.sun_path - 1);
        if (bind(m_listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            listen(m_listener.get(), 1) != 0)
            qFatal("cannot listen");
        m_thread = std::thread([this, pieces = std::move(pieces), staysOpen] {
            const UniqueFd client(accept(m_listener.get(), nullptr, nullptr));
            question.resize(24);
            const ssize_t count = recv(client.get(), question.data(), 24, MSG_WAITALL);
            question.truncate(count);
            for (const QByteArray& piece : pieces)
                static_cast<void>(send(client.get(), piece.constData(),
                                       static_cast<size_t>(piece.size()), MSG_NOSIGNAL));
            char end = 0; // the client goes first
            while (staysOpen && recv(client.get(), &end, 1, 0) > 0) {
            }
        });
    }
    ~ScriptedCompositor() { join(); }

    void join() {
        if (m_thread.joinable())
            m_thread.join();
    }

    QByteArray path() const { return QFile::encodeName(m_folder.filePath(QStringLiteral("w"))); }

    QByteArray question;

private:
    QTemporaryDir m_folder;
    UniqueFd m_listener;
    std::thread m_thread;
};

QList<QByteArray> bytesOf(const QByteArray& whole) {
    QList<QByteArray> bytes;
    for (const char byte : whole)
        bytes.append(QByteArray(1, byte));
    return bytes;
}

} // namespace

class WaylandInterfacesTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theCompositorIsAskedForItsInterfacesAndForTheirEnd() {
        ScriptedCompositor compositor({done});
        QCOMPARE(waylandInterfaces(compositor.path(), 5s), QByteArrayList());
        compositor.join();
        QCOMPARE(compositor.question, message(1, 1, word(2)) + message(1, 0, word(3)));
    }

    void whatItAnnouncesIsTold() {
        const QByteArray answer = global(1, "wl_compositor") + global(2, "wl_shm") +
                                  global(3, "zxdg_decoration_manager_v1") + deleted + done;
        const QByteArrayList expected{"wl_compositor", "wl_shm", "zxdg_decoration_manager_v1"};
        {
            const ScriptedCompositor compositor({answer}, true);
            QCOMPARE(waylandInterfaces(compositor.path(), 5s), expected);
        }
        const ScriptedCompositor slow(bytesOf(answer), true);
        QCOMPARE(waylandInterfaces(slow.path(), 5s), expected);
    }

    void anAnswerLongerThanOneReadIsTold() {
        QByteArray answer;
        for (uint32_t i = 0; i < 500; ++i)
            answer += global(i, "interface_" + QByteArray::number(i));
        const ScriptedCompositor compositor({answer + done}, true);
        const auto interfaces = waylandInterfaces(compositor.path(), 5s);
        QVERIFY(interfaces);
        QCOMPARE(interfaces->size(), 500);
        QCOMPARE(interfaces->constLast(), QByteArray("interface_499"));
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
        const ScriptedCompositor compositor({answer});
        QVERIFY(!waylandInterfaces(compositor.path(), 5s));
    }

    void aSilentCompositorIsWaitedForNoLongerThanTheLimit() {
        const ScriptedCompositor compositor({global(1, "wl_shm")}, true);
        QVERIFY(!waylandInterfaces(compositor.path(), 10ms));
    }

    void whereNobodyListensThereIsNone() {
        QVERIFY(!waylandInterfaces("/nonexistent/wayland-0", 5s));
        QVERIFY(!waylandInterfaces("", 5s));
        QVERIFY(!waylandInterfaces(QByteArray(500, 'x'), 5s));
    }
};

TELLWICK_TEST(WaylandInterfacesTests, Nothing)
#include "WaylandInterfacesTests.moc"
