// SPDX-License-Identifier: MIT
#include "Setup/SetupTexts.h"
#include "tests/Setup/SetupFixture.h"
#include "tests/support/TestMain.h"

#include <sys/types.h>
#include <unistd.h>

#include <csignal>

using namespace tests;
using namespace Qt::StringLiterals;

/// The set-up's own program in a terminal, installed beside a list of models of the test's.
class TerminalSetupTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_fixture = std::make_unique<SetupFixture>();
        m_folder = m_fixture->folder.path();
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(u"XDG_DATA_HOME"_s, in(u"data"_s));
        m_environment.insert(u"XDG_DATA_DIRS"_s, in(u"system"_s));
        m_environment.insert(u"HOME"_s, in(u"home"_s));
        m_environment.insert(u"PATH"_s, in(u"path"_s) + u":/usr/bin:/bin"_s);
        m_environment.insert(u"http_proxy"_s, u"http://127.0.0.1:9"_s);
        writeProgram(in(u"path/llama-server"_s), "#!/bin/sh\n");
        QDir().mkpath(in(u"libexec/tellwick"_s));
        QVERIFY(QFile::copy(QStringLiteral(SETUP_WINDOW), program()));
        writeBytes(in(u"share/tellwick/models.json"_s),
                   "{\"models\": [" + entry("Small", "small.gguf", 0) + ", " +
                       entry("Large", "large.gguf", 8'000'000'000'000'000) + "]}");
    }

    void whatIsFetchedIsToldBeforehand() {
        m_fixture->server.enqueue(Script().gate());
        QProcess process;
        start(process);
        QTRY_COMPARE_WITH_TIMEOUT(m_fixture->server.gatesReached(0), 1, processLimit);
        // Nothing of the file has come, and all has been said.
        process.waitForReadyRead(0);
        const QString said = QString::fromUtf8(process.readAll());
        const QString size = setup::texts::size(m_fixture->weights.size());
        QVERIFY2(said.contains(u"Fetching the on-device model: Small, licence MIT, "_s + size),
                 qPrintable(said));
        QVERIFY(said.contains(m_fixture->models + u"/on-device.gguf"_s));
        m_fixture->server.release(0);
        QCOMPARE(finish(process).status, 1);
    }

    void theModelIsFetched() {
        m_fixture->cutOffAfter(100'000);
        const Outcome outcome = run();
        QVERIFY2(outcome.status == 0, qPrintable(outcome.said));
        QCOMPARE(outcome.lines().constLast(), u"The on-device model is ready."_s);
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->server.request(0).target, QByteArray("/small.gguf"));
    }

    void theUserMayChoose_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("by its size") << u"large"_s;
        QTest::newRow("by its name") << u"LARGE"_s;
    }
    void theUserMayChoose() {
        QFETCH(QString, name);
        // Chosen, it is fetched where there is another one already.
        writeBytes(in(u"system/tellwick/models/on-device.gguf"_s), "another");
        m_fixture->server.enqueue(m_fixture->part(0));
        const Outcome outcome = run({u"--model"_s, name});
        QVERIFY2(outcome.status == 0, qPrintable(outcome.said));
        QCOMPARE(m_fixture->server.request(0).target, QByteArray("/large.gguf"));
        QVERIFY(m_fixture->model() == m_fixture->weights);
    }

    void aWrongCallIsExplained_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("told");
        const auto usage = u"Usage: tellwick-setup --terminal"_s;
        QTest::newRow("no such model") << QStringList{u"--model"_s, u"medium"_s}
                                       << u"There is no model “medium”. There are: small, large, "
                                          "Small, Large."_s;
        QTest::newRow("no such option") << QStringList{u"--nonsense"_s} << usage;
        QTest::newRow("no name") << QStringList{u"--model"_s} << usage;
        QTest::newRow("a word") << QStringList{u"small"_s} << usage;
        QTest::newRow("both") << QStringList{u"--model"_s, u"small"_s, u"--file"_s, u"x"_s}
                              << usage;
    }
    void aWrongCallIsExplained() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, told);
        const Outcome outcome = run(arguments);
        QCOMPARE(outcome.status, 2);
        QVERIFY2(outcome.said.startsWith(told), qPrintable(outcome.said));
    }

    void aModelThatIsThereIsLeftAlone_data() {
        QTest::addColumn<QString>("folder");
        QTest::newRow("the user's") << u"data"_s;
        QTest::newRow("the system's") << u"system"_s;
    }
    void aModelThatIsThereIsLeftAlone() {
        QFETCH(QString, folder);
        writeBytes(in(folder + u"/tellwick/models/on-device.gguf"_s), "weights");
        const Outcome outcome = run();
        QCOMPARE(outcome.said, QString());
        QCOMPARE(outcome.status, 0);
        QCOMPARE(m_fixture->server.requestCount(), 0);
    }

    void aFileOfTheUsersIsTaken() {
        writeBytes(in(u"own.gguf"_s), QByteArray("GGUF\3\0\0\0rest", 12));
        const Outcome outcome = run({u"--file"_s, u"own.gguf"_s});
        QCOMPARE(outcome.said, u"The on-device model is now own.gguf.\n"_s);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(QFile::symLinkTarget(m_fixture->models + u"/on-device.gguf"_s), in(u"own.gguf"_s));
        writeBytes(in(u"own.gguf"_s), "text");
        const Outcome refused = run({u"--file"_s, u"own.gguf"_s});
        QCOMPARE(refused.status, 1);
        QVERIFY2(refused.said.endsWith(u"is not a model: its format is not GGUF.\n"),
                 qPrintable(refused.said));
    }

    void whatFailsIsToldInTheLastLine() {
        m_fixture->server.setFallback(Script::reply(404, "{}"));
        const Outcome outcome = run();
        QVERIFY2(outcome.status == 1, qPrintable(outcome.said));
        QCOMPARE(outcome.lines().constLast(),
                 u"The on-device model could not be fetched: its server does not have the file."_s);
    }

    void aListThatIsDamagedIsToldInOneLine() {
        writeBytes(in(u"share/tellwick/models.json"_s), "{");
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.said,
                 u"The list of models, %1, is damaged: it is not in the expected format.\n"_s.arg(
                     in(u"share/tellwick/models.json"_s)));
    }

    void whatIsStoppedGoesOnWithTheNextRun_data() {
        QTest::addColumn<int>("signal");
        QTest::addColumn<int>("status");
        QTest::newRow("Ctrl-C") << SIGINT << 130;
        QTest::newRow("killed") << SIGKILL << SIGKILL;
    }
    void whatIsStoppedGoesOnWithTheNextRun() {
        QFETCH(int, signal);
        m_fixture->server.enqueue(m_fixture->part(0, 100'000).hold());
        QProcess process;
        start(process);
        const auto partSize = [this] { return QFileInfo(m_fixture->partPath()).size(); };
        QTRY_COMPARE_WITH_TIMEOUT(partSize(), 100'000, processLimit);
        kill(static_cast<pid_t>(process.processId()), signal);
        const Outcome stopped = finish(process);
        QTEST(stopped.status, "status");
        QCOMPARE(stopped.said.contains(u"goes on where this stopped"), signal == SIGINT);
        QCOMPARE(m_fixture->model(), QByteArray("unreadable"));
        QCOMPARE(partSize(), 100'000);

        m_fixture->server.enqueue(m_fixture->part(100'000));
        const Outcome second = run();
        QVERIFY2(second.status == 0, qPrintable(second.said));
        QVERIFY(second.said.contains(u"100 kB of it are there already."));
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->range(1), QByteArray("bytes=100000-"));
        QCOMPARE(m_fixture->leftovers(), QStringList());
    }

    void twoAtOnceDoNotMix() {
        m_fixture->server.enqueue(
            m_fixture->part(0, 100'000).gate().send(m_fixture->weights.mid(100'000)));
        QProcess process;
        start(process);
        QTRY_COMPARE_WITH_TIMEOUT(m_fixture->server.gatesReached(0), 1, processLimit);
        const Outcome second = run();
        QCOMPARE(second.status, 1);
        QCOMPARE(second.lines().constLast(),
                 u"Another set-up is already fetching the on-device model."_s);
        m_fixture->server.release(0);
        QCOMPARE(finish(process).status, 0);
        QVERIFY(m_fixture->model() == m_fixture->weights);
    }

    void aListThatIsDamagedKeepsNobodyFromTellwick() {
        writeBytes(in(u"share/tellwick/models.json"_s), "{");
        writeProgram(in(u"bin/tellwick"_s),
                     "#!/bin/sh\nprintf '|%s' \"$@\" >'" + in(u"ran"_s).toUtf8() + "'\n");
        m_environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(program(), {u"--open"_s, u"--style"_s, u"a b"_s});
        QCOMPARE(finish(process).status, 1);
        QTRY_COMPARE_WITH_TIMEOUT(bytesOf(in(u"ran"_s)), QByteArray("|--style|a b"), processLimit);
    }

    void anEngineThatIsMissingIsInstalled() {
        QFile::remove(in(u"path/llama-server"_s));
        m_environment.insert(u"PATH"_s, in(u"path"_s));
        writeBytes(in(u"data/tellwick/models/on-device.gguf"_s), "weights");
        writeProgram(in(u"libexec/tellwick/get-engine"_s),
                     "#!/bin/sh\necho \"$@\" >'" + in(u"asked"_s).toUtf8() +
                         "'\necho 'get-engine: there is none.' >&2\nexit 1\n");
        const Outcome none = run();
        QCOMPARE(none.status, 1);
        QCOMPARE(none.lines().constLast(), u"there is none."_s);
        const QString folder = in(u"data/tellwick/engine/bin"_s);
        QCOMPARE(bytesOf(in(u"asked"_s)), "--for-user " + folder.toUtf8() + '\n');

        writeProgram(in(u"libexec/tellwick/get-engine"_s), "#!/bin/sh\n");
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.lines().constLast(), u"The engine is ready."_s);

        // Where the user's own is, nobody asks for one.
        writeProgram(folder + u"/llama-server"_s, "#!/bin/sh\n");
        QCOMPARE(run().said, QString());
    }

private:
    struct Outcome {
        int status;
        QString said;
        QStringList lines() const { return said.split(u'\n', Qt::SkipEmptyParts); }
    };

    QString in(const QString& path) const { return m_fixture->in(path); }
    QString program() const { return in(u"libexec/tellwick/tellwick-setup-window"_s); }

    QByteArray entry(const QByteArray& name, const QByteArray& file, qint64 memory) const {
        const setup::ModelOffer& offer = m_fixture->offer;
        return "{\"name\": \"" + name +
               "\", \"licence\": \"MIT\", \"size\": " + QByteArray::number(offer.size) +
               ", \"address\": \"" +
               offer.address.resolved(QUrl(QString::fromLatin1(file))).toEncoded() +
               "\", \"sha256\": \"" + offer.sha256 +
               "\", \"machineMemory\": " + QByteArray::number(memory) + '}';
    }

    void start(QProcess& process, const QStringList& arguments = {}) {
        process.setProcessEnvironment(m_environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setWorkingDirectory(m_folder);
        process.start(program(), QStringList{u"--terminal"_s} + arguments);
        QVERIFY2(process.waitForStarted(processLimit), qPrintable(process.errorString()));
    }

    Outcome finish(QProcess& process) {
        if (!process.waitForFinished(processLimit))
            return {-1, process.errorString()};
        return {process.exitCode(), QString::fromUtf8(process.readAll())};
    }

    Outcome run(const QStringList& arguments = {}) {
        QProcess process;
        start(process, arguments);
        return finish(process);
    }

    std::unique_ptr<SetupFixture> m_fixture;
    QString m_folder;
    QProcessEnvironment m_environment;
};

TELLWICK_TEST(TerminalSetupTests, EventLoop)
#include "TerminalSetupTests.moc"
