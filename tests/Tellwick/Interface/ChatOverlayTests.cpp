// SPDX-License-Identifier: MIT
// What opens over the chat screen: the alert, the menu, the models' popover and the About sheet.
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Overlays/Menu.h"
#include "Platform/Widgets/Overlays/PullDownButton.h"
#include "Tellwick/Interface/AboutView.h"
#include "Tellwick/Interface/ModelsView.h"
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::Panel;
using Availability = platform::SystemLanguageModel::Availability;

class ChatOverlayTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

    tests::ScreenReader screen() { return m->screen(); }

    /// The panel on top, if it is of that kind.
    Panel* shown(Panel::Kind kind) {
        m->flush();
        auto* top = m->overlays()->top();
        return top && top->kind() == kind ? top : nullptr;
    }

    /// What is on top, as it is read out.
    tests::ScreenReader top() { return tests::ScreenReader(m->overlays()->top()); }

    /// Chooses an entry of the menu.
    void choose(const QString& entry) {
        QVERIFY(screen().press(u"More"_s, QAccessible::ButtonMenu));
        QVERIFY(screen().press(entry, QAccessible::MenuItem));
        m->flush();
    }

    /// Gone, and the keyboard is in the message field again.
    bool isClosed() {
        m->flush();
        return !m->overlays()->isPresenting() && m->field()->hasFocus();
    }

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(m->open());
    }
    void cleanup() { m.reset(); }

    void anErrorOpensTheAlert_data() {
        QTest::addColumn<QString>("error");
        QTest::newRow("no model") << u"No model selected."_s;
        QTest::newRow("a long one")
            << u"Apple Intelligence unavailable: "_s + u"why "_s.repeated(300);
        QTest::newRow("none, but there") << u""_s;
    }
    void anErrorOpensTheAlert() {
        QFETCH(QString, error);
        m->vm().availabilityError = error;
        QVERIFY(shown(Panel::Kind::Alert));
        QCOMPARE(top().texts(), (QStringList{u"Apple Intelligence Unavailable"_s, error}));
        QCOMPARE(top().names(QAccessible::Button), QStringList{u"OK"_s});
        QVERIFY(top().find(u"OK"_s)->state().focused);
        QVERIFY(screen().shows(u"Apple Intelligence Unavailable"_s, QAccessible::AlertMessage));
        QVERIFY(m->view->rect().contains(m->placeOf(top().widget(u"OK"_s))));
        QVERIFY(m->vm().availabilityError.value());
    }

    void theAlertClearsTheErrorHoweverItIsClosedAndTheSameErrorOpensItAgain() {
        for (const bool isByButton : {true, false, true}) {
            m->vm().availabilityError = u"No model selected."_s;
            QVERIFY(shown(Panel::Kind::Alert));
            QCOMPARE(top().texts().value(1), u"No model selected."_s);
            if (isByButton)
                QVERIFY(top().click(u"OK"_s));
            else
                screen().key(Qt::Key_Escape);
            QVERIFY(!m->vm().availabilityError.value());
            QVERIFY(isClosed());
        }
    }

    void noSearchBeginsUnderWhatLiesOnTop_data() {
        QTest::addColumn<QString>("entry");
        QTest::newRow("menu") << QString();
        QTest::newRow("popover") << u"Models"_s;
        QTest::newRow("sheet") << u"About"_s;
    }
    void noSearchBeginsUnderWhatLiesOnTop() {
        QFETCH(const QString, entry);
        if (entry.isEmpty())
            QVERIFY(screen().press(u"More"_s, QAccessible::ButtonMenu));
        else
            choose(entry);
        const auto* focused = QApplication::focusWidget();
        QVERIFY(m->overlays()->isAncestorOf(focused));
        screen().key(Qt::Key_F, Qt::ControlModifier);
        m->flush();
        QVERIFY(!screen().shows(u"Find"_s));
        QCOMPARE(QApplication::focusWidget(), focused);
        QVERIFY(m->overlays()->isPresenting());
        screen().key(Qt::Key_Escape);
        screen().key(Qt::Key_F, Qt::ControlModifier);
        QVERIFY(screen().find(u"Find"_s)->state().focused);
    }

    void aClearedErrorClosesTheAlert() {
        m->vm().availabilityError = u"No model selected."_s;
        QVERIFY(shown(Panel::Kind::Alert));
        m->vm().newChat();
        QVERIFY(isClosed());
    }

    void aSecondErrorTakesThePlaceOfTheFirst() {
        m->vm().availabilityError = u"The first."_s;
        QVERIFY(shown(Panel::Kind::Alert));
        m->vm().availabilityError = u"The second."_s;
        for (int i = 0; i < 5; ++i) {
            QVERIFY(shown(Panel::Kind::Alert));
            QCOMPARE(top().texts().value(1), u"The second."_s);
            QCOMPARE(m->vm().availabilityError.value(), u"The second."_s);
            QCoreApplication::processEvents(); // whatever was set off meanwhile has come
        }
        screen().key(Qt::Key_Escape);
        QVERIFY(!m->vm().availabilityError.value());
        QVERIFY(isClosed());
    }

    void theAlertOfAnUnavailableModelKeepsTheDraft() {
        m->conversation.model.state =
            Availability::unavailable(Availability::UnavailableReason::modelNotReady);
        screen().type("Hello");
        screen().key(Qt::Key_Return);
        QVERIFY(shown(Panel::Kind::Alert));
        QCOMPARE(top().texts().value(1),
                 u"Apple Intelligence unavailable: "_s +
                     platform::toText(Availability::UnavailableReason::modelNotReady));
        screen().key(Qt::Key_Return);
        QVERIFY(isClosed());
        QCOMPARE(m->field()->text(), u"Hello"_s);
        QVERIFY(m->bubbles().isEmpty());
        m->conversation.model.state = Availability::available();
        screen().key(Qt::Key_Return);
        m->flush();
        QCOMPARE(m->bubbles().value(0), u"You: Hello"_s);
        QVERIFY(!m->overlays()->isPresenting());
    }

    void theWindowBeneathTheAlertHearsNoKey() {
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        m->vm().draft = u"Draft"_s;
        m->vm().availabilityError = u"No model selected."_s;
        QVERIFY(shown(Panel::Kind::Alert));
        screen().type("abc");
        screen().key(Qt::Key_N, Qt::ControlModifier);
        QVERIFY(shown(Panel::Kind::Alert));
        QCOMPARE(m->vm().draft.value(), u"Draft"_s);
        QCOMPARE(m->conversation.contents(), (QStringList{u"Hi"_s, u"Hello"_s}));
        QVERIFY(!m->vm().isGenerating.value());
    }

    void theMenuHasModelsAndAboutWithADividerBetween() {
        auto* more = screen().widget<platform::PullDownButton>(u"More"_s, QAccessible::ButtonMenu);
        QCOMPARE(more->icon(), u"ellipsis.circle"_s);
        QVERIFY(screen().press(u"More"_s, QAccessible::ButtonMenu));
        QVERIFY(shown(Panel::Kind::Menu));
        QCOMPARE(top().names(QAccessible::MenuItem), (QStringList{u"Models"_s, u"About"_s}));
        const auto lines = m->overlays()->top()->findChildren<platform::Divider*>();
        QCOMPARE(lines.size(), 1);
        const int line = m->placeOf(lines.first()).top();
        QVERIFY(m->placeOf(top().widget(u"Models"_s)).bottom() < line);
        QVERIFY(m->placeOf(top().widget(u"About"_s)).top() > line);
        screen().key(Qt::Key_Escape);
        QVERIFY(isClosed());
    }
    void modelsOpensAPopoverAtTheButton() {
        choose(u"Models"_s);
        auto* popover = shown(Panel::Kind::Popover);
        QVERIFY(popover);
        QCOMPARE(popover->accessibleName(), u"Models"_s);
        auto* models = popover->findChild<tellwick::ModelsView*>();
        QCOMPARE(models->size().width(), 360);
        QVERIFY(top().shows(u"Other Models"_s));
        QVERIFY(m->placeOf(popover).top() <= m->placeOf(screen().widget(u"More"_s)).bottom() + 1);
        QVERIFY(m->view->rect().contains(m->placeOf(models)));
    }

    void aboutOpensASheet() {
        choose(u"About"_s);
        auto* sheet = shown(Panel::Kind::Sheet);
        QVERIFY(sheet);
        QCOMPARE(sheet->accessibleName(), u"About"_s);
        QCOMPARE(sheet->findChild<tellwick::AboutView*>()->size().width(), 400);
        QVERIFY(top().shows(u"Version 2.3.1"_s));
    }

    void screensCloseAndGiveTheFocusToTheField() {
        for (const auto& [entry, way] : {std::pair(u"Models"_s, u"key"_s),
                                         {u"Models"_s, u"outside"_s},
                                         {u"Models"_s, u"key"_s}, // again
                                         {u"About"_s, u"outside"_s},
                                         {u"About"_s, u"button"_s},
                                         {u"About"_s, u"key"_s}}) {
            screen().widget(u"More"_s)->setFocus();
            choose(entry);
            QVERIFY(m->overlays()->isPresenting());
            QVERIFY(!m->field()->hasFocus());
            if (way == u"key"_s)
                screen().key(Qt::Key_Escape);
            else if (way == u"outside"_s)
                screen().clickAt({10, 780});
            else
                QVERIFY(top().click(u"Close"_s));
            QVERIFY(isClosed());
        }
        screen().type("x");
        QCOMPARE(m->vm().draft.value(), u"x"_s);
    }

    void aModelIsChosenInThePopoverWhichStaysOpen() {
        m->conversation.server.areAvailable = true;
        m->conversation.server.listed = QStringList{u"llama"_s};
        choose(u"Models"_s);
        QTRY_VERIFY(screen().shows(u"llama"_s, QAccessible::ListItem));
        m->flush();
        QVERIFY(screen().click(u"llama"_s, QAccessible::ListItem));
        QVERIFY(shown(Panel::Kind::Popover));
        QCOMPARE(m->vm().modelManager.selectedID.value(), u"ollama-llama"_s);
        screen().key(Qt::Key_Escape);
        QVERIFY(isClosed());
        screen().type("Hi");
        screen().key(Qt::Key_Return);
        QTRY_COMPARE(m->conversation.server.requests.size(), std::size_t(1));
        QCOMPARE(m->conversation.server.requests.front().prompt, u"Hi"_s);
    }

    void anErrorOpensTheAlertOverAnOpenScreen() {
        choose(u"About"_s);
        m->vm().availabilityError = u"No model selected."_s;
        QVERIFY(shown(Panel::Kind::Alert));
        screen().key(Qt::Key_Escape);
        QVERIFY(shown(Panel::Kind::Sheet));
        QVERIFY(!m->vm().availabilityError.value());
        screen().key(Qt::Key_Escape);
        QVERIFY(isClosed());
    }

    void theWindowClosesWhileAScreenIsOpen() {
        choose(u"Models"_s);
        m->vm().availabilityError = u"No model selected."_s;
        QVERIFY(shown(Panel::Kind::Alert));
        m->close();
        QVERIFY(m->open());
        QVERIFY(!m->overlays()->isPresenting());
    }
};

TELLWICK_TEST(ChatOverlayTests, Widgets)
#include "ChatOverlayTests.moc"
