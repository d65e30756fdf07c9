// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/LineField.h"
#include "Tellwick/Interface/ConversationFind.h"
#include "Tellwick/Interface/FindBar.h"
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/Tellwick/Interface/TestWindow.h"
#include "tests/support/TestMain.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using tellwick::ConversationFind;
using tellwick::FindBar;

/// The bar in which a text of the conversation is looked for.
class FindBarTests : public QObject {
    Q_OBJECT

    struct Fixture : tests::TestWindow {
        Fixture() {
            conversation.store({u"user"_s, u"assistant"_s}, {u"one fish"_s, u"two fish"_s});
            find.emplace(conversation.start());
            bar = new FindBar(environment, *find);
            bar->onAskedForPlace([this] { return place; });
            bar->onClosed([this] { ++closed; });
            auto* column = new QVBoxLayout(window.get());
            column->addWidget(bar);
            column->addStretch();
            window->show();
            bar->begin();
        }

        bool shows(const QString& summary) {
            return QTest::qWaitFor(
                [&] {
                    platform::flushObservers(window.get());
                    return screen().shows(summary);
                },
                5000);
        }
        tests::Conversation conversation;
        std::optional<ConversationFind> find;
        FindBar* bar = nullptr;
        qsizetype place = 0;
        int closed = 0;
    };

    std::optional<Fixture> m;

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(QTest::qWaitForWindowActive(m->window.get()));
    }
    void cleanup() { m.reset(); }

    void typingLooksForWhatIsTyped() {
        QVERIFY(m->screen().widget<platform::LineField>(u"Find"_s)->hasFocus());
        m->screen().type("FISH");
        QVERIFY(m->shows(u"1 of 2"_s));
        m->screen().type("es");
        QVERIFY(m->shows(u"No matches"_s));
    }

    void theFirstMatchIsLookedForFromTheReadersPlace() {
        m->place = 1;
        m->screen().type("fish");
        QVERIFY(m->shows(u"2 of 2"_s));
    }

    void keysAndButtonsGoOnAndBack() {
        QVERIFY(!m->screen().widget(u"Next Match"_s)->isEnabled());
        m->screen().type("fish");
        QVERIFY(m->shows(u"1 of 2"_s));
        m->screen().key(Qt::Key_Return);
        QVERIFY(m->shows(u"2 of 2"_s));
        m->screen().key(Qt::Key_Return, Qt::ShiftModifier);
        QVERIFY(m->shows(u"1 of 2"_s));
        QVERIFY(m->screen().click(u"Previous Match"_s));
        QVERIFY(m->shows(u"2 of 2"_s));
        QVERIFY(m->screen().click(u"Next Match"_s));
        QVERIFY(m->shows(u"1 of 2"_s));
    }

    void escapeAndTheButtonClose() {
        m->screen().key(Qt::Key_Escape);
        QCOMPARE(m->closed, 1);
        QVERIFY(!m->bar->isVisible());
        m->bar->begin();
        QVERIFY(m->screen().click(u"Close"_s));
        QCOMPARE(m->closed, 2);
    }

    void beginningAgainSelectsTheText() {
        m->screen().type("fish");
        m->bar->begin();
        QCOMPARE(m->screen().widget<platform::LineField>(u"Find"_s)->selectedText(), u"fish"_s);
    }
};

TELLWICK_TEST(FindBarTests, Widgets)
#include "FindBarTests.moc"
