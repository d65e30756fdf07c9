// SPDX-License-Identifier: MIT
// What the fields to write in look like.
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/GrowingTextField.h"
#include "Platform/Widgets/Controls/LineField.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QTextBlock>

using namespace Qt::StringLiterals;
using namespace platform;

class FieldLooksTests : public QObject {
    Q_OBJECT

    Theme m_theme;

private Q_SLOTS:
    void aPlaceholderIsQuiet() {
        GrowingTextField field(m_theme);
        LineField line(m_theme, u"Find"_s);
        for (const QWidget* each : std::initializer_list<QWidget*>{&field, &line})
            QCOMPARE(each->palette().color(QPalette::PlaceholderText),
                     m_theme.color(ColorRole::TertiaryLabel));
        QCOMPARE(line.placeholderText(), u"Find"_s);
        QCOMPARE(line.accessibleName(), u"Find"_s);
    }

    void aLineFollowsTheTheme() {
        Theme theme;
        LineField line(theme, u"Find"_s);
        const int height = line.sizeHint().height();
        theme.setZoom(2);
        theme.setDark(true);
        flushObservers(&line);
        QVERIFY(line.sizeHint().height() > height * 4 / 3);
        QCOMPARE(line.palette().color(QPalette::Text), theme.color(ColorRole::Label));
    }

    void aFieldHasNoMenuOfTheToolkits() {
        QWidget window;
        GrowingTextField field(m_theme);
        field.setParent(&window);
        LineField line(m_theme, u"Find"_s, &window);
        window.show();
        for (QWidget* each : std::initializer_list<QWidget*>{field.viewport(), &field, &line}) {
            const auto reason =
                each == &field ? QContextMenuEvent::Keyboard : QContextMenuEvent::Mouse;
            QContextMenuEvent event(reason, {5, 5}, each->mapToGlobal(QPoint(5, 5)));
            QCoreApplication::sendEvent(each, &event);
            QVERIFY(!QApplication::activePopupWidget());
        }
    }

    void onlyAClickElsewhereDropsTheSelectionOfALine() {
        QWidget window;
        LineField line(m_theme, u"Find"_s, &window);
        line.setText(u"some words"_s);
        const auto selectedAfter = [&](QEvent::Type type, Qt::FocusReason reason) {
            line.setSelection(5, 5);
            QFocusEvent event(type, reason);
            QCoreApplication::sendEvent(&line, &event);
            return line.selectedText();
        };
        for (const auto kept : {Qt::TabFocusReason, Qt::BacktabFocusReason, Qt::OtherFocusReason,
                                Qt::PopupFocusReason, Qt::ActiveWindowFocusReason}) {
            QCOMPARE(selectedAfter(QEvent::FocusOut, kept), u"words"_s);
            QCOMPARE(selectedAfter(QEvent::FocusIn, kept), u"words"_s);
        }
        QCOMPARE(selectedAfter(QEvent::FocusOut, Qt::MouseFocusReason), QString());
        // Nor does a key select what was not.
        QFocusEvent in(QEvent::FocusIn, Qt::TabFocusReason);
        QCoreApplication::sendEvent(&line, &in);
        QVERIFY(!line.hasSelectedText());
    }

    void theBorderOfAFieldIsSeenWhereMoreContrastIsWanted() {
        Theme theme;
        GrowingTextField field(theme);
        LineField line(theme, u"Find"_s);
        theme.setIncreasedContrast(true);
        for (QWidget* each : std::initializer_list<QWidget*>{&field, &line}) {
            flushObservers(each);
            const tests::PaintRecorder painted(*each);
            QVERIFY(painted.hasColor(theme.color(ColorRole::FieldBorder), each->rect()));
        }
    }

    void emojiOfAFieldTakeTheFontForEmoji() {
        const QString text = u"a \U0001f600 b"_s;
        QList<QTextLayout::FormatRange> expected;
        m_theme.emojiFont().addFormats(text, expected);
        if (expected.isEmpty())
            QSKIP("no font for emoji is installed");
        GrowingTextField field(m_theme);
        field.setText(text);
        const auto formats = field.document()->firstBlock().layout()->formats();
        QCOMPARE(formats.size(), expected.size());
        QCOMPARE(formats.first().start, expected.first().start);
        QCOMPARE(formats.first().length, expected.first().length);
        QCOMPARE(formats.first().format.fontFamilies(), expected.first().format.fontFamilies());
        QCOMPARE(field.text(), text);
    }
};

TELLWICK_TEST(FieldLooksTests, Widgets)
#include "FieldLooksTests.moc"
