// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Pasteboard.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

using namespace platform;
using namespace Qt::StringLiterals;

class PasteboardTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aTextArrivesAsItStands_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << u"Hello"_s;
        QTest::newRow("Markdown") << u"**bold** <b>&amp;</b> [a](b)"_s;
        QTest::newRow("lines and blanks") << u"  a\n\tb\r\n\u2028c  "_s;
        QTest::newRow("emoji") << u"👩‍💻"_s;
        QTest::newRow("NUL inside") << u"a\0b"_s;
        QTest::newRow("a million characters") << QString(1'000'000, u'x');
    }
    void aTextArrivesAsItStands() {
        QFETCH(QString, text);
        Pasteboard pasteboard;
        pasteboard.clearContents();
        pasteboard.setString(text);
        QCOMPARE(QGuiApplication::clipboard()->text(), text);
        QCOMPARE(pasteboard.string(), text);
    }
    void clearingTakesEverythingOff() {
        auto* rich = new QMimeData;
        rich->setHtml(u"<b>a</b>"_s);
        QGuiApplication::clipboard()->setMimeData(rich);
        Pasteboard().clearContents();
        const QMimeData* left = QGuiApplication::clipboard()->mimeData();
        QVERIFY(!left || left->formats().isEmpty());
        QCOMPARE(Pasteboard().string(), QString());
    }
    void aTextReplacesWhatWasThere() {
        auto* rich = new QMimeData;
        rich->setHtml(u"<b>a</b>"_s);
        QGuiApplication::clipboard()->setMimeData(rich);
        Pasteboard().setString(u"b"_s);
        QVERIFY(!QGuiApplication::clipboard()->mimeData()->hasHtml());
        QCOMPARE(Pasteboard().string(), u"b"_s);
    }
};

TELLWICK_TEST(PasteboardTests, Widgets)
#include "PasteboardTests.moc"
