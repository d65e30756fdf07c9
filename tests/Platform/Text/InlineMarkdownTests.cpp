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

} // namespace

class InlineMarkdownTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void inlineMarkupIsRead_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char* name, const QString& source, const QString& shown) {
            QTest::newRow(name) << source << shown;
        };
        const auto literal = [&](const char* name, const QString& source) {
            row(name, source, source);
        };
        row("strong", u"a **bold** word"_s, u"a {s:bold} word"_s);
        row("strong with underscores", u"__bold__"_s, u"{s:bold}"_s);
        row("emphasis", u"*foo bar*"_s, u"{e:foo bar}"_s);
        row("emphasis with underscores", u"_foo bar_"_s, u"{e:foo bar}"_s);
        literal("no emphasis before a blank", u"a * foo bar*"_s);
        literal("no emphasis before punctuation inside a word", u"a*\"foo\"*"_s);
        literal("no emphasis around a no-break space", u"*\u00a0a\u00a0*"_s);
        row("asterisks inside a word", u"foo*bar*"_s, u"foo{e:bar}"_s);
        row("asterisks between digits", u"5*6*78"_s, u"5{e:6}78"_s);
        literal("underscores inside a word", u"foo_bar_"_s);
        literal("underscores between digits", u"5_6_78"_s);
        literal("underscores in Cyrillic words", u"\u043f\u0440\u0438_\u0441\u0442_"_s);
        row("underscore emphasis in brackets", u"foo-_(bar)_"_s, u"foo-{e:(bar)}"_s);
        literal("mixed closers do not match", u"_foo*"_s);
        literal("strong needs no blank inside", u"** foo bar**"_s);
        row("emphasis in brackets", u"*(*foo*)*"_s, u"{e:(foo)}"_s);
        row("strong inside emphasis", u"*foo **bar** baz*"_s, u"{e:foo }{se:bar}{e: baz}"_s);
        row("strong inside emphasis without blanks", u"*foo**bar**baz*"_s,
            u"{e:foo}{se:bar}{e:baz}"_s);
        row("strong touching emphasis", u"***foo** bar*"_s, u"{se:foo}{e: bar}"_s);
        row("emphasis ends with strong", u"*foo **bar***"_s, u"{e:foo }{se:bar}"_s);
        row("three asterisks", u"***foo***"_s, u"{se:foo}"_s);
        row("emphasis inside strong", u"**foo *bar* baz**"_s, u"{s:foo }{se:bar}{s: baz}"_s);
        row("link inside emphasis", u"*foo [bar](/url)*"_s, u"{e:foo }{e|/url|:bar}"_s);
        literal("asterisk alone", u"foo *** bar"_s);
        row("escaped asterisk inside emphasis", u"foo *\\**"_s, u"foo {e:*}"_s);
        row("unmatched asterisks outside", u"**foo*"_s, u"*{e:foo}"_s);
        row("unmatched asterisks behind", u"*foo**"_s, u"{e:foo}*"_s);
        row("interleaved", u"*foo _bar* baz_"_s, u"{e:foo _bar} baz_"_s);
        row("four asterisks are strong in strong", u"****foo****"_s, u"{s:foo}"_s);
        row("code span beats emphasis", u"*a `*`*"_s, u"{e:a }{ec:*}"_s);
        row("autolink beats emphasis", u"**a<http://foo.bar/?q=**>"_s,
            u"**a{|http://foo.bar/?q=**|:http://foo.bar/?q=**}"_s);
        literal("html beats emphasis", u"*<img src=\"foo\" title=\"*\"/>"_s);

        row("code span", u"`foo`"_s, u"{c:foo}"_s);
        row("code span with a back quote", u"`` foo ` bar ``"_s, u"{c: foo ` bar }"_s);
        row("code span of back quotes", u"` `` `"_s, u"{c: `` }"_s);
        row("no escapes in code", u"`foo\\`bar`"_s, u"{c:foo\\}bar`"_s);
        row("no references in code", u"`&amp;`"_s, u"{c:&amp;}"_s);
        row("code span beats link", u"[not a `link](/foo`)"_s, u"[not a {c:link](/foo})"_s);
        row("code span and html have equal rank", u"`<a href=\"`\">`"_s, u"{c:<a href=\"}\">`"_s);
        literal("unequal back quotes", u"```foo``"_s);
        literal("unclosed back quote", u"`foo"_s);
        row("shorter run closes later", u"`foo``bar``"_s, u"`foo{c:bar}"_s);

        row("link", u"[link](/uri)"_s, u"{|/uri|:link}"_s);
        row("link with title", u"[link](/uri \"title\")"_s, u"{|/uri|:link}"_s);
        row("link to nowhere", u"[link]()"_s, u"{||:link}"_s);
        literal("target with blank", u"[link](/my uri)"_s);
        row("target in angle brackets", u"[link](</my uri>)"_s, u"{|/my uri|:link}"_s);
        row("target with brackets", u"[link](foo(and(bar)))"_s, u"{|foo(and(bar))|:link}"_s);
        row("escapes in a target", u"[link](foo\\)\\:)"_s, u"{|foo):|:link}"_s);
        row("references in a target", u"[link](a?b&auml;&amp;c)"_s, u"{|a?b\u00e4&c|:link}"_s);
        row("tilde in a target", u"[link](http://x/~me?a&amp;b) ~ ~x~"_s,
            u"{|http://x/~me?a&b|:link} ~ ~x~"_s);
        literal("blank before the target", u"[link] (/uri)"_s);
        row("brackets in a link", u"[link [foo [bar]]](/uri)"_s, u"{|/uri|:link [foo [bar]]}"_s);
        row("styles in a link", u"[link *foo **bar** `#`*](/uri)"_s,
            u"{|/uri|:link }{e|/uri|:foo }{se|/uri|:bar}{e|/uri|: }{ec|/uri|:#}"_s);
        row("no link in a link", u"[foo [bar](/uri)](/uri)"_s, u"[foo {|/uri|:bar}](/uri)"_s);
        literal("unknown reference", u"[foo] and [foo][bar]"_s);
        literal("definition stays", u"[foo]: /url \"title\"\n[foo]"_s);
        literal("unclosed bracket", u"see [the rest"_s);
        row("escaped bracket", u"\\[foo](/uri)"_s, u"[foo](/uri)"_s);
        row("two links in a row", u"[a](b)[c](d)"_s, u"{|b|:a}{|d|:c}"_s);
        row("autolink", u"<http://foo.bar.baz/test?q=hello&id=22>"_s,
            u"{|http://foo.bar.baz/test?q=hello&id=22|:http://foo.bar.baz/test?q=hello&id=22}"_s);
        row("autolink with tilde", u"<http://x/~a>, <http://x/~b>"_s,
            u"{|http://x/~a|:http://x/~a}, {|http://x/~b|:http://x/~b}"_s);
        row("autolink with a backslash", u"<http://example.com/\\[\\>"_s,
            u"{|http://example.com/\\[\\|:http://example.com/\\[\\}"_s);
        row("mail autolink", u"<foo@bar.example.com>"_s,
            u"{|mailto:foo@bar.example.com|:foo@bar.example.com}"_s);
        literal("no autolink with a blank", u"<http://foo.bar/baz bim>"_s);
        literal("empty angle brackets", u"<>"_s);
        literal("a bare address is no link", u"http://example.com"_s);

        row("strikethrough", u"~~Hi~~ there"_s, u"{d:Hi} there"_s);
        row("strikethrough in strong", u"**a ~~b~~**"_s, u"{s:a }{sd:b}"_s);
        literal("single tildes are ranges", u"5~10 or 20~30"_s);
        literal("three tildes", u"~~~a~~~"_s);
        literal("tildes between blanks", u"a ~~ b ~~ c"_s);
        row("escaped tilde", u"\\~~a~~"_s, u"~~a~~"_s);

        row("escapes", u"\\!\\\"\\#\\$\\%\\&\\*\\[\\\\\\`\\~"_s, u"!\"#$%&*[\\`~"_s);
        literal("no escapes of letters and blanks", u"\\\ta\\A\\ 3\\\u03c6"_s);
        row("escaped emphasis", u"\\*not emphasized*"_s, u"*not emphasized*"_s);
        row("escaped backslash", u"\\\\*emphasis*"_s, u"\\{e:emphasis}"_s);
        row("named references", u"&nbsp; &amp; &copy; &AElig; &Dcaron; &frac34; &HilbertSpace;"_s,
            u"\u00a0 & \u00a9 \u00c6 \u010e \u00be \u210b"_s);
        row("references to two characters", u"&ngE; &DifferentialD;"_s, u"\u2267\u0338 \u2146"_s);
        row("references to separators", u"&vert;&semi;&quot;"_s, u"|;\""_s);
        row("beyond the basic plane", u"&Afr; &#x1F600;"_s, u"\U0001d504 \U0001f600"_s);
        row("numbers", u"&#35; &#1234; &#992; &#X22; &#XD06; &#xcab;"_s,
            u"# \u04d2 \u03e0 \" \u0d06 \u0cab"_s);
        row("number zero", u"&#0;"_s, u"\ufffd"_s);
        row("surrogate number", u"&#xD800;"_s, u"\ufffd"_s);
        literal("no references", u"&nbsp &x; &#; &#x; &#87654321; &abcdef0; &ThisIsNotDefined;"_s);
        row("a reference is no markup", u"&#42;foo&#42;"_s, u"*foo*"_s);

        literal("html stays", u"<a><bab><c2c/> </a > <!-- *x* --> <?php *x* ?>"_s);
        row("markup between tags is read", u"<b>*x*</b>"_s, u"<b>{e:x}</b>"_s);
        row("image", u"![a *big* train](/t.jpg \"T\")!"_s, u"a big train!"_s);
        row("image without a description", u"![](/t.jpg)"_s, u"/t.jpg"_s);
        row("image in a link", u"[![moon](moon.jpg)](/uri)"_s, u"{|/uri|:moon}"_s);
        row("image around a link", u"![[foo](uri1)](uri2)"_s, u"foo"_s);
        row("no image", u"!\\[foo]"_s, u"![foo]"_s);

        literal("empty", u""_s);
        // A letter beside it: parsers disagree on whether what stands for a NUL is punctuation.
        row("nul", QString(u"**a"_s + QChar(0) + u"**`"_s + QChar(0) + u'`'),
            u"{s:a\ufffd}{c:\ufffd}"_s);
        row("lone surrogate", QString(u"*a"_s + QChar(0xd83d) + u'*'),
            QString(u"{e:a"_s + QChar(0xd83d) + u'}'));
        row("emoji", u"**\U0001f469\u200d\U0001f4bb ok**\U0001f600"_s,
            u"{s:\U0001f469\u200d\U0001f4bb ok}\U0001f600"_s);
        row("right to left", u"**\u05e9\u05dc\u05d5\u05dd** \u05e2\u05d5\u05dc\u05dd"_s,
            u"{s:\u05e9\u05dc\u05d5\u05dd} \u05e2\u05d5\u05dc\u05dd"_s);
    }

    void inlineMarkupIsRead() {
        QFETCH(QString, source);
        QTEST(written(InlineMarkdown::parse(source)), "shown");
    }

    void blockMarkupStaysLiteral_data() {
        QTest::addColumn<QString>("source");
        for (const char* source : {"# Title",
                                   "## Title ##",
                                   "Title\n=====",
                                   "Title\n---",
                                   "- item\n- item",
                                   "+ a\n+ b",
                                   "1. one\n2. two",
                                   "1) one",
                                   "> quote\n> more",
                                   "---",
                                   "    indented code",
                                   "\tindented code",
                                   "a\n    continued",
                                   "<div>\nhtml\n</div>",
                                   "<!-- comment -->",
                                   "|a|b|\n|-|-|\n|1|2|",
                                   "~~~\nfenced\n~~~",
                                   "- [ ] task",
                                   "[foo]: /url",
                                   "* * *",
                                   "* item\n* item",
                                   "***",
                                   "___",
                                   "<pre>\n\n a\n</pre>",
                                   "<?php\n\n?>",
                                   "$$x$$ [[wiki]]",
                                   "www.example.com"})
            QTest::newRow(source) << QString::fromLatin1(source);
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
        const auto row = [](const char* name, const QString& source, const QString& shown) {
            QTest::newRow(name) << source << shown;
        };
        const auto literal = [&](const char* name, const QString& source) {
            row(name, source, source);
        };
        row("blanks at both ends", u"  *a*\t "_s, u"  {e:a}\t "_s);
        literal("blanks inside", u"a   b\t\tc"_s);
        row("line break", u"*a*\nb"_s, u"{e:a}\nb"_s);
        row("blank lines", u"*a*\n\n\n  \nb\n\n"_s, u"{e:a}\n\n\n  \nb\n\n"_s);
        row("line breaks first", u"\n\n *a*"_s, u"\n\n {e:a}"_s);
        literal("only white space", u" \n\t\n "_s);
        row("carriage returns", u"*a*\r\nb\rc\r\n\r\n*d*"_s, u"{e:a}\r\nb\rc\r\n\r\n{e:d}"_s);
        row("two blanks before a line's end", u"*a*  \nb"_s, u"{e:a}  \nb"_s);
        row("backslash before a line's end", u"*a*\\\nb"_s, u"{e:a}\nb"_s);
        row("backslash before a CR LF", u"*a*\\\r\nb"_s, u"{e:a}\r\nb"_s);
        row("escaped backslash before a line's end", u"*a*\\\\\nb"_s, u"{e:a}\\\nb"_s);
        row("backslash at the end of a block", u"*a*\\\n\nb\\"_s, u"{e:a}\\\n\nb\\"_s);
        row("backslash before a break in code", u"`a\\\nb`"_s, u"{c:a\\\nb}"_s);
        row("indented lines", u"*a*\n    b\n\tc"_s, u"{e:a}\n    b\n\tc"_s);
        row("list under a paragraph", u"*a*\n- b\n  - c"_s, u"{e:a}\n- b\n  - c"_s);
        row("quoted strong at a line's start", u"**\"quoted\"** a\n**\"quoted\"** b"_s,
            u"{s:\"quoted\"} a\n{s:\"quoted\"} b"_s);
        row("punctuated strong at a line's end", u"a **b:**\nc"_s, u"a {s:b:}\nc"_s);
        row("emphasis over lines", u"*a\n  b*"_s, u"{e:a\n  b}"_s);
        literal("no emphasis over a blank line", u"*a\n\nb*"_s);
        literal("no emphasis over a line of blanks", u"*a\n \t\nb*"_s);
        literal("emphasis closed after a break", u"*a\n*"_s);
        row("code over lines", u"`a \n  b`"_s, u"{c:a \n  b}"_s);
        row("code with breaks at its ends", u"``\na\n``"_s, u"{c:\na\n}"_s);
        row("code of one blank", u"` `"_s, u"{c: }"_s);
        row("code of blanks", u"`  a  `"_s, u"{c:  a  }"_s);
        literal("fence as a code span", u"```\nint *a;\n\nint *b;\n```"_s);
        row("link over lines", u"[a\nb](/u)"_s, u"{|/u|:a\nb}"_s);
        row("link's parts over lines", u"[a](/u\n\"t\nt\")b"_s, u"{|/u|:a}b"_s);
        literal("break in an angled target", u"[a](<b\nc>)"_s);
        literal("break in a target", u"[a](b\nc)"_s);
        literal("break between bracket and target", u"[a]\n(b)"_s);
        literal("break in an autolink", u"<http://a\nb>"_s);
        row("tag over lines", u"<a  /><b2\ndata=\"*foo*\" > *x*"_s,
            u"<a  /><b2\ndata=\"*foo*\" > {e:x}"_s);
        row("form feed and others", u"*a*\f\v\u2028\u2029\u0085b"_s,
            u"{e:a}\f\v\u2028\u2029\u0085b"_s);
        row("ideographic blank", u"**\u3000a** *b*"_s, u"**\u3000a** {e:b}"_s);
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
