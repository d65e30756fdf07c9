// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "tests/Platform/Store/NoteStore.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using tests::Notifications;

class ModelContextTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void recordsComeBackAsTheyWereSaved() {
        const QStringList lines{
            {}, u"b"_s, u"b"_s, u"\uFEFFa"_s, QString(QChar(0xd83d)), QString(u'\0')};
        m->save(lines, 7);
        ModelContext context(m->container);
        const auto notes = notesIn(context);
        QCOMPARE(notes.size(), 1);
        QCOMPARE(notes.first()->lines.value(), lines);
        QCOMPARE(notes.first()->writtenAt.value(), atSecond(7));
        QVERIFY(!context.hasChanges());
    }

    void datesAreReadAsTheyStandInTheStore_data() {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<qint64>("milliseconds");
        const qint64 second = 1770091506000;
        const auto row = [](const char* stored, qint64 milliseconds) {
            QTest::newRow(stored) << QByteArray(stored) << milliseconds;
        };
        row("2026-02-03T04:05:06.250Z", second + 250);
        row("2026-02-03T04:05:06.250123Z", second + 250); // as earlier versions write
        row("2026-02-03T04:05:06.999999Z", second + 1000);
        row("2026-02-03T04:05:06.123456789Z", second + 123);
        row("2026-02-03T04:05:06Z", second);
        row("2026-02-03 04:05:06", second);
        row("2026-02-03T05:05:06+01:00", second);
        row("1969-12-31T23:59:59.999Z", -1);
        row("2024-02-29T23:59:59.123Z", 1709251199123);
    }

    void datesAreReadAsTheyStandInTheStore() {
        QFETCH(QByteArray, stored);
        QFETCH(qint64, milliseconds);
        const QByteArray zone = qgetenv("TZ");
        qputenv("TZ", "Asia/Tokyo"); // which must not matter
        const auto reset =
            qScopeGuard([&] { zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone); });
        m->save({u"a"_s});
        {
            Database database = m->container.openForWriting();
            database.execute("UPDATE Note SET writtenAt = '" + stored + "'; COMMIT");
        }
        ModelContext context(m->container, never);
        const auto note = notesIn(context).first();
        QCOMPARE(note->writtenAt.value().toMSecsSinceEpoch(), milliseconds);
        note->lines = QStringList{u"b"_s}; // found again by the date as it stands there
        context.save();
        QCOMPARE(m->lines(), Lines{QStringList{u"b"_s}});
        QCOMPARE(rows().size(), 1);
        ModelContext other(m->container);
        QCOMPARE(notesIn(other).first()->writtenAt.value(), note->writtenAt.value());
    }

    void theNewestRecordComesFirst() {
        ModelContext context(m->container);
        const QDateTime aLittleLater = atSecond(11).addMSecs(1);
        for (const int second : {10, 12, 11})
            context.insert(makeNote(second));
        const auto later = makeNote(11);
        later->writtenAt = aLittleLater;
        context.insert(later);
        for (int round = 0; round < 2; ++round) {
            QList<QDateTime> dates;
            for (const auto& note : notesIn(context))
                dates.append(note->writtenAt.value());
            QCOMPARE(dates, (QList{atSecond(12), aLittleLater, atSecond(11), atSecond(10)}));
            context.save();
        }
    }

    void recordsThatAreEqualInOrderComeInTheOrderOfTheStore() {
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
            m->save({name});
        QCOMPARE(m->lines(), (Lines{{u"a"_s}, {u"b"_s}, {u"c"_s}}));
    }

    void anInsertedRecordIsFetchedButNotInTheStoreBeforeASave() {
        ModelContext context(m->container, never);
        const auto note = makeNote(1);
        context.insert(note);
        QCOMPARE(notesIn(context), Notes{note});
        QVERIFY(m->lines().isEmpty());
        context.save();
        QCOMPARE(notesIn(context), Notes{note});
        QCOMPARE(m->lines().size(), 1);
    }

    void aRecordKeepsItsRow() {
        m->save({u"first"_s});
        m->save({u"second"_s});
        const auto before = rows();
        ModelContext context(m->container);
        notesIn(context).last()->writtenAt = atSecond(2);
        context.save();
        QCOMPARE(rows(), before);
        QCOMPARE(m->lines(), (Lines{{u"second"_s}, {u"first"_s}}));
    }

    void aRecordIsOneObjectWithinAContext() {
        m->save({}, 1);
        m->save({}, 2);
        ModelContext context(m->container);
        const auto first = notesIn(context);
        QCOMPARE(notesIn(context), first);
        QVERIFY(first[0] != first[1]);
    }

    void aFetchKeepsPendingChanges() {
        m->save({}, 1);
        m->save({}, 5);
        ModelContext context(m->container, never);
        const auto note = notesIn(context).last();
        note->lines = QStringList{u"pending"_s};
        note->writtenAt = atSecond(9);
        QCOMPARE(notesIn(context).first(), note); // sorted by what it is, not by what the store has
        QCOMPARE(note->lines.value(), QStringList{u"pending"_s});
        QVERIFY(context.hasChanges());
    }

    void aFetchSeesWhatOthersHaveChanged() {
        m->save({});
        ModelContext context(m->container);
        const auto notes = notesIn(context);
        {
            ModelContext other(m->container);
            notesIn(other).first()->lines = QStringList{u"theirs"_s};
        }
        QCOMPARE(notesIn(context), notes);
        QCOMPARE(notes.first()->lines.value(), QStringList{u"theirs"_s});
        QVERIFY(!context.hasChanges());
    }

    void aDeletedRecordIsGoneForTheContextAtOnceAndFromTheStoreWithASave() {
        m->save({u"a"_s}, 1);
        m->save({u"b"_s}, 2);
        ModelContext context(m->container, never);
        const auto note = notesIn(context).last();
        note->lines = QStringList{u"changed before its end"_s};
        context.deleteRecord(note);
        context.deleteRecord(note);
        note->lines = QStringList{u"changed after its end"_s};
        QCOMPARE(notesIn(context).size(), 1);
        QCOMPARE(m->lines().size(), 2);
        context.save();
        QCOMPARE(m->lines(), Lines{QStringList{u"b"_s}});
        QVERIFY(!context.hasChanges());
    }

    void aRecordDeletedBeforeItsFirstSaveLeavesNothing() {
        ModelContext context(m->container);
        const auto note = makeNote(1);
        context.insert(note);
        context.deleteRecord(note);
        QVERIFY(!context.hasChanges());
        QVERIFY(notesIn(context).isEmpty());
    }

    void settingAnAttributeMarksTheRecordAsChangedUntilTheSave() {
        ModelContext context(m->container, never);
        const auto note = makeNote(1);
        context.insert(note);
        context.save();
        QVERIFY(!context.hasChanges());
        note->writtenAt = note->writtenAt.value();
        QVERIFY(!context.hasChanges());
        note->writtenAt = atSecond(2);
        QVERIFY(context.hasChanges());
        context.save();
        QVERIFY(!context.hasChanges());
        note->lines = QStringList{};
        QVERIFY(context.hasChanges());
    }

    void aDateNotifiesOnChangeAListOnEveryAssignment() {
        const auto note = makeNote(1, {u"a"_s});
        const Notifications dates(note->writtenAt);
        const Notifications lists(note->lines);
        note->writtenAt = note->writtenAt.value();
        note->lines = note->lines.value();
        QCOMPARE(dates.count(), 0);
        QCOMPARE(lists.count(), 1);
        note->writtenAt = atSecond(3);
        QCOMPARE(dates.count(), 1);
    }

    void changesAreSavedByThemselvesOnceTogether() {
        ModelContext context(m->container, 20ms);
        const auto note = makeNote(1, {u"first"_s});
        context.insert(note);
        QTRY_VERIFY(!context.hasChanges());
        QCOMPARE(m->lines(), Lines{QStringList{u"first"_s}});
        note->lines = QStringList{u"second"_s};
        note->lines = QStringList{u"third"_s};
        QCOMPARE(m->lines(), Lines{QStringList{u"first"_s}});
        QTRY_VERIFY(!context.hasChanges());
        QCOMPARE(m->lines(), Lines{QStringList{u"third"_s}});
        context.deleteRecord(note);
        QTRY_VERIFY(!context.hasChanges());
        QVERIFY(m->lines().isEmpty());
    }

    void changesAreSavedAtTheEndOfTheContext() {
        {
            ModelContext context(m->container, never);
            context.insert(makeNote(1, {u"a"_s}));
        }
        QCOMPARE(m->lines(), Lines{QStringList{u"a"_s}});
    }

    void changesAreSavedWhenTheApplicationQuits() {
        ModelContext context(m->container, never);
        context.insert(makeNote(1, {u"a"_s}));
        QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
        QCoreApplication::exec();
        QVERIFY(!context.hasChanges());
        QCOMPARE(m->lines(), Lines{QStringList{u"a"_s}});
    }

    void aRecordMayOutliveItsContext() {
        const auto saved = makeNote(1);
        std::shared_ptr<Note> fetched;
        {
            ModelContext context(m->container);
            context.insert(saved);
            context.save();
            ModelContext other(m->container);
            fetched = notesIn(other).first();
        }
        ModelContext next(m->container, never);
        next.insert(saved); // it belongs to nobody any more
        QCOMPARE(notesIn(next), Notes{saved});
        fetched->lines = QStringList{u"b"_s};
        QCOMPARE(m->lines(), Lines{QStringList{}});
    }

    void whatAnotherProgramHasChangedIsNotOverwritten() {
        m->save({u"common"_s});
        ModelContext ours(m->container, never);
        ModelContext theirs(m->container, never);
        const auto note = notesIn(ours).first();
        const auto same = notesIn(theirs).first();
        const auto write = [](ModelContext& context, Note& written, int second,
                              const QString& line) {
            written.lines = QStringList{line};
            written.writtenAt = atSecond(second);
            context.save();
        };
        write(theirs, *same, 2, u"theirs"_s);
        write(ours, *note, 3, u"ours"_s);
        QCOMPARE(m->lines(), (Lines{{u"ours"_s}, {u"theirs"_s}}));
        // From here on each has a record of its own.
        write(ours, *note, 4, u"ours again"_s);
        write(theirs, *same, 5, u"theirs again"_s);
        QCOMPARE(m->lines(), (Lines{{u"theirs again"_s}, {u"ours again"_s}}));
    }

    void whatAnotherProgramHasChangedIsNotDeleted() {
        m->save({});
        ModelContext ours(m->container, never);
        const auto note = notesIn(ours).first();
        {
            ModelContext theirs(m->container);
            const auto same = notesIn(theirs).first();
            same->lines = QStringList{u"theirs"_s};
            same->writtenAt = atSecond(2);
        }
        ours.deleteRecord(note);
        ours.save();
        QCOMPARE(m->lines(), Lines{QStringList{u"theirs"_s}});
    }

    void aRecordThatAnotherProgramDeletedIsWrittenAgain() {
        m->save({});
        ModelContext ours(m->container, never);
        const auto note = notesIn(ours).first();
        {
            ModelContext theirs(m->container);
            theirs.deleteRecord(notesIn(theirs).first());
        }
        note->lines = QStringList{u"ours"_s};
        ours.save();
        QCOMPARE(m->lines(), Lines{QStringList{u"ours"_s}});
        QCOMPARE(notesIn(ours), Notes{note});
    }

private:
    /// The store's own names of the records, in its order.
    QList<qint64> rows() const {
        auto database = m->container.openForReading();
        Statement statement(*database, "SELECT rowid FROM Note ORDER BY rowid");
        QList<qint64> rows;
        while (statement.step())
            rows.append(statement.number(0));
        return rows;
    }

    std::optional<NoteStore> m;
};

TELLWICK_TEST(ModelContextTests, EventLoop)
#include "ModelContextTests.moc"
