// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Tellwick/Backends/ModelManager.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace Qt::StringLiterals;

namespace {

class UnavailableModel final : public SystemLanguageModel {
public:
    Availability availability() const override {
        return Availability::unavailable(Availability::UnavailableReason::modelNotReady);
    }
    std::shared_ptr<LanguageModelSession> makeSession(const QString&) override { return nullptr; }
};

class ListedBackend final : public ModelBackend {
public:
    explicit ListedBackend(const OllamaModelEntry& entry)
        : m_info(ModelInfo::ollamaID(entry.name), entry.name, ModelSource::ollama,
                 entry.size == 0 ? std::nullopt : std::optional(QString::number(entry.size))) {}
    const ModelInfo& info() const override { return m_info; }
    bool isAvailable() const override { return true; }
    ReplyStream streamResponse(const QString&, const QList<ChatMessage>&, const QString&) override {
        return makeStream<TextSnapshot>().stream;
    }
    void reset() override {}

private:
    ModelInfo m_info;
};

using Listing = StreamContinuation<QList<OllamaModelEntry>>;

Task<QList<OllamaModelEntry>> firstOf(AsyncStream<QList<OllamaModelEntry>> stream) {
    auto list = co_await stream.next();
    co_return list.value_or(QList<OllamaModelEntry>());
}

} // namespace

/// A manager over a server whose answers the test gives, one for each listing that was asked for.
class ModelManagerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void rightAfterConstructionOnlyTheOnDeviceModelIsThere();
    void theFirstRefreshStartsByItself();
    void withoutAServerTheListStaysEmptyAndNothingIsReported();
    void backendsComeInTheServersOrderBehindTheOnDeviceModel();
    void aSelectionSurvivesARefreshThatListsItsName();
    void aSelectionThatIsGoneFallsBackToTheOnDeviceModel();
    void anUnavailableModelCanBeSelected();
    void anUnknownIdentifierSelectsNothingUntilTheNextRefresh();
    void ofTwoModelsWithOneNameTheFirstIsSelected();
    void identifiersAreComparedExactly();
    void aModelWithoutDetailShowsTheGeneralLabel();
    void ofOverlappingRefreshesTheFirstToEndClearsTheFlagAndTheLastToEndWins();
    void stateNotifiesOnChangeAndTheListOnEveryAssignment();
    void aRefreshKeepsTheManagerAlive();
    void aScopeThatEndsMidRefreshLetsTheManagerGo();

private:
    void answer(qsizetype listing, const QStringList& names, qint64 size = 7);

    std::unique_ptr<MainExecutor> m_executor;
    std::unique_ptr<TaskScope> m_scope;
    UnavailableModel m_model;
    QList<Listing> m_listings;
    std::shared_ptr<ModelManager> m_manager;
};

void ModelManagerTests::init() {
    m_executor = std::make_unique<MainExecutor>();
    m_scope = std::make_unique<TaskScope>(*m_executor);
    m_listings.clear();
    m_manager = ModelManager::create(
        std::make_shared<AppleIntelligenceBackend>(m_model, *m_scope),
        {[this] {
             auto [stream, continuation] = makeStream<QList<OllamaModelEntry>>();
             m_listings.append(continuation);
             return firstOf(std::move(stream));
         },
         [](const OllamaModelEntry& entry) { return std::make_shared<ListedBackend>(entry); }},
        *m_scope);
}

void ModelManagerTests::cleanup() {
    m_scope.reset();
    m_manager.reset();
    m_executor.reset();
}

void ModelManagerTests::answer(qsizetype listing, const QStringList& names, qint64 size) {
    QTRY_VERIFY(m_listings.size() > listing);
    QList<OllamaModelEntry> entries;
    for (const QString& name : names)
        entries.append({name, size});
    m_listings[listing].yield(entries);
}

void ModelManagerTests::rightAfterConstructionOnlyTheOnDeviceModelIsThere() {
    QCOMPARE(m_manager->backends().size(), 1);
    QCOMPARE(m_manager->backends().constFirst(), m_manager->aiBackend);
    QCOMPARE(m_manager->selected(), m_manager->aiBackend);
    QCOMPARE(m_manager->selectedID.value(), u"apple-intelligence"_s);
    QCOMPARE(m_manager->selectedSubtitle(), u"On-device · Private"_s);
    QVERIFY(!m_manager->isRefreshing.value());
    QVERIFY(m_listings.isEmpty());
}

void ModelManagerTests::theFirstRefreshStartsByItself() {
    QTRY_VERIFY(m_manager->isRefreshing.value());
    QVERIFY(m_manager->ollamaBackends.value().isEmpty());
    answer(0, {u"a"_s});
    QTRY_VERIFY(!m_manager->isRefreshing.value());
    QCOMPARE(m_manager->ollamaBackends.value().size(), 1);
}

void ModelManagerTests::withoutAServerTheListStaysEmptyAndNothingIsReported() {
    answer(0, {});
    QTRY_VERIFY(!m_manager->isRefreshing.value());
    QVERIFY(m_manager->ollamaBackends.value().isEmpty());
    QCOMPARE(m_manager->selected(), m_manager->aiBackend);
}

void ModelManagerTests::backendsComeInTheServersOrderBehindTheOnDeviceModel() {
    answer(0, {u"z"_s, u"a"_s, u"m"_s});
    QTRY_COMPARE(m_manager->backends().size(), 4);
    QStringList ids;
    for (const auto& backend : m_manager->backends())
        ids.append(backend->info().id());
    QCOMPARE(ids,
             (QStringList{u"apple-intelligence"_s, u"ollama-z"_s, u"ollama-a"_s, u"ollama-m"_s}));
}

void ModelManagerTests::aSelectionSurvivesARefreshThatListsItsName() {
    answer(0, {u"a"_s, u"b"_s});
    QTRY_COMPARE(m_manager->backends().size(), 3);
    const auto before = m_manager->ollamaBackends.value().at(1);
    m_manager->select(before);
    m_manager->startRefresh();
    answer(1, {u"b"_s});
    QTRY_COMPARE(m_manager->backends().size(), 2);
    QCOMPARE(m_manager->selectedID.value(), u"ollama-b"_s);
    QCOMPARE(m_manager->selected(), m_manager->ollamaBackends.value().at(0));
    QVERIFY(m_manager->selected() != before);
}

void ModelManagerTests::aSelectionThatIsGoneFallsBackToTheOnDeviceModel() {
    answer(0, {u"a"_s});
    QTRY_COMPARE(m_manager->backends().size(), 2);
    m_manager->select(m_manager->ollamaBackends.value().at(0));
    QCOMPARE(m_manager->selectedSubtitle(), u"7"_s);
    m_manager->startRefresh();
    answer(1, {});
    QTRY_COMPARE(m_manager->selectedID.value(), u"apple-intelligence"_s);
    QVERIFY(m_manager->ollamaBackends.value().isEmpty());
}

void ModelManagerTests::anUnavailableModelCanBeSelected() {
    answer(0, {u"a"_s});
    QTRY_COMPARE(m_manager->backends().size(), 2);
    m_manager->select(m_manager->ollamaBackends.value().at(0));
    QVERIFY(!m_manager->aiBackend->isAvailable());
    m_manager->select(m_manager->aiBackend);
    QCOMPARE(m_manager->selected(), m_manager->aiBackend);
}

void ModelManagerTests::anUnknownIdentifierSelectsNothingUntilTheNextRefresh() {
    answer(0, {u"a"_s});
    QTRY_COMPARE(m_manager->backends().size(), 2);
    m_manager->selectedID = u"ollama-gone"_s;
    QVERIFY(!m_manager->selected());
    QCOMPARE(m_manager->selectedSubtitle(), u"Apple Intelligence · On-device"_s);
    m_manager->startRefresh();
    answer(1, {u"a"_s});
    QTRY_COMPARE(m_manager->selectedID.value(), u"apple-intelligence"_s);
}

void ModelManagerTests::ofTwoModelsWithOneNameTheFirstIsSelected() {
    answer(0, {u"twin"_s, u"twin"_s});
    QTRY_COMPARE(m_manager->backends().size(), 3);
    m_manager->select(m_manager->ollamaBackends.value().at(1));
    QCOMPARE(m_manager->selected(), m_manager->ollamaBackends.value().at(0));
}

void ModelManagerTests::identifiersAreComparedExactly() {
    answer(0, {u"Model"_s});
    QTRY_COMPARE(m_manager->backends().size(), 2);
    m_manager->selectedID = u"ollama-model"_s;
    QVERIFY(!m_manager->selected());
}

void ModelManagerTests::aModelWithoutDetailShowsTheGeneralLabel() {
    answer(0, {u"a"_s}, 0);
    QTRY_COMPARE(m_manager->backends().size(), 2);
    m_manager->select(m_manager->ollamaBackends.value().at(0));
    QCOMPARE(m_manager->selectedSubtitle(), u"Apple Intelligence · On-device"_s);
}

void ModelManagerTests::ofOverlappingRefreshesTheFirstToEndClearsTheFlagAndTheLastToEndWins() {
    m_manager->startRefresh();
    QTRY_COMPARE(m_listings.size(), 2);
    QVERIFY(m_manager->isRefreshing.value());
    answer(1, {u"second"_s});
    QTRY_COMPARE(m_manager->backends().size(), 2);
    QVERIFY(!m_manager->isRefreshing.value()); // although the first is still under way
    answer(0, {u"first"_s, u"other"_s});
    QTRY_COMPARE(m_manager->backends().size(), 3);
    QCOMPARE(m_manager->backends().at(1)->info().name(), u"first"_s);
    QVERIFY(!m_manager->isRefreshing.value());
}

void ModelManagerTests::stateNotifiesOnChangeAndTheListOnEveryAssignment() {
    answer(0, {});
    QTRY_VERIFY(m_listings.size() == 1 && !m_manager->isRefreshing.value());
    int selections = 0;
    int lists = 0;
    int flags = 0;
    const auto selectionNotifier = m_manager->selectedID.addNotifier([&] { ++selections; });
    const auto listNotifier = m_manager->ollamaBackends.addNotifier([&] { ++lists; });
    const auto flagNotifier = m_manager->isRefreshing.addNotifier([&] { ++flags; });
    m_manager->select(m_manager->aiBackend);
    m_manager->isRefreshing = false;
    QCOMPARE(selections, 0);
    QCOMPARE(flags, 0);
    m_manager->startRefresh();
    answer(1, {}); // an equal list
    QTRY_COMPARE(lists, 1);
    QTRY_COMPARE(flags, 2);
    QCOMPARE(selections, 0);
}

void ModelManagerTests::aRefreshKeepsTheManagerAlive() {
    QTRY_COMPARE(m_listings.size(), 1);
    const std::weak_ptr<ModelManager> manager = m_manager;
    m_manager.reset();
    QVERIFY(!manager.expired());
    answer(0, {u"a"_s});
    QTRY_VERIFY(manager.expired());
}

void ModelManagerTests::aScopeThatEndsMidRefreshLetsTheManagerGo() {
    QTRY_COMPARE(m_listings.size(), 1);
    const std::weak_ptr<ModelManager> manager = m_manager;
    m_manager.reset();
    m_scope.reset();
    QVERIFY(manager.expired());
}

TELLWICK_TEST(ModelManagerTests, EventLoop)
#include "ModelManagerTests.moc"
