// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/EmojiFont.h"
#include "tests/support/TestMain.h"

#include <QGlyphRun>
#include <QRawFont>

using namespace Qt::StringLiterals;
using platform::EmojiFont;

/// Emoji are drawn by the font for emoji, whatever the text's own font holds.
class EmojiFontTests : public QObject {
    Q_OBJECT

    /// The families that draw a text, in alphabetical order.
    QStringList familiesOf(const QString& text) const {
        QTextLayout layout(text);
        QList<QTextLayout::FormatRange> formats;
        font.addFormats(text, formats);
        layout.setFormats(formats);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        QStringList families;
        for (const QGlyphRun& run : layout.glyphRuns())
            families << run.rawFont().familyName();
        families.removeDuplicates();
        families.sort();
        return families;
    }

    const EmojiFont font;

private Q_SLOTS:
    void everyEmojiIsDrawnByOneFont_data() {
        QTest::addColumn<QString>("emoji");
        QTest::newRow("a face") << u"\U0001f600"_s;
        QTest::newRow("a sign that text fonts have, too") << u"\u263a\ufe0f"_s;
        QTest::newRow("a heart") << u"\u2764\ufe0f"_s;
        QTest::newRow("a keycap") << u"1\ufe0f\u20e3"_s;
        QTest::newRow("a flag") << u"\U0001f1e9\U0001f1ea"_s;
        QTest::newRow("a family") << u"\U0001f469\u200d\U0001f469\u200d\U0001f467"_s;
    }

    void everyEmojiIsDrawnByOneFont() {
        QFETCH(const QString, emoji);
        const QStringList usual = familiesOf(u"\U0001f600"_s);
        QCOMPARE(usual.size(), 1);
        if (!QRawFont::fromFont(QFont(usual.first())).supportsCharacter(0x20e3U))
            QSKIP("no font for emoji is installed");
        QCOMPARE(familiesOf(emoji), usual);
    }

    void otherTextHasNoFormat() {
        QList<QTextLayout::FormatRange> formats;
        font.addFormats(u"A 1 \u2764 \u4e2d", formats);
        QVERIFY(formats.isEmpty());
    }
};

TELLWICK_TEST(EmojiFontTests, Widgets)
#include "EmojiFontTests.moc"
