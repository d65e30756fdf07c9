// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Label.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QAccessible>

using namespace Qt::StringLiterals;
using platform::Label;
using platform::TextStyle;

class LabelTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;

    /// Where a label's text stands in it.
    static QRectF textRect(Label& label) { return tests::PaintRecorder(label).textRect(); }

private Q_SLOTS:
    void aLineTakesTheSpaceOfItsText() {
        Label label(m_theme, u"Private"_s, TextStyle::Body);
        const auto narrow = label.sizeHint();
        label.setText(u"Private and offline"_s);
        QVERIFY(label.sizeHint().width() > narrow.width());
        QCOMPARE(label.sizeHint().height(), narrow.height());
        label.setIcon(u"cpu"_s);
        QVERIFY(label.sizeHint().width() > narrow.width() + m_theme.symbolSize(TextStyle::Body));
    }

    void nothingOfALineIsElidedAtItsOwnSize() {
        platform::Theme theme;
        for (int pixels = 9; pixels < 40; pixels += 3) {
            QFont font;
            font.setPixelSize(pixels);
            theme.setBodyFont(font);
            Label whole(theme, u"Tellwick"_s, TextStyle::LargeTitle);
            whole.resize(whole.sizeHint());
            QCOMPARE(tests::PaintRecorder(whole).text(), u"Tellwick"_s);
            whole.resize(whole.width() - 8, whole.height());
            QVERIFY(tests::PaintRecorder(whole).text().endsWith(u'\u2026'));
        }
    }

    void wrappedTextGrowsInHeightAsItNarrows() {
        Label label(m_theme, u"one two three four five six seven eight nine ten"_s,
                    TextStyle::Body);
        label.setWrapping(true);
        QVERIFY(label.hasHeightForWidth());
        const auto wide = label.heightForWidth(1000);
        QVERIFY(label.heightForWidth(120) >= 2 * wide);
        QCOMPARE(label.heightForWidth(1000), wide);
        label.setText(u"one\ntwo\nthree"_s);
        QVERIFY(label.heightForWidth(1000) >= 3 * wide - 2);
    }

    void aWordThatIsTooLongForALineIsBroken() {
        Label label(m_theme, QString(200, u'x'), TextStyle::Body);
        label.setWrapping(true);
        const auto line = label.heightForWidth(100000);
        QVERIFY(label.heightForWidth(100) > 5 * line);
    }

    void rightToLeftTextLiesRight() {
        Label label(m_theme, u"שלום"_s, TextStyle::Body);
        label.resize(400, label.sizeHint().height());
        QVERIFY(textRect(label).left() > 300);
        label.setWrapping(true);
        QVERIFY(textRect(label).left() > 300);
        label.setText(u"hello"_s);
        QVERIFY(textRect(label).right() < 100);
        label.setWrapping(false);
        QVERIFY(textRect(label).right() < 100);
    }

    void textLiesWhereItsAlignmentSays() {
        Label label(m_theme, u"hello"_s, TextStyle::Body);
        label.resize(400, label.sizeHint().height());
        label.setAlignment(Qt::AlignHCenter);
        QVERIFY(qAbs(textRect(label).center().x() - 200) <= 2);
        label.setAlignment(Qt::AlignTrailing);
        QVERIFY(textRect(label).right() > 390);
    }

    void aChangeOfTheFontChangesTheSize() {
        platform::Theme theme;
        Label label(theme, u"hello"_s, TextStyle::Body);
        const auto before = label.sizeHint();
        QFont font;
        font.setPixelSize(3 * before.height());
        theme.setBodyFont(font);
        QTRY_VERIFY(label.sizeHint().height() > before.height());
    }

    void aSymbolAloneIsASquareInItsFrameThatIsNotReadOut() {
        Label label(m_theme, {}, TextStyle::Body, platform::ColorRole::Orange);
        label.setIcon(u"cpu"_s, 64);
        const auto side = m_theme.symbolSize(64);
        QCOMPARE(label.sizeHint(), QSize(side, side));
        label.resize(3 * side, side);
        const tests::PaintRecorder painted(label);
        const QRectF middle(side, 0, side, side);
        QVERIFY(painted.hasColor(m_theme.color(platform::ColorRole::Orange), middle));
        for (const auto& part : painted.all())
            QVERIFY(middle.adjusted(-1, -1, 1, 1).contains(part.rect));
        auto* interface = QAccessible::queryAccessibleInterface(&label);
        QCOMPARE(interface->role(), QAccessible::Client);
        QCOMPARE(interface->text(QAccessible::Name), QString());
    }

    void assistiveTechnologyReadsTheText() {
        Label label(m_theme, u"Private"_s, TextStyle::Body);
        auto* interface = QAccessible::queryAccessibleInterface(&label);
        QCOMPARE(interface->role(), QAccessible::StaticText);
        QCOMPARE(interface->text(QAccessible::Name), u"Private"_s);
        label.setText(u"Offline"_s);
        QCOMPARE(interface->text(QAccessible::Name), u"Offline"_s);
        label.setHeading();
        QCOMPARE(interface->role(), QAccessible::Heading);
    }
};

TELLWICK_TEST(LabelTests, Widgets)
#include "LabelTests.moc"
