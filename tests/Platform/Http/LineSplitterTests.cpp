// SPDX-License-Identifier: MIT
#include "Platform/Http/LineSplitter.h"
#include "tests/support/TestMain.h"

using platform::LineSplitter;

namespace {

QByteArrayList takeAll(LineSplitter& splitter) {
    QByteArrayList lines;
    while (const auto line = splitter.takeLine())
        lines.append(*line);
    return lines;
}

} // namespace

class LineSplitterTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aTextIsCutAtEveryLineEnd_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArrayList>("lines");
        const auto row = [](const char* name, QByteArray text, QByteArrayList lines) {
            QTest::newRow(name) << text << lines;
        };
        row("nothing", "", {});
        row("no line end", "ab", {"ab"});
        row("LF", "a\nb\n", {"a", "b"});
        row("CR LF", "a\r\nb\r\n", {"a", "b"});
        row("CR", "a\rb\r", {"a", "b"});
        row("all kinds", "a\nb\r\nc\rd", {"a", "b", "c", "d"});
        row("only line ends", "\n\r\n\r", {"", "", ""});
        row("LF CR are two", "a\n\rb", {"a", "", "b"});
        row("CR CR LF are two", "a\r\r\nb", {"a", "", "b"});
        row("empty lines", "a\n\n\r\n\r\rb", {"a", "", "", "", "", "b"});
        row("NUL", QByteArray("a\0b\nc", 5), {QByteArray("a\0b", 3), "c"});
        row("other separators stay", "a\xE2\x80\xA8z\xC2\x85y\vx\f",
            {"a\xE2\x80\xA8z\xC2\x85y\vx\f"});
        row("not UTF-8", "\xFF\n\xC3\n", {"\xFF", "\xC3"});
        row("characters of several bytes", "日本\n🙂\r\né", {"日本", "🙂", "é"});
    }

    void aTextIsCutAtEveryLineEnd() {
        QFETCH(QByteArray, text);
        QFETCH(QByteArrayList, lines);
        const auto check = [&](const QByteArrayList& pieces) {
            // With lines taken meanwhile or at the end.
            for (const bool takesMeanwhile : {false, true}) {
                LineSplitter splitter;
                QByteArrayList taken;
                for (const QByteArray& piece : pieces) {
                    splitter.append(piece);
                    if (takesMeanwhile)
                        taken += takeAll(splitter);
                }
                splitter.finish();
                taken += takeAll(splitter);
                QCOMPARE(taken, lines);
                QCOMPARE(splitter.pendingBytes(), 0);
            }
        };
        QByteArrayList bytes;
        for (const char byte : text)
            bytes.append(QByteArray(1, byte));
        check(bytes);
        for (qsizetype cut = 0; cut <= text.size(); ++cut)
            check({text.first(cut), text.sliced(cut)});
    }

    void aLineIsThereAsSoonAsTheFirstByteOfItsEndIs() {
        LineSplitter splitter;
        splitter.append("one\na");
        QCOMPARE(splitter.takeLine(), QByteArray("one"));
        QVERIFY(!splitter.hasLine());
        splitter.append("\r");
        QVERIFY(splitter.hasLine());
        QCOMPARE(splitter.takeLine(), QByteArray("a"));
        splitter.append("\n");
        QVERIFY(!splitter.hasLine());
        splitter.append("\n");
        QCOMPARE(splitter.takeLine(), QByteArray(""));
        splitter.append("b\r");
        splitter.finish();
        QCOMPARE(takeAll(splitter), QByteArrayList{"b"});
    }

    void whatFollowsTheLastLineEndIsALineOnlyAtTheEnd() {
        LineSplitter splitter;
        splitter.append("a\nrest");
        QCOMPARE(takeAll(splitter), QByteArrayList{"a"});
        QCOMPARE(splitter.pendingBytes(), 4);
        splitter.finish();
        QCOMPARE(takeAll(splitter), QByteArrayList{"rest"});
    }

    void aLineOf8MegabytesInSmallPiecesComesWhole() {
        const QByteArray piece(1000, 'x');
        LineSplitter splitter;
        for (int i = 0; i < 8000; ++i) {
            splitter.append(piece);
            QVERIFY(!splitter.hasLine());
        }
        splitter.append("\nnext\n");
        QCOMPARE(splitter.takeLine()->size(), 8'000'000);
        QCOMPARE(splitter.takeLine(), QByteArray("next"));
    }

    void aFloodOfShortLinesIsCutInLinearTime() {
        // A cost of the square would take minutes here; the test's watchdog tells.
        LineSplitter splitter;
        splitter.append(QByteArray("0123456789\r").repeated(2'000'000));
        int count = 0;
        while (splitter.takeLine())
            ++count;
        QCOMPARE(count, 2'000'000);
    }
};

TELLWICK_TEST(LineSplitterTests, EventLoop)
#include "LineSplitterTests.moc"
