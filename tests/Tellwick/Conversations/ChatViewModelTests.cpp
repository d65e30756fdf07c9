// SPDX-License-Identifier: MIT
// What the controller's operations do at once; what a turn does later is in ChatTurnTests.
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
        m_conversation = std::make_unique<Conversation>();
        m_conversation->start();
    }
    void cleanup() { m_conversation.reset(); }

    void aNewControllerIsIdleAndEmpty() {
        QVERIFY(controller().messages.value().isEmpty());
        QCOMPARE(controller().draft.value(), QString());
        QVERIFY(!controller().isGenerating.value());
        QVERIFY(!controller().availabilityError.value());
        QVERIFY(!controller().activeMode.value());
        QCOMPARE(controller().modelManager.selectedID.value(), u"apple-intelligence"_s);
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
        QCOMPARE(conversation().ask(draft).prompt, sent);
        QCOMPARE(controller().draft.value(), QString());
        QCOMPARE(conversation().contents(), (QStringList{sent, {}}));
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
        QVERIFY(!conversation().send(draft));
        QCOMPARE(controller().draft.value(), draft);
        QVERIFY(controller().messages.value().isEmpty());
        QVERIFY(!controller().availabilityError.value());
    }

    void sendReturnsAtOnceWithTheMessagesInPlace() {
        QVERIFY(conversation().send(u"Hello"_s));
        QCOMPARE(conversation().roles(), u"ua"_s);
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, {}}));
        QCOMPARE(controller().draft.value(), QString());
        QVERIFY(conversation().model.turns.empty());
        QVERIFY(conversation().model.instructions.isEmpty());
    }

    void aSecondSendWhileATurnRunsDoesNothing() {
        QVERIFY(conversation().send(u"one"_s));
        conversation().send(u"two"_s); // in the same pass of the event loop
        QCOMPARE(controller().draft.value(), u"two"_s);
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, {}}));
        QTRY_COMPARE(conversation().model.turns.size(), std::size_t(1));
        conversation().send(u"three"_s); // and in a later one
        QCOMPARE(controller().draft.value(), u"three"_s);
        conversation().model.turns.front().end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, {}}));
        QCOMPARE(conversation().model.turns.size(), std::size_t(1));
    }

    void nothingIsReportedWhileATurnRuns() {
        conversation().ask(u"one"_s);
        conversation().model.state = Availability::unavailable(Reason::modelNotReady);
        const int asked = conversation().model.timesAsked;
        for (const QString& selected : {u"apple-intelligence"_s, u"ollama-gone"_s}) {
            controller().modelManager.selectedID = selected;
            conversation().send(u"two"_s);
            QVERIFY(!controller().availabilityError.value());
            QCOMPARE(controller().draft.value(), u"two"_s);
        }
        QCOMPARE(conversation().model.timesAsked, asked); // nor is anything asked
    }

    void anUnavailableModelIsReportedAndTheDraftStays_data() {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("text");
        const auto row = [](Reason reason, const QString& name) {
            QTest::newRow(qPrintable(name))
                << int(reason) << u"Apple Intelligence unavailable: "_s + name;
        };
        row(Reason::deviceNotEligible, u"deviceNotEligible"_s);
        row(Reason::appleIntelligenceNotEnabled, u"appleIntelligenceNotEnabled"_s);
        row(Reason::modelNotReady, u"modelNotReady"_s);
    }

    void anUnavailableModelIsReportedAndTheDraftStays() {
        QFETCH(int, reason);
        QFETCH(QString, text);
        conversation().model.state = Availability::unavailable(Reason(reason));
        QVERIFY(!conversation().send(u" Hello "_s));
        QCOMPARE(controller().availabilityError.value(), std::optional(text));
        QCOMPARE(controller().draft.value(), u" Hello "_s);
        QVERIFY(controller().messages.value().isEmpty());
    }

    void availabilityIsAskedAfreshAtEverySend() {
        conversation().model.state = Availability::unavailable(Reason::modelNotReady);
        QVERIFY(!conversation().send(u"Hello"_s));
        conversation().model.state = Availability::available();
        const int asked = conversation().model.timesAsked;
        QVERIFY(conversation().send(u"Hello"_s));
        QVERIFY(conversation().model.timesAsked > asked);
    }

    void anAcceptedSendLeavesTheEarlierErrorStanding() {
        controller().availabilityError = u"earlier"_s;
        QVERIFY(conversation().send(u"Hello"_s));
        QCOMPARE(controller().availabilityError.value(), std::optional(u"earlier"_s));
    }

    void withoutASelectedModelTheUserIsToldSo() {
        controller().modelManager.selectedID = u"ollama-gone"_s;
        QVERIFY(!conversation().send(u"Hello"_s));
        QCOMPARE(controller().availabilityError.value(), std::optional(u"No model selected."_s));
        QCOMPARE(controller().draft.value(), u"Hello"_s);
        QVERIFY(controller().messages.value().isEmpty());
        // The other operations get along without one.
        controller().setMode(mode(0));
        controller().clearMode();
        controller().newChat();
        QVERIFY(!controller().availabilityError.value());
    }

    void anEmptyDraftIsRefusedBeforeAnythingIsAsked() {
        conversation().model.state = Availability::unavailable(Reason::modelNotReady);
        const int asked = conversation().model.timesAsked;
        QVERIFY(!conversation().send(u" "_s));
        QVERIFY(!controller().availabilityError.value());
        QCOMPARE(conversation().model.timesAsked, asked);
    }

    void stopWithoutATurnDoesNothing() {
        controller().stop();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().stop();
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, u"Hi"_s}));
    }

    void aModeIsChosenReplacedAndTurnedOffByASecondChoice() {
        controller().setMode(mode(1));
        QVERIFY(controller().activeMode.value() == mode(1));
        controller().setMode(mode(2));
        QVERIFY(controller().activeMode.value() == mode(2));
        controller().setMode(mode(2));
        QVERIFY(!controller().activeMode.value());
    }

    void theSameModeIsKnownByItsLabel() {
        controller().setMode(mode(0));
        controller().setMode({mode(0).label, u"another icon"_s, u"another prompt"_s});
        QVERIFY(!controller().activeMode.value());
    }

    void aModeCannotBeChosenOnceThereAreMessages() {
        controller().setMode(mode(0));
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().setMode(mode(1));
        QVERIFY(controller().activeMode.value() == mode(0));
        controller().setMode(mode(0));
        QVERIFY(controller().activeMode.value() == mode(0));
        conversation().ask(u"Again"_s);
        QCOMPARE(conversation().model.instructions.size(), 1); // nothing was reset
    }

    void choosingAModeStartsANewSession() {
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().messages = QList<ChatMessage>(); // emptied, but the session still lives
        controller().setMode(mode(1));
        conversation().ask(u"Again"_s);
        const QString prompt = AppConfig::defaultSystemPrompt();
        QCOMPARE(conversation().model.instructions,
                 (QStringList{prompt, prompt + u"\n\n"_s + mode(1).systemPrompt}));
    }

    void aModeIsClearedAtAnyTimeAndStartsANewSession() {
        controller().setMode(mode(3));
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().clearMode();
        QVERIFY(!controller().activeMode.value());
        conversation().ask(u"Again"_s);
        const QString prompt = AppConfig::defaultSystemPrompt();
        QCOMPARE(conversation().model.instructions,
                 (QStringList{prompt + u"\n\n"_s + mode(3).systemPrompt, prompt}));
    }

    void newChatKeepsTheDraftAndClearsErrorAndMode() {
        controller().setMode(mode(0));
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().draft = u"half a sentence"_s;
        controller().availabilityError = u"No model selected."_s;
        controller().newChat();
        QCOMPARE(controller().draft.value(), u"half a sentence"_s);
        QVERIFY(!controller().availabilityError.value());
        QVERIFY(!controller().activeMode.value());
        QVERIFY(controller().messages.value().isEmpty());
        QVERIFY(!controller().isGenerating.value());
    }

    void newChatStartsANewSession() {
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().newChat();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        QCOMPARE(conversation().model.instructions.size(), 2);
        QCOMPARE(conversation().model.turns.back().session, 1);
    }

    void whatNotifiesAndWhatDoesNot() {
        ChatViewModel& vm = controller();
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
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        QCOMPARE(counts(), (QList<int>{2 + 2 + 1, 2, 2, 0, 3}));
    }

private:
    Conversation& conversation() { return *m_conversation; }
    ChatViewModel& controller() { return *m_conversation->controller; }
    static AppConfig::WritingMode mode(qsizetype index) { return AppConfig::writingModes()[index]; }

    std::unique_ptr<Conversation> m_conversation;
};

TELLWICK_TEST(ChatViewModelTests, EventLoop)
#include "ChatViewModelTests.moc"
