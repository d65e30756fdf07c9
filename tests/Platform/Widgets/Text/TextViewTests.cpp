// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextView.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStyleHints>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;
using namespace platform;

namespace {

/// A window with one view, and a field beside it that can take the focus.
struct Fixture {
    Theme theme;
    QWidget window;
    TextView view{theme, TextView::Background::Window, &window};
    QLineEdit field{&window};

    explicit Fixture(int width = 400) {
        window.resize(500, 500);
        view.setGeometry(10, 10, width, 300);
        field.setGeometry(10, 350, 200, 30);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("no active window");
    }

    QPoint at(qsizetype character) const {
        return view.flow().characterRect(character).center().toPoint();
    }
    QPoint before(qsizetype character) const {
        const QRectF rect = view.flow().characterRect(character);
        return {static_cast<int>(rect.left()) + 1, static_cast<int>(rect.center().y())};
    }
    void drag(qsizetype from, qsizetype to) {
        QTest::mousePress(&view, Qt::LeftButton, {}, before(from));
        move(before((from + to) / 2));
        move(before(to));
        QTest::mouseRelease(&view, Qt::LeftButton, {}, before(to));
    }
    void move(QPoint point, Qt::MouseButtons buttons = Qt::LeftButton) {
        QMouseEvent event(QEvent::MouseMove, point, view.mapToGlobal(point), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &event);
    }
};

} // namespace

class TextViewTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void plainTextIsShownAsItIs();
    void markdownIsShownStyled();
    void aTextThatGrowsShowsTheWhole();
    void anotherTextReplacesTheFirst();
    void aShortTextTakesNoMoreWidthThanItNeeds();
    void aViewMadeAsWideAsItsLinesKeepsItsHeight();
    void draggingSelects();
    void draggingBackwardsSelects();
    void aDoubleClickSelectsAWord();
    void aTripleClickSelectsAParagraph();
    void draggingAfterADoubleClickSelectsWholeWords();
    void aShiftClickExtendsTheSelection();
    void aClickDropsTheSelection();
    void theSelectionSurvivesGrowth();
    void theSelectionSurvivesMarkdownGrowth();
    void copyPutsTheSelectionOnTheClipboard();
    void copyWithoutASelectionLeavesTheClipboardAlone();
    void selectAllSelectsEverything();
    void otherKeysGoToTheParent();
    void aClickElsewhereDropsTheSelectionAndAMenuDoesNot();
    void theContextMenuIsTheOwners();
    void aClickOnALinkOpensIt();
    void aDragOverALinkSelectsIt();
    void aLinkToAnotherSchemeDoesNotOpen();
    void thePointerShowsALink();
    void tabGoesFromLinkToLinkAndReturnOpens();
    void aViewWithoutLinksIsNoTabStop();
    void growthRepaintsOnlyWhatChanged();
    void aTextWithoutChangeIsNotPaintedAgain();
    void theThemeIsFollowed();
    void assistiveTechnologyReadsTextSelectionAndPlace();
};

void TextViewTests::plainTextIsShownAsItIs() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"**not bold** &amp;"));
    QCOMPARE(f.view.content().text, u"**not bold** &amp;"_s);
    QVERIFY(f.view.content().ranges.empty());
}

void TextViewTests::markdownIsShownStyled() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"**bold** `code`"));
    QCOMPARE(f.view.content(), InlineMarkdown::parse(u"**bold** `code`"));
}

void TextViewTests::aTextThatGrowsShowsTheWhole() {
    Fixture f;
    TextBuilder builder;
    const QString whole = u"One **two\nthree** four.\n\n`five` [six](http://x.example)\n\nseven"_s;
    for (const QChar c : whole) {
        builder.append(QStringView(&c, 1));
        f.view.setMarkdown(builder.text());
        QCOMPARE(f.view.content(), InlineMarkdown::parse(builder.text().view()));
    }
    f.view.setPlainText(builder.text());
    QCOMPARE(f.view.content().text, whole);
    builder.append(u" more");
    f.view.setPlainText(builder.text());
    QCOMPARE(f.view.content().text, whole + u" more"_s);
    f.view.setMarkdown(builder.text());
    QCOMPARE(f.view.content(), InlineMarkdown::parse(builder.text().view()));
}

void TextViewTests::anotherTextReplacesTheFirst() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"a **b** c\n\nd"));
    f.view.setMarkdown(TextSnapshot(u"a **b** d"));
    QCOMPARE(f.view.content(), InlineMarkdown::parse(u"a **b** d"));
    f.view.setMarkdown(TextSnapshot(u""));
    QVERIFY(f.view.content().text.isEmpty());
}

void TextViewTests::aShortTextTakesNoMoreWidthThanItNeeds() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"Hi"));
    const QSize small = f.view.sizeWithin(400);
    QVERIFY(small.width() < 40);
    f.view.setPlainText(TextSnapshot(QString(u"many words "_s.repeated(50))));
    const QSize large = f.view.sizeWithin(400);
    QVERIFY(large.width() > 300 && large.width() <= 400);
    QVERIFY(large.height() > 3 * small.height());
}

void TextViewTests::aViewMadeAsWideAsItsLinesKeepsItsHeight() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(QString(u"many words of any length "_s.repeated(50))));
    for (int width = 50; width < 480; width += 17) {
        const QSize size = f.view.sizeWithin(width);
        f.view.resize(size);
        QCOMPARE(f.view.heightForWidth(size.width()), size.height());
        QCOMPARE(int(f.view.flow().height()), size.height());
    }
    QCOMPARE(f.view.heightForWidth(200), f.view.sizeWithin(200).height());
}

void TextViewTests::draggingSelects() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words here\nand there"));
    f.drag(5, 20);
    QCOMPARE(f.view.selectedText(), u"words here\nand "_s);
}

void TextViewTests::draggingBackwardsSelects() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words here"));
    f.drag(10, 5);
    QCOMPARE(f.view.selectedText(), u"words"_s);
}

void TextViewTests::aDoubleClickSelectsAWord() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words here"));
    QTest::mouseDClick(&f.view, Qt::LeftButton, {}, f.at(7));
    QCOMPARE(f.view.selectedText(), u"words"_s);
}

void TextViewTests::aTripleClickSelectsAParagraph() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"first line\nsome words here\nlast"));
    QTest::mouseDClick(&f.view, Qt::LeftButton, {}, f.at(17));
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(17));
    QCOMPARE(f.view.selectedText(), u"some words here"_s);
}

void TextViewTests::draggingAfterADoubleClickSelectsWholeWords() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words here"));
    QTest::mouseDClick(&f.view, Qt::LeftButton, {}, f.at(7));
    // QTest's double click ends with a release; pressed once more, a drag goes on by words.
    QTest::mousePress(&f.view, Qt::LeftButton, {}, f.at(1));
    QTest::mouseRelease(&f.view, Qt::LeftButton, {}, f.at(1));
    QMouseEvent press(QEvent::MouseButtonDblClick, f.at(7), f.view.mapToGlobal(f.at(7)),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&f.view, &press);
    f.move(f.at(12));
    QCOMPARE(f.view.selectedText(), u"words here"_s);
    f.move(f.at(2));
    QCOMPARE(f.view.selectedText(), u"some words"_s);
}

void TextViewTests::aShiftClickExtendsTheSelection() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words here"));
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.before(5));
    QTest::mouseClick(&f.view, Qt::LeftButton, Qt::ShiftModifier, f.before(10));
    QCOMPARE(f.view.selectedText(), u"words"_s);
    QTest::mouseClick(&f.view, Qt::LeftButton, Qt::ShiftModifier, f.before(0));
    QCOMPARE(f.view.selectedText(), u"some "_s);
}

void TextViewTests::aClickDropsTheSelection() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words here"));
    f.view.selectAll();
    QVERIFY(f.view.hasSelection());
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(2));
    QVERIFY(!f.view.hasSelection());
}

void TextViewTests::theSelectionSurvivesGrowth() {
    Fixture f;
    TextBuilder builder;
    builder.append(u"some words");
    f.view.setPlainText(builder.text());
    f.drag(5, 9);
    QCOMPARE(f.view.selectedText(), u"word"_s);
    for (int i = 0; i < 50; ++i) {
        builder.append(u" and more words\n");
        f.view.setPlainText(builder.text());
        QCOMPARE(f.view.selectedText(), u"word"_s);
    }
    // Also in the middle of a drag.
    QTest::mousePress(&f.view, Qt::LeftButton, {}, f.before(0));
    f.move(f.before(4));
    builder.append(u"!");
    f.view.setPlainText(builder.text());
    QCOMPARE(f.view.selectedText(), u"some"_s);
    f.move(f.before(10));
    QCOMPARE(f.view.selectedText(), u"some words"_s);
    QTest::mouseRelease(&f.view, Qt::LeftButton, {}, f.before(10));
}

void TextViewTests::theSelectionSurvivesMarkdownGrowth() {
    Fixture f;
    TextBuilder builder;
    builder.append(u"**some** words");
    f.view.setMarkdown(builder.text());
    f.view.select({0, 4});
    for (const char16_t* piece : {u" and **", u"bold", u"** and `", u"code`", u"\n\nnext"}) {
        builder.append(piece);
        f.view.setMarkdown(builder.text());
        QCOMPARE(f.view.selectedText(), u"some"_s);
    }
}

void TextViewTests::copyPutsTheSelectionOnTheClipboard() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"**some** words"));
    f.view.setFocus();
    f.view.select({2, 7});
    QTest::keyClick(&f.view, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"me wo"_s);
}

void TextViewTests::copyWithoutASelectionLeavesTheClipboardAlone() {
    Fixture f;
    QGuiApplication::clipboard()->setText(u"before"_s);
    f.view.setPlainText(TextSnapshot(u"text"));
    f.view.setFocus();
    QTest::keyClick(&f.view, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
}

void TextViewTests::selectAllSelectsEverything() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some\nwords"));
    f.view.setFocus();
    QTest::keyClick(&f.view, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(f.view.selectedText(), u"some\nwords"_s);
}

void TextViewTests::otherKeysGoToTheParent() {
    struct Parent : QWidget {
        QString typed;
        void keyPressEvent(QKeyEvent* event) override { typed += event->text(); }
    };
    Theme theme;
    Parent parent;
    TextView view(theme, TextView::Background::Window, &parent);
    view.setPlainText(TextSnapshot(u"text"));
    QTest::keyClicks(&view, u"hi"_s);
    QTest::keyClick(&view, Qt::Key_Return);
    QCOMPARE(parent.typed, u"hi\r"_s);
}

void TextViewTests::aClickElsewhereDropsTheSelectionAndAMenuDoesNot() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words"));
    f.view.setFocus();
    f.view.selectAll();
    QFocusEvent popup(QEvent::FocusOut, Qt::PopupFocusReason);
    QCoreApplication::sendEvent(&f.view, &popup);
    QFocusEvent window(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(&f.view, &window);
    QVERIFY(f.view.hasSelection());
    QTest::mouseClick(&f.field, Qt::LeftButton);
    QVERIFY(!f.view.hasSelection());
}

void TextViewTests::theContextMenuIsTheOwners() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words"));
    f.view.selectAll();
    QContextMenuEvent ignored(QContextMenuEvent::Mouse, {5, 5}, f.view.mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(&f.view, &ignored);
    QList<QPoint> opened;
    f.view.onContextMenu([&](QPoint point) { opened.append(point); });
    QTest::mousePress(&f.view, Qt::RightButton, {}, {5, 5});
    QContextMenuEvent mouse(QContextMenuEvent::Mouse, {5, 5}, f.view.mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(&f.view, &mouse);
    QContextMenuEvent key(QContextMenuEvent::Keyboard, {0, 0}, {0, 0});
    QCoreApplication::sendEvent(&f.view, &key);
    QCOMPARE(opened.size(), 2);
    QCOMPARE(opened[0], f.view.mapToGlobal(QPoint(5, 5)));
    QVERIFY(f.view.rect().contains(f.view.mapFromGlobal(opened[1])));
    QVERIFY(f.view.hasSelection());
}

void TextViewTests::aClickOnALinkOpensIt() {
    Fixture f;
    QList<QUrl> opened;
    f.view.onLinkActivated([&](const QUrl& url) { opened.append(url); });
    f.view.setMarkdown(TextSnapshot(u"see [the **page**](https://example.org/a) there"));
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(5));
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(9));
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(1));
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(14));
    QTest::mouseClick(&f.view, Qt::RightButton, {}, f.at(5));
    // Released elsewhere than pressed: no click.
    QTest::mousePress(&f.view, Qt::LeftButton, {}, f.at(5));
    QTest::mouseRelease(&f.view, Qt::LeftButton, {}, f.at(14));
    QCOMPARE(opened,
             (QList<QUrl>{QUrl(u"https://example.org/a"_s), QUrl(u"https://example.org/a"_s)}));
}

void TextViewTests::aDragOverALinkSelectsIt() {
    Fixture f;
    int opened = 0;
    f.view.onLinkActivated([&](const QUrl&) { ++opened; });
    f.view.setMarkdown(TextSnapshot(u"see [the page](https://example.org/a) there"));
    f.drag(4, 12);
    QCOMPARE(f.view.selectedText(), u"the page"_s);
    QCOMPARE(opened, 0);
}

void TextViewTests::aLinkToAnotherSchemeDoesNotOpen() {
    Fixture f;
    int opened = 0;
    f.view.onLinkActivated([&](const QUrl&) { ++opened; });
    f.view.setMarkdown(
        TextSnapshot(u"[passwords](file:///etc/passwd) [x](javascript:x) [y](/uri)"));
    for (qsizetype i = 0; i < f.view.content().text.size(); ++i)
        QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.at(i));
    QCOMPARE(opened, 0);
    QCOMPARE(f.view.focusPolicy(), Qt::ClickFocus);
}

void TextViewTests::thePointerShowsALink() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"see [the page](https://example.org/a) there"));
    f.move(f.at(1), Qt::NoButton);
    QCOMPARE(f.view.cursor().shape(), Qt::IBeamCursor);
    f.move(f.at(6), Qt::NoButton);
    QCOMPARE(f.view.cursor().shape(), Qt::PointingHandCursor);
    f.move(f.at(16), Qt::NoButton);
    QCOMPARE(f.view.cursor().shape(), Qt::IBeamCursor);
}

void TextViewTests::tabGoesFromLinkToLinkAndReturnOpens() {
    Fixture f;
    QStringList opened;
    f.view.onLinkActivated([&](const QUrl& url) { opened.append(url.host()); });
    f.view.setMarkdown(
        TextSnapshot(u"[a **b**](http://one) [no](/x) [c](http://two)\n\n<http://three>"));
    QWidget::setTabOrder(&f.view, &f.field);
    f.field.setFocus();
    QTest::keyClick(&f.field, Qt::Key_Backtab);
    QVERIFY(f.view.hasFocus());
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&f.view, Qt::Key_Return);
        QTest::keyClick(&f.view, Qt::Key_Backtab);
    }
    QCOMPARE(opened, (QStringList{u"three"_s, u"two"_s, u"one"_s}));
    opened.clear();
    f.field.setFocus();
    f.view.setFocus(Qt::TabFocusReason);
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&f.view, Qt::Key_Return);
        QTest::keyClick(&f.view, Qt::Key_Tab);
    }
    QCOMPARE(opened, (QStringList{u"one"_s, u"two"_s, u"three"_s}));
    QVERIFY(f.field.hasFocus());
}

void TextViewTests::aViewWithoutLinksIsNoTabStop() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"**bold**"));
    QVERIFY(!(f.view.focusPolicy() & Qt::TabFocus));
    f.view.setMarkdown(TextSnapshot(u"**bold** <http://a.example>"));
    QVERIFY(f.view.focusPolicy() & Qt::TabFocus);
    f.view.setMarkdown(TextSnapshot(u"**bold**"));
    QVERIFY(!(f.view.focusPolicy() & Qt::TabFocus));
}

namespace {
/// Counts the painting of a widget and how much of it.
struct PaintWatch : QObject {
    int count = 0;
    QRect painted;
    explicit PaintWatch(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            ++count;
            painted |= static_cast<QPaintEvent*>(event)->rect();
        }
        return false;
    }
};
} // namespace

void TextViewTests::growthRepaintsOnlyWhatChanged() {
    Fixture f;
    TextBuilder builder;
    builder.append(u"first\nsecond\nthird\n");
    f.view.setPlainText(builder.text());
    f.view.repaint();
    QCoreApplication::processEvents();
    PaintWatch watch(&f.view);
    for (int i = 0; i < 100; ++i) {
        builder.append(u"x");
        f.view.setPlainText(builder.text());
    }
    QTRY_VERIFY(watch.count > 0);
    QCOMPARE(watch.count, 1);
    QVERIFY(watch.painted.top() >= int(f.view.flow().characterRect(20).top()));
}

void TextViewTests::aTextWithoutChangeIsNotPaintedAgain() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"some **words**"));
    f.view.repaint();
    QCoreApplication::processEvents();
    PaintWatch watch(&f.view);
    f.view.setMarkdown(TextSnapshot(u"some **words**"));
    QCoreApplication::processEvents();
    QCOMPARE(watch.count, 0);
}

void TextViewTests::theThemeIsFollowed() {
    Fixture f;
    f.view.setPlainText(TextSnapshot(u"some words"));
    const QColor light = f.view.flow().format().text;
    const qreal height = f.view.flow().height();
    f.theme.setDark(true);
    QTRY_VERIFY(f.view.flow().format().text != light);
    QFont large = f.theme.font(TextStyle::Body);
    if (large.pixelSize() > 0)
        large.setPixelSize(large.pixelSize() * 2);
    else
        large.setPointSizeF(large.pointSizeF() * 2);
    f.theme.setBodyFont(large);
    QTRY_VERIFY(f.view.flow().height() > 1.7 * height);
}

void TextViewTests::assistiveTechnologyReadsTextSelectionAndPlace() {
    Fixture f;
    f.view.setMarkdown(TextSnapshot(u"some **bold** words"));
    f.view.select({5, 9});
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&f.view);
    QVERIFY(accessible);
    QCOMPARE(accessible->role(), QAccessible::StaticText);
    QCOMPARE(accessible->text(QAccessible::Name), u"some bold words"_s);
    f.view.setAccessibleName(u"You: some bold words"_s);
    QCOMPARE(accessible->text(QAccessible::Name), u"You: some bold words"_s);
    QAccessibleTextInterface* text = accessible->textInterface();
    QVERIFY(text);
    QCOMPARE(text->characterCount(), 15);
    QCOMPARE(text->text(5, 9), u"bold"_s);
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    QCOMPARE(start, 5);
    QCOMPARE(end, 9);
    QVERIFY(text->attributes(6, &start, &end).contains(u"bold"_s));
    QCOMPARE(start, 5);
    QCOMPARE(end, 9);
    QCOMPARE(text->attributes(1, &start, &end), QString());
    QCOMPARE(end, 5);
    const QRect rect = text->characterRect(3);
    QCOMPARE(text->offsetAtPoint(rect.center()), 3);
    text->setSelection(0, 0, 4);
    QCOMPARE(f.view.selectedText(), u"some"_s);
    f.view.setAccessibleRole(QAccessible::ListItem);
    QCOMPARE(accessible->role(), QAccessible::ListItem);
}

TELLWICK_TEST(TextViewTests, Widgets)
#include "TextViewTests.moc"
