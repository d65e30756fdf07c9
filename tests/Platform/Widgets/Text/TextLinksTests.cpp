// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"
#include "Platform/Widgets/Text/TextLinks.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using namespace platform;

class TextLinksTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyWebAndMailAddressesMayBeOpened_data() {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("openable");
        QTest::newRow("http") << u"http://example.org/a?b#c"_s << true;
        QTest::newRow("https in capitals") << u"HTTPS://EXAMPLE.ORG"_s << true;
        QTest::newRow("mail") << u"mailto:a@b.example"_s << true;
        QTest::newRow("relative") << u"/uri"_s << false;
        QTest::newRow("file") << u"file:///etc/passwd"_s << false;
        QTest::newRow("script") << u"javascript:alert(1)"_s << false;
        QTest::newRow("data") << u"data:text/html,x"_s << false;
        QTest::newRow("no host") << u"http://"_s << false;
        QTest::newRow("empty") << u""_s << false;
        QTest::newRow("blank before") << u" http://example.org"_s << false;
    }
    void onlyWebAndMailAddressesMayBeOpened() {
        QFETCH(QString, target);
        QTEST(openableAddress(target).has_value(), "openable");
    }

    void aLinkInSeveralStylesIsOne() {
        const AttributedString text =
            InlineMarkdown::parse(u"x [a **b** `c`](http://one)[d](http://two)[e](http://two) y");
        QCOMPARE(text.text, u"x a b cde y"_s);
        for (qsizetype i = 2; i < 7; ++i) {
            QCOMPARE(linkAt(text, i).span, (TextSpan{2, 7}));
            QCOMPARE(linkAt(text, i).address, QUrl(u"http://one"_s));
        }
        QCOMPARE(linkAt(text, 7).span, (TextSpan{7, 9}));
        for (const qsizetype none : {-1, 0, 1, 9, 10, 11, 100})
            QVERIFY(linkAt(text, none).isNone());
    }

    void theNextAndTheLastLinkAreFound() {
        const AttributedString text =
            InlineMarkdown::parse(u"[a](http://one) [no](/x) **s** [bb](http://two) end");
        QCOMPARE(text.text, u"a no s bb end"_s);
        QCOMPARE(linkFrom(text, 0).span, (TextSpan{0, 1}));
        QCOMPARE(linkFrom(text, 1).span, (TextSpan{7, 9}));
        QCOMPARE(linkFrom(text, 7).span, (TextSpan{7, 9}));
        QVERIFY(linkFrom(text, 8).isNone());
        QCOMPARE(linkUpTo(text, 13).span, (TextSpan{7, 9}));
        QCOMPARE(linkUpTo(text, 8).span, (TextSpan{0, 1}));
        QVERIFY(linkUpTo(text, 0).isNone());
        QVERIFY(linkFrom({}, 0).isNone());
        QVERIFY(linkUpTo({}, 0).isNone());
    }
};

TELLWICK_TEST(TextLinksTests, Nothing)
#include "TextLinksTests.moc"
