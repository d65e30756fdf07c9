// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "Tellwick/Interface/ConversationFind.h"
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using tellwick::ConversationFind;
using tests::Conversation;
using Match = ConversationFind::Match;

/// Where a text stands in the conversation, and the way from one place to the next.
class ConversationFindTests : public QObject {
    Q_OBJECT

    /// Starts over a conversation of these texts, by turns of the user and the model.
    void start(const QStringList& contents) {
        conversation.emplace();
        QStringList roles;
        for (qsizetype i = 0; i < contents.size(); ++i)
            roles << (i % 2 == 0 ? u"user"_s : u"assistant"_s);
        conversation->store(roles, contents);
        find.emplace(conversation->start());
    }

    bool waitFor(const QString& summary) {
        return QTest::qWaitFor([&] { return find->summary() == summary; }, 20000);
    }

    std::optional<Conversation> conversation;
    std::optional<ConversationFind> find;

private Q_SLOTS:
    void cleanup() {
        find.reset();
        conversation.reset();
    }

    void theWayGoesRoundAllMatches() {
        start({u"One fish, two fish"_s, u"red FISH"_s});
        QCOMPARE(find->summary(), QString());
        find->setText(u"fish"_s);
        QVERIFY(waitFor(u"1 of 3"_s));
        QCOMPARE(find->current(), (Match{0, 4}));
        find->goOn();
        QCOMPARE(find->current(), (Match{0, 14}));
        find->goOn();
        QCOMPARE(find->summary(), u"3 of 3"_s);
        find->goOn();
        QCOMPARE(find->summary(), u"1 of 3"_s);
        find->goBack();
        QCOMPARE(find->current(), (Match{1, 4}));
    }

    void theFirstMatchIsTheNextFromTheReadersPlace() {
        start({u"a"_s, u"b"_s, u"a"_s, u"b"_s});
        find->setText(u"a"_s, 1);
        QVERIFY(waitFor(u"2 of 2"_s));
        find->setText(u"b"_s, 4);
        QVERIFY(waitFor(u"1 of 2"_s));
    }

    void repliesAreSearchedAsTheyAreShown() {
        start({u"**b** old"_s, u"**b** old, `x`"_s});
        find->setText(u"b old"_s);
        QVERIFY(waitFor(u"1 of 1"_s));
        QCOMPARE(find->current(), (Match{1, 0}));
        find->setText(u"**"_s);
        QVERIFY(waitFor(u"1 of 2"_s)); // the user's words stand as they were typed
    }

    void whatIsNowhereIsSaid() {
        start({u"a"_s});
        find->setText(u"z"_s);
        QVERIFY(waitFor(u"No matches"_s));
        QVERIFY(!find->current());
        find->goOn();
        QVERIFY(!find->current());
        find->setText(QString());
        QCOMPARE(find->summary(), QString());
    }

    void anEmptyConversationHasNoMatches() {
        start({});
        find->setText(u"a"_s);
        QVERIFY(waitFor(u"No matches"_s));
    }

    void aReplyIsLookedAtWhenItIsWhole() {
        start({});
        find->setText(u"word"_s);
        auto& turn = conversation->ask(u"a word"_s);
        QVERIFY(waitFor(u"1 of 1"_s));
        turn.say(u"word word"_s);
        QVERIFY(conversation->waitForReply(u"word word"_s));
        platform::flushObservers(&*find);
        QCOMPARE(find->summary(), u"1 of 1"_s);
        turn.end();
        QVERIFY(waitFor(u"1 of 3"_s));
    }

    void aNewConversationIsSearchedAnew() {
        start({u"word"_s, u"word"_s});
        find->setText(u"word"_s);
        QVERIFY(waitFor(u"1 of 2"_s));
        conversation->controller->newChat();
        QVERIFY(waitFor(u"No matches"_s));
        conversation->ask(u"my word"_s).end();
        QVERIFY(waitFor(u"1 of 1"_s));
        QCOMPARE(find->current(), (Match{0, 3}));
    }

    void aLongConversationIsSearchedInSlices() {
        QStringList contents;
        for (int i = 0; i < 10000; ++i)
            contents << u"**message** "_s + QString(200, u'x') + u" word"_s;
        start(contents);
        find->setText(u"word"_s);
        int slices = 0;
        const auto observer = std::make_unique<QObject>();
        platform::observe(observer.get(), [&] {
            static_cast<void>(find->current());
            ++slices;
        });
        QVERIFY(waitFor(u"1 of 10000"_s));
        QVERIFY2(slices > 2, qPrintable(QString::number(slices)));
    }
};

TELLWICK_TEST(ConversationFindTests, EventLoop)
#include "ConversationFindTests.moc"
