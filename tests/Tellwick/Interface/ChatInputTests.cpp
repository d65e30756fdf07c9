// SPDX-License-Identifier: MIT
// The message field of the chat screen, the button beside it, and where the keyboard goes.
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::ColorRole;
namespace AppConfig = tellwick::AppConfig;

class ChatInputTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

    tests::ScreenReader screen() { return m->screen(); }

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(m->open());
    }
    void cleanup() { m.reset(); }

    void theSendButtonsColourFollowsTheDraft_data() {
        QTest::addColumn<QString>("draft");
        QTest::addColumn<ColorRole>("color");
        const auto grey = ColorRole::SecondaryLabel;
        const auto accent = ColorRole::AccentFill;
        QTest::newRow("nothing") << u""_s << grey;
        QTest::newRow("three blanks") << u"   "_s << grey;
        QTest::newRow("a tab") << u"\t"_s << grey;
        QTest::newRow("blanks of other widths") << u"\u00A0\u2003\u202F\u3000"_s << grey;
        QTest::newRow("a letter") << u"a"_s << accent;
        QTest::newRow("a letter between blanks") << u" \ta "_s << accent;
        QTest::newRow("a line break") << u"\n"_s << accent;
        QTest::newRow("line breaks between blanks") << u" \n\n "_s << accent;
        QTest::newRow("a blank of no width") << u"\u200B"_s << accent;
    }
    void theSendButtonsColourFollowsTheDraft() {
        QFETCH(QString, draft);
        QFETCH(ColorRole, color);
        m->vm().draft = draft;
        for (const bool isGenerating : {true, false}) {
            const auto expected = isGenerating ? ColorRole::Red : color;
            m->vm().isGenerating = isGenerating;
            QCOMPARE(m->chat()->sendButtonColor(), expected);
            m->flush();
            QCOMPARE(m->sendButton()->colorRole(), expected);
            QVERIFY(m->sendButton()->isEnabled());
        }
    }

    void aDraftOfLineBreaksIsColouredAndNotSent() {
        screen().key(Qt::Key_Return, Qt::ShiftModifier);
        screen().key(Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(m->vm().draft.value(), u"\n\n"_s);
        m->flush();
        QCOMPARE(m->sendButton()->colorRole(), ColorRole::AccentFill);
        screen().key(Qt::Key_Return);
        screen().key(Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(screen().click(u"Send"_s));
        QVERIFY(m->vm().messages.value().isEmpty());
        QVERIFY(!m->vm().isGenerating.value());
        QVERIFY(!m->vm().availabilityError.value());
        QCOMPARE(m->vm().draft.value(), u"\n\n"_s);
    }

    void theFirstKeyLetsTheModelGetReady() {
        const auto& prewarmed = m->conversation.model.prewarmed;
        QVERIFY(prewarmed.isEmpty());
        screen().key(Qt::Key_A);
        QTRY_COMPARE(prewarmed.size(), 1);
        screen().key(Qt::Key_Return);
        QTRY_COMPARE(m->conversation.model.turns.size(), std::size_t{1});
        QCOMPARE(prewarmed.size(), 1);
    }

    void theFieldHasTheFocusFromTheStart() {
        QVERIFY(m->field()->hasFocus());
        QVERIFY(screen().find(u"Message"_s)->state().focused);
        QCOMPARE(m->field()->placeholderText(), u"Message"_s);
    }

    void theFieldAndTheDraftAreOne() {
        screen().type("Hi");
        QCOMPARE(m->vm().draft.value(), u"Hi"_s);
        m->vm().draft = u"From elsewhere\nin two lines"_s;
        m->flush();
        QCOMPARE(m->field()->text(), u"From elsewhere\nin two lines"_s);
        screen().type("!");
        QCOMPARE(m->vm().draft.value(), u"From elsewhere\nin two lines!"_s);
    }

    void theInputBarIsLaidOutAsAsked() {
        for (int lines = 1; lines <= 4; ++lines) {
            const QRect field = m->placeOf(m->field());
            const QRect disc = m->placeOf(m->sendButton()).adjusted(3, 3, -3, -3);
            QCOMPARE(field.left(), 12);
            QCOMPARE(disc.left(), field.right() + 1 + 8);
            QCOMPARE(disc.right(), m->view->width() - 1 - 12);
            QCOMPARE(disc.bottom(), field.bottom());
            QCOMPARE(disc.height(), m->field()->lineHeight());
            QVERIFY(lines > 1 || disc.height() == field.height());
            QCOMPARE(field.bottom(), m->view->height() - 1 - 10);
            screen().key(Qt::Key_Return, Qt::ShiftModifier);
            m->flush();
            QCoreApplication::processEvents();
        }
    }

    void typingGoesToTheFieldWhereverTheFocusIs() {
        for (const QString& name : {u"Proofread"_s, u"More"_s, u"Send"_s}) {
            screen().widget(name)->setFocus();
            QVERIFY(!m->field()->hasFocus());
            screen().type("x");
            QVERIFY(m->field()->hasFocus());
        }
        QCOMPARE(m->vm().draft.value(), u"xxx"_s);
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        m->flush();
        m->column()->setFocus();
        screen().type("y");
        QVERIFY(m->field()->hasFocus());
        QCOMPARE(m->vm().draft.value(), u"y"_s);
    }

    void shortcutsOfOthersAreNotTyped() {
        screen().widget(u"Proofread"_s)->setFocus();
        screen().key(Qt::Key_J, Qt::ControlModifier);
        screen().key(Qt::Key_J, Qt::AltModifier);
        screen().key(Qt::Key_F5);
        screen().key(Qt::Key_Escape);
        QCOMPARE(m->vm().draft.value(), QString());
        QVERIFY(screen().widget(u"Proofread"_s)->hasFocus());
    }

    void tabReachesEveryControlAndComesBack() {
        m->vm().setMode(AppConfig::writingModes().first());
        m->flush();
        QStringList reached;
        do {
            screen().key(Qt::Key_Tab);
            auto* focus = QApplication::focusWidget();
            auto* element = QAccessible::queryAccessibleInterface(focus);
            reached.append(element->text(QAccessible::Name));
        } while (!m->field()->hasFocus() && reached.size() < 30);
        for (const QString& name :
             {u"Send"_s, u"More"_s, u"Proofread"_s, u"Summarise"_s, u"Explain Simply"_s,
              u"Rewrite"_s, u"Clear mode"_s, u"Message"_s})
            QVERIFY2(reached.contains(name), qPrintable(name));
        QVERIFY(!reached.contains(u"New Chat"_s)); // there is nothing to leave
    }
};

TELLWICK_TEST(ChatInputTests, Widgets)
#include "ChatInputTests.moc"
