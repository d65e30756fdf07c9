// SPDX-License-Identifier: MIT
// How a conversation is read: scrolled away from its end and back, message by message, searched.
#include "Platform/Widgets/Controls/LineField.h"
#include "Platform/Widgets/Scrolling/EdgeFade.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"
#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Interface/MessageBubble.h"
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QVariantAnimation>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using platform::ColorRole;
using tellwick::MessageBubble;

class ChatReadingTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

    tests::ScreenReader screen() { return m->screen(); }
    platform::LazyColumn& column() { return *m->column(); }

    void openWith(int messages) {
        QStringList roles;
        QStringList contents;
        for (int i = 0; i < messages; ++i) {
            roles.append(i % 2 == 0 ? u"user"_s : u"assistant"_s);
            contents.append(u"Message %1"_s.arg(i) + u"\nA line of **text**."_s.repeated(4));
        }
        m->conversation.store(roles, contents);
        QVERIFY(m->open());
    }

    /// Asks something, and lets the reply be longer than the window.
    tests::AskedTurn& askAndGrow() {
        auto& turn = m->conversation.ask(u"One more"_s);
        say(turn, 100);
        return turn;
    }
    void say(const tests::AskedTurn& turn, int lines) {
        const QString reply = u"A line of the reply.\n"_s.repeated(lines);
        turn.say(reply);
        QVERIFY(m->conversation.waitForReply(reply));
        m->flush();
    }

    void turnWheel(int delta) {
        const QPointF point = column().rect().center();
        QWheelEvent event(point, column().mapToGlobal(point), {}, {0, delta}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m->column(), &event);
    }
    void scroll(const QByteArray& by) {
        if (by == "wheel")
            turnWheel(120);
        else if (by == "key")
            screen().key(Qt::Key_PageUp);
        else if (by == "bar")
            column().findChild<platform::OverlayScrollBar*>()->setValue(100);
        m->flush();
    }

    platform::Button* jump() { return screen().widget<platform::Button>(u"Jump to newest"_s); }

    bool isLit(qsizetype row, ColorRole role) {
        QWidget* bubble = column().widgetOf(row);
        const QColor color = m->desktop.theme.color(role);
        return tests::PaintRecorder(*bubble).hasColor(color, bubble->rect());
    }

    /// The message that shows the focus, -1: none.
    int current() {
        int found = -1;
        for (int i = 0; i < 100; ++i) {
            auto* element = screen().find(u"Conversation"_s)->child(i);
            if (!element || !element->state().focused)
                continue;
            if (found >= 0)
                return -2;
            found = i;
        }
        return found;
    }

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void aReaderWhoHasScrolledAwayIsLeftThere_data() {
        QTest::addColumn<QByteArray>("by");
        QTest::newRow("wheel") << QByteArray("wheel");
        QTest::newRow("key") << QByteArray("key");
        QTest::newRow("bar") << QByteArray("bar");
    }
    void aReaderWhoHasScrolledAwayIsLeftThere() {
        QFETCH(const QByteArray, by);
        openWith(12);
        auto& turn = askAndGrow();
        QVERIFY(column().isAtEnd());
        scroll(by);
        const int offset = column().offset();
        QVERIFY(!column().isAtEnd());
        say(turn, 120);
        QCOMPARE(column().offset(), offset);
        // Back at the end, the reply is followed again.
        column().setOffset(column().maximum());
        say(turn, 140);
        QVERIFY(column().isAtEnd());
    }

    void aNewMessageEndsTheRest() {
        openWith(12);
        auto& turn = askAndGrow();
        turnWheel(120);
        turn.end();
        QVERIFY(m->conversation.settle());
        m->flush();
        QVERIFY(!column().isAtEnd());
        auto& next = m->conversation.ask(u"Next"_s);
        m->flush();
        QVERIFY(column().isAtEnd());
        say(next, 100);
        QVERIFY(column().isAtEnd());
    }

    void aButtonLeadsBackToTheEnd() {
        openWith(12);
        m->flush();
        QVERIFY(column().offset() == 0 && !column().isAtEnd());
        QVERIFY(jump()); // also in a restored conversation, which opens at its beginning
        const QRect button = m->placeOf(jump());
        const QRect list = m->placeOf(m->column());
        QVERIFY(list.contains(button));
        QCOMPARE(button.center().x(), list.center().x());
        QVERIFY(button.bottom() > list.bottom() - 30);
        QVERIFY(screen().click(u"Jump to newest"_s));
        m->flush();
        QVERIFY(column().isAtEnd());
        QVERIFY(!jump());
        QVERIFY(m->field()->hasFocus());
        turnWheel(120);
        m->flush();
        QVERIFY(jump());
    }

    /// Nor is the end jumped to by what is written meanwhile. No time passes here.
    void thereIsNoButtonWhileTheViewGlidesToTheEnd() {
        openWith(40);
        m->desktop.theme.motion().setEnabled(true);
        auto* motion = column().findChild<QVariantAnimation*>({}, Qt::FindDirectChildrenOnly);
        QVERIFY(motion);
        auto messages = m->vm().messages.value();
        const auto grow = [&](int lines) {
            messages.last().content = platform::TextSnapshot(u"A line.\n"_s.repeated(lines));
            m->vm().messages = messages;
            m->flush();
        };
        m->flush();
        QVERIFY(jump());
        messages.append(tellwick::ChatMessage(tellwick::ChatMessage::Role::assistant, {}));
        grow(1);
        for (const int time : {0, 40, 80, 120, 160}) {
            motion->setCurrentTime(time);
            grow(time);
            QVERIFY(column().isScrollingToEnd());
            QVERIFY(column().offset() < column().maximum());
            QVERIFY2(!jump(), qPrintable(QString::number(time)));
        }
        motion->setCurrentTime(motion->duration());
        m->flush();
        QVERIFY(column().isAtEnd());
        QVERIFY(!jump());
        // A reader who turns the wheel on the way has left it.
        messages.append(tellwick::ChatMessage(tellwick::ChatMessage::Role::assistant, {}));
        grow(100);
        QVERIFY(column().isScrollingToEnd());
        QVERIFY(!jump());
        turnWheel(120);
        m->flush();
        QVERIFY(!column().isScrollingToEnd());
        QVERIFY(jump());
    }

    void thereIsNoButtonWhereAllIsInView() {
        openWith(2);
        m->flush();
        QVERIFY(!jump());
    }

    void whatGoesOnBehindAnEdgeFades() {
        openWith(12);
        m->flush();
        const auto fades = m->view->findChildren<platform::EdgeFade*>();
        QCOMPARE(fades.size(), 2);
        const auto shown = [&] {
            m->flush();
            return QList<bool>{fades[0]->isVisible(), fades[1]->isVisible()};
        };
        QCOMPARE(shown(), (QList<bool>{false, true}));
        turnWheel(-120);
        QCOMPARE(shown(), (QList<bool>{true, true}));
        column().scrollToEnd(false);
        QCOMPARE(shown(), (QList<bool>{true, false}));
        QCOMPARE(m->placeOf(fades[0]).top(), m->placeOf(m->column()).top());
        QCOMPARE(m->placeOf(fades[1]).bottom(), m->placeOf(m->column()).bottom());
    }

    void aFirstWordThatIsLongInComingMakesTheListBusy() {
        openWith(2);
        auto& turn = m->conversation.ask(u"One more"_s);
        m->flush();
        const auto isBusy = [this] { return bool(screen().find(u"Conversation"_s)->state().busy); };
        QVERIFY(!isBusy());
        QTRY_VERIFY(isBusy());
        say(turn, 1);
        QVERIFY(!isBusy());
        turn.end();
        QVERIFY(m->conversation.settle());
        m->conversation.ask(u"And more"_s);
        m->flush();
        QTRY_VERIFY(isBusy());
        m->vm().stop();
        QVERIFY(m->conversation.settle());
        m->flush();
        QVERIFY(!isBusy());
    }

    void keysScrollFromTheField() {
        openWith(12);
        screen().type("two");
        screen().key(Qt::Key_Return, Qt::ShiftModifier);
        screen().type("lines");
        QVERIFY(m->field()->hasFocus());
        screen().key(Qt::Key_End, Qt::ControlModifier);
        QVERIFY(column().isAtEnd());
        const int end = column().offset();
        screen().key(Qt::Key_PageUp);
        const int above = column().offset();
        QVERIFY(above < end);
        screen().key(Qt::Key_PageDown);
        QCOMPARE(column().offset(), end);
        screen().key(Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(column().offset(), 0);
        QVERIFY(m->field()->hasFocus());
        QCOMPARE(m->field()->text(), u"two\nlines"_s);
    }

    void keysGoFromMessageToMessage() {
        openWith(40);
        QCOMPARE(current(), -1);
        column().setFocus(Qt::TabFocusReason);
        const int first = current();
        QVERIFY(first >= 0);
        screen().key(Qt::Key_Home);
        QCOMPARE(current(), 0);
        column().setOffset(column().maximum());
        QVERIFY(!column().widgetOf(0));
        column().setOffset(0);
        QCOMPARE(current(), 0); // also when it is made anew
        screen().key(Qt::Key_Up);
        QCOMPARE(current(), 0);
        screen().key(Qt::Key_Down);
        QCOMPARE(current(), 1);
        QVERIFY(isLit(1, ColorRole::FocusRing));
        screen().key(Qt::Key_End);
        QCOMPARE(current(), 39);
        QVERIFY(column().isAtEnd());
        QVERIFY(m->column()->hasFocus());
        for (int i = 38; i >= 33; --i) {
            screen().key(Qt::Key_Up);
            QCOMPARE(current(), i);
            QVERIFY(column().rect().intersects(column().rowRect(i)));
        }
        auto* list = screen().find(u"Conversation"_s);
        QVERIFY(!list->state().focused);
        QCOMPARE(list->focusChild(), list->child(33));
        m->field()->setFocus();
        QCOMPARE(current(), -1);
    }

    void keysScrollThroughAMessageThatIsHigherThanTheView() {
        openWith(2);
        askAndGrow();
        column().setFocus(Qt::TabFocusReason);
        screen().key(Qt::Key_End);
        QCOMPARE(current(), 3);
        column().setOffset(column().maximum());
        const int end = column().offset();
        screen().key(Qt::Key_Up);
        QCOMPARE(current(), 3);
        QVERIFY(column().offset() < end);
        screen().key(Qt::Key_Down);
        QCOMPARE(column().offset(), end);
    }

    void aMessageIsCopiedByKey() {
        openWith(4);
        QGuiApplication::clipboard()->setText(u"before"_s);
        column().setFocus(Qt::TabFocusReason);
        screen().key(Qt::Key_Home);
        screen().key(Qt::Key_Down);
        screen().key(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 m->vm().messages.value().at(1).content.toString());
        // The one whose text was clicked, if nothing in it is selected.
        auto* text = column().widgetOf(2)->findChild<platform::TextView*>();
        screen().clickAt(m->placeOf(text).center());
        screen().key(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 m->vm().messages.value().at(2).content.toString());
        screen().key(Qt::Key_Down);
        QCOMPARE(current(), 3);
    }

    void whatIsLookedForIsBroughtIntoView() {
        openWith(60);
        screen().key(Qt::Key_F, Qt::ControlModifier);
        QVERIFY(screen().widget<platform::LineField>(u"Find"_s)->hasFocus());
        screen().type("message 4");
        QTRY_VERIFY((m->flush(), screen().shows(u"1 of 11"_s))); // 4, and 40 to 49
        screen().key(Qt::Key_Return);
        m->flush();
        QVERIFY(screen().shows(u"2 of 11"_s));
        QVERIFY(column().rect().intersects(column().rowRect(40)));
        QVERIFY(isLit(40, ColorRole::FoundCurrentOnAccent)); // made just now
        QVERIFY(!isLit(40, ColorRole::FoundOnAccent));
        QVERIFY(isLit(41, ColorRole::Found));
        QVERIFY(!isLit(41, ColorRole::FoundCurrent));
        screen().key(Qt::Key_Return, Qt::ShiftModifier);
        m->flush();
        QVERIFY(column().rect().intersects(column().rowRect(4)));
        screen().key(Qt::Key_Escape);
        m->flush();
        QVERIFY(!screen().shows(u"Find"_s));
        QVERIFY(m->field()->hasFocus());
        QVERIFY(!isLit(4, ColorRole::FoundCurrentOnAccent));
    }

    void escapeClosesTheSearchBeforeItStopsTheReply() {
        openWith(2);
        auto& turn = m->conversation.ask(u"One more"_s);
        Q_UNUSED(turn);
        screen().key(Qt::Key_F, Qt::ControlModifier);
        m->field()->setFocus();
        screen().key(Qt::Key_Escape);
        m->flush();
        QVERIFY(!screen().shows(u"Find"_s));
        QVERIFY(m->vm().isGenerating.value());
        screen().key(Qt::Key_Escape);
        QVERIFY(m->conversation.settle());
    }
};

TELLWICK_TEST(ChatReadingTests, Widgets)
#include "ChatReadingTests.moc"
