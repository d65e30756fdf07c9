// SPDX-License-Identifier: MIT
// How the chat screen shows a conversation and follows it: sending, stopping, scrolling.
#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Interface/MessageBubble.h"
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using platform::ColorRole;
using tellwick::MessageBubble;

namespace {

/// So many lines of text.
QString lines(int count) {
    return u"A line of the reply.\n"_s.repeated(count);
}

} // namespace

class ChatListTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

    tests::ScreenReader screen() { return m->screen(); }

    /// Opens the window over a stored conversation of so many messages of several lines.
    void openWith(int messages, QSize size = {640, 800}) {
        QStringList roles;
        QStringList contents;
        for (int i = 0; i < messages; ++i) {
            roles.append(i % 2 == 0 ? u"user"_s : u"assistant"_s);
            contents.append(u"Message %1\n"_s.arg(i) + lines(4));
        }
        m->conversation.store(roles, contents);
        QVERIFY(m->open(size));
    }

    MessageBubble* bubble(qsizetype row) const {
        return qobject_cast<MessageBubble*>(m->column()->widgetOf(row));
    }

    /// Lets the model say this and shows it.
    void say(const tests::AskedTurn& turn, const QString& reply) {
        turn.say(reply);
        QVERIFY(m->conversation.waitForReply(reply));
        m->flush();
    }
    /// Waits for the end of the turn and shows it.
    void settle() {
        QVERIFY(m->conversation.settle());
        m->flush();
    }
    /// Whether the column shows its end: the last of 14 messages, and the margin below it.
    bool isAtEnd() const {
        return m->column()->isAtEnd() &&
               bubble(13)->geometry().bottom() + 1 + 16 == m->column()->height();
    }

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void messagesAreReadOutInOrder() {
        m->conversation.store({u"user"_s, u"assistant"_s, u"user"_s, u"assistant"_s},
                              {u"One **1**"_s, u"Two **2**"_s, u"Three"_s, u""_s});
        QVERIFY(m->open());
        QCOMPARE(m->bubbles(), (QStringList{u"You: One **1**"_s, u"Tellwick: Two 2"_s,
                                            u"You: Three"_s, u"Tellwick: "_s}));
        QVERIFY(!screen().shows(tellwick::AppConfig::tagline()));
        QVERIFY(!screen().find(u"New Chat"_s)->state().disabled);
    }

    void returnSendsTheTrimmedDraft() {
        QVERIFY(m->open());
        screen().type("  Hello");
        screen().key(Qt::Key_Return, Qt::ShiftModifier);
        screen().key(Qt::Key_Return);
        QVERIFY(m->vm().isGenerating.value());
        m->flush();
        QCOMPARE(m->bubbles(), (QStringList{u"You: Hello"_s, u"Tellwick: "_s}));
        QCOMPARE(m->field()->text(), QString());
        QVERIFY(m->field()->hasFocus());
        QTRY_COMPARE(m->conversation.model.turns.size(), std::size_t(1));
        m->conversation.model.turns.back().say(u"Hi **you**");
        QTRY_COMPARE(m->bubbles().value(1), u"Tellwick: Hi you"_s);
        m->conversation.model.turns.back().end();
        QTRY_VERIFY(screen().shows(u"Send"_s));
        QCOMPARE(m->conversation.stored().first().contents,
                 (QStringList{u"Hello"_s, u"Hi **you**"_s}));
    }

    void everyWayToSendSends_data() {
        QTest::addColumn<QString>("focus");
        QTest::addColumn<int>("key"); // none: the button
        QTest::addColumn<bool>("isControl");
        QTest::newRow("Return") << u"Message"_s << int(Qt::Key_Return) << false;
        QTest::newRow("Ctrl-Return") << u"Message"_s << int(Qt::Key_Return) << true;
        QTest::newRow("Ctrl-Enter") << u"Message"_s << int(Qt::Key_Enter) << true;
        QTest::newRow("Ctrl-Return on a chip") << u"Rewrite"_s << int(Qt::Key_Return) << true;
        QTest::newRow("Return on the button") << u"Send"_s << int(Qt::Key_Return) << false;
        QTest::newRow("the button") << u"Message"_s << 0 << false;
    }
    void everyWayToSendSends() {
        QFETCH(QString, focus);
        QFETCH(int, key);
        QFETCH(bool, isControl);
        QVERIFY(m->open());
        screen().type("Hello");
        screen().widget(focus)->setFocus();
        if (key == 0)
            QVERIFY(screen().click(u"Send"_s));
        else
            screen().key(Qt::Key(key), isControl ? Qt::ControlModifier : Qt::NoModifier);
        QCOMPARE(m->conversation.contents(), (QStringList{u"Hello"_s, QString()}));
        QVERIFY(!m->vm().activeMode.value());
    }

    void whileGeneratingEveryKeyThatSendsIsRefused() {
        QVERIFY(m->open());
        auto& turn = m->conversation.ask(u"One"_s);
        screen().type("Two");
        for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier})
            screen().key(Qt::Key_Return, modifier);
        QCOMPARE(m->conversation.contents(), (QStringList{u"One"_s, QString()}));
        QCOMPARE(m->vm().draft.value(), u"Two"_s);
        QVERIFY(m->vm().isGenerating.value());
        turn.end();
        QVERIFY(m->conversation.settle());
        screen().key(Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(m->vm().isGenerating.value());
        QCOMPARE(m->conversation.contents().value(2), u"Two"_s);
    }

    void theStopButtonStopsAndNeverSends() {
        QVERIFY(m->open());
        auto& turn = m->conversation.ask(u"One"_s);
        screen().type("Two");
        say(turn, u"Half a rep"_s);
        QVERIFY(!screen().shows(u"Send"_s));
        QCOMPARE(m->sendButton()->icon(), u"stop.circle.fill"_s);
        QCOMPARE(m->sendButton()->colorRole(), ColorRole::Red);
        QVERIFY(screen().click(u"Stop"_s));
        settle();
        QCOMPARE(m->conversation.contents(), (QStringList{u"One"_s, u"Half a rep"_s}));
        QCOMPARE(m->vm().draft.value(), u"Two"_s);
        QCOMPARE(m->sendButton()->icon(), u"arrow.up.circle.fill"_s);
        QCOMPARE(m->sendButton()->colorRole(), ColorRole::AccentFill);
        QVERIFY(screen().shows(u"Send"_s));
        turn.say(u"Half a reply and more"); // nobody listens any more
        QCoreApplication::processEvents();
        QCOMPARE(m->bubbles().value(1), u"Tellwick: Half a rep"_s);
    }

    void newChatWhileGeneratingEmptiesTheList() {
        QVERIFY(m->open());
        auto& turn = m->conversation.ask(u"One"_s);
        say(turn, u"Half"_s);
        QVERIFY(screen().press(u"New Chat"_s));
        QVERIFY(m->vm().isGenerating.value()); // until the turn notices
        m->flush();
        QVERIFY(m->bubbles().isEmpty());
        QVERIFY(!screen().find(u"New Chat"_s)->state().disabled);
        turn.say(u"Half a reply");
        settle();
        QVERIFY(m->bubbles().isEmpty());
        QVERIFY(screen().shows(tellwick::AppConfig::tagline()));
        QVERIFY(screen().find(u"New Chat"_s)->state().disabled);
    }

    void aReplyGrowsInTheSameBubble() {
        QVERIFY(m->open());
        auto& turn = m->conversation.ask(u"One"_s);
        m->flush();
        MessageBubble* reply = bubble(1);
        const int empty = reply->height();
        turn.say(u"First");
        QTRY_COMPARE(m->bubbles().value(1), u"Tellwick: First"_s);
        QCOMPARE(reply->height(), empty);
        turn.say(u"First\n**second**\nthird");
        QTRY_COMPARE(m->bubbles().value(1), u"Tellwick: First\nsecond\nthird"_s);
        QTRY_VERIFY(reply->height() > 2 * empty - 16);
        QCOMPARE(bubble(1), reply);
        QCOMPARE(reply->height(), reply->heightForWidth(reply->width()));
    }

    void theColumnIsAtMost700WideAndCentred() {
        m->conversation.store({u"user"_s, u"assistant"_s},
                              {lines(1).repeated(9), u"word "_s.repeated(200)});
        QVERIFY(m->open());
        for (const auto& [width, left, rowWidth] : {std::tuple(640, 16, 640 - 32),
                                                    {360, 16, 360 - 32},
                                                    {700, 16, 700 - 32},
                                                    {1400, 350 + 16, 700 - 32},
                                                    {1200, 250 + 16, 700 - 32}}) {
            m->view->resize(width, 800);
            for (const qsizetype row : {0, 1}) {
                QTRY_COMPARE(m->placeOf(bubble(row)).left(), left);
                QCOMPARE(m->placeOf(bubble(row)).width(), rowWidth);
            }
            QCOMPARE(bubble(0)->bubbleRect().right(), rowWidth - 1);
            QCOMPARE(bubble(1)->bubbleRect().left(), 0);
            QVERIFY(bubble(1)->bubbleRect().right() < rowWidth - 60);
        }
    }

    void messagesAreTwelvePixelsApart() {
        openWith(3);
        QCOMPARE(bubble(0)->y(), 16);
        QCOMPARE(bubble(1)->y(), bubble(0)->geometry().bottom() + 1 + 12);
        QCOMPARE(bubble(2)->y(), bubble(1)->geometry().bottom() + 1 + 12);
    }

    void onlyRowsNearTheVisibleAreaAreBuilt() {
        openWith(3000);
        QVERIFY(m->column()->findChildren<MessageBubble*>().size() < 30);
        QVERIFY(bubble(0));
        QVERIFY(!bubble(2999));
        // All of them are there for assistive technology.
        auto* list = screen().find(u"Conversation"_s, QAccessible::List);
        QCOMPARE(list->childCount(), 3000);
        QVERIFY(list->child(2999)->text(QAccessible::Name).startsWith(u"Tellwick: Message 2999"_s));
        m->column()->setOffset(m->column()->maximum());
        QVERIFY(m->column()->findChildren<MessageBubble*>().size() < 60);
        QVERIFY(bubble(2999));
    }

    void nothingScrollsWhenTheScreenIsFirstShown() {
        m->desktop.theme.motion().setEnabled(true);
        openWith(40);
        m->flush();
        QCoreApplication::processEvents();
        QCOMPARE(m->column()->offset(), 0);
        QVERIFY(m->column()->maximum() > 0);
        QVERIFY(!m->column()->isScrollingToEnd());
    }

    void aNewMessageScrollsToTheEndAnimated() {
        m->desktop.theme.motion().setEnabled(true);
        openWith(12);
        QVERIFY(m->conversation.send(u"One more"_s));
        QElapsedTimer clock;
        clock.start();
        m->flush();
        QVERIFY(m->column()->isScrollingToEnd());
        QVERIFY(!m->column()->isAtEnd());
        QTRY_VERIFY(!m->column()->isScrollingToEnd());
        QVERIFY(clock.elapsed() >= 180);
        QVERIFY(isAtEnd());
    }

    void aGrowingReplyScrollsToTheEndAtOnce() {
        openWith(12);
        auto& turn = m->conversation.ask(u"One more"_s);
        m->flush();
        QVERIFY(m->column()->isAtEnd());
        m->desktop.theme.motion().setEnabled(true);
        QString reply;
        for (int i = 0; i < 5; ++i) {
            reply += lines(20);
            say(turn, reply);
            QVERIFY(!m->column()->isScrollingToEnd());
            QVERIFY(isAtEnd());
        }
    }

    void aReplyThatGrowsDuringTheAnimationEndsUpInView() {
        m->desktop.theme.motion().setEnabled(true);
        openWith(12);
        auto& turn = m->conversation.ask(u"One more"_s);
        m->flush();
        QVERIFY(m->column()->isScrollingToEnd());
        say(turn, lines(100));
        QTRY_VERIFY(!m->column()->isScrollingToEnd());
        QVERIFY(isAtEnd());
    }

    void aFailureIsShownInPlaceOfTheReplyAndScrolledTo() {
        openWith(12);
        auto& turn = m->conversation.ask(u"One more"_s);
        say(turn, lines(100));
        turn.fail();
        settle();
        QCOMPARE(m->bubbles().value(13), u"Tellwick: Error: The model is tired."_s);
        QVERIFY(!m->overlays()->isPresenting());
        QVERIFY(isAtEnd());
    }

    void aChangeOfAnOlderMessageScrollsNothing() {
        openWith(12);
        m->vm().messages.mutate(
            [](auto& list) { list[0].content = platform::TextSnapshot(u"Another beginning"); });
        m->flush();
        QCOMPARE(m->bubbles().first(), u"You: Another beginning"_s);
        QCOMPARE(m->column()->offset(), 0);
    }

    void aNewChatAfterALongOneStartsAtTheTop() {
        openWith(40);
        m->column()->setOffset(m->column()->maximum());
        QVERIFY(screen().click(u"New Chat"_s));
        m->flush();
        QVERIFY(screen().shows(tellwick::AppConfig::tagline()));
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        m->flush();
        QCOMPARE(m->bubbles(), (QStringList{u"You: Hi"_s, u"Tellwick: Hello"_s}));
        QCOMPARE(bubble(0)->y(), 16);
    }

    void aSelectionSurvivesTheGrowthOfTheReply() {
        QVERIFY(m->open());
        auto& turn = m->conversation.ask(u"One"_s);
        say(turn, u"A reply that"_s);
        auto* text = bubble(1)->findChild<platform::TextView*>();
        text->select({2, 7});
        const QString grown = u"A reply that grows and **grows**\n"_s + lines(200);
        say(turn, grown);
        QVERIFY(m->column()->isAtEnd());
        text = bubble(1)->findChild<platform::TextView*>();
        QCOMPARE(text->selectedText(), u"reply"_s);
    }
};

TELLWICK_TEST(ChatListTests, Widgets)
#include "ChatListTests.moc"
