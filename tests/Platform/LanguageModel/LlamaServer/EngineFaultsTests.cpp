// SPDX-License-Identifier: MIT
#include "tests/support/Files.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <QDeadlineTimer>

#include <signal.h>

using namespace platform;
using namespace tests;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString stopped = u"Error: The on-device model stopped unexpectedly. Send your message again "
                        u"to restart it."_s;
const QString hung = u"Error: The on-device model does not answer any more. Send your message "
                     u"again to restart it."_s;
const QString noAnswer = u"Error: The on-device model could not answer this message."_s;
const QString damaged = u"Error: The on-device model could not be loaded: its file is damaged or "
                        u"of a kind that cannot be used here."_s;
const QString unusable =
    u"Error: The program that runs the on-device model could not be started."_s;

} // namespace

/// What goes wrong with the engine, and that the next turn works.
class EngineFaultsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_chat.reset();
        m_folders.emplace();
        m_chat.emplace(m_folders->paths());
    }

    void anEngineKilledMidReplyFailsTheTurnAndTheNextOneWorks() {
        m_folders->setModel(TinyModel::endless());
        const auto heard = m_chat->ask(u"Hello"_s);
        QVERIFY(hasSaid(heard, 3));
        const qint64 killed = engineProcess();
        QVERIFY(killed > 0);
        kill(static_cast<pid_t>(killed), SIGKILL);
        QCOMPARE(outcomeOf(heard), stopped);

        m_folders->setModel(TinyModel::sentence());
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QVERIFY(engineProcess() != killed);
    }

    void anEngineKilledBetweenTurnsIsReplacedUnnoticed() {
        m_folders->recordPrompts();
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        const qint64 killed = engineProcess();
        kill(static_cast<pid_t>(killed), SIGKILL);
        QTRY_VERIFY(!isRunning(killed));
        QCOMPARE(answerTo(u"Again"_s), m_reply);
        // The conversation has survived, since it is kept on this side.
        QVERIFY(m_folders->recordedPrompts().value(1).contains("Hello"));
    }

    void anEngineKilledWhileItLoadsFailsTheTurnAndTheNextOneWorks_data() {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("itself") << QByteArray("exec sleep 600\n");
        QTest::newRow("behind a script") << QByteArray("sh -c 'kill -KILL $$'\nexit $?\n");
    }
    void anEngineKilledWhileItLoadsFailsTheTurnAndTheNextOneWorks() {
        QFETCH(QByteArray, script);
        m_folders->setEngineScript(script);
        const auto heard = m_chat->ask(u"Hello"_s);
        if (script.contains("sleep")) {
            QTRY_VERIFY(engineProcess() > 0);
            kill(static_cast<pid_t>(engineProcess()), SIGKILL);
        }
        QCOMPARE(outcomeOf(heard), stopped);
        m_folders->setEngineScript(EngineFolders::realEngine);
        QCOMPARE(answerTo(u"Again"_s), m_reply);
    }

    void anEngineThatEndsWhileItLoadsAgainIsReplacedUnnoticed() {
        const auto heard = askStandIn("rl", "l");
        QTRY_VERIFY_WITH_TIMEOUT(requests("chat") == 1 && requests("health") > 3, 30'000);
        m_folders->setEngineScript(EngineFolders::realEngine);
        kill(static_cast<pid_t>(engineProcess()), SIGKILL);
        QCOMPARE(outcomeOf(heard), m_reply);
    }

    void anEngineThatHangsFailsTheTurnAndTheNextOneWorks_data() {
        QTest::addColumn<QByteArray>("health");
        QTest::addColumn<QByteArray>("turn");
        QTest::newRow("while it loads") << QByteArray("s") << QByteArray("s");
        QTest::newRow("when it is asked") << QByteArray("r") << QByteArray("s");
        QTest::newRow("in the middle of a reply") << QByteArray("r") << QByteArray("m");
    }
    void anEngineThatHangsFailsTheTurnAndTheNextOneWorks() {
        QFETCH(QByteArray, health);
        QFETCH(QByteArray, turn);
        const auto heard =
            askStandIn(health.constData(), turn.constData(), {.longestStandstill = 2s});
        QCOMPARE(outcomeOf(heard), hung);
        QCOMPARE(requests("chat"), health == "r" ? 1 : 0);
        m_folders->setEngineScript(EngineFolders::realEngine);
        QCOMPARE(answerTo(u"Again"_s), m_reply);
    }

    void aNewPromptEndsOneThatTheEngineHasNotBegunToAnswer() {
        const auto first = askStandIn("r", "sa");
        QTRY_COMPARE_WITH_TIMEOUT(requests("chat"), 1, 30'000);
        const auto second = m_chat->ask(u"Again"_s);
        QCOMPARE(outcomeOf(first), QString());
        QCOMPARE(outcomeOf(second), u"Said"_s);
    }

    void aPromptEndsWhatIsReadAhead() {
        QCOMPARE(outcomeOf(askStandIn("r", "asa")), u"Said"_s);
        m_chat->session->prewarm();
        QTRY_COMPARE_WITH_TIMEOUT(requests("chat"), 2, 30'000);
        QCOMPARE(outcomeOf(m_chat->ask(u"Again"_s)), u"Said"_s);
    }

    void anEngineThatWorksIsWaitedFor() {
        QCOMPARE(outcomeOf(askStandIn("r", "w", {.longestStandstill = 2s})), u"Late"_s);
    }

    void anEngineThatWorksInVainIsWaitedForOnlySoLong() {
        QCOMPARE(outcomeOf(askStandIn("r", "v", {.longestSilence = 2s})), hung);
        m_folders->setEngineScript(EngineFolders::realEngine);
        QCOMPARE(answerTo(u"Again"_s), m_reply);
    }

    void anEngineThatRefusesIsAskedWithPausesAndOnlySoOften() {
        QCOMPARE(outcomeOf(askStandIn("r", "l", {.maximumRefusals = 3, .refusalPause = 100ms})),
                 noAnswer);
        QList<qint64> times;
        for (const QByteArray& line : contents(u"requests"_s).split('\n'))
            if (line.contains("chat"))
                times.append(line.split(' ').constFirst().toLongLong());
        QCOMPARE(times.size(), 3);
        QVERIFY(times.at(1) - times.at(0) >= 100);
        QVERIFY(times.at(2) - times.at(1) >= 100);
    }

    void anUnusableModelFileIsToldAndAGoodOneServesAtOnce_data() {
        QTest::addColumn<QByteArray>("file");
        const QByteArray whole = modelFile(TinyModel::sentence());
        QTest::newRow("truncated in the tensors") << whole.left(whole.size() / 2);
        QTest::newRow("truncated in the vocabulary") << whole.left(1'000);
        QTest::newRow("truncated in the head") << whole.left(10);
        QTest::newRow("not a model") << QByteArray("<html>Not found</html>");
        QByteArray scrambled = whole;
        for (qsizetype i = 8; i < 2'000; i += 7)
            scrambled[i] = static_cast<char>(0xff - i % 256);
        QTest::newRow("scrambled") << scrambled;
    }
    void anUnusableModelFileIsToldAndAGoodOneServesAtOnce() {
        QFETCH(QByteArray, file);
        m_folders->setModelFile(file);
        QCOMPARE(answerTo(u"Hello"_s), damaged);
        m_folders->setModel(TinyModel::sentence());
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
    }

    void withoutAModelFileTheTurnSaysSo() {
        QFile::remove(m_folders->path(u"data/models/on-device.gguf"_s));
        QCOMPARE(answerTo(u"Hello"_s), u"Error: The on-device model is not installed."_s);
    }

    void withoutAnEngineTheTurnSaysSo() {
        QFile::remove(m_folders->path(u"bin/llama-server"_s));
        QCOMPARE(answerTo(u"Hello"_s), unusable);
    }

    void aFailedStartIsToldAndNotRepeatedForTheSameTurn() {
        m_folders->setEngineScript("echo x >>'" + m_folders->path(u"starts"_s).toUtf8() +
                                   "'\nsleep 0.3\necho 'error while loading shared libraries' >&2\n"
                                   "exit 127\n");
        QCOMPARE(answerTo(u"Hello"_s), unusable);
        QCOMPARE(contents(u"starts"_s), QByteArray("x\n"));
    }

    void anEngineOfAnOlderVersionIsSpokenToInItsOwnOptions() {
        // Refuses today's options as an older version does; what it takes goes to the real one.
        m_folders->setEngineScript(
            "echo x >>'" + m_folders->path(u"starts"_s).toUtf8() +
            "'\nfor argument in \"$@\"; do\n"
            "    case $argument in --no-ui | --reasoning | --cache-ram | --sleep-idle-seconds)\n"
            "        echo \"error: invalid argument: $argument\" >&2\n"
            "        exit 1 ;;\n"
            "    esac\n"
            "done\n" +
            EngineFolders::realEngine);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QCOMPARE(contents(u"starts"_s), QByteArray("x\nx\nx\nx\nx\n"));

        // What was learnt holds for the next start.
        kill(static_cast<pid_t>(engineProcess()), SIGKILL);
        QTRY_COMPARE(engineProcess(), qint64{0});
        QCOMPARE(answerTo(u"Again"_s), m_reply);
        QCOMPARE(contents(u"starts"_s), QByteArray("x\nx\nx\nx\nx\nx\n"));
    }

    void optionsInTheEnvironmentHaveNoEffect() {
        qputenv("LLAMA_ARG_N_PREDICT", "2");
        qputenv("LLAMA_ARG_CHAT_TEMPLATE", "llama2");
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        qunsetenv("LLAMA_ARG_N_PREDICT");
        qunsetenv("LLAMA_ARG_CHAT_TEMPLATE");
    }

private:
    QString answerTo(const QString& prompt) { return outcomeOf(m_chat->ask(prompt)); }
    /// Begins a turn with an engine that answers the question for its health and the turn as
    /// planned; see standIn().
    std::shared_ptr<Heard> askStandIn(const char* health, const char* turn,
                                      const EngineLimits& limits = {}) {
        m_folders->setEngineScript("exec '" + QCoreApplication::applicationFilePath().toUtf8() +
                                   "' EngineFaultsTests --stand-in " + health + ' ' + turn + " '" +
                                   m_folders->path(u"requests"_s).toUtf8() + "' \"$@\"\n");
        m_chat.emplace(m_folders->paths(), limits);
        return m_chat->ask(u"Hello"_s);
    }

    QByteArray contents(const QString& name) const { return bytesOf(m_folders->path(name)); }
    qsizetype requests(const char* target) const { return contents(u"requests"_s).count(target); }

    const QString m_reply = QString::fromUtf8(replyOf(TinyModel::sentence()));
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
};

namespace {

/// Keeps the processor busy for a time.
void work(std::chrono::milliseconds time) {
    const QDeadlineTimer end(time);
    while (!end.hasExpired()) {
    }
}

/// A process in the engine's place. It answers each question for its health, and each turn, by the
/// next letter of a plan, or the last: ready, loading, silence, an answer, a reply that breaks off
/// in the middle, a late one after some work, or work in vain.
int standIn(const QByteArray& health, const QByteArray& turn, const QString& record,
            const QStringList& options) {
    qsizetype healthAsked = 0;
    qsizetype turnsAsked = 0;
    ScriptedServer server;
    server.setAnswer([&](const RecordedRequest& request) {
        QFile file(record);
        (void)file.open(QIODevice::Append);
        const qint64 now = QDeadlineTimer::current(Qt::PreciseTimer).deadline();
        file.write(QByteArray::number(now) + ' ' + request.target + '\n');
        const bool isTurn = request.method == "POST";
        const QByteArray& plan = isTurn ? turn : health;
        switch (plan.at(std::min((isTurn ? turnsAsked : healthAsked)++, plan.size() - 1))) {
        case 'r':
            return Script::reply(200, "{}");
        case 'l':
            return Script::reply(503, "{}");
        case 'a':
            return Script::streamed(R"(data: {"choices":[{"finish_reason":"stop","delta":)"
                                    R"({"content":"Said"}}]})"
                                    "\n\n");
        case 'm':
            return Script().head(200, {"Content-Length: 9"}).send("x").hold();
        case 'w':
            return Script()
                .call([] { work(5s); })
                .send("HTTP/1.1 200 OK\r\n\r\ndata: {\"choices\":[{\"finish_reason\":\"stop\","
                      "\"delta\":{\"content\":\"Late\"}}]}\n\n");
        case 'v':
            return Script().call([] { work(10min); });
        default:
            return Script().hold();
        }
    });
    server.listen(options.at(options.indexOf(u"--host"_s) + 1));
    return QCoreApplication::exec();
}

} // namespace

static int run(int argc, char** argv) {
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--stand-in")
        return standIn(arguments.at(2).toLatin1(), arguments.at(3).toLatin1(), arguments.at(4),
                       arguments.mid(5));
    EngineFaultsTests tests;
    return QTest::qExec(&tests, argc, argv);
}
TELLWICK_TEST_FUNCTION(EngineFaultsTests, EventLoop, run)

#include "EngineFaultsTests.moc"
