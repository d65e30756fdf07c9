// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "tests/Platform/Store/TestRecord.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

using namespace platform;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto never = 1h;

} // namespace

class ModelContextTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();

    void recordsComeBackAsTheyWereSaved();
    void recordsComeInTheOrderAskedFor();
    void recordsThatAreEqualInOrderComeInTheOrderOfTheStore();
    void instantsAMicrosecondApartAreToldApart();
    void anInsertedRecordIsFetchedButNotInTheStoreBeforeASave();
    void identityIsGivenAtTheFirstSaveAndKept();
    void aRecordIsOneObjectWithinAContext();
    void aRecordNobodyHoldsMayGoAndComeBack();
    void aChangedRecordIsKeptUntilItIsSaved();
    void aFetchKeepsPendingChanges();
    void aFetchSeesWhatOthersHaveChanged();
    void aDeletedRecordIsGoneForTheContextAtOnceAndFromTheStoreWithASave();
    void aRecordDeletedBeforeItsFirstSaveLeavesNothing();
    void settingAnAttributeMarksTheRecordAsChangedUntilTheSave();
    void aDateNotifiesOnChangeAListOnEveryAssignment();
    void changesAreSavedByThemselvesOnceTogether();
    void changesAreSavedAtTheEndOfTheContext();
    void changesAreSavedWhenTheApplicationQuits();
    void aRecordMayOutliveItsContext();
    void whatAnotherProgramHasChangedIsNotOverwritten();
    void whatAnotherProgramHasChangedIsNotDeleted();
    void aRecordThatAnotherProgramDeletedIsWrittenAgain();

private:
    QString file() const { return m_folder->filePath(u"data/app/store.sqlite"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ModelContextTests::init() {
    m_folder = std::make_unique<QTemporaryDir>();
}

void ModelContextTests::recordsComeBackAsTheyWereSaved() {
    const auto container = noteContainer(file());
    const QStringList lines{
        {}, u"b"_s, u"b"_s, u"\uFEFFa"_s, QString(QChar(0xd83d)), QString(u'\0')};
    {
        ModelContext context(container);
        context.insert(makeNote(7, lines));
        context.save();
    }
    ModelContext context(container);
    const auto notes = context.fetch<Note>();
    QCOMPARE(notes.size(), 1);
    QCOMPARE(notes.first()->lines.value(), lines);
    QVERIFY(notes.first()->writtenAt.value() == Instant(7s));
    QVERIFY(!notes.first()->hasChanges());
    QVERIFY(!context.hasChanges());
}

void ModelContextTests::recordsComeInTheOrderAskedFor() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    for (const int second : {10, 12, 11})
        context.insert(makeNote(second, {QString::number(second)}));
    const auto seconds = [&](const FetchDescriptor<Note>& descriptor) {
        QStringList seconds;
        for (const auto& note : context.fetch<Note>(descriptor))
            seconds.append(note->lines.value());
        return seconds;
    };
    const FetchDescriptor<Note> oldestFirst{{SortDescriptor(&Note::writtenAt)}};
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(seconds(newestFirst()), (QStringList{u"12"_s, u"11"_s, u"10"_s}));
        QCOMPARE(seconds(oldestFirst), (QStringList{u"10"_s, u"11"_s, u"12"_s}));
        QCOMPARE(seconds({}), (QStringList{u"10"_s, u"12"_s, u"11"_s}));
        context.save();
    }
}

void ModelContextTests::recordsThatAreEqualInOrderComeInTheOrderOfTheStore() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
        context.insert(makeNote(1, {name}));
    context.save();
    QCOMPARE(linesInStore(container), (Lines{{u"a"_s}, {u"b"_s}, {u"c"_s}}));
}

void ModelContextTests::instantsAMicrosecondApartAreToldApart() {
    const auto container = noteContainer(file());
    {
        ModelContext context(container);
        auto note = makeNote(1, {u"later"_s});
        note->writtenAt = note->writtenAt.value() + 1us;
        context.insert(makeNote(1, {u"sooner"_s}));
        context.insert(note);
    }
    QCOMPARE(linesInStore(container), (Lines{{u"later"_s}, {u"sooner"_s}}));
}

void ModelContextTests::anInsertedRecordIsFetchedButNotInTheStoreBeforeASave() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    const auto note = makeNote(1);
    context.insert(note);
    QCOMPARE(context.fetch<Note>(), QList{note});
    QVERIFY(linesInStore(container).isEmpty());
    context.save();
    QCOMPARE(context.fetch<Note>(), QList{note});
    QCOMPARE(linesInStore(container).size(), 1);
}

void ModelContextTests::identityIsGivenAtTheFirstSaveAndKept() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    const auto note = makeNote(1);
    context.insert(note);
    QVERIFY(!note->persistentIdentifier());
    context.save();
    const auto identifier = note->persistentIdentifier();
    QVERIFY(identifier);
    note->writtenAt = Instant(2s);
    context.save();
    QCOMPARE(note->persistentIdentifier(), identifier);
    ModelContext other(container);
    QCOMPARE(other.fetch<Note>().first()->persistentIdentifier(), identifier);
}

void ModelContextTests::aRecordIsOneObjectWithinAContext() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    context.insert(makeNote(1));
    context.insert(makeNote(2));
    context.save();
    const auto first = context.fetch<Note>(newestFirst());
    QCOMPARE(context.fetch<Note>(newestFirst()), first);
    QVERIFY(first[0] != first[1]);
}

void ModelContextTests::aRecordNobodyHoldsMayGoAndComeBack() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    std::weak_ptr<Note> gone;
    {
        const auto note = makeNote(1, {u"a"_s});
        gone = note;
        context.insert(note);
        context.save();
    }
    QVERIFY(gone.expired());
    QCOMPARE(context.fetch<Note>().first()->lines.value(), QStringList{u"a"_s});
}

void ModelContextTests::aChangedRecordIsKeptUntilItIsSaved() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    context.insert(makeNote(1));
    context.save();
    context.fetch<Note>().first()->lines = QStringList{u"changed"_s};
    context.save();
    QCOMPARE(linesInStore(container), Lines{QStringList{u"changed"_s}});
}

void ModelContextTests::aFetchKeepsPendingChanges() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    const auto note = makeNote(1);
    context.insert(note);
    context.insert(makeNote(5));
    context.save();
    note->lines = QStringList{u"pending"_s};
    note->writtenAt = Instant(9s);
    const auto notes = context.fetch<Note>(newestFirst());
    QCOMPARE(notes.first(), note); // sorted by what it is, not by what the store still has
    QCOMPARE(note->lines.value(), QStringList{u"pending"_s});
    QVERIFY(note->hasChanges());
}

void ModelContextTests::aFetchSeesWhatOthersHaveChanged() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    const auto note = makeNote(1);
    context.insert(note);
    context.save();
    {
        ModelContext other(container);
        other.fetch<Note>().first()->lines = QStringList{u"theirs"_s};
    }
    QCOMPARE(context.fetch<Note>(), QList{note});
    QCOMPARE(note->lines.value(), QStringList{u"theirs"_s});
    QVERIFY(!note->hasChanges());
}

void ModelContextTests::aDeletedRecordIsGoneForTheContextAtOnceAndFromTheStoreWithASave() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    const auto note = makeNote(1, {u"a"_s});
    context.insert(note);
    context.insert(makeNote(2, {u"b"_s}));
    context.save();
    note->lines = QStringList{u"changed before its end"_s};
    context.deleteRecord(note);
    context.deleteRecord(note);
    note->lines = QStringList{u"changed after its end"_s};
    QCOMPARE(context.fetch<Note>().size(), 1);
    QCOMPARE(linesInStore(container).size(), 2);
    context.save();
    QCOMPARE(linesInStore(container), Lines{QStringList{u"b"_s}});
    QVERIFY(!context.hasChanges());
}

void ModelContextTests::aRecordDeletedBeforeItsFirstSaveLeavesNothing() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    const auto note = makeNote(1);
    context.insert(note);
    context.deleteRecord(note);
    QVERIFY(!context.hasChanges());
    QVERIFY(context.fetch<Note>().isEmpty());
}

void ModelContextTests::settingAnAttributeMarksTheRecordAsChangedUntilTheSave() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    const auto note = makeNote(1);
    QVERIFY(!note->hasChanges()); // nobody would save it
    context.insert(note);
    context.save();
    QVERIFY(!note->hasChanges());
    note->writtenAt = note->writtenAt.value();
    QVERIFY(!note->hasChanges());
    note->writtenAt = Instant(2s);
    QVERIFY(note->hasChanges());
    context.save();
    QVERIFY(!note->hasChanges());
    note->lines = QStringList{};
    QVERIFY(note->hasChanges());
    QVERIFY(context.hasChanges());
}

void ModelContextTests::aDateNotifiesOnChangeAListOnEveryAssignment() {
    const auto note = makeNote(1, {u"a"_s});
    QObject owner;
    int dates = 0;
    int lists = 0;
    auto* dateReader = observe(&owner, [&] {
        (void)note->writtenAt.value();
        ++dates;
    });
    auto* listReader = observe(&owner, [&] {
        (void)note->lines.value();
        ++lists;
    });
    note->writtenAt = note->writtenAt.value();
    note->lines = note->lines.value();
    dateReader->flush();
    listReader->flush();
    QCOMPARE(dates, 1);
    QCOMPARE(lists, 2);
    note->writtenAt = Instant(3s);
    dateReader->flush();
    QCOMPARE(dates, 2);
}

void ModelContextTests::changesAreSavedByThemselvesOnceTogether() {
    const auto container = noteContainer(file());
    ModelContext context(container, 20ms);
    const auto note = makeNote(1, {u"first"_s});
    context.insert(note);
    QTRY_VERIFY(!context.hasChanges());
    QCOMPARE(linesInStore(container), Lines{QStringList{u"first"_s}});
    note->lines = QStringList{u"second"_s};
    note->lines = QStringList{u"third"_s};
    QCOMPARE(linesInStore(container), Lines{QStringList{u"first"_s}});
    QTRY_VERIFY(!context.hasChanges());
    QCOMPARE(linesInStore(container), Lines{QStringList{u"third"_s}});
    context.deleteRecord(note);
    QTRY_VERIFY(!context.hasChanges());
    QVERIFY(linesInStore(container).isEmpty());
}

void ModelContextTests::changesAreSavedAtTheEndOfTheContext() {
    const auto container = noteContainer(file());
    {
        ModelContext context(container, never);
        context.insert(makeNote(1, {u"a"_s}));
    }
    QCOMPARE(linesInStore(container), Lines{QStringList{u"a"_s}});
}

void ModelContextTests::changesAreSavedWhenTheApplicationQuits() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    context.insert(makeNote(1, {u"a"_s}));
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    qApp->exec();
    QVERIFY(!context.hasChanges());
    QCOMPARE(linesInStore(container), Lines{QStringList{u"a"_s}});
}

void ModelContextTests::aRecordMayOutliveItsContext() {
    const auto container = noteContainer(file());
    const auto saved = makeNote(1);
    std::shared_ptr<Note> fetched;
    {
        ModelContext context(container);
        context.insert(saved);
        context.save();
        ModelContext other(container);
        fetched = other.fetch<Note>().first();
    }
    saved->lines = QStringList{u"b"_s};
    fetched->lines = QStringList{u"c"_s};
    QCOMPARE(linesInStore(container), Lines{QStringList{}});
}

void ModelContextTests::whatAnotherProgramHasChangedIsNotOverwritten() {
    const auto container = noteContainer(file());
    ModelContext ours(container, never);
    const auto note = makeNote(1, {u"common"_s});
    ours.insert(note);
    ours.save();
    ModelContext theirs(container, never);
    const auto same = theirs.fetch<Note>().first();
    same->lines = QStringList{u"theirs"_s};
    same->writtenAt = Instant(2s);
    theirs.save();
    note->lines = QStringList{u"ours"_s};
    note->writtenAt = Instant(3s);
    ours.save();
    QCOMPARE(linesInStore(container), (Lines{{u"ours"_s}, {u"theirs"_s}}));
    QVERIFY(note->persistentIdentifier() != same->persistentIdentifier());
    // From here on each has a record of its own.
    note->writtenAt = Instant(4s);
    ours.save();
    same->writtenAt = Instant(5s);
    theirs.save();
    QCOMPARE(linesInStore(container), (Lines{{u"theirs"_s}, {u"ours"_s}}));
}

void ModelContextTests::whatAnotherProgramHasChangedIsNotDeleted() {
    const auto container = noteContainer(file());
    ModelContext ours(container, never);
    const auto note = makeNote(1);
    ours.insert(note);
    ours.save();
    {
        ModelContext theirs(container);
        const auto same = theirs.fetch<Note>().first();
        same->lines = QStringList{u"theirs"_s};
        same->writtenAt = Instant(2s);
    }
    ours.deleteRecord(note);
    ours.save();
    QCOMPARE(linesInStore(container), Lines{QStringList{u"theirs"_s}});
}

void ModelContextTests::aRecordThatAnotherProgramDeletedIsWrittenAgain() {
    const auto container = noteContainer(file());
    ModelContext ours(container, never);
    const auto note = makeNote(1);
    ours.insert(note);
    ours.save();
    {
        ModelContext theirs(container);
        theirs.deleteRecord(theirs.fetch<Note>().first());
    }
    note->lines = QStringList{u"ours"_s};
    ours.save();
    QCOMPARE(linesInStore(container), Lines{QStringList{u"ours"_s}});
    QCOMPARE(ours.fetch<Note>(), QList{note});
}

TELLWICK_TEST(ModelContextTests, EventLoop)
#include "ModelContextTests.moc"
