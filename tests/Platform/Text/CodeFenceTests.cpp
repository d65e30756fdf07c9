// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::AttributedString;
using platform::CodeFence;
using platform::InlineMarkdown;

/// Fenced code stays as it was typed, all of it in the style of code.
class CodeFenceTests : public QObject {
    Q_OBJECT

    const AttributedString::Styles fenced = AttributedString::Code | AttributedString::Fenced;

private Q_SLOTS:
    void aLineOpensABlock_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("length"); // of the fence; 0: none
        QTest::newRow("back quotes") << u"```"_s << 3;
        QTest::newRow("tildes") << u"~~~~"_s << 4;
        QTest::newRow("a language") << u"```cpp"_s << 3;
        QTest::newRow("three blanks before") << u"   ``` c d"_s << 3;
        QTest::newRow("back quotes behind tildes") << u"~~~ `a` ~~~"_s << 3;
        QTest::newRow("four blanks before") << u"    ```"_s << 0;
        QTest::newRow("a tabulator before") << u"\t```"_s << 0;
        QTest::newRow("two") << u"``"_s << 0;
        QTest::newRow("a code span") << u"```a```"_s << 0;
        QTest::newRow("text before") << u"a ```"_s << 0;
        QTest::newRow("mixed") << u"``~"_s << 0;
        QTest::newRow("empty") << QString() << 0;
    }

    void aLineOpensABlock() {
        QFETCH(const QString, line);
        QFETCH(const int, length);
        const auto fence = CodeFence::openedBy(line);
        QCOMPARE(fence ? fence->length : 0, qsizetype(length));
    }

    void aLineClosesABlock_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("closes");
        QTest::newRow("the same") << u"~~~~"_s << true;
        QTest::newRow("more") << u"  ~~~~~ \t"_s << true;
        QTest::newRow("fewer") << u"~~~"_s << false;
        QTest::newRow("other marks") << u"````"_s << false;
        QTest::newRow("text behind") << u"~~~~ a"_s << false;
        QTest::newRow("four blanks before") << u"    ~~~~"_s << false;
        QTest::newRow("none") << u"a"_s << false;
    }

    void aLineClosesABlock() {
        QFETCH(const QString, line);
        QFETCH(const bool, closes);
        QCOMPARE((CodeFence{u'~', 4}.isClosedBy(line)), closes);
    }

    void aBlockIsShownAsTyped_data() {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("behind");
        QTest::newRow("closed") << u"a\n"_s << u"```cpp\nint *a, *b;\n\n# `x` &amp; \\*\n```"_s
                                << u"\nb"_s;
        QTest::newRow("open") << u"a\n\n"_s << u"~~~\n**b**\n"_s << QString();
        QTest::newRow("not yet a whole line") << u"a\n"_s << u"```py"_s << QString();
        QTest::newRow("blank behind the end") << QString() << u"```\na\n``` "_s << u"\n"_s;
        QTest::newRow("a fence of another kind inside")
            << QString() << u"````\n```\n~~~\n````"_s << u"\r\nb"_s;
        QTest::newRow("between breaks of every kind")
            << u"x\r"_s << u"```\r\na\rb\r\n```"_s << u"\ry"_s;
        QTest::newRow("empty") << u"\n"_s << u"```\n```"_s << u"\n\nb"_s;
        QTest::newRow("a very long line")
            << QString() << u"```\n"_s + QString(40000, u'x') + u"\n*y*\n```"_s << u"\nz"_s;
    }

    void aBlockIsShownAsTyped() {
        QFETCH(const QString, before);
        QFETCH(const QString, code);
        QFETCH(const QString, behind);
        AttributedString expected;
        expected.append(before);
        expected.append(code, fenced);
        expected.append(behind);
        QCOMPARE(InlineMarkdown::parse(before + code + behind), expected);
    }

    void markupEndsWhereABlockBegins() {
        const AttributedString parsed = InlineMarkdown::parse(u"*a `b\n```\nc*\n```\n*d*"_s);
        QCOMPARE(parsed.text, u"*a `b\n```\nc*\n```\nd"_s);
        QCOMPARE(parsed.ranges.size(), 2U);
        QCOMPARE(parsed.ranges[0], (AttributedString::Range{6, 10, fenced, {}}));
        QCOMPARE(parsed.ranges[1],
                 (AttributedString::Range{17, 1, AttributedString::Emphasis, {}}));
    }

    void whatIsShownOfABlockNeverChangesWhileItGrows() {
        const QString source = u"Look:\n\n```cpp\nint *a;\n\n    b = `c`;\n```\n"_s;
        AttributedString grown;
        InlineMarkdown::Position position;
        const qsizetype opened = source.indexOf(u"cpp\n") + 4;
        for (qsizetype length = opened; length <= source.size(); ++length) {
            const AttributedString before = grown;
            grown.truncate(position.result);
            grown.append(InlineMarkdown::parseOn(QStringView(source).left(length), position));
            const qsizetype same = platform::firstDifference(before, grown);
            QVERIFY2(length == opened || same == before.text.size(), qPrintable(grown.text));
        }
    }

    void aLongBlockIsReadOnFromItsLastLine() {
        QString source = u"```\n"_s;
        for (int i = 0; i < 1000; ++i)
            source += u"a line of code\n"_s;
        InlineMarkdown::Position position;
        static_cast<void>(InlineMarkdown::parseOn(source, position));
        QCOMPARE(position.source, source.size());
        QCOMPARE(InlineMarkdown::parseOn(source + u"*a*"_s, position).ranges.at(0).styles, fenced);
    }
};

TELLWICK_TEST(CodeFenceTests, Nothing)
#include "CodeFenceTests.moc"
