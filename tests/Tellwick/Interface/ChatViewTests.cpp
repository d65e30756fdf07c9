// SPDX-License-Identifier: MIT
// The chat screen at rest: the empty conversation, the writing modes, a new chat. What is typed is
// in ChatInputTests, how the screen follows a conversation in ChatListTests, what opens over it in
// ChatOverlayTests.
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
namespace AppConfig = tellwick::AppConfig;

class ChatViewTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

    tests::ScreenReader screen() { return m->screen(); }
    bool isPressed(const QString& chip) { return screen().find(chip)->state().pressed; }
    Label* icon(const QString& name) {
        for (auto* icon : m->view->findChildren<Label*>())
            if (icon->icon() == name && icon->isVisible())
                return icon;
        return nullptr;
    }
    /// What the greeting stands on, and the mode's name.
    QWidget* greeting() { return screen().widget(AppConfig::welcomeMessage())->parentWidget(); }
    QWidget* modeBar() { return screen().widget(u"Clear mode"_s)->parentWidget(); }

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(m->open());
    }
    void cleanup() { m.reset(); }

    void anEmptyConversationShowsItsTextsInOrder() {
        QCOMPARE(screen().texts(),
                 (QStringList{u"Tellwick"_s, u"On-device · Private"_s, AppConfig::appName(),
                              AppConfig::tagline(), AppConfig::welcomeMessage(),
                              AppConfig::modelLabel()}));
        QStringList chips;
        for (const auto& mode : AppConfig::writingModes())
            chips.append(mode.label);
        QCOMPARE(screen().names(QAccessible::Button),
                 (QStringList{u"New Chat"_s} + chips + QStringList{u"Send"_s}));
        QCOMPARE(screen().names(QAccessible::ButtonMenu), QStringList{u"More"_s});
        QVERIFY(icon(u"brain"_s));
        QVERIFY(!screen().shows(u"Clear mode"_s));
        QVERIFY(screen().find(u"New Chat"_s)->state().disabled);
        QCOMPARE(m->sendButton()->icon(), u"arrow.up.circle.fill"_s);
        QCOMPARE(m->sendButton()->colorRole(), ColorRole::SecondaryLabel);
        QCOMPARE(m->view->windowTitle(), u"Tellwick"_s);
    }

    void theHeaderHasItsButtonsAtItsEnd() {
        QStringList read;
        for (auto* element : screen().elements())
            if (const QString name = element->text(QAccessible::Name); !name.isEmpty())
                read.append(name);
        QCOMPARE(read.mid(0, 4),
                 (QStringList{u"Tellwick"_s, u"On-device · Private"_s, u"New Chat"_s, u"More"_s}));
        QVERIFY(m->placeOf(screen().widget(u"New Chat"_s)).left() > m->view->width() / 2);
        QVERIFY(m->placeOf(screen().widget(u"More"_s)).left() >
                m->placeOf(screen().widget(u"New Chat"_s)).right());
    }

    void theEmptyStateHasItsSizesAndStyles() {
        const auto label = [this](const QString& text) {
            return screen().widget<Label>(text, QAccessible::StaticText);
        };
        auto* brain = icon(u"brain"_s);
        QCOMPARE(brain->height(), m->desktop.theme.symbolSize(52.0));
        const int top = m->placeOf(m->view->findChild<platform::HeaderBar*>()).bottom() + 1;
        QCOMPARE(m->placeOf(brain).top(), top + 16 + 60);
        QCOMPARE(m->placeOf(brain).center().x(), m->view->rect().center().x());
        Label* name = nullptr; // the second of its text: the first is the window's title
        for (auto* heading : m->view->findChildren<Label*>())
            if (m->desktop.isStyled(heading, TextStyle::Title2, ColorRole::Label, QFont::Medium))
                name = heading;
        QVERIFY(name);
        QCOMPARE(name->text(), AppConfig::appName());
        auto* tagline = label(AppConfig::tagline());
        QVERIFY(m->desktop.isStyled(tagline, TextStyle::Subheadline, ColorRole::SecondaryLabel));
        auto* model = label(AppConfig::modelLabel());
        QVERIFY(m->desktop.isStyled(model, TextStyle::Caption, ColorRole::TertiaryLabel));
        const QRect bubble = m->placeOf(greeting());
        QCOMPARE(bubble.left(), 16 + 24);
        QCOMPARE(bubble.right(), m->view->width() - 1 - 16 - 24);
        QCOMPARE(m->placeOf(label(AppConfig::welcomeMessage())), bubble.adjusted(12, 8, -12, -8));
        QCOMPARE(m->desktop.theme.color(ColorRole::GreetingBubble).rgb() | 0xff000000,
                 m->desktop.theme.color(ColorRole::SecondaryLabel).rgb());
        const QWidget* above = brain;
        for (const auto& [below, gap] : {std::pair<QWidget*, int>(name, 12),
                                         {tagline, 12},
                                         {greeting(), 12 + 8},
                                         {model, 12},
                                         {screen().widget(u"Writing modes"_s), 12 + 4}}) {
            QCOMPARE(m->placeOf(below).top(), m->placeOf(above).bottom() + 1 + gap);
            above = below;
        }
        QList<QRect> chips;
        for (const auto& mode : AppConfig::writingModes())
            chips.append(m->placeOf(screen().widget(mode.label)));
        for (qsizetype i = 1; i < chips.size(); ++i)
            QCOMPARE(chips[i].left(), chips[i - 1].right() + 1 + 8);
    }

    void theEmptyStateStandsInAColumnOf700() {
        m->view->resize(1400, 800);
        const auto middle = [](const QRect& rect) { return rect.left() + rect.right(); };
        QTRY_COMPARE(greeting()->width(), 700 - 2 * (16 + 24));
        QVERIFY(std::abs(middle(m->placeOf(greeting())) - 1399) <= 1);
        auto* strip = screen().widget<platform::ScrollArea>(u"Writing modes"_s);
        QCOMPARE(strip->width(), 700 - 2 * 16);
        QVERIFY(std::abs(middle(m->placeOf(strip)) - 1399) <= 1);
    }

    void theSubtitleFollowsTheSelectedModel() {
        m->conversation.server.details.insert(u"llama"_s, u"Ollama · 2.0 GB"_s);
        QVERIFY(m->conversation.select({u"llama"_s, u"bare"_s}, u"llama"_s));
        QTRY_VERIFY(screen().shows(u"Ollama · 2.0 GB"_s, QAccessible::StaticText));
        QVERIFY(m->conversation.select({u"llama"_s, u"bare"_s}, u"bare"_s));
        QTRY_COMPARE(screen().texts().value(1), AppConfig::modelLabel());
        // The label of the empty state is fixed.
        QCOMPARE(screen().texts().last(), AppConfig::modelLabel());
        m->vm().modelManager.select(m->vm().modelManager.aiBackend);
        QTRY_COMPARE(screen().texts().value(1), u"On-device · Private"_s);
    }

    void aChipTurnsItsModeOnAndOff() {
        for (const auto& mode : AppConfig::writingModes()) {
            QVERIFY(!isPressed(mode.label));
            QVERIFY(screen().click(mode.label, QAccessible::Button));
            QCOMPARE(m->vm().activeMode.value()->id(), mode.id());
            m->flush();
            QVERIFY(isPressed(mode.label));
            QVERIFY(screen().press(mode.label, QAccessible::Button));
            QVERIFY(!m->vm().activeMode.value());
            m->flush();
            QVERIFY(!isPressed(mode.label));
        }
    }

    void anotherChipReplacesTheMode() {
        const auto& theme = m->desktop.theme;
        const auto isFilled = [this, &theme](const QString& name) {
            auto* chip = screen().widget(name);
            const tests::PaintRecorder painted(*chip);
            return painted.all().front().color == theme.color(ColorRole::AccentFill) &&
                   painted.hasColor(theme.color(ColorRole::OnAccent), chip->rect());
        };
        for (const auto& [mode, other] :
             {std::pair(u"Proofread"_s, u"Rewrite"_s), {u"Rewrite"_s, u"Proofread"_s}}) {
            QVERIFY(screen().press(mode));
            m->flush();
            QCOMPARE(m->vm().activeMode.value()->label, mode);
            QVERIFY(isPressed(mode) && isFilled(mode));
            QVERIFY(!isPressed(other) && !isFilled(other));
        }
    }

    void theModeBarShowsTheModeAndClearsIt() {
        QVERIFY(screen().press(u"Summarise"_s));
        m->flush();
        auto* bar = modeBar();
        QCOMPARE(tests::ScreenReader(bar).texts(), QStringList{u"Summarise"_s});
        auto* label = tests::ScreenReader(bar).widget<Label>(u"Summarise"_s);
        QVERIFY(m->desktop.isStyled(label, TextStyle::Caption, ColorRole::Accent, QFont::Medium));
        auto* clear = screen().widget<platform::Button>(u"Clear mode"_s);
        QCOMPARE(clear->icon(), u"xmark.circle.fill"_s);
        QCOMPARE(clear->colorRole(), ColorRole::SecondaryLabel);
        QTRY_COMPARE(m->placeOf(label).left(), 16);
        QCOMPARE(m->placeOf(clear).right(), m->view->width() - 1 - 16);
        QCOMPARE(bar->width(), m->view->width());
        QVERIFY(screen().click(u"Clear mode"_s));
        QVERIFY(!m->vm().activeMode.value());
        m->flush();
        QVERIFY(!bar->isVisible());
        QVERIFY(!isPressed(u"Summarise"_s));
        QVERIFY(m->field()->hasFocus());
    }

    void thereIsNoRowWhereTheModeBarIsNot() {
        const int inputTop = m->placeOf(m->field()).top() - 10;
        const auto divider = [this] {
            for (auto* line : m->chat()->findChildren<platform::Divider*>())
                if (line->parentWidget() == m->chat())
                    return m->placeOf(line).bottom() + 1;
            return 0;
        };
        QCOMPARE(divider(), inputTop);
        QVERIFY(screen().press(u"Rewrite"_s));
        m->flush();
        QTRY_COMPARE(divider(), inputTop - modeBar()->height() - 1); // and its own divider
        QCOMPARE(m->placeOf(modeBar()).top(), divider());
        m->vm().clearMode();
        m->flush();
        QTRY_COMPARE(divider(), inputTop);
    }

    void chipsAndModeBarGoWithTheFirstMessageAndTheModeStays() {
        QVERIFY(screen().press(u"Rewrite"_s));
        auto& turn = m->conversation.ask(u"this text"_s);
        m->flush();
        QVERIFY(!screen().shows(u"Clear mode"_s));
        for (const auto& mode : AppConfig::writingModes())
            QVERIFY(!screen().shows(mode.label));
        QCOMPARE(m->vm().activeMode.value()->label, u"Rewrite"_s);
        turn.end();
        QVERIFY(m->conversation.settle());
        m->flush();
        QVERIFY(!screen().shows(u"Clear mode"_s));
        QVERIFY(screen().click(u"New Chat"_s));
        m->flush();
        QVERIFY(screen().shows(u"Rewrite"_s, QAccessible::Button));
        QVERIFY(!isPressed(u"Rewrite"_s));
        QVERIFY(!screen().shows(u"Clear mode"_s));
    }

    void newChatIsThereWhenThereIsSomethingToLeave_data() {
        QTest::addColumn<bool>("hasMessages");
        QTest::addColumn<bool>("isGenerating");
        QTest::addColumn<bool>("isEnabled");
        QTest::newRow("empty and idle") << false << false << false;
        QTest::newRow("empty and generating") << false << true << true;
        QTest::newRow("messages") << true << false << true;
        QTest::newRow("messages and generating") << true << true << true;
    }
    void newChatIsThereWhenThereIsSomethingToLeave() {
        QFETCH(bool, hasMessages);
        QFETCH(bool, isGenerating);
        QFETCH(bool, isEnabled);
        const auto arrange = [&] {
            m->vm().activeMode = AppConfig::writingModes().first(); // a new chat has none
            if (hasMessages)
                m->vm().messages = {
                    {tellwick::ChatMessage::Role::user, platform::TextSnapshot(u"Hi")}};
            m->vm().isGenerating = isGenerating;
        };
        arrange();
        m->flush();
        QCOMPARE(!screen().find(u"New Chat"_s)->state().disabled, isEnabled);
        QCOMPARE(screen().widget<platform::Button>(u"New Chat"_s)->icon(), u"square.and.pencil"_s);
        QVERIFY(screen().click(u"New Chat"_s));
        QCOMPARE(!m->vm().activeMode.value(), isEnabled);
        arrange();
        m->flush();
        screen().key(Qt::Key_N, Qt::ControlModifier);
        QCOMPARE(!m->vm().activeMode.value(), isEnabled);
        QCOMPARE(m->vm().messages.value().isEmpty(), isEnabled || !hasMessages);
        m->vm().isGenerating = false;
    }

    void newChatKeepsTheDraftAndGivesTheFocusToTheField() {
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        m->flush();
        screen().type("the next");
        screen().widget(u"More"_s)->setFocus();
        screen().key(Qt::Key_N, Qt::ControlModifier);
        m->flush();
        QCOMPARE(m->bubbles(), QStringList());
        QCOMPARE(m->field()->text(), u"the next"_s);
        QVERIFY(m->field()->hasFocus());
        QVERIFY(screen().shows(AppConfig::tagline()));
        QCOMPARE(m->conversation.stored().size(), 1);
        QVERIFY(m->conversation.stored().first().contents.isEmpty());
    }
};

TELLWICK_TEST(ChatViewTests, Widgets)
#include "ChatViewTests.moc"
