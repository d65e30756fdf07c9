// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Painting.h"
#include "Platform/Widgets/Overlays/Panel.h"
#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Interface/MessageBubble.h"
#include "tests/Tellwick/Interface/TestWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QMimeData>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using platform::AttributedString;
using platform::ColorRole;
using platform::TextView;
using platform::Theme;
using tellwick::ChatMessage;
using tellwick::MessageBubble;
using Role = ChatMessage::Role;

namespace {

/// A window with one bubble in it.
struct Fixture : tests::TestWindow {
    Fixture(Role role, QStringView content, int width = 500)
        : TestWindow({width, 600})
        , message(role, platform::TextSnapshot(content))
        , bubble(new MessageBubble(environment, message, window.get())) {
        fit(width);
        window->show();
    }

    void fit(int width) { bubble->setGeometry(0, 0, width, bubble->heightForWidth(width)); }

    /// Shows another content, as the list does.
    void say(QStringView content) {
        message.content = platform::TextSnapshot(content);
        bubble->setMessage(message);
        fit(bubble->width());
    }

    TextView* text() const { return bubble->findChild<TextView*>(); }

    /// The middle of a character, in the window's coordinates.
    QPoint at(qsizetype character) const {
        return text()->mapTo(window.get(),
                             text()->flow().characterRect(character).center().toPoint());
    }

    /// The colour that the bubble is filled with.
    QColor bubbleColor() const {
        const tests::PaintRecorder painted(*bubble);
        const auto& fill = painted.all().front();
        return fill.rect == QRectF(bubble->bubbleRect()) ? fill.color : QColor();
    }

    /// The colour that all text is painted in; invalid if there is none or more than one.
    QColor textColor() const {
        QList<QColor> found;
        const tests::PaintRecorder painted(*bubble);
        for (const auto& part : painted.all())
            if (!part.text.isEmpty() && !found.contains(part.color))
                found.append(part.color);
        return found.size() == 1 ? found.first() : QColor();
    }

    ChatMessage message;
    MessageBubble* bubble;
};

} // namespace

class MessageBubbleTests final : public QObject {
    Q_OBJECT

    static void addRoles() {
        QTest::addColumn<Role>("role");
        QTest::newRow("the user's") << Role::user;
        QTest::newRow("the model's") << Role::assistant;
    }

private Q_SLOTS:
    void theTextIsShownByRole_data() {
        QTest::addColumn<Role>("role");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("style"); // of the one styled part; none: 0

        const auto plain = [](Role role, const QString& content) {
            QTest::newRow(qPrintable(content)) << role << content << content << 0 << 0 << 0;
        };
        plain(Role::user, u"say **this** now"_s);
        plain(Role::user, u"__a__ *b* `c` [d](http://e.example) ~~f~~"_s);
        plain(Role::user, u"<b>x</b> &amp; %1 %n"_s);
        plain(Role::user, u"  a  \n\n\tb "_s);
        plain(Role::assistant, u"Just a text."_s);
        plain(Role::assistant, u"# Title\n- item"_s);
        plain(Role::assistant, u"1. one\n2. two"_s);
        plain(Role::assistant, u"> so they say"_s);
        plain(Role::assistant, u"snake_case"_s);
        plain(Role::assistant, u"a _word_ here"_s);
        plain(Role::assistant, u"~~x~~ &amp; <b> \\# ]"_s);
        plain(Role::assistant, u"an [open bracket"_s);
        plain(Role::assistant, u"an **open end"_s);
        plain(Role::assistant, u"an `open end"_s);
        plain(Role::assistant, u"under__score"_s);
        plain(Role::assistant, u"2 * 3"_s);
        const auto styled = [](const QString& content, const QString& shown, int start, int length,
                               AttributedString::Style style) {
            QTest::newRow(qPrintable(content + u" of the model"_s))
                << Role::assistant << content << shown << start << length << int(style);
        };
        const auto strong = AttributedString::Strong;
        const auto emphasis = AttributedString::Emphasis;
        styled(u"say **this** now"_s, u"say this now"_s, 4, 4, strong);
        styled(u"say __this__ now"_s, u"say this now"_s, 4, 4, strong);
        styled(u"say *this*"_s, u"say this"_s, 4, 4, emphasis);
        styled(u"2 * _word_"_s, u"2 * word"_s, 4, 4, emphasis);
        styled(u"# Title\n- item `code`"_s, u"# Title\n- item code"_s, 15, 4,
               AttributedString::Code);
        styled(u"* ~~gone~~"_s, u"* gone"_s, 2, 4, AttributedString::Strikethrough);
        styled(u"[here](https://a.example) it is"_s, u"here it is"_s, 0, 4, AttributedString::Link);
        styled(u"  a  \n\n\tb  **c** "_s, u"  a  \n\n\tb  c "_s, 11, 1, strong);
        styled(u"> a\n---\n**b**"_s, u"> a\n---\nb"_s, 8, 1, strong);
    }
    void theTextIsShownByRole() {
        QFETCH(Role, role);
        QFETCH(QString, content);
        QFETCH(QString, shown);
        QFETCH(int, start);
        QFETCH(int, length);
        QFETCH(int, style);
        const Fixture f(role, content);
        const AttributedString& text = f.text()->content();
        QCOMPARE(text.text, shown);
        if (style == 0) {
            QVERIFY(text.ranges.empty());
            return;
        }
        QCOMPARE(text.ranges.size(), std::size_t(1));
        QCOMPARE(text.ranges[0].start, qsizetype(start));
        QCOMPARE(text.ranges[0].length, qsizetype(length));
        QCOMPARE(int(text.ranges[0].styles), style);
    }

    void theUsersBubbleStandsRightInWhiteOnTheAccent() {
        Fixture f(Role::user, u"a **word**");
        for (const bool isDark : {false, true}) {
            f.desktop.theme.setDark(isDark);
            platform::flushObservers(f.window.get());
            const QRect bubble = f.bubble->bubbleRect();
            QCOMPARE(bubble.right(), f.bubble->width() - 1);
            QCOMPARE(f.bubbleColor(), f.desktop.theme.color(ColorRole::AccentFill));
            QCOMPARE(f.textColor(), QColor(Qt::white));
        }
    }

    void theModelsBubbleStandsLeftInThePrimaryColourOnGrey() {
        Fixture f(Role::assistant, u"a **word**");
        const Theme& theme = f.desktop.theme;
        QCOMPARE(f.bubble->bubbleRect().left(), 0);
        QCOMPARE(f.bubbleColor(),
                 platform::withOpacity(theme.color(ColorRole::SecondaryLabel), 0.15));
        QCOMPARE(f.textColor(), theme.color(ColorRole::Label));
    }

    void aShortTextsBubbleHugsIt() {
        const Fixture f(Role::assistant, u"Hi");
        const QRect bubble = f.bubble->bubbleRect();
        const QRectF first = f.text()->flow().characterRect(0).translated(f.text()->pos());
        const QRectF last = f.text()->flow().characterRect(1).translated(f.text()->pos());
        QCOMPARE(first.left(), bubble.left() + 12.0);
        QCOMPARE(first.top(), bubble.top() + 8.0);
        QVERIFY(std::abs(last.right() + 12 - bubble.right()) <= 2);
        QVERIFY(bubble.width() < 100);
        QCOMPARE(bubble.height(), f.bubble->height());
    }

    void aLongTextWrapsAndLeavesSixtyPixelsOnTheOtherSide_data() { addRoles(); }
    void aLongTextWrapsAndLeavesSixtyPixelsOnTheOtherSide() {
        QFETCH(Role, role);
        const int line = Fixture(role, u"x").text()->height();
        for (const QString& content : {u"word "_s.repeated(100), u"x"_s.repeated(1000)})
            for (const int width : {320, 500, 668}) {
                const Fixture f(role, content, width);
                const QRect bubble = f.bubble->bubbleRect();
                const int free = role == Role::user ? bubble.left() : width - 1 - bubble.right();
                QVERIFY(free >= 60);
                QVERIFY(free < 60 + 60); // not much more: only what no further word fits into
                QVERIFY(f.text()->height() >= 3 * line);
            }
    }

    void lineBreaksMakeLines() {
        const int one = Fixture(Role::user, u"a").text()->height();
        QCOMPARE(Fixture(Role::user, u"a\nb\nc").text()->height(), 3 * one);
        QCOMPARE(Fixture(Role::assistant, u"a\n\n**c**").text()->height(), 3 * one);
    }

    /// Its letters stand under those of other paragraphs, whatever of it has come.
    void aBlockOfCodeHasRoomAtItsSides() {
        Fixture f(Role::assistant, u"before, and longer than that\n```\ncode");
        const auto letter = [&](QChar character) {
            const qsizetype at = f.text()->content().text.indexOf(character);
            return f.text()->flow().characterRect(at).translated(f.text()->pos());
        };
        const QRectF before = letter(u'b');
        const QRectF code = letter(u'c');
        QCOMPARE(before.left(), f.bubble->bubbleRect().left() + 12.0);
        f.say(u"before, and longer than that\n```\ncode\n```\nend");
        QCOMPARE(letter(u'b'), before);
        QCOMPARE(letter(u'c'), code);
        QCOMPARE(code.left(), before.left());
        const tests::PaintRecorder painted(*f.bubble);
        const QColor color = f.desktop.theme.color(ColorRole::Field);
        const auto isBehind = [&](const tests::PaintRecorder::Painted& shape) {
            return shape.color == color && shape.rect.contains(code.center());
        };
        const auto shape = std::ranges::find_if(painted.all(), isBehind);
        QVERIFY(shape != painted.all().end());
        const QRectF bubble = f.bubble->bubbleRect();
        QVERIFY(shape->rect.left() <= code.left() - 2.5);
        QVERIFY(shape->rect.left() > bubble.left() + 2.5);
        QVERIFY(std::abs(shape->rect.left() - bubble.left() -
                         (bubble.right() - shape->rect.right())) <= 1);
    }

    void anEmptyReplyIsABlankBubbleOfOneLineWithoutAMenu() {
        Fixture f(Role::assistant, u"");
        const QRect empty = f.bubble->bubbleRect();
        QCOMPARE(f.text()->content().text, u" "_s);
        QVERIFY(empty.width() > 2 * 12);
        f.screen().clickAt(empty.center(), Qt::RightButton);
        QVERIFY(!f.overlays->isPresenting());
        f.say(u"x");
        QCOMPARE(f.bubble->bubbleRect().height(), empty.height());
        f.screen().clickAt(empty.center(), Qt::RightButton);
        QVERIFY(f.overlays->isPresenting());
    }

    void aMessagesMenuHasTheOneEntryCopy_data() { addRoles(); }
    void aMessagesMenuHasTheOneEntryCopy() {
        QFETCH(Role, role);
        Fixture f(role, u"Some text");
        const QRect bubble = f.bubble->bubbleRect();
        // On the text, and on the background beside it.
        for (const QPoint at : {bubble.center(), QPoint(bubble.left() + 5, bubble.center().y())}) {
            f.screen().clickAt(at, Qt::RightButton);
            QVERIFY(f.overlays->isPresenting());
            QCOMPARE(f.screen().names(QAccessible::MenuItem), QStringList{u"Copy"_s});
            f.screen().key(Qt::Key_Escape);
            QVERIFY(!f.overlays->isPresenting());
        }
        // By the key for it, in the middle.
        QContextMenuEvent key(QContextMenuEvent::Keyboard, {0, 0}, {0, 0});
        QCoreApplication::sendEvent(f.text(), &key);
        QVERIFY(f.overlays->isPresenting());
        constexpr int around = platform::Shadow::extent;
        const QRect menu = f.overlays->top()->geometry().adjusted(around, around, -around, -around);
        QVERIFY(menu.contains(bubble.translated(f.bubble->pos()).center()));
        f.screen().key(Qt::Key_Escape);
        // The free side of the row is none of the bubble's.
        f.screen().clickAt(
            {role == Role::user ? bubble.left() / 2 : bubble.right() + 100, bubble.center().y()},
            Qt::RightButton);
        QVERIFY(!f.overlays->isPresenting());
    }

    void copyPutsTheRawSourceOfThatMomentOnThePasteboardInPlaceOfWhatWasThere() {
        Fixture f(Role::assistant, u"# A");
        auto* before = new QMimeData;
        before->setText(u"before"_s);
        before->setHtml(u"<b>before</b>"_s);
        QGuiApplication::clipboard()->setMimeData(before);
        f.screen().clickAt(f.bubble->bubbleRect().center(), Qt::RightButton);
        f.say(u"# A\n**bold** [x](http://a.example)  ");
        QVERIFY(f.screen().click(u"Copy"_s));
        QVERIFY(!f.overlays->isPresenting());
        QCOMPARE(QGuiApplication::clipboard()->text(), u"# A\n**bold** [x](http://a.example)  "_s);
        QVERIFY(!QGuiApplication::clipboard()->mimeData()->hasHtml());
    }

    void thePointerSelectsText_data() { addRoles(); }
    void thePointerSelectsText() {
        QFETCH(Role, role);
        Fixture f(role, u"One two three");
        QWindow* handle = f.window->windowHandle();
        QTest::mousePress(handle, Qt::LeftButton, {}, f.at(4) - QPoint(2, 0));
        QTest::mouseMove(handle, f.at(5));
        QTest::mouseMove(handle, f.at(7));
        QTest::mouseRelease(handle, Qt::LeftButton, {}, f.at(7) - QPoint(1, 0));
        QCOMPARE(f.text()->selectedText(), u"two"_s);
    }

    void aReplyIsStyledFromItsFirstMarkerOn() {
        Fixture f(Role::assistant, u"");
        f.say(u"A ");
        QCOMPARE(f.text()->content().text, u"A "_s);
        f.say(u"A **bol");
        QCOMPARE(f.text()->content().text, u"A **bol"_s);
        f.say(u"A **bold**");
        QCOMPARE(f.text()->content().text, u"A bold"_s);
        QCOMPARE(f.text()->content().ranges.size(), std::size_t(1));
        // Another text in place of the reply, as a failure gives it, and a shorter one.
        f.say(u"Error: no");
        QCOMPARE(f.text()->content().text, u"Error: no"_s);
        QVERIFY(f.text()->content().ranges.empty());
    }

    void anAddressOpensOnAClickAndNothingElseDoes() {
        Fixture f(Role::assistant, u"[web](https://a.example/b) [mail](mailto:a@b.example) "
                                   u"[file](file:///etc/passwd) [code](javascript:alert(1)) "
                                   u"![picture](http://c.example/p.png)");
        const QString shown = f.text()->content().text;
        for (const QString& word : {u"web"_s, u"mail"_s, u"file"_s, u"code"_s})
            f.screen().clickAt(f.at(shown.indexOf(word) + 1));
        QCOMPARE(f.desktop.opened,
                 (QList<QUrl>{QUrl(u"https://a.example/b"_s), QUrl(u"mailto:a@b.example"_s)}));
    }

    void itIsReadOutWithItsSpeaker_data() {
        QTest::addColumn<Role>("role");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("name");
        QTest::newRow("the user") << Role::user << u"Say **this**"_s << u"You: Say **this**"_s;
        QTest::newRow("the model")
            << Role::assistant << u"**This**\n`x`"_s << u"Tellwick: This\nx"_s;
        QTest::newRow("plain") << Role::assistant << u"# x_y"_s << u"Tellwick: # x_y"_s;
        QTest::newRow("a NUL") << Role::user << QString(u"a"_s + QChar(0) + u'b')
                               << u"You: a\ufffdb"_s;
        QTest::newRow("nothing yet") << Role::assistant << QString() << u"Tellwick: "_s;
    }
    void itIsReadOutWithItsSpeaker() {
        QFETCH(Role, role);
        QFETCH(QString, content);
        QFETCH(QString, name);
        Fixture f(role, u"before");
        f.say(content);
        QVERIFY(f.screen().shows(name, QAccessible::ListItem));
        QCOMPARE(MessageBubble::spokenText(f.message), name); // far from what is visible
    }
};

TELLWICK_TEST(MessageBubbleTests, Widgets)
#include "MessageBubbleTests.moc"
