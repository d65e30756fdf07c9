// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Tellwick/Backends/AppleIntelligenceBackend.h"
#include "tests/Tellwick/Conversations/ScriptedModel.h"
#include "tests/support/TestMain.h"

#include <QProcess>

#include <thread>

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Availability = SystemLanguageModel::Availability;
using Reason = Availability::UnavailableReason;

namespace {

struct Seen {
    QStringList snapshots;
    bool hasEnded = false;
    std::exception_ptr error;
};

Task<void> consume(ReplyStream stream, std::shared_ptr<Seen> seen) {
    try {
        while (const auto snapshot = co_await stream.next())
            seen->snapshots.append(snapshot->toString());
    } catch (...) {
        seen->error = std::current_exception();
    }
    seen->hasEnded = true;
}

} // namespace

class AppleIntelligenceBackendTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theDescriptorIsThatOfTheOnDeviceModel();
    void makingTheBackendTouchesNothingOfThePlatform();
    void availabilityIsAskedAfreshEachTime();
    void anUnavailableModelGivesItsReason_data();
    void anUnavailableModelGivesItsReason();
    void anyThreadMayAskForTheAvailability();
    void theFirstRequestMakesTheSessionAndLaterSystemPromptsHaveNoEffect();
    void afterAResetTheNextRequestMakesASessionWithItsOwnInstructions();
    void theHistoryIsNeverSent();
    void theSessionGetsTheBarePromptAndNoGenerationOptions();
    void snapshotsArriveAsTheyAreAndTheStreamEndsWithTheSequence();
    void aPlatformErrorEndsTheStreamUnchangedAfterItsSnapshots();
    void anErrorWhileTheSessionIsMadeEndsTheStreamUnchanged();
    void anErrorWhileTheTurnIsBegunEndsTheStreamUnchanged();
    void aCancellationErrorEndsTheStreamNormally();
    void aResetWhileAReplyStreamsLetsItFinish();
    void aReplyIsReadToItsEndAfterItsConsumerHasGone();
    void aReplyOutlivesTheBackend();
    void calledOffTheMainThreadItStopsTheProgram_data();
    void calledOffTheMainThreadItStopsTheProgram();

private:
    std::shared_ptr<Seen> ask(const QString& prompt, const QString& systemPrompt,
                              const QList<ChatMessage>& history = {});
    AskedTurn& turn(std::size_t number) { return m_model->turns.at(number); }

    std::unique_ptr<MainExecutor> m_executor;
    std::unique_ptr<ScriptedModel> m_model;
    std::unique_ptr<TaskScope> m_producers;
    std::unique_ptr<AppleIntelligenceBackend> m_backend;
    std::unique_ptr<TaskScope> m_consumers;
};

void AppleIntelligenceBackendTests::init() {
    m_executor = std::make_unique<MainExecutor>();
    m_model = std::make_unique<ScriptedModel>();
    m_producers = std::make_unique<TaskScope>(*m_executor);
    m_backend = std::make_unique<AppleIntelligenceBackend>(*m_model, *m_producers);
    m_consumers = std::make_unique<TaskScope>(*m_executor);
}

void AppleIntelligenceBackendTests::cleanup() {
    m_consumers.reset();
    m_backend.reset();
    m_producers.reset();
    m_model.reset();
    m_executor.reset();
}

std::shared_ptr<Seen> AppleIntelligenceBackendTests::ask(const QString& prompt,
                                                         const QString& systemPrompt,
                                                         const QList<ChatMessage>& history) {
    auto seen = std::make_shared<Seen>();
    m_consumers->start(consume(m_backend->streamResponse(prompt, history, systemPrompt), seen));
    QCoreApplication::processEvents();
    return seen;
}

void AppleIntelligenceBackendTests::theDescriptorIsThatOfTheOnDeviceModel() {
    QCOMPARE(m_backend->info().id(), u"apple-intelligence"_s);
    QCOMPARE(m_backend->info().name(), u"Apple Intelligence"_s);
    QVERIFY(m_backend->info().source() == ModelSource::appleIntelligence);
    QVERIFY(m_backend->info().detail == u"On-device \u00b7 Private"_s);
}

void AppleIntelligenceBackendTests::makingTheBackendTouchesNothingOfThePlatform() {
    QCOMPARE(m_model->timesAsked, 0);
    QVERIFY(m_model->instructions.isEmpty());
}

void AppleIntelligenceBackendTests::availabilityIsAskedAfreshEachTime() {
    QVERIFY(m_backend->isAvailable());
    QVERIFY(!m_backend->unavailabilityReason());
    m_model->state = Availability::unavailable(Reason::modelNotReady);
    QVERIFY(!m_backend->isAvailable());
    QVERIFY(m_backend->unavailabilityReason() == Reason::modelNotReady);
    m_model->state = Availability::available();
    QVERIFY(m_backend->isAvailable());
    QCOMPARE(m_model->timesAsked, 5);
}

void AppleIntelligenceBackendTests::anUnavailableModelGivesItsReason_data() {
    QTest::addColumn<int>("reason");
    for (const Reason reason :
         {Reason::deviceNotEligible, Reason::appleIntelligenceNotEnabled, Reason::modelNotReady})
        QTest::newRow(qPrintable(toText(reason))) << static_cast<int>(reason);
}

void AppleIntelligenceBackendTests::anUnavailableModelGivesItsReason() {
    QFETCH(int, reason);
    m_model->state = Availability::unavailable(static_cast<Reason>(reason));
    QVERIFY(!m_backend->isAvailable());
    QVERIFY(m_backend->unavailabilityReason() == static_cast<Reason>(reason));
}

void AppleIntelligenceBackendTests::anyThreadMayAskForTheAvailability() {
    m_model->state = Availability::unavailable(Reason::modelNotReady);
    bool isAvailable = true;
    std::optional<Reason> reason;
    std::thread([&] {
        isAvailable = m_backend->isAvailable();
        reason = m_backend->unavailabilityReason();
    }).join();
    QVERIFY(!isAvailable);
    QVERIFY(reason == Reason::modelNotReady);
}

void AppleIntelligenceBackendTests::
    theFirstRequestMakesTheSessionAndLaterSystemPromptsHaveNoEffect() {
    ask(u"one"_s, u"A"_s);
    turn(0).end();
    ask(u"two"_s, u"B"_s);
    QCOMPARE(m_model->instructions, QStringList{u"A"_s});
    QCOMPARE(turn(1).prompt, u"two"_s);
    QCOMPARE(turn(1).session, turn(0).session);
}

void AppleIntelligenceBackendTests::afterAResetTheNextRequestMakesASessionWithItsOwnInstructions() {
    ask(u"one"_s, u"A"_s);
    turn(0).end();
    m_backend->reset();
    QCOMPARE(m_model->instructions.size(), 1);
    ask(u"two"_s, u"B"_s);
    QCOMPARE(m_model->instructions, (QStringList{u"A"_s, u"B"_s}));
    QCOMPARE(turn(1).prompt, u"two"_s);
    QVERIFY(turn(1).session != turn(0).session);
}

void AppleIntelligenceBackendTests::theHistoryIsNeverSent() {
    const QList<ChatMessage> history{
        ChatMessage(ChatMessage::Role::user, TextSnapshot(u"an earlier question")),
        ChatMessage(ChatMessage::Role::assistant, TextSnapshot(u"an earlier answer"))};
    ask(u"now"_s, u"A"_s, history);
    QCOMPARE(m_model->instructions, QStringList{u"A"_s});
    QCOMPARE(m_model->turns.size(), std::size_t{1});
    QCOMPARE(turn(0).prompt, u"now"_s);
}

void AppleIntelligenceBackendTests::theSessionGetsTheBarePromptAndNoGenerationOptions() {
    ask(u"  two\nlines "_s, u"A"_s);
    QCOMPARE(turn(0).prompt, u"  two\nlines "_s);
    QVERIFY(!turn(0).options.sampling);
    QVERIFY(!turn(0).options.temperature);
    QVERIFY(!turn(0).options.maximumResponseTokens);
}

void AppleIntelligenceBackendTests::snapshotsArriveAsTheyAreAndTheStreamEndsWithTheSequence() {
    const auto seen = ask(u"hi"_s, u"A"_s);
    turn(0).say(u"Hel");
    QTRY_COMPARE(seen->snapshots, QStringList{u"Hel"_s});
    turn(0).say(u"Hello");
    QTRY_COMPARE(seen->snapshots, (QStringList{u"Hel"_s, u"Hello"_s}));
    QVERIFY(!seen->hasEnded);
    turn(0).end();
    QTRY_VERIFY(seen->hasEnded);
    QVERIFY(!seen->error);
    QCOMPARE(seen->snapshots.size(), 2);
}

void AppleIntelligenceBackendTests::aPlatformErrorEndsTheStreamUnchangedAfterItsSnapshots() {
    const auto error = std::make_exception_ptr(ScriptedError());
    const auto seen = ask(u"hi"_s, u"A"_s);
    turn(0).say(u"Hel");
    turn(0).reply.finish(error);
    QTRY_VERIFY(seen->hasEnded);
    QCOMPARE(seen->snapshots, QStringList{u"Hel"_s});
    QVERIFY(seen->error == error);
    QCOMPARE(localizedDescription(seen->error), u"The model is tired."_s);
}

void AppleIntelligenceBackendTests::anErrorWhileTheSessionIsMadeEndsTheStreamUnchanged() {
    m_model->refusal = std::make_exception_ptr(ScriptedError());
    const auto seen = ask(u"hi"_s, u"A"_s);
    QTRY_VERIFY(seen->hasEnded);
    QVERIFY(seen->error == m_model->refusal);

    m_model->refusal = nullptr;
    ask(u"again"_s, u"B"_s);
    QCOMPARE(m_model->instructions, QStringList{u"B"_s});
}

void AppleIntelligenceBackendTests::anErrorWhileTheTurnIsBegunEndsTheStreamUnchanged() {
    ask(u"one"_s, u"A"_s);
    turn(0).end();
    m_model->refusal = std::make_exception_ptr(ScriptedError());
    const auto seen = ask(u"two"_s, u"A"_s);
    QTRY_VERIFY(seen->hasEnded);
    QVERIFY(seen->error == m_model->refusal);
}

void AppleIntelligenceBackendTests::aCancellationErrorEndsTheStreamNormally() {
    const auto seen = ask(u"hi"_s, u"A"_s);
    turn(0).say(u"Hel");
    turn(0).reply.finish(std::make_exception_ptr(CancellationError()));
    QTRY_VERIFY(seen->hasEnded);
    QVERIFY(!seen->error);
    QCOMPARE(seen->snapshots, QStringList{u"Hel"_s});
}

void AppleIntelligenceBackendTests::aResetWhileAReplyStreamsLetsItFinish() {
    const auto first = ask(u"one"_s, u"A"_s);
    turn(0).say(u"Hel");
    m_backend->reset();
    const auto second = ask(u"two"_s, u"B"_s);
    turn(0).say(u"Hello");
    turn(0).end();
    QTRY_VERIFY(first->hasEnded);
    QCOMPARE(first->snapshots, (QStringList{u"Hel"_s, u"Hello"_s}));
    QVERIFY(!first->error);
    QCOMPARE(m_model->instructions, (QStringList{u"A"_s, u"B"_s}));
    QVERIFY(!second->hasEnded);
}

void AppleIntelligenceBackendTests::aReplyIsReadToItsEndAfterItsConsumerHasGone() {
    ask(u"one"_s, u"A"_s);
    turn(0).say(u"Hel");
    QCoreApplication::processEvents();
    m_consumers = std::make_unique<TaskScope>(*m_executor);
    // As long as the platform's sequence is read, the producer holds the session.
    m_backend->reset();
    for (const auto* snapshot : {u"Hello", u"Hello,", u"Hello, you"}) {
        turn(0).say(snapshot);
        QCoreApplication::processEvents(); // producer and consumer share the test's thread
        QVERIFY(!m_model->latestSession.expired());
    }
    turn(0).end();
    QTRY_VERIFY(m_model->latestSession.expired());
}

void AppleIntelligenceBackendTests::aReplyOutlivesTheBackend() {
    const auto seen = ask(u"one"_s, u"A"_s);
    m_backend.reset();
    turn(0).say(u"Hello");
    turn(0).end();
    QTRY_VERIFY(seen->hasEnded);
    QCOMPARE(seen->snapshots, QStringList{u"Hello"_s});
}

void AppleIntelligenceBackendTests::calledOffTheMainThreadItStopsTheProgram_data() {
    QTest::addColumn<QString>("operation");
    QTest::newRow("a request") << u"streamResponse"_s;
    QTest::newRow("a reset") << u"reset"_s;
}

void AppleIntelligenceBackendTests::calledOffTheMainThreadItStopsTheProgram() {
    QFETCH(QString, operation);
    QProcess child;
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(),
                {u"AppleIntelligenceBackendTests"_s, u"--off-main-thread"_s, operation});
    QVERIFY(child.waitForFinished(20'000));
    const QByteArray said = child.readAll();
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QVERIFY2(said.contains("AppleIntelligenceBackend::" + operation.toUtf8()), said.constData());
}

namespace {

/// What the child process of the last test does: it must not come back from the call.
int callOffTheMainThread(const QString& operation) {
    MainExecutor executor;
    TaskScope producers(executor);
    ScriptedModel model;
    AppleIntelligenceBackend backend(model, producers);
    std::thread([&] {
        if (operation == u"reset")
            backend.reset();
        else
            (void)backend.streamResponse(u"hi"_s, {}, u"A"_s);
    }).join();
    return 0;
}

} // namespace

static int run(int argc, char** argv) {
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == u"--off-main-thread")
        return callOffTheMainThread(arguments.at(2));
    AppleIntelligenceBackendTests tests;
    return QTest::qExec(&tests, argc, argv);
}
TELLWICK_TEST_FUNCTION(AppleIntelligenceBackendTests, EventLoop, run)

#include "AppleIntelligenceBackendTests.moc"
