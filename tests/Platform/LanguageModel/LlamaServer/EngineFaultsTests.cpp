// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"
#include "tests/support/StreamProbe.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <QFile>

#include <signal.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

constexpr int limit = 30'000; // milliseconds; the machine may be busy with other tests
const QString stopped = u"The on-device model stopped unexpectedly. Send your message again to "
                        u"restart it."_s;
const QString damaged = u"The on-device model could not be loaded: its file is damaged or of a "
                        u"kind that cannot be used here."_s;
const QString unusable = u"The program that runs the on-device model could not be started."_s;

} // namespace

/// What goes wrong with the real engine, and that the next turn works.
class EngineFaultsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init();
    void cleanup();

    void anEngineKilledMidReplyFailsTheTurnAndTheNextOneWorks();
    void anEngineKilledBetweenTurnsIsReplacedUnnoticed();
    void anEngineKilledWhileItLoadsFailsTheTurnAndTheNextOneWorks();
    void anUnusableModelFileIsToldAndAGoodOneServesAtOnce_data();
    void anUnusableModelFileIsToldAndAGoodOneServesAtOnce();
    void withoutAModelFileTheTurnSaysSo();
    void withoutAnEngineTheTurnSaysSo();
    void anEngineThatWillNotStartIsToldAfterOneStart();
    void aFailedStartIsNotRepeatedForTheSameTurn();
    void anEngineOfAnOlderVersionIsSpokenToInItsOwnOptions();
    void optionsInTheEnvironmentHaveNoEffect();

private:
    std::shared_ptr<Heard> ask(const QString& prompt) {
        if (!m_session)
            m_session = m_model->makeSession(u"Be kind."_s);
        return listen(*m_scope, m_session->streamResponse(prompt, {}));
    }
    void expectAnswer(const QString& prompt);
    void expectError(const QString& prompt, const QString& error);
    static qint64 engine() { return childrenOf(QCoreApplication::applicationPid()).value(0); }

    std::unique_ptr<EngineFolders> m_folders;
    std::unique_ptr<MainExecutor> m_executor;
    std::unique_ptr<TaskScope> m_scope;
    std::unique_ptr<NetworkThread> m_network;
    std::unique_ptr<LlamaServerModel> m_model;
    std::shared_ptr<LanguageModelSession> m_session;
};

void EngineFaultsTests::init() {
    m_folders = std::make_unique<EngineFolders>();
    m_folders->setModel(TinyModel::sentence());
    m_executor = std::make_unique<MainExecutor>();
    m_scope = std::make_unique<TaskScope>(*m_executor);
    m_network = std::make_unique<NetworkThread>();
    m_model = std::make_unique<LlamaServerModel>(*m_network, m_folders->paths());
}

void EngineFaultsTests::cleanup() {
    m_session.reset();
    m_scope.reset();
    m_model.reset();
    m_network.reset();
    m_executor.reset();
    m_folders.reset();
}

void EngineFaultsTests::expectAnswer(const QString& prompt) {
    const auto heard = ask(prompt);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()), QString());
    QCOMPARE(heard->text(), QString::fromUtf8(replyOf(TinyModel::sentence())));
}

void EngineFaultsTests::expectError(const QString& prompt, const QString& error) {
    const auto heard = ask(prompt);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()), error);
}

void EngineFaultsTests::anEngineKilledMidReplyFailsTheTurnAndTheNextOneWorks() {
    m_folders->setModel(TinyModel::endless());
    const auto heard = ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->snapshots > 3, limit);
    const qint64 killed = engine();
    QVERIFY(killed > 0);
    kill(static_cast<pid_t>(killed), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()), stopped);

    m_folders->setModel(TinyModel::sentence());
    expectAnswer(u"Hello"_s);
    QVERIFY(engine() != killed);
}

void EngineFaultsTests::anEngineKilledBetweenTurnsIsReplacedUnnoticed() {
    m_folders->recordPrompts();
    expectAnswer(u"Hello"_s);
    const qint64 killed = engine();
    kill(static_cast<pid_t>(killed), SIGKILL);
    QTRY_VERIFY(!isRunning(killed));
    expectAnswer(u"Again"_s);
    // The conversation has survived, since it is kept on this side.
    QVERIFY(m_folders->recordedPrompts().value(1).contains("Hello"));
}

void EngineFaultsTests::anEngineKilledWhileItLoadsFailsTheTurnAndTheNextOneWorks() {
    m_folders->setEngineScript("exec sleep 600\n");
    const auto heard = ask(u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(engine() > 0, limit);
    kill(static_cast<pid_t>(engine()), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()), stopped);
    m_folders->setEngineScript("exec \"$ENGINE\" \"$@\"\n");
    expectAnswer(u"Again"_s);
}

void EngineFaultsTests::anUnusableModelFileIsToldAndAGoodOneServesAtOnce_data() {
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

void EngineFaultsTests::anUnusableModelFileIsToldAndAGoodOneServesAtOnce() {
    QFETCH(QByteArray, file);
    m_folders->setModelFile(file);
    expectError(u"Hello"_s, damaged);
    m_folders->setModel(TinyModel::sentence());
    expectAnswer(u"Hello"_s);
}

void EngineFaultsTests::withoutAModelFileTheTurnSaysSo() {
    QFile::remove(m_folders->path(u"data/models/on-device.gguf"_s));
    expectError(u"Hello"_s, u"The on-device model is not installed."_s);
}

void EngineFaultsTests::withoutAnEngineTheTurnSaysSo() {
    QFile::remove(m_folders->path(u"bin/llama-server"_s));
    expectError(u"Hello"_s, unusable);
}

void EngineFaultsTests::anEngineThatWillNotStartIsToldAfterOneStart() {
    m_folders->setEngineScript("echo started >>'" + m_folders->path(u"starts"_s).toUtf8() +
                               "'\necho 'error while loading shared libraries' >&2\nexit 127\n");
    const auto heard =
        listen(*m_scope, m_model->makeSession(u"Be kind."_s)->streamResponse(u"Hello"_s, {}));
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()), unusable);
}

void EngineFaultsTests::aFailedStartIsNotRepeatedForTheSameTurn() {
    m_folders->setEngineScript("echo x >>'" + m_folders->path(u"starts"_s).toUtf8() +
                               "'\nsleep 0.3\nexit 1\n");
    expectError(u"Hello"_s, unusable);
    QFile starts(m_folders->path(u"starts"_s));
    QVERIFY(starts.open(QIODevice::ReadOnly));
    QCOMPARE(starts.readAll(), QByteArray("x\n"));
}

void EngineFaultsTests::anEngineOfAnOlderVersionIsSpokenToInItsOwnOptions() {
    // Refuses today's options as an older version does; what it takes goes to the real one.
    m_folders->setEngineScript(
        "echo x >>'" + m_folders->path(u"starts"_s).toUtf8() +
        "'\nfor argument in \"$@\"; do\n"
        "    case $argument in --no-ui | --reasoning | --cache-ram | --sleep-idle-seconds)\n"
        "        echo \"error: invalid argument: $argument\" >&2\n"
        "        exit 1 ;;\n"
        "    esac\n"
        "done\n"
        "exec \"$ENGINE\" \"$@\"\n");
    expectAnswer(u"Hello"_s);
    QFile starts(m_folders->path(u"starts"_s));
    QVERIFY(starts.open(QIODevice::ReadOnly));
    QCOMPARE(starts.readAll(), QByteArray("x\nx\nx\nx\nx\n"));

    // What was learnt holds for the next start.
    kill(static_cast<pid_t>(engine()), SIGKILL);
    QTRY_COMPARE(engine(), qint64{0});
    expectAnswer(u"Again"_s);
    QCOMPARE(starts.readAll(), QByteArray("x\n"));
}

void EngineFaultsTests::optionsInTheEnvironmentHaveNoEffect() {
    qputenv("LLAMA_ARG_N_PREDICT", "2");
    qputenv("LLAMA_ARG_CHAT_TEMPLATE", "llama2");
    expectAnswer(u"Hello"_s);
    qunsetenv("LLAMA_ARG_N_PREDICT");
    qunsetenv("LLAMA_ARG_CHAT_TEMPLATE");
}

TELLWICK_TEST(EngineFaultsTests, EventLoop)
#include "EngineFaultsTests.moc"
