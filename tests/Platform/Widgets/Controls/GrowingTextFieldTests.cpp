// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/GrowingTextField.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QVBoxLayout>

#include <ctime>

using namespace Qt::StringLiterals;
using namespace platform;

namespace {

/// A window that has the field at its lower edge, bound to an owner's text.
struct Fixture {
    struct Window : QWidget {
        QList<int> keys;
        void keyPressEvent(QKeyEvent* event) override {
            if (event->key() < Qt::Key_Shift || event->key() > Qt::Key_Alt)
                keys.append(event->key());
        }
    };
    Theme theme;
    Window window;
    QVBoxLayout layout{&window};
    QLineEdit other;
    GrowingTextField field{theme};
    QString draft;
    int edits = 0;
    int submits = 0;

    Fixture() {
        layout.addWidget(&other);
        layout.addStretch();
        layout.addWidget(&field);
        field.setPlaceholderText(u"Message"_s);
        field.setAccessibleName(u"Message"_s);
        field.onTextEdited([this](const QString& text) {
            ++edits;
            draft = text;
            field.setText(draft); // as an owner's binding does
        });
        field.onSubmit([this] { ++submits; });
        window.resize(400, 400);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("no active window");
        field.setFocus();
    }
    ~Fixture() { layout.removeWidget(&field); }

    /// How many lines there is room for.
    int lines() const {
        const int room = field.sizeHint().height() - 2 * Theme::fieldPaddingY;
        return qRound(room / QFontMetricsF(field.font()).lineSpacing());
    }
    void type(const QString& text) { QTest::keyClicks(&field, text); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&field, key, modifiers);
    }
    /// What is composed and not committed yet.
    QString composition() const { return field.textCursor().block().layout()->preeditAreaText(); }
    void compose(const QString& preedit, const QString& commit = {}) {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QCoreApplication::sendEvent(&field, &event);
    }
    void paste(const QString& text, const QString& html = {}) {
        auto* data = new QMimeData;
        if (!text.isEmpty())
            data->setText(text);
        if (!html.isEmpty())
            data->setHtml(html);
        QGuiApplication::clipboard()->setMimeData(data);
        press(Qt::Key_V, Qt::ControlModifier);
    }
};

/// What this process has used: however busy the machine is.
double processorSeconds() {
    return double(std::clock()) / CLOCKS_PER_SEC;
}

} // namespace

class GrowingTextFieldTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void typingTellsTheOwnerAndKeepsTheCursor() {
        Fixture f;
        f.type(u"ad"_s);
        f.press(Qt::Key_Left);
        f.type(u"bc"_s);
        QCOMPARE(f.draft, u"abcd"_s);
        QCOMPARE(f.edits, 4);
        QCOMPARE(f.field.text(), u"abcd"_s);
        QCOMPARE(f.field.textCursor().position(), 3);
    }

    void whatAKeyDoes_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<int>("submits");
        QTest::addColumn<QString>("text");    // after it, between a and b
        QTest::addColumn<bool>("isLeftOver"); // to the window
        const auto row = [](const char* name, Qt::Key key,
                            Qt::KeyboardModifiers modifiers) -> QTestData& {
            return QTest::newRow(name) << key << modifiers;
        };
        row("Return", Qt::Key_Return, {}) << 1 << u"ab"_s << false;
        row("Enter", Qt::Key_Enter, Qt::KeypadModifier) << 1 << u"ab"_s << false;
        row("Shift-Return", Qt::Key_Return, Qt::ShiftModifier) << 0 << u"a\nb"_s << false;
        row("Alt-Return", Qt::Key_Return, Qt::AltModifier) << 0 << u"a\nb"_s << false;
        row("Control-Return", Qt::Key_Return, Qt::ControlModifier) << 0 << u"ab"_s << true;
        row("Escape", Qt::Key_Escape, {}) << 0 << u"ab"_s << true;
        row("Page Up", Qt::Key_PageUp, {}) << 0 << u"ab"_s << true;
        row("Page Down", Qt::Key_PageDown, {}) << 0 << u"ab"_s << true;
    }
    void whatAKeyDoes() {
        QFETCH(Qt::Key, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(int, submits);
        QFETCH(QString, text);
        QFETCH(bool, isLeftOver);
        Fixture f;
        f.type(u"a"_s);
        f.press(key, modifiers);
        f.type(u"b"_s);
        QCOMPARE(f.submits, submits);
        QCOMPARE(f.draft, text);
        QCOMPARE(f.window.keys, isLeftOver ? QList<int>{key} : QList<int>{});
    }

    void returnWhileComposingCommitsAndDoesNotSubmit() {
        Fixture f;
        f.compose(u"n"_s);
        f.compose(u"\u306b\u307b"_s);
        QVERIFY(!f.composition().isEmpty());
        f.press(Qt::Key_Return);
        QCOMPARE(f.submits, 0);
        QVERIFY(f.composition().isEmpty());
        QCOMPARE(f.draft, u"\u306b\u307b"_s);
        f.press(Qt::Key_Return);
        QCOMPARE(f.submits, 1);
        // The way of input methods that take the key themselves.
        f.compose(u"\u3093"_s);
        f.compose({}, u"\u65e5\u672c"_s);
        QVERIFY(f.composition().isEmpty());
        QCOMPARE(f.submits, 1);
        QCOMPARE(f.draft, u"\u306b\u307b\u65e5\u672c"_s);
        f.compose(u"\u306b"_s);
        f.press(Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(f.submits, 1);
        QCOMPARE(f.draft, u"\u306b\u307b\u65e5\u672c\u306b\n"_s);
    }

    void aCompositionIsNoTextUntilCommittedAndNotDisturbedByTheSameText() {
        Fixture f;
        f.type(u"ab"_s);
        f.field.moveCursor(QTextCursor::Left);
        f.compose(u"\u306b"_s);
        f.field.setText(f.draft);
        QCOMPARE(f.composition(), u"\u306b"_s);
        QCOMPARE(f.field.text(), u"ab"_s); // not before it is committed
        f.compose({});
        QVERIFY(f.composition().isEmpty());
        QCOMPARE(f.draft, u"ab"_s);
        f.compose(u"\u306b"_s);
        f.compose({}, u"x"_s);
        QCOMPARE(f.draft, u"axb"_s);
        // Another text ends it.
        f.compose(u"\u306b"_s);
        f.field.setText({});
        QVERIFY(f.composition().isEmpty());
        f.press(Qt::Key_Return);
        QCOMPARE(f.submits, 1);
    }

    void tabLeavesTheField() {
        Fixture f;
        f.press(Qt::Key_Tab);
        QVERIFY(!f.field.hasFocus());
        QCOMPARE(f.field.text(), QString());
        f.field.setFocus();
        f.press(Qt::Key_Backtab);
        QVERIFY(!f.field.hasFocus());
    }

    void aFieldThatScrollsKeepsThePageKeys() {
        Fixture f;
        f.field.setText(u"a\n"_s.repeated(30));
        QTRY_VERIFY(f.field.height() > 60 && f.field.verticalScrollBar()->maximum() > 0);
        f.press(Qt::Key_PageUp);
        QVERIFY(f.window.keys.isEmpty());
        QVERIFY(f.field.textCursor().blockNumber() < 29);
    }

    void theFieldGrowsToSixLinesThenScrollsAndShrinksAgain() {
        Fixture f;
        QTRY_COMPARE(f.field.height(), f.field.sizeHint().height());
        const int one = f.field.height();
        const int line = one - 2 * Theme::fieldPaddingY;
        QVERIFY(qAbs(line - QFontMetricsF(f.field.font()).lineSpacing()) <= 1);
        for (int lines = 2; lines <= 9; ++lines) {
            f.press(Qt::Key_Return, Qt::ShiftModifier);
            const int shown = std::min(lines, 6);
            QCOMPARE(f.lines(), shown);
            QTRY_COMPARE(f.field.height(), f.field.sizeHint().height());
            QVERIFY2(qAbs(f.field.height() - one - (shown - 1) * line) <= shown,
                     qPrintable(u"%1 lines are %2 high"_s.arg(lines).arg(f.field.height())));
            QCOMPARE(f.field.verticalScrollBar()->maximum() > 0, lines > 6);
            if (lines <= 6)
                QCOMPARE(f.field.verticalScrollBar()->value(), 0); // all of them are seen
            QVERIFY(f.field.viewport()->rect().contains(f.field.cursorRect().center()));
        }
        f.field.setText({});
        QTRY_COMPARE(f.field.height(), one);
    }

    void wrappedLinesCountAsLines() {
        Fixture f;
        f.field.setText(u"some words that fit into one line"_s);
        QTRY_COMPARE(f.lines(), 1);
        f.window.resize(200, 400);
        QTRY_VERIFY(f.lines() > 1);
        QTRY_COMPARE(f.field.height(), f.field.sizeHint().height());
        f.field.setText(QString(10000, u'x'));
        QCOMPARE(f.lines(), 6);
    }

    void settingATextTellsNobodyAndPutsTheCursorAtItsEnd() {
        Fixture f;
        f.field.setText(u"10\u00a0km\u2009\u3000\t."_s);
        QCOMPARE(f.edits, 0);
        QCOMPARE(f.field.text(), u"10\u00a0km\u2009\u3000\t."_s); // odd spaces survive
        QVERIFY(f.field.textCursor().atEnd());
        f.type(u"!"_s);
        QCOMPARE(f.draft, u"10\u00a0km\u2009\u3000\t.!"_s);
    }

    void settingAnEqualTextKeepsCursorSelectionAndUndo() {
        Fixture f;
        f.type(u"one two"_s);
        QTextCursor cursor = f.field.textCursor();
        cursor.setPosition(1);
        cursor.setPosition(3, QTextCursor::KeepAnchor);
        f.field.setTextCursor(cursor);
        f.field.setText(u"one two"_s);
        QCOMPARE(f.field.textCursor().selectedText(), u"ne"_s);
        QVERIFY(f.field.document()->isUndoAvailable());
    }

    void undoTakesBackAndRedoBringsBack() {
        Fixture f;
        f.type(u"hello"_s);
        f.press(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(f.draft, QString());
        f.press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(f.draft, u"hello"_s);
    }

    void whateverIsPastedBecomesPlainText_data() {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("rich text")
            << u"<b style='font-size:40px;color:red'>bold</b>"_s << u"bold"_s << u"bold"_s;
        QTest::newRow("HTML alone")
            << u"<p>one <i>two</i></p><p>three</p>"_s << QString() << u"one two\nthree"_s;
        QTest::newRow("line breaks") << QString() << u"a\r\nb\rc\nd\u2028e"_s << u"a\nb\nc\nd\ne"_s;
        QTest::newRow("a NUL") << QString() << u"a"_s + QChar::Null + u"b"_s << u"ab"_s;
    }
    void whateverIsPastedBecomesPlainText() {
        QFETCH(QString, html);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        Fixture f;
        f.paste(text, html);
        QCOMPARE(f.draft, expected);
        QTextCursor cursor = f.field.textCursor();
        cursor.movePosition(QTextCursor::Left);
        QVERIFY(!cursor.charFormat().hasProperty(QTextFormat::FontWeight));
        QCOMPARE(f.lines(), std::min(6, int(expected.count(u'\n')) + 1));
    }

    void aVeryLongPasteAndTypingAfterItAreQuick_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("lines") << u"A line of a long text that somebody pastes.\n"_s.repeated(
            20000);
        QTest::newRow("no blanks") << QString(300'000, u'x');
        QTest::newRow("paragraphs") << (u"many words "_s.repeated(100) + u'\n').repeated(900);
    }
    void aVeryLongPasteAndTypingAfterItAreQuick() {
        QFETCH(QString, text);
        Fixture f;
        double before = processorSeconds();
        f.paste(text);
        f.field.repaint();
        const double spent = processorSeconds() - before;
        QCOMPARE(f.draft.size(), text.size());
        QVERIFY2(spent < 2, qPrintable(QString::number(spent)));
        if (!text.contains(u'\n'))
            return; // a key in a line of that length takes its time
        before = processorSeconds();
        for (int i = 0; i < 10; ++i) {
            f.press(Qt::Key_X);
            f.field.repaint();
        }
        const double each = (processorSeconds() - before) / 10;
        QVERIFY2(each < 0.2, qPrintable(QString::number(each)));
    }

    void linesBreakBetweenWordsAgainAfterALongWordIsGone() {
        Fixture f;
        const auto wrap = f.field.wordWrapMode();
        f.field.setText(QString(5000, u'x'));
        QVERIFY(f.field.wordWrapMode() != wrap);
        f.press(Qt::Key_A, Qt::ControlModifier);
        f.type(u"word"_s);
        QCOMPARE(f.field.wordWrapMode(), wrap);
        f.field.setText(u"many words "_s.repeated(1000));
        QCOMPARE(f.field.wordWrapMode(), wrap);
    }

    void rightToLeftTextLiesRight() {
        Fixture f;
        f.field.setText(u"\u05e9\u05dc\u05d5\u05dd"_s);
        f.field.moveCursor(QTextCursor::Start);
        QTRY_VERIFY(f.field.cursorRect().left() > f.field.viewport()->width() / 2);
        f.field.setText(u"left"_s);
        f.field.moveCursor(QTextCursor::Start);
        QTRY_VERIFY(f.field.cursorRect().left() < 5);
    }

    void assistiveTechnologyFindsAnEditableTextByItsName() {
        Fixture f;
        f.type(u"hello"_s);
        auto* accessible = QAccessible::queryAccessibleInterface(&f.field);
        QCOMPARE(accessible->text(QAccessible::Name), u"Message"_s);
        QCOMPARE(accessible->role(), QAccessible::EditableText);
        QVERIFY(accessible->state().editable);
        QCOMPARE(accessible->textInterface()->text(0, 5), u"hello"_s);
    }

    void theThemeIsFollowed() {
        Fixture f;
        const QColor light = f.field.palette().color(QPalette::Text);
        const int height = f.field.sizeHint().height();
        f.theme.setDark(true);
        QTRY_VERIFY(f.field.palette().color(QPalette::Text) != light);
        QFont large;
        large.setPixelSize(3 * height);
        f.theme.setBodyFont(large);
        QTRY_VERIFY(f.field.sizeHint().height() > height + 10);
    }
};

TELLWICK_TEST(GrowingTextFieldTests, Widgets)
#include "GrowingTextFieldTests.moc"
