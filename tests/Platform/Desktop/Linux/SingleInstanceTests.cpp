// SPDX-License-Identifier: MIT
#include "Platform/Desktop/SingleInstance.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

constexpr int watchdog = 20000;

/// One run of the helper program.
class Run {
public:
    explicit Run(const QStringList& arguments, const QProcessEnvironment& environment) {
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(ONE_INSTANCE), arguments);
    }
    ~Run() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(watchdog))
            m_process.kill();
    }

    /// The next line that it says; empty when it says no more.
    QByteArray line() {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(watchdog)) {
        }
        return m_process.readLine().trimmed();
    }
    bool hasEnded() { return m_process.waitForFinished(watchdog); }
    void kill() {
        m_process.kill();
        m_process.waitForFinished(watchdog);
    }
    void send(int number) const { ::kill(static_cast<pid_t>(m_process.processId()), number); }

private:
    QProcess m_process;
};

} // namespace

class SingleInstanceTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_id = u"example"_s;
        m_runtime = std::make_unique<QTemporaryDir>();
        m_temporary = std::make_unique<QTemporaryDir>();
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_runtime->path());
        m_environment.insert(u"TMPDIR"_s, m_temporary->path());
        m_environment.remove(u"XDG_ACTIVATION_TOKEN"_s);
        m_environment.remove(u"DESKTOP_STARTUP_ID"_s);
    }

    void cleanup() {
        m_runtime.reset();
        m_temporary.reset();
    }

    void theSecondStartComesToTheFirstAndEnds() {
        const auto first = startFirst();
        const auto second = start();
        QCOMPARE(second->line(), "handed over");
        QVERIFY(second->hasEnded());
        QCOMPARE(first->line(), "activated");
    }

    void theTokenGoesToTheRunningInstance_data() {
        QTest::addColumn<QString>("wayland");
        QTest::addColumn<QString>("x11");
        QTest::addColumn<QByteArray>("token");
        QTest::newRow("Wayland") << u"kwin-17"_s << QString() << QByteArray("kwin-17");
        QTest::newRow("X11") << QString() << u"bar-1-2_TIME17"_s << QByteArray("bar-1-2_TIME17");
        QTest::newRow("both") << u"kwin-17"_s << u"bar-1-2_TIME17"_s << QByteArray("kwin-17");
        const QString longest(4096, u'x');
        QTest::newRow("the longest") << longest << QString() << longest.toLatin1();
        QTest::newRow("too long") << longest + u"y"_s << QString() << longest.toLatin1();
    }
    void theTokenGoesToTheRunningInstance() {
        QFETCH(QString, wayland);
        QFETCH(QString, x11);
        QFETCH(QByteArray, token);
        const auto first = startFirst();
        if (!wayland.isEmpty())
            m_environment.insert(u"XDG_ACTIVATION_TOKEN"_s, wayland);
        if (!x11.isEmpty())
            m_environment.insert(u"DESKTOP_STARTUP_ID"_s, x11);
        QCOMPARE(start()->line(), "handed over");
        QCOMPARE(first->line(), "activated " + token);
    }

    void everyLaterStartIsTold() {
        const auto first = startFirst();
        std::vector<std::unique_ptr<Run>> others;
        for (int i = 0; i < 12; ++i)
            others.push_back(start());
        for (const auto& other : others)
            QCOMPARE(other->line(), "handed over");
        for (size_t i = 0; i < others.size(); ++i)
            QCOMPARE(first->line(), "activated");
    }

    void afterTheFirstHasEndedTheNextIsFirst() {
        auto first = startFirst();
        first.reset();
        QVERIFY(!QFile::exists(folder() + u"/instance.sock"_s));
        QCOMPARE(start()->line(), "first");
    }

    void afterTheFirstWasKilledTheNextIsFirst() {
        const auto first = startFirst();
        first->kill();
        QVERIFY(QFile::exists(folder() + u"/instance.sock"_s)); // left behind
        const auto next = start();
        QCOMPARE(next->line(), "first");
        QCOMPARE(start()->line(), "handed over");
        QCOMPARE(next->line(), "activated");
    }

    void aStaleSocketDoesNoHarm() {
        QVERIFY(QDir().mkdir(folder()));
        QVERIFY(QFile::setPermissions(folder(),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QFile file(folder() + u"/instance.sock"_s); // not even a socket
        QVERIFY(file.open(QIODevice::WriteOnly));
        const auto first = startFirst();
        QCOMPARE(start()->line(), "handed over");
    }

    void aHungInstanceIsWaitedForOnlySoLong() {
        const auto first = startFirst("hung");
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(start("normal", 200)->line(), "unanswered");
        QVERIFY(timer.elapsed() >= 200);
        QVERIFY(timer.elapsed() < watchdog);
    }

    void aStoppedInstanceIsWaitedForOnlySoLong() {
        const auto first = startFirst();
        first->send(SIGSTOP);
        QCOMPARE(start("normal", 200)->line(), "unanswered");
        first->send(SIGCONT);
        QCOMPARE(start()->line(), "handed over");
    }

    void aStartThatIsToldLateIsStillTold() {
        const auto first = startFirst();
        first->send(SIGSTOP);
        const auto second = start();
        const auto third = start();
        first->send(SIGCONT);
        QCOMPARE(second->line(), "handed over");
        QCOMPARE(third->line(), "handed over");
    }

    void thePlaceComesFreeWhileAnotherWaits() {
        const auto first = startFirst("hung");
        const auto second = start();
        first->kill();
        QCOMPARE(second->line(), "first");
    }

    void twoProgramsDoNotMeet() {
        const auto first = startFirst();
        m_id = u"other"_s;
        QCOMPARE(start()->line(), "first");
    }

    void twoSessionsDoNotMeet() {
        const auto first = startFirst();
        const QTemporaryDir other;
        m_environment.insert(u"XDG_RUNTIME_DIR"_s, other.path());
        QCOMPARE(start()->line(), "first");
    }

    void theFolderIsPrivate() {
        const auto first = startFirst();
        struct stat status {};
        QCOMPARE(stat(QFile::encodeName(folder()).constData(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, 0700U);
        QCOMPARE(stat(QFile::encodeName(folder() + u"/instance.lock"_s).constData(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, 0600U);
    }

    void aFolderThatOthersMayEnterIsNotUsed_data() {
        QTest::addColumn<QString>("kind");
        QTest::newRow("open to all") << u"open"_s;
        QTest::newRow("a link") << u"link"_s;
        QTest::newRow("a file") << u"file"_s;
    }
    void aFolderThatOthersMayEnterIsNotUsed() {
        QFETCH(QString, kind);
        const QByteArray path = QFile::encodeName(folder());
        const QTemporaryDir elsewhere;
        if (kind == u"open") {
            QCOMPARE(mkdir(path.constData(), 0777), 0);
            QCOMPARE(chmod(path.constData(), 0777), 0);
        } else if (kind == u"link") {
            QCOMPARE(symlink(QFile::encodeName(elsewhere.path()).constData(), path.constData()), 0);
        } else {
            QFile file(folder());
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        const auto first = startFirst();
        QCOMPARE(QDir(kind == u"link" ? elsewhere.path() : folder())
                     .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                 QStringList());
        QCOMPARE(start()->line(), "handed over"); // by way of the other folder
    }

    void withoutARuntimeFolderTheTemporaryOneServes() {
        m_environment.remove(u"XDG_RUNTIME_DIR"_s);
        const auto first = startFirst();
        QVERIFY(QFile::exists(m_temporary->filePath(u"example-%1/instance.sock"_s.arg(geteuid()))));
        QCOMPARE(start()->line(), "handed over");
    }

    void withoutAnyFolderTheProgramStarts() {
        m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_runtime->filePath(u"gone"_s));
        m_environment.insert(u"TMPDIR"_s, m_temporary->filePath(u"gone"_s));
        const auto first = startFirst();
        QCOMPARE(start()->line(), "first"); // nowhere to meet
    }

    void aLongPathDoesNoHarm() {
        const QString deep = m_runtime->filePath(QString(200, u'x'));
        QVERIFY(QDir().mkdir(deep));
        m_environment.insert(u"XDG_RUNTIME_DIR"_s, deep);
        const auto first = startFirst();
        QVERIFY(QFile::exists(deep + u"/example/instance.sock"_s));
        QCOMPARE(start()->line(), "handed over");
    }

    void nonsenseOnTheSocketDoesNoHarm() {
        const auto first = startFirst();
        const int visitor = connectToSocket();
        QVERIFY(visitor >= 0);
        QCOMPARE(send(visitor, "nonsense", 8, MSG_NOSIGNAL), 8);
        char byte = 0;
        QCOMPARE(recv(visitor, &byte, 1, 0), 0); // closed without an answer
        close(visitor);
        QCOMPARE(start()->line(), "handed over");
        QCOMPARE(first->line(), "activated"); // of the real start
    }

    void aSilentVisitorDoesNoHarm() {
        const auto first = startFirst();
        std::vector<int> visitors;
        for (int i = 0; i < 100; ++i) {
            visitors.push_back(connectToSocket());
            QVERIFY(visitors.back() >= 0);
        }
        QCOMPARE(start()->line(), "handed over");
        for (const int visitor : visitors)
            close(visitor);
        QCOMPARE(start()->line(), "handed over");
    }

    void aHandOverIsQuick() {
        // Within one process: what the two parts cost without starting a program.
        SingleInstance first({folder()});
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(first.claim({}), SingleInstance::Claim::First);
        qInfo("claiming the place: %.3f ms", static_cast<double>(timer.nsecsElapsed()) / 1e6);
        int activations = 0;
        first.onActivated([&activations](const QByteArray& /*token*/) { ++activations; });
        const auto second = start();
        QTRY_COMPARE_WITH_TIMEOUT(activations, 1, watchdog);
        QCOMPARE(second->line(), "handed over");
    }

private:
    std::unique_ptr<Run> start(const char* mode = "normal", int limit = watchdog) {
        return std::make_unique<Run>(
            QStringList{m_id, QString::fromLatin1(mode), QString::number(limit)}, m_environment);
    }
    /// A start that has become the first one.
    std::unique_ptr<Run> startFirst(const char* mode = "normal") {
        auto run = start(mode);
        if (run->line() != "first")
            qFatal("there is another instance");
        return run;
    }
    QString folder() const { return m_runtime->filePath(m_id); }
    int connectToSocket() const {
        const QByteArray path = QFile::encodeName(folder() + u"/instance.sock"_s);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.begin(), path.end(), address.sun_path);
        const int file = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        if (::connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return file;
        close(file);
        return -1;
    }

    QString m_id;
    std::unique_ptr<QTemporaryDir> m_runtime;
    std::unique_ptr<QTemporaryDir> m_temporary;
    QProcessEnvironment m_environment;
};

TELLWICK_TEST(SingleInstanceTests, EventLoop)
#include "SingleInstanceTests.moc"
