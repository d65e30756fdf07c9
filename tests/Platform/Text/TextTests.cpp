// SPDX-License-Identifier: MIT
#include "Platform/Text/Text.h"

#include <QTest>

#include <vector>

using namespace platform;
using namespace Qt::StringLiterals;

class TextTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEmptyTextIsEmptyAndEqualToItself();
    void snapshotsKeepTheirLengthWhileTheTextGrows();
    void successiveSnapshotsShareOneBuffer();
    void aTextContinuesItsOwnBeginningAndNoOther();
    void textsAreEqualByTheirCharacters();
    void everyPrefixOfALongTextStaysReadable();
};

void TextTests::anEmptyTextIsEmptyAndEqualToItself() {
    QVERIFY(Text().isEmpty());
    QCOMPARE(Text().toString(), QString());
    QVERIFY(Text() == Text(u""));
    QVERIFY(TextBuilder().text().isEmpty());
    QVERIFY(Text(u"a").continues(Text()));
}

void TextTests::snapshotsKeepTheirLengthWhileTheTextGrows() {
    TextBuilder builder;
    builder.append(u"Hel");
    const Text first = builder.text();
    builder.append(u"lo");
    const Text second = builder.text();
    builder.append(u"");
    const Text third = builder.text();
    QCOMPARE(first.toString(), u"Hel"_s);
    QCOMPARE(second.toString(), u"Hello"_s);
    QVERIFY(second == third);
}

void TextTests::successiveSnapshotsShareOneBuffer() {
    TextBuilder builder;
    builder.append(u"0123456789");
    builder.append(u"0123456789");
    const Text earlier = builder.text(); // in a buffer that has doubled: room is left
    builder.append(u"");
    QCOMPARE(builder.text().view().utf16(), earlier.view().utf16());
}

void TextTests::aTextContinuesItsOwnBeginningAndNoOther() {
    TextBuilder builder;
    builder.append(u"abc");
    const Text earlier = builder.text();
    builder.append(QString(5'000, u'x')); // another buffer
    const Text later = builder.text();
    QVERIFY(later.continues(earlier));
    QVERIFY(!earlier.continues(later));
    QVERIFY(!later.continues(Text(u"abd")));
    QVERIFY(later.continues(Text(u"abcx")));
}

void TextTests::textsAreEqualByTheirCharacters() {
    TextBuilder builder;
    builder.append(u"sa");
    builder.append(u"me");
    QVERIFY(builder.text() == Text(u"same"));
    QVERIFY(!(builder.text() == Text(u"sane")));
    QVERIFY(!(builder.text() == Text(u"sam")));
}

void TextTests::everyPrefixOfALongTextStaysReadable() {
    TextBuilder builder;
    std::vector<Text> snapshots;
    QString expected;
    for (int i = 0; i < 2'000; ++i) {
        const QString piece = QString::number(i);
        builder.append(piece);
        expected += piece;
        snapshots.push_back(builder.text());
    }
    QCOMPARE(snapshots.back().toString(), expected);
    for (std::size_t i = 1; i < snapshots.size(); ++i) {
        QVERIFY(snapshots[i].continues(snapshots[i - 1]));
        QVERIFY(expected.startsWith(snapshots[i].view()));
    }
}

QTEST_GUILESS_MAIN(TextTests)
#include "TextTests.moc"
