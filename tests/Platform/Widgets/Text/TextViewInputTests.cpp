// SPDX-License-Identifier: MIT
#include "tests/Platform/Widgets/Text/TextWindow.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>

using namespace Qt::StringLiterals;
using namespace platform;
using tests::TextWindow;

/// What a text view makes of the pointer and of keys.
class TextViewInputTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thePointerSelects() {
        TextWindow f(u"some words here\nand there\nlast");
        f.drag(5, 20);
        QCOMPARE(f.view.selectedText(), u"words here\nand "_s);
        f.drag(10, 5);
        QCOMPARE(f.view.selectedText(), u"words"_s);
        QTest::mouseDClick(&f.view, Qt::LeftButton, {}, f.at(17));
        QCOMPARE(f.view.selectedText(), u"and"_s);
        f.click(17); // the third
        QCOMPARE(f.view.selectedText(), u"and there"_s);
        f.click(5);
        QVERIFY(!f.view.hasSelection());
        f.click(9, Qt::ShiftModifier);
        QCOMPARE(f.view.selectedText(), u"word"_s);
        f.click(0, Qt::ShiftModifier);
        QCOMPARE(f.view.selectedText(), u"some "_s);
    }

    void draggingAfterADoubleClickSelectsWholeWords() {
        TextWindow f(u"some words here");
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

    void theSelectionSurvivesGrowth() {
        TextWindow f;
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

    void theSelectionEndsWhereAShorterTextDoes() {
        TextWindow f(u"some words");
        f.view.select({5, 10});
        f.view.setPlainText(TextSnapshot(u"some wo"));
        QCOMPARE(f.view.selection(), (TextSpan{5, 7}));
        f.view.setPlainText(TextSnapshot(u"some"));
        QVERIFY(!f.view.hasSelection());
    }

    void theSelectionSurvivesMarkdownGrowth() {
        TextWindow f;
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

    void keysSelectAllAndCopy() {
        TextWindow f(u"**some**\nwords");
        QClipboard* clipboard = QGuiApplication::clipboard();
        clipboard->setText(u"before"_s);
        f.view.setFocus();
        QTest::keyClick(&f.view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard->text(), u"before"_s); // nothing is selected
        f.view.select({2, 7});
        QTest::keyClick(&f.view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard->text(), u"me\nwo"_s);
        QTest::keyClick(&f.view, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(f.view.selectedText(), u"some\nwords"_s);
    }

    void otherKeysGoToTheParent() {
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

    void aClickElsewhereDropsTheSelectionAndAMenuDoesNot() {
        TextWindow f(u"some words");
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

    void theContextMenuIsTheParents() {
        struct Parent : QWidget {
            QList<QPoint> asked;
            void contextMenuEvent(QContextMenuEvent* event) override { asked << event->pos(); }
        };
        Theme theme;
        Parent parent;
        TextView view(theme, TextView::Background::Window, &parent);
        view.setGeometry(10, 20, 100, 50);
        view.setPlainText(TextSnapshot(u"some words"));
        view.selectAll();
        QTest::mousePress(&view, Qt::RightButton, {}, {5, 5});
        QContextMenuEvent mouse(QContextMenuEvent::Mouse, {5, 5}, view.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&view, &mouse);
        QCOMPARE(parent.asked, QList<QPoint>{QPoint(15, 25)});
        QVERIFY(view.hasSelection());
    }

    void aClickOnALinkOpensIt() {
        TextWindow f(u"see [the **page**](https://example.org/a) there");
        f.click(5);
        f.click(9);
        f.click(1);
        f.click(14);
        QTest::mouseClick(&f.view, Qt::RightButton, {}, f.at(5));
        // Released elsewhere than pressed: no click.
        QTest::mousePress(&f.view, Qt::LeftButton, {}, f.at(5));
        QTest::mouseRelease(&f.view, Qt::LeftButton, {}, f.at(14));
        QCOMPARE(f.opened, QStringList(2, u"https://example.org/a"_s));
    }

    void aDragOverALinkSelectsIt() {
        TextWindow f(u"see [the page](https://example.org/a) there");
        f.drag(4, 12);
        QCOMPARE(f.view.selectedText(), u"the page"_s);
        QVERIFY(f.opened.isEmpty());
    }

    void aLinkToAnotherSchemeDoesNotOpen() {
        TextWindow f(u"[passwords](file:///etc/passwd) [x](javascript:x) [y](/uri)");
        for (qsizetype i = 0; i < f.view.content().text.size(); ++i)
            f.click(i);
        QVERIFY(f.opened.isEmpty());
        QCOMPARE(f.view.focusPolicy(), Qt::ClickFocus);
    }

    void thePointerShowsALink() {
        TextWindow f(u"see [the page](https://example.org/a) there");
        f.move(f.at(1), Qt::NoButton);
        QCOMPARE(f.view.cursor().shape(), Qt::IBeamCursor);
        f.move(f.at(6), Qt::NoButton);
        QCOMPARE(f.view.cursor().shape(), Qt::PointingHandCursor);
        f.move(f.at(16), Qt::NoButton);
        QCOMPARE(f.view.cursor().shape(), Qt::IBeamCursor);
    }

    void tabGoesFromLinkToLinkAndReturnOpens() {
        TextWindow f(u"[a **b**](http://one) [no](/x) [c](http://two)\n\n<http://three>");
        QWidget::setTabOrder(&f.view, &f.field);
        f.field.setFocus();
        QTest::keyClick(&f.field, Qt::Key_Backtab);
        QVERIFY(f.view.hasFocus());
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(&f.view, Qt::Key_Return);
            QTest::keyClick(&f.view, Qt::Key_Backtab);
        }
        QCOMPARE(f.opened, (QStringList{u"http://three"_s, u"http://two"_s, u"http://one"_s}));
        f.opened.clear();
        f.field.setFocus();
        f.view.setFocus(Qt::TabFocusReason);
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(&f.view, Qt::Key_Return);
            QTest::keyClick(&f.view, Qt::Key_Tab);
        }
        QCOMPARE(f.opened, (QStringList{u"http://one"_s, u"http://two"_s, u"http://three"_s}));
        QVERIFY(f.field.hasFocus());
    }

    void aViewWithoutLinksIsNoTabStop() {
        TextWindow f(u"**bold**");
        QVERIFY(!(f.view.focusPolicy() & Qt::TabFocus));
        f.view.setMarkdown(TextSnapshot(u"**bold** <http://a.example>"));
        QVERIFY(f.view.focusPolicy() & Qt::TabFocus);
        f.view.setMarkdown(TextSnapshot(u"**bold**"));
        QVERIFY(!(f.view.focusPolicy() & Qt::TabFocus));
    }
};

TELLWICK_TEST(TextViewInputTests, Widgets)
#include "TextViewInputTests.moc"
