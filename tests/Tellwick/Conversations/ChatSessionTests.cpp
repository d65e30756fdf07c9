// SPDX-License-Identifier: MIT
#include "Platform/Store/ModelContext.h"
#include "Tellwick/Conversations/ChatSession.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>
#include <QTimeZone>

using namespace platform;
using namespace tellwick;
using namespace Qt::StringLiterals;
using Role = ChatMessage::Role;

class ChatSessionTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aNewRecordIsEmptyAndWrittenNow() {
        const QDateTime before = QDateTime::currentDateTimeUtc();
        const ChatSession session;
        QVERIFY(session.updatedAt.value() >= before);
        QVERIFY(session.updatedAt.value() <= QDateTime::currentDateTimeUtc());
        QVERIFY(session.roles.value().isEmpty());
        QVERIFY(session.contents.value().isEmpty());
        QVERIFY(session.messages().isEmpty());
    }

    void messagesBecomeTwoListsSideBySide() {
        ChatSession session;
        session.setMessages({ChatMessage(Role::user, TextSnapshot(u"Hello")),
                             ChatMessage(Role::assistant, TextSnapshot(u"Hi there")),
                             ChatMessage(Role::user, TextSnapshot(u"Hello")),
                             ChatMessage(Role::assistant, TextSnapshot())});
        QCOMPARE(session.roles.value(),
                 (QStringList{u"user"_s, u"assistant"_s, u"user"_s, u"assistant"_s}));
        QCOMPARE(session.contents.value(),
                 (QStringList{u"Hello"_s, u"Hi there"_s, u"Hello"_s, u""_s}));
    }

    void messagesComeBackWithFreshIdentities() {
        const ChatMessage user(Role::user, TextSnapshot(u"Hello"));
        ChatSession session;
        session.setMessages({user, ChatMessage(Role::assistant, TextSnapshot(u"Hi"))});
        const auto first = session.messages();
        const auto second = session.messages();
        QCOMPARE(first.size(), 2);
        QVERIFY(first[0].role() == Role::user);
        QVERIFY(first[1].role() == Role::assistant);
        QCOMPARE(first[0].content.toString(), u"Hello"_s);
        QCOMPARE(first[1].content.toString(), u"Hi"_s);
        QVERIFY(first[0].id() != user.id());
        QVERIFY(first[0].id() != second[0].id());
        QVERIFY(first[0].id() != first[1].id());
    }

    void textsComeBackExactly() {
        const QTemporaryDir folder;
        const auto container = conversationStore(folder.path());
        const QStringList texts{
            {},
            u"\r\n\u2028\u0085"_s,
            QString(u'\0') + u"a"_s,
            QString(QChar(0xd83d)),
            u"\U0001F600"_s,
            u"\uFEFFbom"_s,
            {},
            u"\r\n\u2028\u0085"_s,
        };
        QList<ChatMessage> messages;
        for (const QString& text : texts)
            messages.append(ChatMessage(Role::user, TextSnapshot(text)));
        {
            ModelContext context(container);
            const auto session = std::make_shared<ChatSession>();
            session->setMessages(messages);
            context.insert(session);
        }
        ModelContext context(container);
        QStringList found;
        for (const ChatMessage& message :
             context.fetch(ChatSession::newestFirst()).first()->messages())
            found.append(message.content.toString());
        QCOMPARE(found, texts);
    }

    void surplusElementsOfTheLongerListArePassedOver_data() {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<QStringList>("contents");
        QTest::addColumn<QString>("expected");
        const QStringList roles{u"user"_s, u"assistant"_s, u"user"_s};
        QTest::newRow("three roles, two texts") << roles << QStringList{u"a"_s, u"b"_s} << u"ua"_s;
        QTest::newRow("one role, two texts")
            << QStringList{u"user"_s} << QStringList{u"a"_s, u"b"_s} << u"u"_s;
        QTest::newRow("no texts") << roles << QStringList{} << QString();
        QTest::newRow("no roles") << QStringList{} << QStringList{u"a"_s} << QString();
    }

    void surplusElementsOfTheLongerListArePassedOver() {
        QFETCH(QStringList, roles);
        QFETCH(QStringList, contents);
        QFETCH(QString, expected);
        ChatSession session;
        session.roles = roles;
        session.contents = contents;
        const auto messages = session.messages();
        QCOMPARE(messages.size(), expected.size());
        for (qsizetype i = 0; i < messages.size(); ++i) {
            QVERIFY(messages[i].role() == (expected[i] == u'u' ? Role::user : Role::assistant));
            QCOMPARE(messages[i].content.toString(), contents[i]);
        }
        QCOMPARE(session.roles.value(), roles); // read, not repaired
        QCOMPARE(session.contents.value(), contents);
    }

    void everyRoleTextButUserIsTheAssistant_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isUser");
        QTest::newRow("user") << u"user"_s << true;
        for (const QString& text :
             {u"assistant"_s, u"system"_s, u"User"_s, u"USER"_s, u" user"_s, u"user "_s, u""_s})
            QTest::addRow("'%s'", qPrintable(text)) << text << false;
    }

    void everyRoleTextButUserIsTheAssistant() {
        QFETCH(QString, text);
        QFETCH(bool, isUser);
        ChatSession session;
        session.roles = QStringList{text};
        session.contents = QStringList{u"x"_s};
        QVERIFY(session.messages().first().role() == (isUser ? Role::user : Role::assistant));
    }

    void theTimeOfTheLastWriteNeverGoesBack() {
        ChatSession session;
        const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0), QTimeZone::utc());
        session.updatedAt = noon;
        session.touch(noon.addSecs(1));
        QCOMPARE(session.updatedAt.value(), noon.addSecs(1));
        session.touch(noon.addSecs(1));
        QCOMPARE(session.updatedAt.value(), noon.addMSecs(1001));
        session.touch(noon.addDays(-1));
        QCOMPARE(session.updatedAt.value(), noon.addMSecs(1002));
    }
};

TELLWICK_TEST(ChatSessionTests, EventLoop)
#include "ChatSessionTests.moc"
