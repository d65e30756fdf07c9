// SPDX-License-Identifier: MIT
// What the controller's operations do at once; what a turn does later is in ChatTurnTests.
#include "Platform/Observation/Observer.h"
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Availability = SystemLanguageModel::Availability;
using Reason = Availability::UnavailableReason;

class ChatViewModelTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m.emplace();
        m->start();
    }
    void cleanup() { m.reset(); }

    void aNewControllerIsIdleAndEmpty() {
        QVERIFY(vm().messages.value().isEmpty());
        QCOMPARE(vm().draft.value(), QString());
        QVERIFY(!vm().isGenerating.value());
        QVERIFY(!vm().availabilityError.value());
        QVERIFY(!vm().activeMode.value());
        QCOMPARE(vm().modelManager.selectedID.value(), u"apple-intelligence"_s);
    }

    void theDraftIsTrimmedOfWhiteSpaceAtBothEnds_data() {
        QTest::addColumn<QString>("draft");
        QTest::addColumn<QString>("sent");
        const auto row = [](const char* name, const QString& before, const QString& after) {
            QTest::newRow(name) << before + u"word"_s + after << u"word"_s;
        };
        row("nothing", {}, {});
        row("blanks and a line feed", u"  "_s, u" \n"_s);
        for (const char16_t c :
             {u'\t',     u'\n',     u'\v',     u'\f',     u'\r',     u' ',      u'\u0085',
              u'\u00a0', u'\u1680', u'\u2000', u'\u2001', u'\u2002', u'\u2003', u'\u2004',
              u'\u2005', u'\u2006', u'\u2007', u'\u2008', u'\u2009', u'\u200a', u'\u2028',
              u'\u2029', u'\u202f', u'\u205f', u'\u3000'})
            QTest::addRow("U+%04X", c) << c + u"word"_s + c << u"word"_s;
        // These look like nothing, and are no white space.
        for (const char16_t c : {u'\0', u'\u001c', u'\u001f', u'\u180e', u'\u200b', u'\u200d',
                                 u'\u2060', u'\u2800', u'\ufeff'})
            QTest::addRow("U+%04X stays", c) << c + u"word"_s + c << c + u"word"_s + c;
        QTest::newRow("inside it stays") << u" a \n b "_s << u"a \n b"_s;
        QTest::newRow("an emoji") << u"\n\U0001F600\n"_s << u"\U0001F600"_s;
        QTest::newRow("half an emoji") << u" "_s + QChar(0xd83d) + u" "_s << QString(QChar(0xd83d));
    }

    void theDraftIsTrimmedOfWhiteSpaceAtBothEnds() {
        QFETCH(QString, draft);
        QFETCH(QString, sent);
        QCOMPARE(m->ask(draft).prompt, sent);
        QCOMPARE(vm().draft.value(), QString());
        QCOMPARE(m->contents(), (QStringList{sent, {}}));
    }

    void aDraftOfNothingButWhiteSpaceIsNotSentAndStays_data() {
        QTest::addColumn<QString>("draft");
        QTest::newRow("empty") << QString();
        QTest::newRow("blanks and line feeds") << u"  \n \n\n"_s;
        QTest::newRow("line breaks") << u"\r\n\u0085\u2028\u2029\v\f"_s;
        QTest::newRow("wide blanks") << u"\u3000\u00a0\u2003"_s;
    }

    void aDraftOfNothingButWhiteSpaceIsNotSentAndStays() {
        QFETCH(QString, draft);
        m->model.state = Availability::unavailable(Reason::modelNotReady); // which nobody asks
        const int asked = m->model.timesAsked;
        QVERIFY(!m->send(draft));
        QCOMPARE(vm().draft.value(), draft);
        QVERIFY(vm().messages.value().isEmpty());
        QVERIFY(!vm().availabilityError.value());
        QCOMPARE(m->model.timesAsked, asked);
    }

    void sendReturnsAtOnceWithTheMessagesInPlace() {
        QVERIFY(m->send(u"Hello"_s));
        QCOMPARE(m->roles(), u"ua"_s);
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, {}}));
        QCOMPARE(vm().draft.value(), QString());
        QVERIFY(m->model.turns.empty());
        QVERIFY(m->model.instructions.isEmpty());
    }

    void aSecondSendWhileATurnRunsDoesNothing() {
        QVERIFY(m->send(u"one"_s));
        m->send(u"two"_s); // in the same pass of the event loop
        QCOMPARE(vm().draft.value(), u"two"_s);
        QCOMPARE(m->contents(), (QStringList{u"one"_s, {}}));
        QTRY_COMPARE(m->model.turns.size(), std::size_t(1));
        m->send(u"three"_s); // and in a later one
        QCOMPARE(vm().draft.value(), u"three"_s);
        m->model.turns.front().end();
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), (QStringList{u"one"_s, {}}));
        QCOMPARE(m->model.turns.size(), std::size_t(1));
    }

    void nothingIsReportedWhileATurnRuns() {
        m->ask(u"one"_s);
        m->model.state = Availability::unavailable(Reason::modelNotReady);
        const int asked = m->model.timesAsked;
        for (const QString& selected : {u"apple-intelligence"_s, u"ollama-gone"_s}) {
            vm().modelManager.selectedID = selected;
            m->send(u"two"_s);
            QVERIFY(!vm().availabilityError.value());
            QCOMPARE(vm().draft.value(), u"two"_s);
        }
        QCOMPARE(m->model.timesAsked, asked); // nor is anything asked
    }

    void anUnavailableModelIsReportedAndTheDraftStays_data() {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, Reason reason) {
            QTest::newRow(name) << int(reason)
                                << u"Apple Intelligence unavailable: "_s + platform::toText(reason);
        };
        row("too little memory", Reason::deviceNotEligible);
        row("no engine", Reason::appleIntelligenceNotEnabled);
        row("no model", Reason::modelNotReady);
    }

    void anUnavailableModelIsReportedAndTheDraftStays() {
        QFETCH(int, reason);
        QFETCH(QString, text);
        m->model.state = Availability::unavailable(Reason(reason));
        QVERIFY(!m->send(u" Hello "_s));
        QCOMPARE(vm().availabilityError.value(), std::optional(text));
        QCOMPARE(vm().draft.value(), u" Hello "_s);
        QVERIFY(vm().messages.value().isEmpty());
        m->model.state = Availability::available();
        vm().send(); // asks afresh
        QVERIFY(vm().isGenerating.value());
    }

    void anAcceptedSendLeavesTheEarlierErrorStanding() {
        vm().availabilityError = u"earlier"_s;
        QVERIFY(m->send(u"Hello"_s));
        QCOMPARE(vm().availabilityError.value(), std::optional(u"earlier"_s));
    }

    void withoutASelectedModelTheUserIsToldSo() {
        vm().modelManager.selectedID = u"ollama-gone"_s;
        QVERIFY(!m->send(u"Hello"_s));
        QCOMPARE(vm().availabilityError.value(), std::optional(u"No model selected."_s));
        QCOMPARE(vm().draft.value(), u"Hello"_s);
        QVERIFY(vm().messages.value().isEmpty());
        // The other operations get along without one.
        vm().setMode(mode(0));
        vm().clearMode();
        vm().newChat();
        QVERIFY(!vm().availabilityError.value());
    }

    void stopWithoutATurnDoesNothing() {
        vm().stop();
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        vm().stop();
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, u"Hi"_s}));
    }

    void aModeIsChosenReplacedAndTurnedOffByASecondChoice() {
        vm().setMode(mode(1));
        QVERIFY(vm().activeMode.value() == mode(1));
        vm().setMode(mode(2));
        QVERIFY(vm().activeMode.value() == mode(2));
        // It is known by its label.
        vm().setMode({mode(2).label, u"another icon"_s, u"another prompt"_s});
        QVERIFY(!vm().activeMode.value());
    }

    void aModeCannotBeChosenOnceThereAreMessages() {
        vm().setMode(mode(0));
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        vm().setMode(mode(1));
        QVERIFY(vm().activeMode.value() == mode(0));
        vm().setMode(mode(0));
        QVERIFY(vm().activeMode.value() == mode(0));
        m->ask(u"Again"_s);
        QCOMPARE(m->model.instructions.size(), 1); // nothing was reset
    }

    void aModeIsClearedAtAnyTimeAndStartsANewSession() {
        vm().setMode(mode(3));
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        vm().clearMode();
        QVERIFY(!vm().activeMode.value());
        m->ask(u"Again"_s);
        const QString prompt = AppConfig::defaultSystemPrompt();
        QCOMPARE(m->model.instructions,
                 (QStringList{prompt + u"\n\n"_s + mode(3).systemPrompt, prompt}));
    }

    void newChatKeepsTheDraftClearsErrorAndModeAndStartsANewSession() {
        vm().setMode(mode(0));
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        vm().draft = u"half a sentence"_s;
        vm().availabilityError = u"No model selected."_s;
        vm().newChat();
        QCOMPARE(vm().draft.value(), u"half a sentence"_s);
        QVERIFY(!vm().availabilityError.value());
        QVERIFY(!vm().activeMode.value());
        QVERIFY(vm().messages.value().isEmpty());
        QVERIFY(!vm().isGenerating.value());
        QCOMPARE(m->ask(u"Hello"_s).session, 1);
    }

    void whoBeginsToTypeLetsTheModelGetReadyOnce() {
        QVERIFY(m->drain());
        QCOMPARE(m->model.timesAsked, 0); // nothing at the start
        for (const QString& text : {u"H"_s, u"He"_s, u"Hel"_s})
            QVERIFY(type(text));
        QCOMPARE(m->model.instructions, QStringList{AppConfig::defaultSystemPrompt()});
        QCOMPARE(m->model.prewarmed, QList<qsizetype>{0});
        QCOMPARE(m->model.timesAsked, 1);

        // With other instructions there is something else to read.
        vm().setMode(mode(0));
        QTRY_COMPARE(m->model.prewarmed, (QList<qsizetype>{0, 1}));
        QCOMPARE(m->model.instructions.last(), AppConfig::systemPrompt(mode(0)));

        // The next message is begun anew.
        QVERIFY(type(QString()));
        QVERIFY(type(u"A"_s));
        QCOMPARE(m->model.prewarmed, (QList<qsizetype>{0, 1, 2}));
        QVERIFY(m->model.turns.empty());
    }

    void theSessionOfTheConversationGetsReadyForItsNextTurn() {
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        const qsizetype session = m->model.instructions.size() - 1;
        QVERIFY(type(QString()));
        m->model.prewarmed.clear();
        QVERIFY(type(u"A"_s));
        QCOMPARE(m->model.prewarmed, QList<qsizetype>{session});
    }

    void onlyTheOnDeviceModelThatIsSelectedAndThereGetsReady() {
        QVERIFY(m->select({u"tiny"_s}, u"tiny"_s));
        QVERIFY(type(u"H"_s));
        QCOMPARE(m->model.timesAsked, 0);
        vm().modelManager.select(vm().modelManager.aiBackend);
        QTRY_COMPARE(m->model.prewarmed, QList<qsizetype>{0});

        QVERIFY(type(QString()));
        m->model.state = Availability::unavailable(Reason::modelNotReady);
        QVERIFY(type(u"H"_s));
        QCOMPARE(m->model.prewarmed, QList<qsizetype>{0});
        QVERIFY(!vm().availabilityError.value());
    }

    void whatNotifiesAndWhatDoesNot() {
        ChatViewModel& vm = *m->controller;
        const Notifications messages(vm.messages);
        const Notifications drafts(vm.draft);
        const Notifications generating(vm.isGenerating);
        const Notifications errors(vm.availabilityError);
        const Notifications modes(vm.activeMode);
        const auto counts = [&] {
            return QList<int>{messages.count(), drafts.count(), generating.count(), errors.count(),
                              modes.count()};
        };

        vm.messages = QList<ChatMessage>();
        vm.draft = QString();
        vm.isGenerating = false;
        vm.availabilityError = std::nullopt;
        vm.activeMode = std::nullopt;
        QCOMPARE(counts(), (QList<int>{1, 0, 0, 0, 1}));
        vm.clearMode(); // there is none
        QCOMPARE(counts(), (QList<int>{1, 0, 0, 0, 2}));
        vm.newChat(); // the conversation is empty
        QCOMPARE(counts(), (QList<int>{2, 0, 0, 0, 3}));

        // The two messages and the one element; a draft typed and cleared; the turn begun and
        // ended.
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        QCOMPARE(counts(), (QList<int>{2 + 2 + 1, 2, 2, 0, 3}));
    }

private:
    ChatViewModel& vm() { return *m->controller; }
    /// Changes the draft, and lets those run who look at it.
    bool type(const QString& text) {
        vm().draft = text;
        QObject owner;
        int runs = 0;
        QProperty<int> change;
        observe(&owner, [&] { runs += change.value() + 1; });
        change = 1; // is seen after the draft is, a frame later at most
        return QTest::qWaitFor([&] { return runs > 1; }, 5000) && m->drain();
    }
    static AppConfig::WritingMode mode(qsizetype index) { return AppConfig::writingModes()[index]; }

    std::optional<Conversation> m;
};

TELLWICK_TEST(ChatViewModelTests, EventLoop)
#include "ChatViewModelTests.moc"
