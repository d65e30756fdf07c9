// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observed.h"
#include "Platform/Observation/Observer.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

using namespace platform;

class ObservationTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aReaderRunsAtOnceAndAgainAfterAChange() {
        Observed<int> number(1);
        QList<int> seen;
        QObject owner;
        observe(&owner, [&] { seen.append(number.value()); });
        QCOMPARE(seen, QList<int>{1});
        number = 2;
        QCOMPARE(seen, QList<int>{1}); // never within the change itself
        QTRY_COMPARE(seen, (QList<int>{1, 2}));
        number = 3;
        QTRY_COMPARE(seen, (QList<int>{1, 2, 3}));
    }

    void anEqualValueNotifiesNobody() {
        Observed<QString> text(QStringLiteral("a"));
        const tests::Notifications notifications(text);
        text = QStringLiteral("a");
        QCOMPARE(notifications.count(), 0);
        text = QStringLiteral("b");
        QCOMPARE(notifications.count(), 1);
    }

    void aListNotifiesAtEveryAssignment() {
        ObservedOnAssignment<QList<int>> list;
        const tests::Notifications notifications(list);
        list = QList<int>{1};
        list = QList<int>{1};
        QCOMPARE(notifications.count(), 2);
        list.mutate([](QList<int>& values) { values.append(2); });
        QCOMPARE(notifications.count(), 3);
        QCOMPARE(list.value(), (QList<int>{1, 2}));
    }

    void aListChangesInPlaceWithoutACopy() {
        ObservedOnAssignment<QList<int>> list(QList<int>{1, 2, 3});
        const int* const before = list.value().constData();
        list.mutate([](QList<int>& values) { values[1] = 5; });
        QCOMPARE(list.value().constData(), before);
    }

    void manyChangesLeadToOneRunWithTheNewestValue() {
        Observed<int> number(0);
        QList<int> seen;
        QObject owner;
        observe(&owner, [&] { seen.append(number.value()); });
        for (int i = 1; i <= 1'000; ++i)
            number = i;
        QTRY_COMPARE(seen, (QList<int>{0, 1'000}));
    }

    void runsAreAFrameApart() {
        Observed<int> number(0);
        QElapsedTimer clock;
        QList<qint64> moments;
        QObject owner;
        clock.start();
        observe(&owner, [&] {
            number.value();
            moments.append(clock.elapsed());
        });
        while (moments.size() < 5) {
            number = number.valueBypassingBindings() + 1;
            QCoreApplication::processEvents();
            QVERIFY(clock.elapsed() < 5'000);
        }
        // Two milliseconds less than a frame: the two clocks are read one after the other.
        for (qsizetype i = 1; i < moments.size(); ++i)
            QVERIFY(moments[i] - moments[i - 1] >= Observer::frame.count() - 2);
    }

    void onlyWhatTheLastRunReadCounts() {
        Observed<bool> first(true);
        Observed<int> a(1);
        Observed<int> b(2);
        QList<int> seen;
        QObject owner;
        auto* observer =
            observe(&owner, [&] { seen.append(first.value() ? a.value() : b.value()); });
        b = 3;
        observer->flush();
        QCOMPARE(seen, QList<int>{1});
        first = false;
        QTRY_COMPARE(seen, (QList<int>{1, 3}));
        a = 9;
        observer->flush();
        QCOMPARE(seen, (QList<int>{1, 3}));
        b = 4;
        QTRY_COMPARE(seen, (QList<int>{1, 3, 4}));
    }

    void anObserverEndsWithItsOwner() {
        Observed<int> number(0);
        int runs = 0;
        QList<int> seenByAnother;
        QObject another;
        {
            QObject owner;
            observe(
                &owner,
                [&] {
                    number.value();
                    ++runs;
                });
            observe(&another, [&] { seenByAnother.append(number.value()); });
            number = 1; // a run is on its way when the owner ends
        }
        number = 2;
        QTRY_COMPARE(seenByAnother, (QList<int>{0, 2})); // whose frame began later
        QCOMPARE(runs, 1);
    }

    void observersMadeInsideARunTrackForThemselves() {
        Observed<int> outer(0);
        Observed<int> inner(0);
        int outerRuns = 0;
        QList<int> seen;
        QObject owner;
        std::unique_ptr<QObject> child;
        observe(&owner, [&] {
            outer.value();
            ++outerRuns;
            child = std::make_unique<QObject>();
            observe(child.get(), [&] { seen.append(inner.value()); });
        });
        inner = 1;
        QTRY_COMPARE(seen, (QList<int>{0, 1}));
        QCOMPARE(outerRuns, 1);
        outer = 1;
        QTRY_COMPARE(outerRuns, 2);
        QCOMPARE(seen, (QList<int>{0, 1, 1}));
    }

    void aRunMayDestroyAnotherObserver() {
        Observed<int> number(0);
        QObject owner;
        std::unique_ptr<QObject> child;
        int childRuns = 0;
        observe(&owner, [&] {
            if (number.value() == 1)
                child.reset();
        });
        child = std::make_unique<QObject>();
        child->setParent(&owner); // behind the first observer, and so run after it
        observe(child.get(), [&] {
            number.value();
            ++childRuns;
        });
        number = 1;
        flushObservers(&owner);
        QVERIFY(!child);
        QCOMPARE(childRuns, 1);
    }

    void flushShowsAChangeAtOnceAndOnlyOnce() {
        Observed<int> number(0);
        QList<int> seen;
        QObject owner;
        observe(&owner, [&] { seen.append(number.value()); });
        number = 1;
        flushObservers(&owner);
        flushObservers(&owner);
        QCOMPARE(seen, (QList<int>{0, 1}));
    }
};

TELLWICK_TEST(ObservationTests, EventLoop)
#include "ObservationTests.moc"
