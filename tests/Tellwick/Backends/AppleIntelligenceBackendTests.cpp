// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/AppleIntelligenceBackend.h"
#include "tests/Tellwick/Conversations/ScriptedModel.h"
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <thread>

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Availability = SystemLanguageModel::Availability;
using Reason = Availability::UnavailableReason;

namespace {

/// The backend over a model that says what the test tells it to. What ends first stands last.
struct OnDevice {
    std::shared_ptr<SeenReply> ask(const QString& prompt, const QString& systemPrompt,
                                   const QList<ChatMessage>& history = {}) {
        auto seen = std::make_shared<SeenReply>();
        consumers->start(
            consume<TextSnapshot>(backend->streamResponse(prompt, history, systemPrompt), seen));
        QCoreApplication::processEvents();
        return seen;
    }
    AskedTurn& turn(std::size_t number) { return model.turns.at(number); }

    MainExecutor executor;
    ScriptedModel model;
    TaskScope producers{executor};
    std::optional<AppleIntelligenceBackend> backend{std::in_place, model, producers};
    std::optional<TaskScope> consumers{std::in_place, executor};
};

} // namespace

class AppleIntelligenceBackendTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void theDescriptorIsThatOfTheOnDeviceModelAndNothingIsTouchedForIt() {
        QCOMPARE(m->backend->info().id(), u"apple-intelligence"_s);
        QCOMPARE(m->backend->info().name(), u"Apple Intelligence"_s);
        QVERIFY(m->backend->info().source() == ModelSource::appleIntelligence);
        QVERIFY(m->backend->info().detail == u"On-device \u00b7 Private"_s);
        QCOMPARE(m->model.timesAsked, 0);
        QVERIFY(m->model.instructions.isEmpty());
    }

    void availabilityIsAskedAfreshEachTimeAndOnAnyThread() {
        std::thread([this] {
            for (const Reason reason :
                 {Reason::deviceNotEligible, Reason::appleIntelligenceNotEnabled,
                  Reason::modelNotReady}) {
                m->model.state = Availability::unavailable(reason);
                QVERIFY(!m->backend->isAvailable());
                QVERIFY(m->backend->unavailabilityReason() == reason);
            }
            m->model.state = Availability::available();
            QVERIFY(m->backend->isAvailable());
            QVERIFY(!m->backend->unavailabilityReason());
        }).join();
        QCOMPARE(m->model.timesAsked, 8);
    }

    void theFirstRequestMakesTheSessionAndLaterSystemPromptsHaveNoEffect() {
        m->ask(u"one"_s, u"A"_s);
        m->turn(0).end();
        m->ask(u"two"_s, u"B"_s);
        QCOMPARE(m->model.instructions, QStringList{u"A"_s});
        QCOMPARE(m->turn(1).prompt, u"two"_s);
        QCOMPARE(m->turn(1).session, m->turn(0).session);
    }

    void afterAResetTheNextRequestMakesASessionWithItsOwnInstructions() {
        m->ask(u"one"_s, u"A"_s);
        m->turn(0).end();
        m->backend->reset();
        QCOMPARE(m->model.instructions.size(), 1);
        m->ask(u"two"_s, u"B"_s);
        QCOMPARE(m->model.instructions, (QStringList{u"A"_s, u"B"_s}));
        QCOMPARE(m->turn(1).prompt, u"two"_s);
        QVERIFY(m->turn(1).session != m->turn(0).session);
    }

    void gettingReadyMakesNoSessionToKeep() {
        m->backend->prewarm(u"A"_s);
        QCOMPARE(m->model.instructions, QStringList{u"A"_s});
        QCOMPARE(m->model.prewarmed, QList<qsizetype>{0});
        QVERIFY(m->model.latestSession.expired());
        m->ask(u"one"_s, u"B"_s);
        QCOMPARE(m->model.instructions, (QStringList{u"A"_s, u"B"_s}));
        QCOMPARE(m->turn(0).session, 1);
    }

    void theSessionThatThereIsGetsReadyItself() {
        m->ask(u"one"_s, u"A"_s);
        m->turn(0).end();
        m->backend->prewarm(u"B"_s);
        QCOMPARE(m->model.instructions, QStringList{u"A"_s});
        QCOMPARE(m->model.prewarmed, QList<qsizetype>{0});
    }

    void whereItCannotGetReadyNothingHappens() {
        m->model.refusal = std::make_exception_ptr(ScriptedError());
        m->backend->prewarm(u"A"_s);
        QVERIFY(m->model.prewarmed.isEmpty());
    }

    void theHistoryIsNeverSent() {
        m->ask(u"now"_s, u"A"_s,
               {ChatMessage(ChatMessage::Role::user, TextSnapshot(u"an earlier question")),
                ChatMessage(ChatMessage::Role::assistant, TextSnapshot(u"an earlier answer"))});
        QCOMPARE(m->model.instructions, QStringList{u"A"_s});
        QCOMPARE(m->model.turns.size(), std::size_t{1});
        QCOMPARE(m->turn(0).prompt, u"now"_s);
    }

    void theSessionGetsTheBarePromptAndNoGenerationOptions() {
        m->ask(u"  two\nlines "_s, u"A"_s);
        QCOMPARE(m->turn(0).prompt, u"  two\nlines "_s);
        QVERIFY(!m->turn(0).options.sampling);
        QVERIFY(!m->turn(0).options.temperature);
        QVERIFY(!m->turn(0).options.maximumResponseTokens);
    }

    void snapshotsArriveAsTheyAreAndTheStreamEndsWithTheSequence() {
        const auto seen = m->ask(u"hi"_s, u"A"_s);
        m->turn(0).say(u"Hel");
        QTRY_COMPARE(seen->texts(), QStringList{u"Hel"_s});
        m->turn(0).say(u"Hello");
        QTRY_COMPARE(seen->texts(), (QStringList{u"Hel"_s, u"Hello"_s}));
        QVERIFY(!seen->hasEnded);
        m->turn(0).end();
        QTRY_VERIFY(seen->hasEnded);
        QVERIFY(!seen->error);
        QCOMPARE(seen->elements.size(), 2);
    }

    void aPlatformErrorEndsTheStreamUnchangedAfterItsSnapshots() {
        const auto error = std::make_exception_ptr(ScriptedError());
        const auto seen = m->ask(u"hi"_s, u"A"_s);
        m->turn(0).say(u"Hel");
        m->turn(0).reply.finish(error);
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->texts(), QStringList{u"Hel"_s});
        QVERIFY(seen->error == error);
        QCOMPARE(seen->errorText(), u"The model is tired."_s);
    }

    void anErrorBeforeTheReplyEndsTheStreamUnchanged() {
        m->model.refusal = std::make_exception_ptr(ScriptedError());
        const auto unmade = m->ask(u"hi"_s, u"A"_s);
        QTRY_VERIFY(unmade->hasEnded);
        QVERIFY(unmade->error == m->model.refusal);

        const auto refusal = std::exchange(m->model.refusal, nullptr);
        m->ask(u"again"_s, u"B"_s);
        QCOMPARE(m->model.instructions, QStringList{u"B"_s});
        m->turn(0).end();
        m->model.refusal = refusal; // now the session is there and refuses the turn
        const auto unbegun = m->ask(u"two"_s, u"A"_s);
        QTRY_VERIFY(unbegun->hasEnded);
        QVERIFY(unbegun->error == refusal);
    }

    void aCancellationErrorEndsTheStreamNormally() {
        const auto seen = m->ask(u"hi"_s, u"A"_s);
        m->turn(0).say(u"Hel");
        m->turn(0).reply.finish(std::make_exception_ptr(CancellationError()));
        QTRY_VERIFY(seen->hasEnded);
        QVERIFY(!seen->error);
        QCOMPARE(seen->texts(), QStringList{u"Hel"_s});
    }

    void aResetWhileAReplyStreamsLetsItFinish() {
        const auto first = m->ask(u"one"_s, u"A"_s);
        m->turn(0).say(u"Hel");
        m->backend->reset();
        const auto second = m->ask(u"two"_s, u"B"_s);
        m->turn(0).say(u"Hello");
        m->turn(0).end();
        QTRY_VERIFY(first->hasEnded);
        QCOMPARE(first->texts(), (QStringList{u"Hel"_s, u"Hello"_s}));
        QVERIFY(!first->error);
        QCOMPARE(m->model.instructions, (QStringList{u"A"_s, u"B"_s}));
        QVERIFY(!second->hasEnded);
    }

    void aReplyIsReadToItsEndAfterItsConsumerHasGone() {
        m->ask(u"one"_s, u"A"_s);
        m->turn(0).say(u"Hel");
        QCoreApplication::processEvents();
        m->consumers.emplace(m->executor);
        // As long as the platform's sequence is read, the producer holds the session.
        m->backend->reset();
        for (const auto* snapshot : {u"Hello", u"Hello,", u"Hello, you"}) {
            m->turn(0).say(snapshot);
            QCoreApplication::processEvents(); // producer and consumer share the test's thread
            QVERIFY(!m->model.latestSession.expired());
        }
        m->turn(0).end();
        QTRY_VERIFY(m->model.latestSession.expired());
    }

    void aReplyOutlivesTheBackend() {
        const auto seen = m->ask(u"one"_s, u"A"_s);
        m->backend.reset();
        m->turn(0).say(u"Hello");
        m->turn(0).end();
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->texts(), QStringList{u"Hello"_s});
    }

private:
    std::optional<OnDevice> m;
};

TELLWICK_TEST(AppleIntelligenceBackendTests, EventLoop)
#include "AppleIntelligenceBackendTests.moc"
