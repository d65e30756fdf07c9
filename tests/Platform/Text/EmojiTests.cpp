// SPDX-License-Identifier: MIT
#include "Platform/Text/Emoji.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::EmojiRun;
using platform::emojiRuns;

/// Which characters of a text are drawn as emoji.
class EmojiTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyKindOfEmojiIsOneRun_data() {
        QTest::addColumn<QString>("emoji");
        QTest::newRow("a face") << u"\U0001f600"_s;
        QTest::newRow("a sign whose presentation is an emoji") << u"\u231a"_s;
        QTest::newRow("a letter-like sign with the emoji selector") << u"\u2764\ufe0f"_s;
        QTest::newRow("copyright with the emoji selector") << u"\u00a9\ufe0f"_s;
        QTest::newRow("a keycap") << u"1\ufe0f\u20e3"_s;
        QTest::newRow("a keycap without the selector") << u"#\u20e3"_s;
        QTest::newRow("a hand with a skin tone") << u"\U0001f44d\U0001f3fd"_s;
        QTest::newRow("a sign with a skin tone") << u"\u261d\U0001f3fd"_s;
        QTest::newRow("a family") << u"\U0001f469\u200d\U0001f469\u200d\U0001f467"_s;
        QTest::newRow("a joined sign") << u"\U0001f468\u200d\u2695\ufe0f"_s;
        QTest::newRow("a heart on fire") << u"\u2764\ufe0f\u200d\U0001f525"_s;
        QTest::newRow("a flag") << u"\U0001f1e9\U0001f1ea"_s;
        QTest::newRow("a flag of a region")
            << u"\U0001f3f4\U000e0067\U000e0062\U000e0065\U000e006e\U000e0067\U000e007f"_s;
    }

    void everyKindOfEmojiIsOneRun() {
        QFETCH(const QString, emoji);
        QCOMPARE(emojiRuns(emoji), (std::vector<EmojiRun>{{0, emoji.size()}}));
        const QString text = u"a "_s + emoji + u" b\u00e9 "_s + emoji;
        QCOMPARE(emojiRuns(text),
                 (std::vector<EmojiRun>{{2, emoji.size()}, {2 + emoji.size() + 4, emoji.size()}}));
    }

    void eachOfSeveralInARowIsOne() {
        QCOMPARE(emojiRuns(u"\U0001f600\U0001f1e9\U0001f1ea5\ufe0f\u20e3\u231a"),
                 (std::vector<EmojiRun>{{0, 2}, {2, 4}, {6, 3}, {9, 1}}));
    }

    void whatIsNoEmojiStaysText_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << QString();
        QTest::newRow("letters and digits") << u"Item 1 of #12, 3*4"_s;
        QTest::newRow("a sign whose presentation is text") << u"\u2764 \u263a \u2190 \u2026"_s;
        QTest::newRow("an emoji with the text selector") << u"\u231a\ufe0e"_s;
        QTest::newRow("a letter with the emoji selector") << u"a\ufe0f"_s;
        QTest::newRow("a digit with the emoji selector alone") << u"1\ufe0f"_s;
        QTest::newRow("other scripts") << u"\u4e2d\u6587 \u05e9\u05dc \u0915\u094d\u200d\u0937"_s;
        QTest::newRow("half a character") << QString(QChar(0xd83d)) + QChar(u'x');
        QTest::newRow("signs at the end") << u"\u200d \ufe0f \u20e3"_s;
    }

    void whatIsNoEmojiStaysText() {
        QFETCH(const QString, text);
        QVERIFY(emojiRuns(text).empty());
    }
};

TELLWICK_TEST(EmojiTests, Nothing)
#include "EmojiTests.moc"
