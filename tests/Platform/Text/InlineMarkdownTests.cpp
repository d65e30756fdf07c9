// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"
#include "tests/support/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using platform::AttributedString;
using platform::InlineMarkdown;

namespace {

/// Writes a styled text out for comparison: each range between braces after the letters of its
/// styles (s, e, c, d for struck out) and a link's target between vertical bars.
QString written(const AttributedString& styled) {
    QString out;
    qsizetype done = 0;
    for (const AttributedString::Range& range : styled.ranges) {
        out += styled.text.mid(done, range.start - done) + u'{';
        if (range.styles & AttributedString::Strong)
            out += u's';
        if (range.styles & AttributedString::Emphasis)
            out += u'e';
        if (range.styles & AttributedString::Code)
            out += u'c';
        if (range.styles & AttributedString::Strikethrough)
            out += u'd';
        if (range.styles & AttributedString::Link)
            out += u'|' + range.target + u'|';
        out += u':' + styled.text.mid(range.start, range.length) + u'}';
        done = range.end();
    }
    return out + styled.text.mid(done);
}

void row(const char* name, QStringView source, QStringView shown) {
    QTest::newRow(name) << source.toString() << shown.toString();
}

void literal(const char* name, QStringView source) {
    row(name, source, source);
}

} // namespace

class InlineMarkdownTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void inlineMarkupIsRead_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("shown");
        row("strong", u"a **bold** word", u"a {s:bold} word");
        row("strong with underscores", u"__bold__", u"{s:bold}");
        row("emphasis", u"*foo bar*", u"{e:foo bar}");
        row("emphasis with underscores", u"_foo bar_", u"{e:foo bar}");
        literal("no emphasis before a blank", u"a * foo bar*");
        literal("no emphasis before punctuation inside a word", u"a*\"foo\"*");
        literal("no emphasis around a no-break space", u"*\u00a0a\u00a0*");
        row("asterisks inside a word", u"foo*bar*", u"foo{e:bar}");
        row("asterisks between digits", u"5*6*78", u"5{e:6}78");
        literal("underscores inside a word", u"foo_bar_");
        literal("underscores between digits", u"5_6_78");
        literal("underscores in Cyrillic words", u"\u043f\u0440\u0438_\u0441\u0442_");
        row("underscore emphasis in brackets", u"foo-_(bar)_", u"foo-{e:(bar)}");
        literal("mixed closers do not match", u"_foo*");
        literal("strong needs no blank inside", u"** foo bar**");
        row("emphasis in brackets", u"*(*foo*)*", u"{e:(foo)}");
        row("strong inside emphasis", u"*foo **bar** baz*", u"{e:foo }{se:bar}{e: baz}");
        row("strong inside emphasis without blanks", u"*foo**bar**baz*", u"{e:foo}{se:bar}{e:baz}");
        row("strong touching emphasis", u"***foo** bar*", u"{se:foo}{e: bar}");
        row("emphasis ends with strong", u"*foo **bar***", u"{e:foo }{se:bar}");
        row("three asterisks", u"***foo***", u"{se:foo}");
        row("emphasis inside strong", u"**foo *bar* baz**", u"{s:foo }{se:bar}{s: baz}");
        row("link inside emphasis", u"*foo [bar](/url)*", u"{e:foo }{e|/url|:bar}");
        literal("asterisk alone", u"foo *** bar");
        row("escaped asterisk inside emphasis", u"foo *\\**", u"foo {e:*}");
        row("unmatched asterisks outside", u"**foo*", u"*{e:foo}");
        row("unmatched asterisks behind", u"*foo**", u"{e:foo}*");
        row("interleaved", u"*foo _bar* baz_", u"{e:foo _bar} baz_");
        row("four asterisks are strong in strong", u"****foo****", u"{s:foo}");
        row("code span beats emphasis", u"*a `*`*", u"{e:a }{ec:*}");
        row("autolink beats emphasis", u"**a<http://b/?q=**>",
            u"**a{|http://b/?q=**|:http://b/?q=**}");
        literal("html beats emphasis", u"*<img src=\"foo\" title=\"*\"/>");

        row("code span", u"`foo`", u"{c:foo}");
        row("code span with a back quote", u"`` foo ` bar ``", u"{c: foo ` bar }");
        row("code span of back quotes", u"` `` `", u"{c: `` }");
        row("no escapes in code", u"`foo\\`bar`", u"{c:foo\\}bar`");
        row("no references in code", u"`&amp;`", u"{c:&amp;}");
        row("code span beats link", u"[not a `link](/foo`)", u"[not a {c:link](/foo})");
        row("code span and html have equal rank", u"`<a href=\"`\">`", u"{c:<a href=\"}\">`");
        literal("unequal back quotes", u"```foo``");
        literal("unclosed back quote", u"`foo");
        row("shorter run closes later", u"`foo``bar``", u"`foo{c:bar}");

        row("link", u"[link](/uri)", u"{|/uri|:link}");
        row("link with title", u"[link](/uri \"title\")", u"{|/uri|:link}");
        row("link to nowhere", u"[link]()", u"{||:link}");
        literal("target with blank", u"[link](/my uri)");
        row("target in angle brackets", u"[link](</my uri>)", u"{|/my uri|:link}");
        row("target with brackets", u"[link](foo(and(bar)))", u"{|foo(and(bar))|:link}");
        row("escapes in a target", u"[link](foo\\)\\:)", u"{|foo):|:link}");
        row("references in a target", u"[link](a?b&auml;&amp;c)", u"{|a?b\u00e4&c|:link}");
        row("tilde in a target", u"[a](http://x/~b?c&amp;d) ~ ~x~", u"{|http://x/~b?c&d|:a} ~ ~x~");
        literal("blank before the target", u"[link] (/uri)");
        row("brackets in a link", u"[link [foo [bar]]](/uri)", u"{|/uri|:link [foo [bar]]}");
        row("styles in a link", u"[link *foo **bar** `#`*](/uri)",
            u"{|/uri|:link }{e|/uri|:foo }{se|/uri|:bar}{e|/uri|: }{ec|/uri|:#}");
        row("no link in a link", u"[foo [bar](/uri)](/uri)", u"[foo {|/uri|:bar}](/uri)");
        literal("unknown reference", u"[foo] and [foo][bar]");
        literal("definition stays", u"[foo]: /url \"title\"\n[foo]");
        literal("unclosed bracket", u"see [the rest");
        row("escaped bracket", u"\\[foo](/uri)", u"[foo](/uri)");
        row("two links in a row", u"[a](b)[c](d)", u"{|b|:a}{|d|:c}");
        row("autolink", u"<http://a/?b=c&d=2>", u"{|http://a/?b=c&d=2|:http://a/?b=c&d=2}");
        row("autolink with tilde", u"<http://x/~a>, <http://x/~b>",
            u"{|http://x/~a|:http://x/~a}, {|http://x/~b|:http://x/~b}");
        row("autolink with a backslash", u"<http://a/\\[\\>", u"{|http://a/\\[\\|:http://a/\\[\\}");
        row("mail autolink", u"<a@b.example>", u"{|mailto:a@b.example|:a@b.example}");
        literal("no autolink with a blank", u"<http://foo.bar/baz bim>");
        literal("empty angle brackets", u"<>");
        literal("a bare address is no link", u"http://example.com");

        row("strikethrough", u"~~Hi~~ there", u"{d:Hi} there");
        row("strikethrough in strong", u"**a ~~b~~**", u"{s:a }{sd:b}");
        literal("single tildes are ranges", u"5~10 or 20~30");
        literal("three tildes", u"a ~~~b~~~");
        literal("tildes between blanks", u"a ~~ b ~~ c");
        row("escaped tilde", u"\\~~a~~", u"~~a~~");

        row("escapes", u"\\!\\\"\\#\\$\\%\\&\\*\\[\\\\\\`\\~", u"!\"#$%&*[\\`~");
        literal("no escapes of letters and blanks", u"\\\ta\\A\\ 3\\\u03c6");
        row("escaped emphasis", u"\\*not emphasized*", u"*not emphasized*");
        row("escaped backslash", u"\\\\*emphasis*", u"\\{e:emphasis}");
        row("named references", u"&nbsp; &amp; &copy; &AElig; &Dcaron; &frac34; &HilbertSpace;",
            u"\u00a0 & \u00a9 \u00c6 \u010e \u00be \u210b");
        row("references to two characters", u"&ngE; &DifferentialD;", u"\u2267\u0338 \u2146");
        row("references to separators", u"&vert;&semi;&quot;", u"|;\"");
        row("beyond the basic plane", u"&Afr; &#x1F600;", u"\U0001d504 \U0001f600");
        row("numbers", u"&#35; &#1234; &#X22; &#XD06; &#xcab;", u"# \u04d2 \" \u0d06 \u0cab");
        row("number zero", u"&#0;", u"\ufffd");
        row("surrogate number", u"&#xD800;", u"\ufffd");
        literal("no references", u"&nbsp &x; &#; &#x; &#87654321; &abcdef0; &ThisIsNotDefined;");
        row("a reference is no markup", u"&#42;foo&#42;", u"*foo*");

        literal("html stays", u"<a><bab><c2c/> </a > <!-- *x* --> <?php *x* ?>");
        row("markup between tags is read", u"<b>*x*</b>", u"<b>{e:x}</b>");
        row("image", u"![a *big* train](/t.jpg \"T\")!", u"a big train!");
        row("image without a description", u"![](/t.jpg)", u"/t.jpg");
        row("image in a link", u"[![moon](moon.jpg)](/uri)", u"{|/uri|:moon}");
        row("image around a link", u"![[foo](uri1)](uri2)", u"foo");
        row("no image", u"!\\[foo]", u"![foo]");

        literal("empty", u"");
        // A letter beside it: parsers disagree on whether what stands for a NUL is punctuation.
        row("nul", QString(u"**a"_s + QChar(0) + u"**`"_s + QChar(0) + u'`'),
            u"{s:a\ufffd}{c:\ufffd}"_s);
        row("lone surrogate", QString(u"*a"_s + QChar(0xd83d) + u'*'),
            QString(u"{e:a"_s + QChar(0xd83d) + u'}'));
        row("emoji", u"**\U0001f469\u200d\U0001f4bb ok**\U0001f600",
            u"{s:\U0001f469\u200d\U0001f4bb ok}\U0001f600");
        row("right to left", u"**\u05e9\u05dc\u05d5\u05dd** \u05e2\u05d5\u05dc\u05dd",
            u"{s:\u05e9\u05dc\u05d5\u05dd} \u05e2\u05d5\u05dc\u05dd");
    }
    void inlineMarkupIsRead() {
        QFETCH(QString, source);
        QTEST(written(InlineMarkdown::parse(source)), "shown");
    }

    void blockMarkupStaysLiteral_data() {
        QTest::addColumn<QString>("source");
        const QString sources =
            u"# Title@@## Title ##@@Title\n=====@@Title\n---@@- item\n- item@@+ a\n+ b@@"
            "1. one\n2. two@@1) one@@> quote\n> more@@---@@    indented code@@\tindented code@@"
            "a\n    continued@@<div>\nhtml\n</div>@@<!-- comment -->@@|a|b|\n|-|-|\n|1|2|@@"
            "- [ ] task@@[foo]: /url@@* * *@@* item\n* item@@***@@___@@"
            "<pre>\n\n a\n</pre>@@<?php\n\n?>@@$$x$$ [[wiki]]@@www.example.com"_s;
        for (const QString& source : sources.split(u"@@"_s))
            QTest::newRow(qPrintable(source)) << source;
    }
    void blockMarkupStaysLiteral() {
        QFETCH(QString, source);
        QCOMPARE(written(InlineMarkdown::parse(source)), source);
        QCOMPARE(written(InlineMarkdown::parse(u"before\n"_s + source + u"\nafter"_s)),
                 u"before\n"_s + source + u"\nafter"_s);
        const QString between = u"**x**\n\n"_s + source + u"\n\n**y**"_s;
        QCOMPARE(written(InlineMarkdown::parse(between)), u"{s:x}\n\n"_s + source + u"\n\n{s:y}"_s);
    }

    void blanksAndLineBreaksComeOutAgain_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("shown");
        row("blanks at both ends", u"  *a*\t ", u"  {e:a}\t ");
        literal("blanks inside", u"a   b\t\tc");
        row("line break", u"*a*\nb", u"{e:a}\nb");
        row("blank lines", u"*a*\n\n\n  \nb\n\n", u"{e:a}\n\n\n  \nb\n\n");
        row("line breaks first", u"\n\n *a*", u"\n\n {e:a}");
        literal("only white space", u" \n\t\n ");
        row("carriage returns", u"*a*\r\nb\rc\r\n\r\n*d*", u"{e:a}\r\nb\rc\r\n\r\n{e:d}");
        row("two blanks before a line's end", u"*a*  \nb", u"{e:a}  \nb");
        row("backslash before a line's end", u"*a*\\\nb", u"{e:a}\nb");
        row("backslash before a CR LF", u"*a*\\\r\nb", u"{e:a}\r\nb");
        row("escaped backslash before a line's end", u"*a*\\\\\nb", u"{e:a}\\\nb");
        row("backslash at the end of a block", u"*a*\\\n\nb\\", u"{e:a}\\\n\nb\\");
        row("backslash before a break in code", u"`a\\\nb`", u"{c:a\\\nb}");
        row("indented lines", u"*a*\n    b\n\tc", u"{e:a}\n    b\n\tc");
        row("list under a paragraph", u"*a*\n- b\n  - c", u"{e:a}\n- b\n  - c");
        row("quoted strong at a line's start", u"**\"a\"** b\n**\"c\"** d",
            u"{s:\"a\"} b\n{s:\"c\"} d");
        row("punctuated strong at a line's end", u"a **b:**\nc", u"a {s:b:}\nc");
        row("emphasis over lines", u"*a\n  b*", u"{e:a\n  b}");
        literal("no emphasis over a blank line", u"*a\n\nb*");
        literal("no emphasis over a line of blanks", u"*a\n \t\nb*");
        literal("emphasis closed after a break", u"*a\n*");
        row("code over lines", u"`a \n  b`", u"{c:a \n  b}");
        row("code with breaks at its ends", u"``\na\n``", u"{c:\na\n}");
        row("code of one blank", u"` `", u"{c: }");
        row("code of blanks", u"`  a  `", u"{c:  a  }");
        row("link over lines", u"[a\nb](/u)", u"{|/u|:a\nb}");
        row("link's parts over lines", u"[a](/u\n\"t\nt\")b", u"{|/u|:a}b");
        literal("break in an angled target", u"[a](<b\nc>)");
        literal("break in a target", u"[a](b\nc)");
        literal("break between bracket and target", u"[a]\n(b)");
        literal("break in an autolink", u"<http://a\nb>");
        row("tag over lines", u"<a  /><b\nc=\"*d*\" > *x*", u"<a  /><b\nc=\"*d*\" > {e:x}");
        row("form feed and others", u"*a*\f\v\u2028\u2029\u0085b", u"{e:a}\f\v\u2028\u2029\u0085b");
        row("ideographic blank", u"**\u3000a** *b*", u"**\u3000a** {e:b}");
    }
    void blanksAndLineBreaksComeOutAgain() {
        QFETCH(QString, source);
        QTEST(written(InlineMarkdown::parse(source)), "shown");
    }

    void textWithoutMarkupCharactersIsUnchanged() {
        QRandomGenerator random(20240711);
        const QString alphabet =
            u"abz \t\n\r\n  .,:;-+#>=1234567890|(){}'\"?/$%@^\u00e9\u05d0\u4e2d\u2028\U0001f600"_s;
        for (int round = 0; round < 2000; ++round) {
            QString source;
            const int length = random.bounded(120);
            for (int i = 0; i < length; ++i)
                source += alphabet[random.bounded(int(alphabet.size()))];
            const AttributedString parsed = InlineMarkdown::parse(source);
            QCOMPARE(parsed.text, source);
            QVERIFY(parsed.ranges.empty());
        }
    }

    void allWhiteSpaceSurvivesAnyMixtureOfMarkup() {
        // No parentheses: the blanks in a link's target are markup, everything else is text.
        QRandomGenerator random(7);
        const QStringList pieces = {u"*"_s,  u"**"_s, u"_"_s,    u"`"_s,  u"``"_s,
                                    u"["_s,  u"]"_s,  u"<"_s,    u">"_s,  u"~~"_s,
                                    u"\\"_s, u" "_s,  u"  "_s,   u"\t"_s, u"\n"_s,
                                    u"a"_s,  u"bc"_s, u"\r\n"_s, u"!"_s,  u"&amp;"_s,
                                    u"#"_s,  u"- "_s, u"\n\n"_s, u"\""_s, u"http:x"_s};
        const auto whiteSpace = [](const QString& text) {
            QString found;
            for (const QChar character : text)
                if (character.isSpace())
                    found += character;
            return found;
        };
        for (int round = 0; round < 20000; ++round) {
            QString source;
            const int count = random.bounded(30);
            for (int i = 0; i < count; ++i)
                source += pieces[random.bounded(int(pieces.size()))];
            QCOMPARE(whiteSpace(InlineMarkdown::parse(source).text), whiteSpace(source));
        }
    }
};

TELLWICK_TEST(InlineMarkdownTests, Nothing)
#include "InlineMarkdownTests.moc"
