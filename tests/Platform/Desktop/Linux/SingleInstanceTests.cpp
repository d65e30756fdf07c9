// SPDX-License-Identifier: MIT
#include "Platform/Desktop/SingleInstance.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

/// One run of the helper program.
class Run {
public:
    Run(const QStringList& arguments, const QProcessEnvironment& environment) {
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(ONE_INSTANCE), arguments);
    }
    ~Run() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(processLimit))
            m_process.kill();
    }

    QByteArray line() { return lineOf(m_process); }
    bool hasEnded() { return m_process.waitForFinished(processLimit); }
    void send(int number) const { ::kill(static_cast<pid_t>(m_process.processId()), number); }

private:
    QProcess m_process;
};

} // namespace

class SingleInstanceTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<QTemporaryDir>();
        m_folder = m_root->filePath(u"place"_s);
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.remove(u"XDG_ACTIVATION_TOKEN"_s);
        m_environment.remove(u"DESKTOP_STARTUP_ID"_s);
    }

    void theSecondStartComesToTheFirstAndEnds() {
        const auto first = startFirst();
        const auto second = start();
        QCOMPARE(second->line(), "handed over");
        QVERIFY(second->hasEnded());
        QCOMPARE(first->line(), "activated");
    }

    void theTokenGoesToTheRunningInstance_data() {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QByteArray>("token");
        const QString longest(4096, u'x');
        QTest::newRow("short") << u"kwin-17"_s << QByteArray("kwin-17");
        QTest::newRow("the longest") << longest << longest.toLatin1();
        QTest::newRow("too long") << longest + u"y"_s << longest.toLatin1();
    }
    void theTokenGoesToTheRunningInstance() {
        QFETCH(QString, given);
        QFETCH(QByteArray, token);
        const auto first = startFirst();
        m_environment.insert(u"XDG_ACTIVATION_TOKEN"_s, given);
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
        QVERIFY(!QFile::exists(socketPath()));
        QCOMPARE(start()->line(), "first");
    }

    void afterTheFirstWasKilledTheNextIsFirst() {
        const auto first = startFirst();
        first->send(SIGKILL);
        QVERIFY(first->hasEnded());
        QVERIFY(QFile::exists(socketPath())); // left behind
        const auto next = startFirst();
        QCOMPARE(start()->line(), "handed over");
        QCOMPARE(next->line(), "activated");
    }

    void whatLiesInTheSocketsPlaceDoesNoHarm() {
        { const SingleInstance folder({m_folder}); } // makes it
        writeBytes(socketPath(), "not even a socket");
        const auto first = startFirst();
        QCOMPARE(start()->line(), "handed over");
    }

    void aHungInstanceIsWaitedForOnlySoLong() {
        const auto first = startFirst();
        first->send(SIGSTOP);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(start(200)->line(), "unanswered");
        QVERIFY(timer.elapsed() >= 200);
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
        const auto first = startFirst();
        first->send(SIGSTOP);
        const auto second = start();
        first->send(SIGKILL);
        QCOMPARE(second->line(), "first");
    }

    void twoPlacesDoNotMeet() {
        const auto first = startFirst();
        m_folder += u"2"_s;
        QCOMPARE(start()->line(), "first");
    }

    void withoutAFolderTheProgramStarts() {
        m_folder = m_root->filePath(u"gone/place"_s);
        const auto first = startFirst();
        QCOMPARE(start()->line(), "first"); // nowhere to meet
    }

    void aLongPathDoesNoHarm() {
        m_folder += QString(200, u'x');
        const auto first = startFirst();
        QVERIFY(QFile::exists(socketPath()));
        QCOMPARE(start()->line(), "handed over");
    }

    void nonsenseOnTheSocketDoesNoHarm() {
        const auto first = startFirst();
        const UniqueFd visitor = connectToSocket();
        QVERIFY(visitor);
        QCOMPARE(send(visitor.get(), "nonsense", 8, MSG_NOSIGNAL), 8);
        char byte = 0;
        QCOMPARE(recv(visitor.get(), &byte, 1, 0), 0); // closed without an answer
        QCOMPARE(start()->line(), "handed over");
        QCOMPARE(first->line(), "activated"); // of the real start
    }

    void silentVisitorsDoNoHarm() {
        const auto first = startFirst();
        std::vector<UniqueFd> visitors(100);
        for (UniqueFd& visitor : visitors) {
            visitor = connectToSocket();
            QVERIFY(visitor);
        }
        QCOMPARE(start()->line(), "handed over");
        visitors.clear();
        QCOMPARE(start()->line(), "handed over");
    }

private:
    std::unique_ptr<Run> start(int limit = processLimit) const {
        return std::make_unique<Run>(QStringList{m_folder, QString::number(limit)}, m_environment);
    }
    /// A start that has become the first one.
    std::unique_ptr<Run> startFirst() const {
        auto run = start();
        if (run->line() != "first")
            qFatal("there is another instance");
        return run;
    }
    QString socketPath() const { return m_folder + u"/instance.sock"_s; }
    UniqueFd connectToSocket() const {
        const QByteArray path = QFile::encodeName(socketPath());
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.begin(), path.end(), address.sun_path);
        UniqueFd file(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        const int outcome =
            ::connect(file.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        return outcome == 0 ? std::move(file) : UniqueFd();
    }

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_folder;
    QProcessEnvironment m_environment;
};

TELLWICK_TEST(SingleInstanceTests, EventLoop)
#include "SingleInstanceTests.moc"
