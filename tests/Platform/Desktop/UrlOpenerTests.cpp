// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UrlOpener.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace Qt::StringLiterals;

class UrlOpenerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyHarmlessAddressesAreOpened_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("opened");
        const auto opens = [](const char* name, const QString& address, const QString& opened) {
            QTest::newRow(name) << address << opened;
        };
        const auto ignores = [](const char* name, const QString& address) {
            QTest::newRow(name) << address << QString();
        };
        opens("http", u"http://example.com/a?b#c"_s, u"http://example.com/a?b#c"_s);
        opens("https", u"https://example.com"_s, u"https://example.com"_s);
        opens("capitals", u"HTTPS://Example.com/A"_s, u"https://example.com/A"_s);
        opens("other letters", u"https://example.com/ä b"_s, u"https://example.com/%C3%A4%20b"_s);
        opens("mail", u"mailto:a@example.com"_s, u"mailto:a@example.com"_s);
        opens("mail with a subject", u"mailto:a@example.com?subject=1%262&body=x%20y"_s,
              u"mailto:a@example.com?subject=1%262&body=x%20y"_s);
        opens("mail with a file", u"mailto:a@example.com?attach=/etc/passwd&subject=s"_s,
              u"mailto:a@example.com?subject=s"_s);
        opens("mail with a file only", u"mailto:a@example.com?Attachment=/etc/passwd"_s,
              u"mailto:a@example.com"_s);
        opens("mail with a hidden file", u"mailto:a@example.com?%61ttach=/etc/passwd"_s,
              u"mailto:a@example.com"_s);
        ignores("empty", u""_s);
        ignores("file", u"file:///etc/passwd"_s);
        ignores("script", u"javascript:alert(1)"_s);
        ignores("data", u"data:text/html,x"_s);
        ignores("ftp", u"ftp://example.com/a"_s);
        ignores("another program's", u"steam://run/1"_s);
        ignores("settings", u"ms-settings:privacy"_s);
        ignores("relative", u"example.com/a"_s);
        ignores("path", u"/usr/bin/true"_s);
        ignores("option", u"--help"_s);
        ignores("fragment", u"#a"_s);
        ignores("without host", u"http:///a"_s);
        ignores("http as a path", u"http:a"_s);
        ignores("a bad port", u"http://example.com:99999/"_s);
    }
    void onlyHarmlessAddressesAreOpened() {
        QFETCH(QString, address);
        QFETCH(QString, opened);
        QStringList seen;
        const UrlOpener opener([&seen](const QUrl& url) {
            seen.append(url.toString(QUrl::FullyEncoded));
            return true;
        });
        QCOMPARE(opener.open(QUrl(address)), !opened.isEmpty());
        QCOMPARE(seen, opened.isEmpty() ? QStringList() : QStringList{opened});
    }
    void aProgramThatDoesNotOpenIsTold() {
        const UrlOpener opener([](const QUrl& /*url*/) { return false; });
        QVERIFY(!opener.open(QUrl(u"https://example.com"_s)));
    }
};

TELLWICK_TEST(UrlOpenerTests, EventLoop)
#include "UrlOpenerTests.moc"
