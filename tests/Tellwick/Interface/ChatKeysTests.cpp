// SPDX-License-Identifier: MIT
// What the keys of the chat screen do wherever the focus is, and the menus of the fields.
#include "Platform/Widgets/Overlays/Menu.h"
#include "Platform/Widgets/Text/TextView.h"
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

class ChatKeysTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

    tests::ScreenReader screen() { return m->screen(); }

    /// The entries of the menu that is open, those that cannot be used in brackets.
    QStringList menu() {
        QStringList entries;
        for (auto* element : screen().elements())
            if (element->role() == QAccessible::MenuItem)
                entries << (element->state().disabled
                                ? u'(' + element->text(QAccessible::Name) + u')'
                                : element->text(QAccessible::Name));
        return entries;
    }
    /// Opens the menu of the field that has the focus: with the right button, or by the key for it.
    void openMenu(QContextMenuEvent::Reason reason = QContextMenuEvent::Mouse) {
        QWidget* field = QApplication::focusWidget();
        auto* lines = qobject_cast<QPlainTextEdit*>(field);
        QWidget* text = lines && reason == QContextMenuEvent::Mouse ? lines->viewport() : field;
        QContextMenuEvent event(reason, {5, 5}, text->mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(text, &event);
    }
    /// What the field that has the focus shows.
    QString text() {
        auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        return line ? line->text() : m->field()->text();
    }
    void addFields() {
        QTest::addColumn<bool>("isFind");
        QTest::newRow("Message") << false;
        QTest::newRow("Find") << true;
    }
    /// Puts the keyboard into the field of the row.
    void enterField() {
        QFETCH(const bool, isFind);
        if (isFind)
            screen().key(Qt::Key_F, Qt::ControlModifier);
        QVERIFY(isFind == !m->field()->hasFocus());
    }

private Q_SLOTS:
    void init() {
        m.emplace();
        m->conversation.store({u"user"_s, u"assistant"_s}, {u"one"_s, u"two"_s});
        QVERIFY(m->open());
    }
    void cleanup() { m.reset(); }

    void editingGoesToTheFieldFromABubble() {
        screen().type("ab");
        const auto clickBubble = [this] {
            auto* text = m->column()->widgetOf(1)->findChild<platform::TextView*>();
            screen().clickAt(m->placeOf(text).center());
            return text->hasFocus();
        };
        QVERIFY(clickBubble());
        screen().key(Qt::Key_Backspace);
        QCOMPARE(m->field()->text(), u"a"_s);
        QVERIFY(m->field()->hasFocus());
        QVERIFY(clickBubble());
        QGuiApplication::clipboard()->setText(u"pasted"_s);
        screen().key(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m->field()->text(), u"apasted"_s);
        QVERIFY(clickBubble());
        QInputMethodQueryEvent asked(Qt::ImEnabled); // or nothing is composed there
        QCoreApplication::sendEvent(QGuiApplication::focusObject(), &asked);
        QVERIFY(asked.value(Qt::ImEnabled).toBool());
        QInputMethodEvent composed(u"\u4e2d"_s, {});
        QCoreApplication::sendEvent(QGuiApplication::focusObject(), &composed);
        QVERIFY(m->field()->hasFocus());
        QInputMethodEvent commit;
        commit.setCommitString(u"\u4e2d"_s);
        QCoreApplication::sendEvent(QGuiApplication::focusObject(), &commit);
        QCOMPARE(m->field()->text(), u"apasted\u4e2d"_s);
    }

    void aFieldsMenuGreysWhatCannotBeUsed_data() { addFields(); }
    void aFieldsMenuGreysWhatCannotBeUsed() {
        enterField();
        QGuiApplication::clipboard()->clear();
        openMenu();
        QCOMPARE(menu(), (QStringList{u"(Undo)"_s, u"(Redo)"_s, u"(Cut)"_s, u"(Copy)"_s,
                                      u"(Paste)"_s, u"(Select All)"_s}));
        screen().key(Qt::Key_Escape);
        QGuiApplication::clipboard()->setText(u"x"_s);
        screen().type("word");
        openMenu();
        QCOMPARE(menu(), (QStringList{u"Undo"_s, u"(Redo)"_s, u"(Cut)"_s, u"(Copy)"_s, u"Paste"_s,
                                      u"Select All"_s}));
        screen().key(Qt::Key_Down); // to Undo; the next that can be used is Paste
        screen().key(Qt::Key_Down);
        screen().key(Qt::Key_Return);
        QCOMPARE(text(), u"wordx"_s);
        openMenu();
        QVERIFY(screen().click(u"Select All"_s));
        QTRY_VERIFY(!m->overlays()->isPresenting());
        openMenu();
        QVERIFY(screen().click(u"Cut"_s));
        QCOMPARE(text(), QString());
        QCOMPARE(QGuiApplication::clipboard()->text(), u"wordx"_s);
        QTRY_VERIFY(!m->overlays()->isPresenting());
        openMenu();
        QVERIFY(screen().click(u"Undo"_s));
        QCOMPARE(text(), u"wordx"_s);
        QTRY_VERIFY(!m->overlays()->isPresenting());
        openMenu();
        QVERIFY(menu().contains(u"Redo"_s));
    }

    void keysOpenAFieldsMenuAndLeaveItAsItWas_data() { addFields(); }
    void keysOpenAFieldsMenuAndLeaveItAsItWas() {
        enterField();
        screen().type("three words here");
        for (int i = 0; i < 4; ++i)
            screen().key(Qt::Key_Left, Qt::ShiftModifier);
        const QStringList all{u"Undo"_s, u"(Redo)"_s, u"Cut"_s,
                              u"Copy"_s, u"Paste"_s,  u"Select All"_s};
        QGuiApplication::clipboard()->setText(u"other"_s);
        screen().key(Qt::Key_F10, Qt::ShiftModifier);
        QCOMPARE(menu(), all);
        screen().key(Qt::Key_Escape);
        openMenu(QContextMenuEvent::Keyboard);
        QCOMPARE(menu(), all);
        screen().key(Qt::Key_Down);
        screen().key(Qt::Key_Down);
        screen().key(Qt::Key_Return); // behind Undo and Cut: Copy
        QCOMPARE(QGuiApplication::clipboard()->text(), u"here"_s);
        screen().type("s");
        QCOMPARE(text(), u"three words s"_s);
        // And nothing is selected that was not.
        openMenu(QContextMenuEvent::Keyboard);
        screen().key(Qt::Key_Escape);
        screen().type("o");
        QCOMPARE(text(), u"three words so"_s);
    }

    void whatIsPastedIntoTheSearchIsLookedFor() {
        screen().key(Qt::Key_F, Qt::ControlModifier);
        QGuiApplication::clipboard()->setText(u"TWO"_s);
        openMenu();
        QVERIFY(screen().click(u"Paste"_s));
        QTRY_VERIFY((m->flush(), screen().shows(u"1 of 1"_s)));
    }

    void shiftF10OpensTheMenuOfWhatHasTheFocus() {
        screen().key(Qt::Key_F10, Qt::ShiftModifier);
        QVERIFY(menu().contains(u"Paste"_s) || menu().contains(u"(Paste)"_s));
        screen().key(Qt::Key_Escape);
        QTRY_VERIFY(!m->overlays()->isPresenting());
        auto* text = m->column()->widgetOf(1)->findChild<platform::TextView*>();
        screen().clickAt(m->placeOf(text).center());
        screen().key(Qt::Key_F10, Qt::ShiftModifier);
        QCOMPARE(menu(), QStringList{u"Copy"_s});
    }

    void escapeStopsARunningReply() {
        screen().key(Qt::Key_Escape); // nothing to stop
        auto& turn = m->conversation.ask(u"Go on"_s);
        turn.say(u"so far"_s);
        QVERIFY(m->conversation.waitForReply(u"so far"_s));
        screen().key(Qt::Key_Escape);
        QVERIFY(m->conversation.settle());
        QCOMPARE(m->conversation.contents().last(), u"so far"_s);
    }

    void ctrlAndTheWheelAskForLargerText() {
        QList<int> steps;
        m->view->onZoom([&](int notches) { steps << notches; });
        const auto turn = [this](QWidget* over, int delta) {
            const QPointF point = over->rect().center();
            QWheelEvent event(point, over->mapToGlobal(point), {}, {0, delta}, Qt::NoButton,
                              Qt::ControlModifier, Qt::NoScrollPhase, false);
            QSpontaneKeyEvent::setSpontaneous(&event); // what a program makes up goes no further
            qApp->notify(over, &event);
        };
        turn(m->column(), 120);
        turn(m->field()->viewport(), -240);
        turn(m->column(), 60);
        turn(m->column(), 60);
        QCOMPARE(steps, (QList<int>{1, -2, 1}));
        // Also where there is something to scroll.
        auto& asked = m->conversation.ask(u"word\n"_s.repeated(100));
        asked.end();
        QVERIFY(m->conversation.settle());
        m->vm().draft = u"line\n"_s.repeated(50);
        m->flush();
        QVERIFY(m->column()->maximum() > 0 && m->field()->verticalScrollBar()->maximum() > 0);
        const int offset = m->column()->offset();
        const int line = m->field()->verticalScrollBar()->value();
        turn(m->column(), 120);
        turn(m->field()->viewport(), 120);
        QCOMPARE(steps.mid(3), (QList<int>{1, 1}));
        QCOMPARE(m->column()->offset(), offset);
        QCOMPARE(m->field()->verticalScrollBar()->value(), line);
    }

    void everythingFollowsTheSizeOfTheText() {
        const int bubble = m->column()->rowRect(1).height();
        const int field = m->field()->height();
        const int send = m->sendButton()->height();
        m->desktop.theme.setZoom(2);
        m->flush();
        QVERIFY(m->column()->rowRect(1).height() > bubble * 4 / 3);
        QTRY_VERIFY(m->field()->height() > field * 4 / 3);
        QTRY_VERIFY(m->sendButton()->height() > send * 4 / 3);
        const int ring = platform::Theme::focusRingWidth;
        QTRY_COMPARE(m->sendButton()->height() - 2 * ring, m->field()->lineHeight());
        m->desktop.theme.setZoom(7);
        QCOMPARE(m->desktop.theme.zoom(), 2.0);
        m->desktop.theme.setZoom(0.1);
        QCOMPARE(m->desktop.theme.zoom(), 0.8);
    }

    void sendIsAsHighAsTheFieldWhicheverHearsOfTheFontFirst() {
        QFont larger = m->desktop.theme.font(platform::TextStyle::Body);
        larger.setPixelSize(31);
        m->desktop.theme.setBodyFont(larger);
        platform::flushObservers(m->sendButton());
        m->flush();
        const int ring = platform::Theme::focusRingWidth;
        QTRY_COMPARE(m->field()->height(), m->field()->lineHeight());
        QTRY_COMPARE(m->sendButton()->height() - 2 * ring, m->field()->height());
    }

    void tabGoesInReadingOrder() {
        m->vm().newChat();
        m->flush();
        QStringList order;
        for (int i = 0; i < 7; ++i) {
            screen().key(Qt::Key_Tab);
            auto* focused = QAccessible::queryAccessibleInterface(QGuiApplication::focusObject());
            order << focused->text(QAccessible::Name);
        }
        QCOMPARE(order, (QStringList{u"Send"_s, u"More"_s, u"Proofread"_s, u"Summarise"_s,
                                     u"Explain Simply"_s, u"Rewrite"_s, u"Message"_s}));
        QVERIFY(screen().press(u"Proofread"_s));
        m->flush();
        order.clear();
        m->field()->setFocus();
        screen().key(Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(QAccessible::queryAccessibleInterface(QGuiApplication::focusObject())
                     ->text(QAccessible::Name),
                 u"Clear mode"_s);
    }

    void tabGoesThroughTheConversation() {
        QStringList order;
        for (int i = 0; i < 5; ++i) {
            screen().key(Qt::Key_Tab);
            auto* focused = QAccessible::queryAccessibleInterface(QGuiApplication::focusObject());
            order << focused->text(QAccessible::Name);
        }
        QCOMPARE(order, (QStringList{u"Send"_s, u"New Chat"_s, u"More"_s, u"Conversation"_s,
                                     u"Message"_s}));
    }
};

TELLWICK_TEST(ChatKeysTests, Widgets)
#include "ChatKeysTests.moc"
