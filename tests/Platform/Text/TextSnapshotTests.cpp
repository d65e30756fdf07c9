// SPDX-License-Identifier: MIT
#include "Platform/Text/TextSnapshot.h"
#include "tests/support/TestMain.h"

#include <vector>

using namespace platform;
using namespace Qt::StringLiterals;

class TextSnapshotTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEmptyTextIsEmptyAndEqualToItself() {
        QVERIFY(TextSnapshot().isEmpty());
        QCOMPARE(TextSnapshot().toString(), QString());
        QVERIFY(TextSnapshot() == TextSnapshot(u""));
        QVERIFY(TextBuilder().text().isEmpty());
        QVERIFY(TextSnapshot(u"a").continues(TextSnapshot()));
    }

    void snapshotsKeepTheirLengthWhileTheTextGrows() {
        TextBuilder builder;
        builder.append(u"Hel");
        const TextSnapshot first = builder.text();
        builder.append(u"lo");
        const TextSnapshot second = builder.text();
        builder.append(u"");
        const TextSnapshot third = builder.text();
        QCOMPARE(first.toString(), u"Hel"_s);
        QCOMPARE(second.toString(), u"Hello"_s);
        QVERIFY(second == third);
    }

    void successiveSnapshotsShareOneBuffer() {
        TextBuilder builder;
        builder.append(u"0123456789");
        builder.append(u"0123456789");
        const TextSnapshot earlier = builder.text(); // in a buffer that has doubled: room is left
        builder.append(u"");
        QCOMPARE(builder.text().view().utf16(), earlier.view().utf16());
    }

    void aTextContinuesItsOwnBeginningAndNoOther() {
        TextBuilder builder;
        builder.append(u"abc");
        const TextSnapshot earlier = builder.text();
        builder.append(QString(5'000, u'x')); // another buffer
        const TextSnapshot later = builder.text();
        QVERIFY(later.continues(earlier));
        QVERIFY(!earlier.continues(later));
        QVERIFY(!later.continues(TextSnapshot(u"abd")));
        QVERIFY(later.continues(TextSnapshot(u"abcx")));
    }

    void textsAreEqualByTheirCharacters() {
        TextBuilder builder;
        builder.append(u"sa");
        builder.append(u"me");
        QVERIFY(builder.text() == TextSnapshot(u"same"));
        QVERIFY(!(builder.text() == TextSnapshot(u"sane")));
        QVERIFY(!(builder.text() == TextSnapshot(u"sam")));
    }

    void everyPrefixOfALongTextStaysReadable() {
        TextBuilder builder;
        std::vector<TextSnapshot> snapshots;
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
};

TELLWICK_TEST(TextSnapshotTests, EventLoop)
#include "TextSnapshotTests.moc"
