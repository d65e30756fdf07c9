// SPDX-License-Identifier: MIT
#include "Setup/SetupController.h"
#include "Setup/SetupError.h"
#include "tests/Setup/SetupFixture.h"
#include "tests/support/TestMain.h"

using namespace setup;
using namespace tests;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SetupControllerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_fixture = std::make_unique<SetupFixture>();
        const auto entry = [this](const QByteArray& name, qint64 size, const QByteArray& memory) {
            return "{\"name\": \"" + name +
                   "\", \"licence\": \"MIT\", \"size\": " + QByteArray::number(size) +
                   ", \"address\": \"" + m_fixture->offer.address.toEncoded() +
                   "\", \"sha256\": \"" +
                   (name == "Small" ? m_fixture->offer.sha256 : QByteArray(64, 'b')) +
                   "\", \"machineMemory\": " + memory + '}';
        };
        writeBytes(in(u"share/tellwick/models.json"_s),
                   "{\"models\": [" + entry("Small", m_fixture->offer.size, "0") + ", " +
                       entry("Large", m_fixture->offer.size + 1, "1000") + "]}");
        make();
    }
    void cleanup() { m_controller.reset(); }

    void atFirstTheModelIsOffered() {
        QCOMPARE(state().offers.value().size(), 2);
        QCOMPARE(state().chosen.value(), qsizetype(0));
        QCOMPARE(state().folder.value(), m_fixture->models);
        QVERIFY(state().room > 0);
        QCOMPARE(state().model.value(), ModelPhase::Offered);
        QCOMPARE(state().received.value(), 0);
        QCOMPARE(state().engine.value(), EnginePhase::Missing);
        QVERIFY(state().engineOffer.value().contains(in(u"data/tellwick/engine"_s)));
        make(1'000);
        QCOMPARE(state().chosen.value(), qsizetype(1));
    }

    void theModelIsFetchedAndServes() {
        m_fixture->server.enqueue(
            m_fixture->part(0, 100'000).gate().send(m_fixture->weights.mid(100'000)));
        actions().download();
        QCOMPARE(state().model.value(), ModelPhase::Fetching);
        QTRY_COMPARE_WITH_TIMEOUT(state().received.value(), 100'000, 20'000);
        // While it is being fetched, no other one is chosen.
        actions().choose(1);
        QCOMPARE(state().chosen.value(), qsizetype(0));
        actions().download();
        m_fixture->server.release(0);
        QTRY_COMPARE_WITH_TIMEOUT(state().model.value(), ModelPhase::Ready, 20'000);
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->server.requestCount(), 1);
        QCOMPARE(state().rate.value(), 0);
        QCOMPARE(state().ownFile.value(), QString());
    }

    void whatIsPausedGoesOnAlsoInAnotherRun() {
        m_fixture->server.enqueue(m_fixture->part(0, 100'000).hold());
        actions().download();
        QTRY_COMPARE_WITH_TIMEOUT(state().received.value(), 100'000, 20'000);
        actions().pause();
        QCOMPARE(state().model.value(), ModelPhase::Paused);
        QCOMPARE(state().received.value(), 100'000);

        make(1'000); // on a machine that would have the other one recommended
        QCOMPARE(state().chosen.value(), qsizetype(0));
        QCOMPARE(state().model.value(), ModelPhase::Paused);
        QCOMPARE(state().received.value(), 100'000);
        actions().choose(1);
        QCOMPARE(state().model.value(), ModelPhase::Offered);
        actions().choose(0);
        m_fixture->server.enqueue(m_fixture->part(100'000));
        actions().download();
        QTRY_COMPARE_WITH_TIMEOUT(state().model.value(), ModelPhase::Ready, 20'000);
        QVERIFY(m_fixture->model() == m_fixture->weights);
    }

    void whatFailsIsToldAndMayBeTriedAgain() {
        m_fixture->server.enqueue(Script::reply(404, "{}"));
        actions().download();
        QTRY_COMPARE_WITH_TIMEOUT(state().model.value(), ModelPhase::Failed, 20'000);
        QCOMPARE(state().modelProblem.value(),
                 u"The on-device model could not be fetched: its server does not have the file."_s);
        m_fixture->server.enqueue(m_fixture->part(0));
        actions().download();
        QCOMPARE(state().modelProblem.value(), QString());
        QTRY_COMPARE_WITH_TIMEOUT(state().model.value(), ModelPhase::Ready, 20'000);
    }

    void aFileOfTheUsersServes() {
        const QString own = in(u"own.gguf"_s);
        writeBytes(own, QByteArray("GGUF\3\0\0\0rest", 12));
        actions().useFile(own);
        QCOMPARE(state().model.value(), ModelPhase::Ready);
        QCOMPARE(state().ownFile.value(), own);
        make();
        QCOMPARE(state().model.value(), ModelPhase::Ready);
        QCOMPARE(state().ownFile.value(), own);

        // Another one is a choice away.
        actions().choose(0);
        QCOMPARE(state().model.value(), ModelPhase::Offered);
        writeBytes(own, "text");
        actions().useFile(own);
        QCOMPARE(state().model.value(), ModelPhase::Failed);
        QCOMPARE(state().modelProblem.value(),
                 u"%1 is not a model: its format is not GGUF."_s.arg(own));
        m_fixture->server.enqueue(m_fixture->part(0));
        actions().download();
        QTRY_COMPARE_WITH_TIMEOUT(state().model.value(), ModelPhase::Ready, 20'000);
        QCOMPARE(state().ownFile.value(), QString());
    }

    void aModelThatIsThereIsKnownByItsSize() {
        writeBytes(m_fixture->models + u"/on-device.gguf"_s, m_fixture->weights);
        make(1'000);
        QCOMPARE(state().model.value(), ModelPhase::Ready);
        QCOMPARE(state().chosen.value(), qsizetype(0));
        QCOMPARE(state().ownFile.value(), QString());
        actions().choose(1);
        QCOMPARE(state().model.value(), ModelPhase::Offered);
        actions().choose(0);
        QCOMPARE(state().model.value(), ModelPhase::Ready);
    }

    void aModelOfTheSystemsServes() {
        const QString file = in(u"system/tellwick/models/on-device.gguf"_s);
        writeBytes(file, "weights");
        make();
        QCOMPARE(state().model.value(), ModelPhase::Ready);
        QCOMPARE(state().ownFile.value(), file);
    }

    void theEngineIsInstalled() {
        writeProgram(in(u"libexec/tellwick/get-engine"_s),
                     "#!/bin/sh\necho 'get-engine: one thing' >&2\n"
                     "echo 'get-engine: It cannot be had.' >&2\nexit 1\n");
        actions().installEngine();
        QCOMPARE(state().engine.value(), EnginePhase::Installing);
        QTRY_COMPARE_WITH_TIMEOUT(state().engine.value(), EnginePhase::Failed, 20'000);
        QCOMPARE(state().engineProblem.value(), u"It cannot be had."_s);

        writeProgram(in(u"libexec/tellwick/get-engine"_s),
                     "#!/bin/sh\nmkdir -p \"$2\" && cp \"$0\" \"$2/llama-server\"\n");
        actions().installEngine();
        QCOMPARE(state().engineProblem.value(), QString());
        QTRY_COMPARE_WITH_TIMEOUT(state().engine.value(), EnginePhase::Ready, 20'000);
        make();
        QCOMPARE(state().engine.value(), EnginePhase::Ready);
    }

    void withoutItsHelperTheEngineCannotBeInstalled() {
        actions().installEngine();
        QTRY_COMPARE_WITH_TIMEOUT(state().engine.value(), EnginePhase::Failed, 20'000);
        QCOMPARE(state().engineProblem.value(),
                 u"The engine could not be installed: %1 does not start."_s.arg(
                     in(u"libexec/tellwick/get-engine"_s)));
    }

    void whoEndsTheSetUpEndsWhatInstallsTheEngine() {
        // It holds the file until it is told to end, and with it what it has started.
        writeProgram(in(u"libexec/tellwick/get-engine"_s),
                     "#!/bin/sh\ntrap 'echo ended >" + in(u"ended"_s).toUtf8() +
                         "; exit 1' TERM\necho >'" + in(u"begun"_s).toUtf8() +
                         "'\nsleep 1000 & wait\n");
        actions().installEngine();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(in(u"begun"_s)), 20'000);
        m_controller.reset();
        QCOMPARE(bytesOf(in(u"ended"_s)), QByteArray("ended\n"));
    }

    void tellwickIsOpenedWithItsArguments() {
        writeProgram(in(u"bin/tellwick"_s), "#!/bin/sh\necho \"$@\" >'" + in(u"half"_s).toUtf8() +
                                                "'\nmv '" + in(u"half"_s).toUtf8() + "' '" +
                                                in(u"ran"_s).toUtf8() + "'\n");
        actions().openTellwick();
        QTRY_COMPARE_WITH_TIMEOUT(bytesOf(in(u"ran"_s)), QByteArray("--style fusion\n"), 20'000);
        QVERIFY(!QFile::exists(notNow()));

        QFile::remove(in(u"ran"_s));
        actions().notNow();
        QVERIFY(QFile::exists(notNow()));
        QTRY_COMPARE_WITH_TIMEOUT(bytesOf(in(u"ran"_s)), QByteArray("--style fusion\n"), 20'000);
    }

    void whoSetsSomethingUpIsAskedAgain_data() {
        QTest::addColumn<QString>("action");
        for (const char* action : {"download", "useFile", "installEngine"})
            QTest::newRow(action) << QString::fromLatin1(action);
    }
    void whoSetsSomethingUpIsAskedAgain() {
        QFETCH(QString, action);
        writeBytes(notNow(), "");
        m_fixture->server.setFallback(Script().hold());
        if (action == u"download")
            actions().download();
        else if (action == u"useFile")
            actions().useFile(in(u"nowhere"_s));
        else
            actions().installEngine();
        QVERIFY(!QFile::exists(notNow()));
    }

    void aListThatDoesNotReadIsTold() {
        writeBytes(in(u"share/tellwick/models.json"_s), "");
        QVERIFY_THROWS_EXCEPTION(SetupError, make());
    }

private:
    QString in(const QString& path) const { return m_fixture->in(path); }
    QString notNow() const { return in(u"data/tellwick/setup-not-now"_s); }
    const SetupState& state() const { return m_controller->state(); }
    SetupActions actions() const { return m_controller->actions(); }

    /// Starts the set-up anew.
    void make(quint64 machineMemory = 999) {
        m_controller.reset();
        m_controller = std::make_unique<SetupController>(
            m_executor,
            SetupSurroundings{.directories = m_fixture->directories(),
                              .programs = ProgramPaths(platform::toPath(m_fixture->folder.path())),
                              .machineMemory = machineMemory,
                              .limits = {}},
            QStringList{u"--style"_s, u"fusion"_s});
    }

    platform::MainExecutor m_executor;
    std::unique_ptr<SetupFixture> m_fixture;
    std::unique_ptr<SetupController> m_controller;
};

TELLWICK_TEST(SetupControllerTests, EventLoop)
#include "SetupControllerTests.moc"
