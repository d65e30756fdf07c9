// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Tellwick/Backends/ModelManager.h"
#include "tests/Tellwick/Conversations/ScriptedModel.h"
#include "tests/Tellwick/Conversations/ScriptedModelServer.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Availability = SystemLanguageModel::Availability;

/// A catalogue over a server whose answers the test gives, one for each listing that was asked for.
class ModelManagerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_world.emplace();
        server().holdsListings = true;
        m_world->manager.emplace(server().sources(m_world->model, m_world->producers),
                                 m_world->executor);
    }

    void cleanup() { m_world.reset(); }

    void rightAfterConstructionOnlyTheOnDeviceModelIsThere() {
        QCOMPARE(manager().backends(), QList<ModelManager::Backend>{manager().aiBackend});
        QCOMPARE(manager().selected(), manager().aiBackend);
        QCOMPARE(manager().selectedID.value(), u"apple-intelligence"_s);
        QCOMPARE(manager().selectedSubtitle(), u"On-device · Private"_s);
        QVERIFY(!manager().isRefreshing.value());
        QVERIFY(server().listings.empty());
    }

    void theFirstRefreshStartsByItself() {
        QTRY_VERIFY(manager().isRefreshing.value());
        QVERIFY(manager().ollamaBackends.value().isEmpty());
        QVERIFY(list({u"a"_s}));
        QCOMPARE(manager().ollamaBackends.value().size(), 1);
    }

    void withoutAServerTheListStaysEmptyAndNothingIsReported() {
        QVERIFY(list({}));
        QVERIFY(manager().ollamaBackends.value().isEmpty());
        QCOMPARE(manager().selected(), manager().aiBackend);
    }

    void backendsComeInTheServersOrderBehindTheOnDeviceModel() {
        QVERIFY(list({u"z"_s, u"a"_s, u"m"_s}));
        QStringList ids;
        for (const auto& backend : manager().backends())
            ids.append(backend->info().id());
        QCOMPARE(ids, (QStringList{u"apple-intelligence"_s, u"ollama-z"_s, u"ollama-a"_s,
                                   u"ollama-m"_s}));
    }

    void aSelectionSurvivesARefreshThatListsItsName() {
        QVERIFY(list({u"a"_s, u"b"_s}));
        const auto before = listed(1);
        manager().select(before);
        QVERIFY(list({u"b"_s}));
        QCOMPARE(manager().selectedID.value(), u"ollama-b"_s);
        QCOMPARE(manager().selected(), listed(0));
        QVERIFY(manager().selected() != before);
    }

    void aSelectionThatIsGoneFallsBackToTheOnDeviceModel() {
        server().details[u"a"_s] = u"7 GB"_s;
        QVERIFY(list({u"a"_s}));
        manager().select(listed(0));
        QCOMPARE(manager().selectedSubtitle(), u"7 GB"_s);
        QVERIFY(list({}));
        QCOMPARE(manager().selectedID.value(), u"apple-intelligence"_s);
        QVERIFY(manager().ollamaBackends.value().isEmpty());
    }

    void anUnavailableModelCanBeSelected() {
        m_world->model.state =
            Availability::unavailable(Availability::UnavailableReason::modelNotReady);
        QVERIFY(list({u"a"_s}));
        manager().select(listed(0));
        QVERIFY(!manager().aiBackend->isAvailable());
        manager().select(manager().aiBackend);
        QCOMPARE(manager().selected(), manager().aiBackend);
    }

    void aBackendThatIsNotListedAnyMoreCanBeSelected() {
        QVERIFY(list({u"a"_s, u"b"_s}));
        const auto gone = listed(0);
        QVERIFY(list({u"b"_s}));
        manager().select(gone);
        QCOMPARE(manager().selectedID.value(), u"ollama-a"_s);
        QVERIFY(!manager().selected());
        QVERIFY(list({u"a"_s})); // listed again, it is what the user has selected
        QCOMPARE(manager().selected(), listed(0));
    }

    void anUnknownIdentifierSelectsNothingUntilTheNextRefresh() {
        QVERIFY(list({u"a"_s}));
        manager().select(listed(0));
        QCOMPARE(manager().selectedSubtitle(), u"Apple Intelligence · On-device"_s); // no detail
        manager().selectedID = u"ollama-A"_s;
        QVERIFY(!manager().selected());
        QCOMPARE(manager().selectedSubtitle(), u"Apple Intelligence · On-device"_s);
        QVERIFY(list({u"a"_s}));
        QCOMPARE(manager().selectedID.value(), u"apple-intelligence"_s);
    }

    void ofTwoModelsWithOneNameTheFirstIsSelected() {
        QVERIFY(list({u"twin"_s, u"twin"_s}));
        manager().select(listed(1));
        QCOMPARE(manager().selected(), listed(0));
    }

    void ofOverlappingRefreshesTheFirstToEndClearsTheFlagAndTheLastToEndWins() {
        manager().startRefresh();
        QTRY_COMPARE(server().listings.size(), std::size_t(2));
        QVERIFY(manager().isRefreshing.value());
        server().answerListing({u"second"_s}, 1);
        QTRY_COMPARE(manager().backends().size(), 2);
        QVERIFY(!manager().isRefreshing.value()); // although the first is still under way
        server().answerListing({u"first"_s, u"other"_s});
        QTRY_COMPARE(manager().backends().size(), 3);
        QCOMPARE(listed(0)->info().name(), u"first"_s);
        QVERIFY(!manager().isRefreshing.value());
    }

    void aRefreshThatFailsClearsTheFlagAndChangesNothing() {
        QVERIFY(list({u"a"_s}));
        manager().select(listed(0));
        manager().startRefresh();
        QTRY_VERIFY(!server().listings.empty());
        QVERIFY(manager().isRefreshing.value());
        // No other error can leave a listing; this one ends the task that it leaves without a word.
        server().listings.front().finish(std::make_exception_ptr(CancellationError()));
        QTRY_VERIFY(!manager().isRefreshing.value());
        QCOMPARE(manager().selected(), listed(0));
    }

    void aRefreshEndsWithItsManager() {
        QTRY_COMPARE(server().listings.size(), std::size_t(1));
        QList<bool> flags;
        auto& isRefreshing = manager().isRefreshing;
        const auto notifier =
            isRefreshing.addNotifier([&] { flags.append(isRefreshing.valueBypassingBindings()); });
        m_world->manager.reset();
        QCOMPARE(flags,
                 QList<bool>{false}); // the refresh went, and its clean-up found the manager whole
        server().answerListing({u"a"_s});
        bool isDrained = false;
        m_world->executor.post([&] { isDrained = true; });
        QTRY_VERIFY(isDrained);
    }

    void stateNotifiesOnChangeAndTheListOnEveryAssignment() {
        QVERIFY(list({}));
        const Notifications selections(manager().selectedID);
        const Notifications lists(manager().ollamaBackends);
        const Notifications flags(manager().isRefreshing);
        manager().select(manager().aiBackend);
        manager().isRefreshing = false;
        QCOMPARE(selections.count(), 0);
        QCOMPARE(flags.count(), 0);
        QVERIFY(list({})); // an equal list
        QCOMPARE(lists.count(), 1);
        QCOMPARE(flags.count(), 2);
        QCOMPARE(selections.count(), 0);
    }

private:
    /// What ends first stands last.
    struct World {
        MainExecutor executor;
        TaskScope producers{executor};
        ScriptedModel model;
        ScriptedModelServer server;
        std::optional<ModelManager> manager;
        bool hasListed = false;
    };

    ScriptedModelServer& server() { return m_world->server; }
    ModelManager& manager() { return *m_world->manager; }
    ModelManager::Backend listed(qsizetype index) {
        return manager().ollamaBackends.value().at(index);
    }
    /// Answers the first refresh, later one that it starts; true when the manager has the answer.
    bool list(const QStringList& names) {
        if (std::exchange(m_world->hasListed, true))
            manager().startRefresh();
        const Notifications lists(manager().ollamaBackends);
        if (!QTest::qWaitFor([this] { return !server().listings.empty(); }))
            return false;
        server().answerListing(names);
        return QTest::qWaitFor([&] { return lists.count() > 0; }) &&
               !manager().isRefreshing.value();
    }

    std::optional<World> m_world;
};

TELLWICK_TEST(ModelManagerTests, EventLoop)
#include "ModelManagerTests.moc"
