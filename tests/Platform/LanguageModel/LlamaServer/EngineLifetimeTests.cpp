// SPDX-License-Identifier: MIT
#include "tests/support/Files.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>

#include <signal.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

// A wrapper that stays, with the real engine as its child.
constexpr auto stayingScript = "\"$ENGINE\" \"$@\"\nexit $?\n";

QByteArrayList openSockets(qint64 process) {
    QByteArrayList sockets;
    const QDir folder(u"/proc/%1/fd"_s.arg(process));
    for (const QString& name : folder.entryList(QDir::System | QDir::Files)) {
        const QString target = QFile::symLinkTarget(folder.filePath(name));
        const qsizetype mark = target.indexOf(u"socket:[");
        if (mark >= 0)
            sockets.append(target.mid(mark + 8).chopped(1).toUtf8());
    }
    return sockets;
}

/// A process and all that it has started.
QList<qint64> familyOf(qint64 process) {
    QList<qint64> family{process};
    for (const qint64 child : childrenOf(process))
        family += familyOf(child);
    return family;
}

bool isAnyRunning(const QList<qint64>& processes) {
    return std::any_of(processes.begin(), processes.end(), &isRunning);
}

} // namespace

/// When the real engine runs, and that it never stays behind.
class EngineLifetimeTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_folders.emplace();
        m_folders->setModel(TinyModel::endless());
    }

    void noEngineRunsBeforeASessionIsUsed() {
        EngineChat chat(m_folders->paths());
        QVERIFY(chat.model.isAvailable());
        QCOMPARE(engineProcess(), qint64{0});
        QVERIFY(!QFile::exists(m_folders->path(u"run"_s)));
        chat.begin();
        QVERIFY(!QFile::exists(m_folders->path(u"run"_s)));
        QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
        QVERIFY(engineProcess() > 0);
    }

    void oneEngineServesAllSessions() {
        EngineChat chat(m_folders->paths());
        QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
        chat.begin(u"Be brief."_s);
        QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
        QCOMPARE(childrenOf(QCoreApplication::applicationPid()).size(), 1);
    }

    void theEngineListensOnAPrivateSocketAndNothingElse() {
        EngineChat chat(m_folders->paths());
        QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
        const QFileInfo folder(QFileInfo(m_folders->socketPath()).path());
        QCOMPARE(folder.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        const qint64 engine = engineProcess();
        const QByteArrayList sockets = openSockets(engine);
        QVERIFY(!sockets.isEmpty());
        for (const char* table : {"tcp", "tcp6", "udp", "udp6"}) {
            const QByteArray lines = bytesOf(u"/proc/%1/net/"_s.arg(engine) + QLatin1String(table));
            for (const QByteArray& socket : sockets)
                QVERIFY2(!lines.contains(' ' + socket + ' '), table);
        }
    }

    void quittingMidReplyTakesNoTimeAndLeavesNothing_data() {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("itself") << QByteArray(EngineFolders::realEngine);
        QTest::newRow("behind a script") << QByteArray(stayingScript);
    }
    void quittingMidReplyTakesNoTimeAndLeavesNothing() {
        QFETCH(QByteArray, script);
        m_folders->setEngineScript(script);
        QList<qint64> family;
        QElapsedTimer quitting;
        {
            EngineChat chat(m_folders->paths());
            QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
            family = familyOf(engineProcess());
            quitting.start();
        }
        QVERIFY2(quitting.elapsed() < 1'000, qPrintable(QString::number(quitting.elapsed())));
        QVERIFY(!isRunning(family.constFirst()));
        QTRY_VERIFY(!isAnyRunning(family));
        QVERIFY(!QFile::exists(m_folders->socketPath()));
    }

    void theEngineEndsWithTheProgram_data() {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("signal");
        const QByteArray itself = EngineFolders::realEngine;
        QTest::newRow("killed") << itself << SIGKILL;
        QTest::newRow("asked to end") << itself << SIGTERM;
        QTest::newRow("crashed") << itself << SIGSEGV;
        QTest::newRow("interrupted") << itself << SIGINT;
        QTest::newRow("behind a script, killed") << QByteArray(stayingScript) << SIGKILL;
        QTest::newRow("behind a script, asked to end") << QByteArray(stayingScript) << SIGTERM;
    }
    void theEngineEndsWithTheProgram() {
        QFETCH(QByteArray, script);
        QFETCH(int, signal);
        m_folders->setEngineScript(script);
        QProcess program;
        QVERIFY(startProgram(program));
        const QList<qint64> children = childrenOf(program.processId());
        QCOMPARE(children.size(), 1);
        const QList<qint64> family = familyOf(children.constFirst());
        QVERIFY(isRunning(family.constFirst()));
        kill(static_cast<pid_t>(program.processId()), signal);
        QVERIFY(program.waitForFinished(processLimit));
        QTRY_VERIFY_WITH_TIMEOUT(!isAnyRunning(family), processLimit);
    }

    void whatAKilledProgramLeftIsNotInTheWay() {
        QProcess program;
        QVERIFY(startProgram(program));
        program.kill();
        QVERIFY(program.waitForFinished(processLimit));
        QVERIFY(QFile::exists(m_folders->socketPath()));

        EngineChat chat(m_folders->paths());
        QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
    }

    void aLongPathWithACommaDoesNoHarm() {
        LlamaServerPaths paths = m_folders->paths();
        paths.runtimeFolders = {m_folders->path(QString(100, u'x') + u",y"_s)};
        EngineChat chat(paths);
        QVERIFY(hasSaid(chat.ask(u"Hello"_s)));
    }

    void twoProgramsDoNotShareAFolder() {
        EngineChat first(m_folders->paths());
        const auto heard = first.ask(u"Hello"_s);
        QVERIFY(hasSaid(heard));
        EngineChat second(m_folders->paths());
        QCOMPARE(outcomeOf(second.ask(u"Hello"_s)),
                 u"Error: The program that runs the on-device model could not be started."_s);
        QVERIFY(hasSaid(heard, heard->elements.size() + 1));
    }

    void idleForLongEnoughTheEngineSleepsAndWakesByItself() {
        m_folders->setModel(TinyModel::sentence());
        EngineChat chat(m_folders->paths(), {.idleTime = std::chrono::seconds(1)});
        const QString reply = outcomeOf(chat.ask(u"Hello"_s));
        const qint64 engine = engineProcess();
        const auto isAsleep = [&] {
            return m_folders->get("/props").replace(" ", "").contains("\"is_sleeping\":true");
        };
        QVERIFY(!isAsleep());
        QTRY_VERIFY_WITH_TIMEOUT(isAsleep(), processLimit);
        QCOMPARE(outcomeOf(chat.ask(u"Again"_s)), reply);
        QCOMPARE(engineProcess(), engine);
    }

private:
    /// Runs another program with a conversation under way in the test's folders.
    bool startProgram(QProcess& program) const {
        program.start(QCoreApplication::applicationFilePath(),
                      {u"EngineLifetimeTests"_s, u"--chat"_s, m_folders->path(QString())});
        return lineOf(program) == "answering";
    }

    std::optional<EngineFolders> m_folders;
};

namespace {

/// What the child process of some tests does: a conversation in the folders of the test, until it
/// is ended from outside.
int chatUntilTheEnd(const QString& folder) {
    EngineChat chat(EngineFolders::pathsIn(folder));
    const auto heard = chat.ask(u"Hello"_s);
    printf("%s\n", hasSaid(heard, 3) ? "answering" : "failed");
    fflush(stdout);
    return QCoreApplication::exec();
}

} // namespace

static int run(int argc, char** argv) {
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == u"--chat")
        return chatUntilTheEnd(arguments.at(2));
    EngineLifetimeTests tests;
    return QTest::qExec(&tests, argc, argv);
}
TELLWICK_TEST_FUNCTION(EngineLifetimeTests, EventLoop, run)

#include "EngineLifetimeTests.moc"
