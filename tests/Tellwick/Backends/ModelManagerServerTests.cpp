// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Http/NetworkThread.h"
#include "Tellwick/Backends/ModelManager.h"
#include "Tellwick/Backends/OllamaBackend.h"
#include "tests/Tellwick/Conversations/ScriptedModel.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tellwick;
using tests::Script;
using tests::ScriptedServer;

namespace {

QByteArray listing(const QByteArrayList& names) {
    QByteArrayList entries;
    for (const QByteArray& name : names)
        entries.append(R"({"name":")" + name + R"(","size":4661224676})");
    return R"({"models":[)" + entries.join(',') + "]}";
}

} // namespace

/// The catalogue over a server that really listens where the models are looked for.
class ModelManagerServerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_main = std::make_unique<MainExecutor>();
        m_network = std::make_unique<NetworkThread>();
        m_server = std::make_unique<ScriptedServer>();
        QVERIFY2(
            m_server->listen(OllamaBackend::baseURL().port()),
            qPrintable(
                u"Port 11434 cannot be used (%1). Run the tests where no model server runs."_s.arg(
                    m_server->errorString())));
    }

    void cleanup() {
        m_server.reset();
        m_manager.reset();
        m_network.reset();
        m_main.reset();
    }

    void theModelsOfTheServerAreListedFromTheStart() {
        m_server->enqueue(Script().gate().head(200).send(listing({"b", "a b/c:🙂", "b"})));
        start();
        QVERIFY(names().isEmpty());
        QCOMPARE(m_manager->selectedSubtitle(), u"On-device \u00B7 Private"_s);
        QTRY_VERIFY(m_manager->isRefreshing.value());
        m_server->release();
        QTRY_COMPARE(names(), (QStringList{u"b"_s, u"a b/c:🙂"_s, u"b"_s}));
        QVERIFY(!m_manager->isRefreshing.value());
        QCOMPARE(m_manager->backends().size(), 4);
        m_manager->select(m_manager->backends()[3]);
        QCOMPARE(m_manager->selected(), m_manager->backends()[1]);
        QCOMPARE(m_manager->selectedSubtitle(), u"4.7 GB \u00B7 Ollama"_s);
    }

    void withoutAServerNothingIsListed() {
        m_server->stop();
        start();
        // A refused connection is quick: the changes are counted, not looked for.
        int changes = 0;
        const auto notifier = m_manager->isRefreshing.addNotifier([&] { ++changes; });
        QTRY_COMPARE(changes, 2);
        QVERIFY(!m_manager->isRefreshing.value());
        QVERIFY(names().isEmpty());
        QCOMPARE(m_manager->selectedID.value(), u"apple-intelligence"_s);
    }

    void aSelectionSurvivesWithANewBackend() {
        m_server->setFallback(Script::reply(200, listing({"a", "b"})));
        start();
        QTRY_COMPARE(names().size(), 2);
        const auto before = m_manager->ollamaBackends.value()[1];
        m_manager->select(before);
        m_manager->startRefresh();
        QTRY_VERIFY(m_manager->ollamaBackends.value()[1] != before);
        QCOMPARE(m_manager->selectedID.value(), u"ollama-b"_s);
        QCOMPARE(m_manager->selected(), m_manager->ollamaBackends.value()[1]);
    }

    void aSelectionFallsBackWhenTheServerStops() {
        m_server->setFallback(Script::reply(200, listing({"a"})));
        start();
        QTRY_COMPARE(names().size(), 1);
        m_manager->select(m_manager->ollamaBackends.value()[0]);
        m_server->stop();
        m_manager->startRefresh();
        QTRY_VERIFY(names().isEmpty());
        QCOMPARE(m_manager->selectedID.value(), u"apple-intelligence"_s);
    }

    void aSelectionFallsBackWhenTheListingFails() {
        m_server->enqueue(Script::reply(200, listing({"a"})));
        m_server->enqueue(Script::reply(500, listing({"a"})));
        start();
        QTRY_COMPARE(names().size(), 1);
        m_manager->select(m_manager->ollamaBackends.value()[0]);
        m_manager->startRefresh();
        QTRY_VERIFY(names().isEmpty());
        QCOMPARE(m_manager->selectedID.value(), u"apple-intelligence"_s);
    }

    void ofOverlappingRefreshesTheOneAnsweredLastWins() {
        m_server->enqueue(Script().gate().head(200).send(listing({"old"})));
        m_server->enqueue(Script().gate().head(200).send(listing({"new", "newer"})));
        start();
        QTRY_COMPARE(m_server->requestCount(), 1);
        m_manager->startRefresh();
        QTRY_COMPARE(m_server->requestCount(), 2);
        m_server->release(1);
        QTRY_COMPARE(names(), (QStringList{u"new"_s, u"newer"_s}));
        QVERIFY(!m_manager->isRefreshing.value());
        m_server->release(0);
        QTRY_COMPARE(names(), QStringList{u"old"_s});
        QVERIFY(!m_manager->isRefreshing.value());
    }

    void twoThousandModelsAreListed() {
        QByteArrayList all;
        for (int i = 0; i < 2000; ++i)
            all.append("model-" + QByteArray::number(i));
        m_server->enqueue(Script::reply(200, listing(all)));
        start();
        QTRY_COMPARE(names().size(), 2000);
        QCOMPARE(names().last(), u"model-1999"_s);
    }

    void endingEverythingDuringARefreshTakesNoTime() {
        m_server->enqueue(Script().hold());
        start();
        QTRY_COMPARE(m_server->requestCount(), 1);
        QElapsedTimer timer;
        timer.start();
        m_manager.reset();
        m_network.reset();
        QVERIFY2(timer.elapsed() < 1000, "the end waits for the refresh");
    }

private:
    void start() {
        NetworkThread& network = *m_network;
        m_manager.emplace(
            ModelManager::Sources{m_model, network.scope(),
                                  [&network] { return OllamaBackend::discover(network); },
                                  [&network](const OllamaModelEntry& entry) {
                                      return std::make_shared<OllamaBackend>(entry, network);
                                  }},
            *m_main);
    }
    QStringList names() const {
        QStringList all;
        for (const auto& backend : m_manager->ollamaBackends.value())
            all.append(backend->info().name());
        return all;
    }

    tests::ScriptedModel m_model;
    // What ends first stands last.
    std::unique_ptr<MainExecutor> m_main;
    std::unique_ptr<NetworkThread> m_network;
    std::optional<ModelManager> m_manager;
    std::unique_ptr<ScriptedServer> m_server;
};

TELLWICK_TEST(ModelManagerServerTests, EventLoop)
#include "ModelManagerServerTests.moc"
