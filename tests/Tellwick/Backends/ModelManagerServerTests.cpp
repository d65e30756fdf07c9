// SPDX-License-Identifier: MIT
// The catalogue over a server that really listens where the models are looked for.
#include "Tellwick/Backends/ModelManager.h"
#include "tests/Tellwick/Backends/OllamaFixture.h"
#include "tests/Tellwick/Conversations/ScriptedModel.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tellwick;
using tests::Script;

namespace {

QByteArray listing(const QByteArrayList& names) {
    QByteArrayList entries;
    for (const QByteArray& name : names)
        entries.append(R"({"name":")" + name + R"(","size":4661224676})");
    return R"({"models":[)" + entries.join(',') + "]}";
}

struct Catalogue : tests::OllamaFixture {
    void start() {
        manager.emplace(ModelManager::Sources{model, network->scope(),
                                              [this] { return OllamaBackend::discover(*network); },
                                              [this](const OllamaModelEntry& entry) {
                                                  return std::make_shared<OllamaBackend>(entry,
                                                                                         *network);
                                              }},
                        main);
    }
    QStringList names() const {
        QStringList all;
        for (const auto& backend : manager->ollamaBackends.value())
            all.append(backend->info().name());
        return all;
    }

    tests::ScriptedModel model;
    std::optional<ModelManager> manager;
};

} // namespace

class ModelManagerServerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void theModelsOfTheServerAreListedFromTheStart() {
        m->server.enqueue(Script().gate().head(200).send(listing({"b", "a b/c:🙂", "b"})));
        m->start();
        QVERIFY(m->names().isEmpty());
        QCOMPARE(m->manager->selectedSubtitle(), u"On-device \u00B7 Private"_s);
        QTRY_VERIFY(m->manager->isRefreshing.value());
        m->server.release();
        QTRY_COMPARE(m->names(), (QStringList{u"b"_s, u"a b/c:🙂"_s, u"b"_s}));
        QVERIFY(!m->manager->isRefreshing.value());
        QCOMPARE(m->manager->backends().size(), 4);
        m->manager->select(m->manager->backends()[3]);
        QCOMPARE(m->manager->selected(), m->manager->backends()[1]);
        QCOMPARE(m->manager->selectedSubtitle(), u"4.7 GB \u00B7 Ollama"_s);
    }

    void aSelectionFallsBackWhenThereIsNoGoodAnswerAnyMore_data() {
        QTest::addColumn<bool>("hasStopped");
        QTest::newRow("the server stops") << true;
        QTest::newRow("the listing fails") << false;
    }

    void aSelectionFallsBackWhenThereIsNoGoodAnswerAnyMore() {
        QFETCH(bool, hasStopped);
        m->server.enqueue(Script::reply(200, listing({"a"})));
        m->server.enqueue(Script::reply(500, listing({"a"})));
        m->start();
        QTRY_COMPARE(m->names().size(), 1);
        m->manager->select(m->manager->ollamaBackends.value()[0]);
        if (hasStopped)
            m->server.stop();
        m->manager->startRefresh();
        QTRY_VERIFY(m->names().isEmpty());
        QCOMPARE(m->manager->selectedID.value(), u"apple-intelligence"_s);
        QVERIFY(!m->manager->isRefreshing.value());
    }

    void endingEverythingDuringARefreshTakesNoTime() {
        m->server.enqueue(Script().hold());
        m->start();
        QTRY_COMPARE(m->server.requestCount(), 1);
        QElapsedTimer timer;
        timer.start();
        m->manager.reset();
        m->network.reset();
        QVERIFY2(timer.elapsed() < 1000, "the end waits for the refresh");
    }

private:
    std::optional<Catalogue> m;
};

TELLWICK_TEST(ModelManagerServerTests, EventLoop)
#include "ModelManagerServerTests.moc"
