// SPDX-License-Identifier: MIT
// What belongs to the main thread stops the program elsewhere. Each operation is tried in a process
// of its own.
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/TestMain.h"

#include <QProcess>

#include <map>
#include <thread>

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

/// Runs what is posted to it at once, on a thread of its own; drops it while it is closed.
class OtherThread final : public Executor {
public:
    void post(std::function<void()> work) override {
        if (isOpen)
            std::thread(std::move(work)).join();
    }
    bool isCurrent() const override { return false; }

    bool isOpen = false;
};

using Operation = void (*)(Conversation&);

template <auto operation>
void onAnotherThread(Conversation& conversation) {
    std::thread([&] { operation(*conversation.controller); }).join();
}

/// Operations that must not come back, by the name that each says when it stops the program.
const std::map<QByteArray, Operation>& operations() {
    static const std::map<QByteArray, Operation> operations{
        {"ChatViewModel::send", onAnotherThread<[](ChatViewModel& vm) { vm.send(); }>},
        {"ChatViewModel::stop", onAnotherThread<[](ChatViewModel& vm) { vm.stop(); }>},
        {"ChatViewModel::newChat", onAnotherThread<[](ChatViewModel& vm) { vm.newChat(); }>},
        {"ChatViewModel::setMode",
         onAnotherThread<[](ChatViewModel& vm) { vm.setMode(AppConfig::writingModes().first()); }>},
        {"ChatViewModel::clearMode", onAnotherThread<[](ChatViewModel& vm) { vm.clearMode(); }>},
        {"AppleIntelligenceBackend::streamResponse", onAnotherThread<[](ChatViewModel& vm) {
             static_cast<void>(vm.modelManager.aiBackend->streamResponse(u"hi"_s, {}, u"A"_s));
         }>},
        {"AppleIntelligenceBackend::prewarm",
         onAnotherThread<[](ChatViewModel& vm) { vm.modelManager.aiBackend->prewarm(u"A"_s); }>},
        {"AppleIntelligenceBackend::reset",
         onAnotherThread<[](ChatViewModel& vm) { vm.modelManager.aiBackend->reset(); }>},
        {"ModelManager::select", onAnotherThread<[](ChatViewModel& vm) {
             vm.modelManager.select(vm.modelManager.aiBackend);
         }>},
        {"ChatViewModel::loadSession",
         [](Conversation& conversation) {
             std::thread([&] { conversation.makeController(conversation.context()); }).join();
         }},
        {"ChatViewModel::saveSession",
         [](Conversation& conversation) {
             OtherThread elsewhere;
             ChatViewModel vm(conversation.context(), conversation.models(), elsewhere);
             const auto backend = conversation.models().makeBackend({u"tiny"_s, 1});
             vm.modelManager.ollamaBackends = {backend};
             vm.modelManager.select(backend);
             vm.draft = u"one"_s;
             conversation.server.refusal = std::make_exception_ptr(ScriptedError());
             elsewhere.isOpen = true;
             vm.send(); // the turn fails at once, and its end is stored
         }},
        {"ModelManager::refresh",
         [](Conversation& conversation) {
             OtherThread elsewhere;
             elsewhere.isOpen = true;
             const ModelManager manager(conversation.models(), elsewhere);
         }},
    };
    return operations;
}

} // namespace

class MainThreadTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void calledOffTheMainThreadItStopsTheProgram_data() {
        QTest::addColumn<QByteArray>("operation");
        for (const auto& [name, operation] : operations())
            QTest::newRow(name.constData()) << name;
    }

    void calledOffTheMainThreadItStopsTheProgram() {
        QFETCH(QByteArray, operation);
        QProcess child;
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {u"MainThreadTests"_s, QString::fromLatin1(operation)});
        QVERIFY(child.waitForFinished(20'000));
        const QByteArray said = child.readAll();
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY2(said.contains(operation + " was called off the main thread"), said.constData());
    }
};

static int run(int argc, char** argv) {
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2 && operations().contains(arguments.at(1).toLatin1())) {
        Conversation conversation;
        conversation.start();
        operations().at(arguments.at(1).toLatin1())(conversation);
        return 0;
    }
    MainThreadTests tests;
    return QTest::qExec(&tests, argc, argv);
}
TELLWICK_TEST_FUNCTION(MainThreadTests, EventLoop, run)

#include "MainThreadTests.moc"
