// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Http/HttpClient.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"
#include "tests/support/StreamProbe.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <signal.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

constexpr int limit = 30'000; // milliseconds; the machine may be busy with other tests

/// A program with a conversation under way, as the tests end it in many ways.
struct Chat {
    explicit Chat(const LlamaServerPaths& paths,
                  std::chrono::seconds idleTime = LlamaServerModel::defaultIdleTime)
        : model(network, paths, idleTime)
        , session(model.makeSession(u"Be kind."_s)) {}

    std::shared_ptr<Heard> ask(const QString& prompt) {
        return listen(scope, session->streamResponse(prompt, {}));
    }

    MainExecutor executor;
    NetworkThread network;
    TaskScope scope{executor};
    LlamaServerModel model;
    std::shared_ptr<LanguageModelSession> session;
};

Task<void> readSleepState(TaskScope& network, HttpClient client,
                          std::shared_ptr<std::optional<bool>> isSleeping) {
    const HttpResponse response = co_await runOn(network, client.data(HttpRequest("/props")));
    *isSleeping = QJsonDocument::fromJson(response.body).object()[u"is_sleeping"].toBool();
}

QList<QByteArray> openSockets(qint64 process) {
    QList<QByteArray> sockets;
    const QDir folder(u"/proc/%1/fd"_s.arg(process));
    for (const QString& name : folder.entryList(QDir::System | QDir::Files)) {
        const QString target = QFile::symLinkTarget(folder.filePath(name));
        const qsizetype mark = target.indexOf(u"socket:[");
        if (mark >= 0)
            sockets.append(target.mid(mark + 8).chopped(1).toUtf8());
    }
    return sockets;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// When the real engine runs, and that it never stays behind.
class EngineLifetimeTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_folders = std::make_unique<EngineFolders>();
        m_folders->setModel(TinyModel::endless());
    }

    void noEngineRunsBeforeTheFirstSession();
    void oneEngineServesAllSessions();
    void theEngineListensOnAPrivateSocketAndNothingElse();
    void quittingMidReplyTakesNoTimeAndLeavesNothing();
    void theEngineEndsWithTheProgram_data();
    void theEngineEndsWithTheProgram();
    void whatAKilledProgramLeftIsNotInTheWay();
    void aLongPathWithACommaDoesNoHarm();
    void twoProgramsDoNotShareAFolder();
    void idleForLongEnoughTheEngineSleepsAndWakesByItself();

private:
    static QList<qint64> engines() { return childrenOf(QCoreApplication::applicationPid()); }

    std::unique_ptr<EngineFolders> m_folders;
};

void EngineLifetimeTests::noEngineRunsBeforeTheFirstSession() {
    MainExecutor executor;
    NetworkThread network;
    LlamaServerModel model(network, m_folders->paths());
    QVERIFY(model.isAvailable());
    QCOMPARE(engines(), QList<qint64>());
    QVERIFY(!QFile::exists(m_folders->path(u"run"_s)));
    const auto session = model.makeSession(u"Be kind."_s);
    QTRY_COMPARE(engines().size(), 1);
}

void EngineLifetimeTests::oneEngineServesAllSessions() {
    Chat chat(m_folders->paths());
    const auto first = chat.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(first->snapshots > 0, limit);
    chat.session = chat.model.makeSession(u"Be brief."_s);
    const auto second = chat.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(second->snapshots > 0, limit);
    QCOMPARE(engines().size(), 1);
}

void EngineLifetimeTests::theEngineListensOnAPrivateSocketAndNothingElse() {
    Chat chat(m_folders->paths());
    const auto heard = chat.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > 0, limit);
    const QFileInfo folder(QFileInfo(m_folders->socketPath()).path());
    QCOMPARE(folder.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
             QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    const qint64 engine = engines().constFirst();
    const QList<QByteArray> sockets = openSockets(engine);
    QVERIFY(!sockets.isEmpty());
    for (const char* table : {"tcp", "tcp6", "udp", "udp6"}) {
        const QByteArray lines = contents(u"/proc/%1/net/"_s.arg(engine) + QLatin1String(table));
        for (const QByteArray& socket : sockets)
            QVERIFY2(!lines.contains(' ' + socket + ' '), table);
    }
}

void EngineLifetimeTests::quittingMidReplyTakesNoTimeAndLeavesNothing() {
    qint64 engine = 0;
    QElapsedTimer quitting;
    {
        Chat chat(m_folders->paths());
        const auto heard = chat.ask(u"Hello"_s);
        QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > 0, limit);
        engine = engines().constFirst();
        quitting.start();
    }
    QVERIFY2(quitting.elapsed() < 1'000, qPrintable(QString::number(quitting.elapsed())));
    QVERIFY(!isRunning(engine));
    QVERIFY(!QFile::exists(m_folders->socketPath()));
}

void EngineLifetimeTests::theEngineEndsWithTheProgram_data() {
    QTest::addColumn<int>("signal");
    QTest::newRow("killed") << SIGKILL;
    QTest::newRow("asked to end") << SIGTERM;
    QTest::newRow("crashed") << SIGSEGV;
    QTest::newRow("interrupted") << SIGINT;
}

void EngineLifetimeTests::theEngineEndsWithTheProgram() {
    QFETCH(int, signal);
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(),
                  {u"EngineLifetimeTests"_s, u"--chat"_s, m_folders->path(QString())});
    QVERIFY(program.waitForReadyRead(limit));
    QCOMPARE(program.readLine(), QByteArray("answering\n"));
    const QList<qint64> children = childrenOf(program.processId());
    QCOMPARE(children.size(), 1);
    QVERIFY(isRunning(children.constFirst()));
    kill(static_cast<pid_t>(program.processId()), signal);
    QVERIFY(program.waitForFinished(limit));
    QTRY_VERIFY_WITH_TIMEOUT(!isRunning(children.constFirst()), 2'000);
}

void EngineLifetimeTests::whatAKilledProgramLeftIsNotInTheWay() {
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(),
                  {u"EngineLifetimeTests"_s, u"--chat"_s, m_folders->path(QString())});
    QVERIFY(program.waitForReadyRead(limit));
    program.kill();
    QVERIFY(program.waitForFinished(limit));
    QVERIFY(QFile::exists(m_folders->socketPath())); // left behind

    Chat chat(m_folders->paths());
    const auto heard = chat.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > 0, limit);
}

void EngineLifetimeTests::aLongPathWithACommaDoesNoHarm() {
    LlamaServerPaths paths = m_folders->paths();
    paths.runtimeFolders = {m_folders->path(QString(100, u'x') + u",y"_s)};
    Chat chat(paths);
    const auto heard = chat.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > 0, limit);
}

void EngineLifetimeTests::twoProgramsDoNotShareAFolder() {
    Chat first(m_folders->paths());
    const auto heard = first.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > 0, limit);
    Chat second(m_folders->paths());
    const auto refused = second.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(refused->hasEnded, limit);
    QVERIFY(refused->error);
    const int before = heard->snapshots;
    QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > before, limit);
}

void EngineLifetimeTests::idleForLongEnoughTheEngineSleepsAndWakesByItself() {
    m_folders->setModel(TinyModel::sentence());
    Chat chat(m_folders->paths(), std::chrono::seconds(1));
    const auto heard = chat.ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    const qint64 engine = engines().constFirst();

    const HttpClient client(chat.network, HttpEndpoint::unixSocket(m_folders->socketPath()));
    const auto isAsleep = [&] {
        const auto isSleeping = std::make_shared<std::optional<bool>>();
        chat.scope.start(readSleepState(chat.network.scope(), client, isSleeping));
        while (!*isSleeping)
            QTest::qWait(20);
        return isSleeping->value();
    };
    QVERIFY(!isAsleep());
    QTRY_VERIFY_WITH_TIMEOUT(isAsleep(), limit);

    const auto again = chat.ask(u"Again"_s);
    QTRY_VERIFY_WITH_TIMEOUT(again->hasEnded, limit);
    QCOMPARE(again->error.value_or(QString()), QString());
    QCOMPARE(again->text(), heard->text());
    QCOMPARE(engines(), QList<qint64>{engine});
}

namespace {

/// What the child process of some tests does: a conversation in the folders of the test, until it
/// is ended from outside.
int chatUntilTheEnd(const QString& folder) {
    LlamaServerPaths paths;
    paths.dataFolders = {folder + u"/data"_s};
    paths.programFolders = {folder + u"/bin"_s};
    paths.runtimeFolders = {folder + u"/run"_s};
    paths.machineMemory = 8'000'000'000;
    Chat chat(paths);
    const auto heard = chat.ask(u"Hello"_s);
    while (heard->snapshots < 3 && !heard->hasEnded)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    printf("%s\n", heard->hasEnded ? "failed" : "answering");
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
