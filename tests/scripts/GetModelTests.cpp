// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UniqueFd.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestMain.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <signal.h>
#include <sys/socket.h>

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>

using namespace tests;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(Script)

/// scripts/get-model against a server on this machine.
class GetModelTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (QStandardPaths::findExecutable(u"curl"_s).isEmpty())
            QSKIP("curl is not installed");
        for (int i = 0; i < 300'000; ++i)
            m_weights.append(static_cast<char>(i * 7 + i / 251));
    }

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_models = m_folder->filePath(u"data/tellwick/models"_s);
        m_server = std::make_unique<ScriptedServer>();
        QVERIFY(m_server->listen());
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(u"XDG_DATA_HOME"_s, m_folder->filePath(u"data"_s));
        m_environment.insert(u"XDG_DATA_DIRS"_s, m_folder->filePath(u"system"_s));
        m_environment.insert(u"http_proxy"_s, u"http://127.0.0.1:9"_s);
        m_environment.insert(u"TELLWICK_TEST_MODEL_BASE"_s,
                             u"http://127.0.0.1:%1"_s.arg(m_server->port()));
        m_environment.insert(u"TELLWICK_TEST_MODEL_SIZE"_s, QString::number(m_weights.size()));
        m_environment.insert(
            u"TELLWICK_TEST_MODEL_CHECKSUM"_s,
            QString::fromLatin1(
                QCryptographicHash::hash(m_weights, QCryptographicHash::Sha256).toHex()));
    }

    void aWholeFileGetsItsName_data() {
        QTest::addColumn<QList<Script>>("answers");
        QTest::addColumn<QByteArrayList>("ranges");
        const Script whole = part(0);
        QTest::newRow("in one go") << QList{whole} << QByteArrayList{""};
        QTest::newRow("cut off twice")
            << QList{part(0, 100'000), part(100'000, 200'000), part(200'000)}
            << QByteArrayList{"", "bytes=100000-", "bytes=200000-"};
        QTest::newRow(
            "from a server that cannot go on in the middle") // 200 where 206 was asked for
            << QList{part(0, 100'000), whole, whole} << QByteArrayList{"", "bytes=100000-", ""};
    }
    void aWholeFileGetsItsName() {
        QFETCH(QList<Script>, answers);
        QFETCH(QByteArrayList, ranges);
        m_server->enqueue(announce());
        for (const Script& answer : answers)
            m_server->enqueue(answer);
        const Outcome outcome = run();
        QVERIFY2(outcome.status == 0, qPrintable(outcome.said));
        QVERIFY(model() == m_weights);
        QCOMPARE(leftovers(), QStringList());
        QVERIFY(outcome.said.contains(u"The on-device model is ready."));
        for (int i = 0; i < ranges.size(); ++i)
            QCOMPARE(range(i + 1), ranges.at(i));
    }

    void whatWillBeFetchedIsToldBeforehand_data() {
        QTest::addColumn<QString>("memory");
        QTest::addColumn<bool>("isLarge");
        QTest::newRow("16 GB") << u"16000000"_s << true;
        QTest::newRow("12 GB") << u"11718750"_s << true;
        QTest::newRow("less") << u"11718749"_s << false;
        QTest::newRow("4 GB") << u"3900000"_s << false;
    }
    void whatWillBeFetchedIsToldBeforehand() {
        QFETCH(QString, memory);
        QFETCH(bool, isLarge);
        m_environment.insert(u"TELLWICK_TEST_MEMORY_KB"_s, memory);
        m_server->enqueue(announce());
        m_server->enqueue(Script().gate());
        QProcess process;
        start(process);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 2, 20'000);
        QCOMPARE(m_server->request(1).target,
                 isLarge ? QByteArray("/unsloth/Qwen3-4B-Instruct-2507-GGUF/resolve/"
                                      "a06e946bb6b655725eafa393f4a9745d460374c9/"
                                      "Qwen3-4B-Instruct-2507-Q4_K_M.gguf")
                         : QByteArray("/Qwen/Qwen2.5-1.5B-Instruct-GGUF/resolve/"
                                      "91cad51170dc346986eccefdc2dd33a9da36ead9/"
                                      "qwen2.5-1.5b-instruct-q4_k_m.gguf"));
        // Nothing of the file has come, and all has been said.
        process.waitForReadyRead(0);
        const QString said = QString::fromUtf8(process.readAll());
        const QString name = isLarge ? u"Qwen3 4B Instruct (2507)"_s : u"Qwen2.5 1.5B Instruct"_s;
        QVERIFY2(said.contains(name + u", licence Apache-2.0, 0 MB"_s), qPrintable(said));
        QVERIFY(said.contains(m_models + u"/on-device.gguf"_s));
        m_server->release(1);
        QCOMPARE(finish(process).status, 1);
    }

    void theUserMayChoose() {
        m_environment.insert(u"TELLWICK_TEST_MEMORY_KB"_s, u"64000000"_s);
        m_server->enqueue(announce());
        m_server->enqueue(part(0));
        QCOMPARE(run({u"small"_s}).status, 0);
        QVERIFY(m_server->request(1).target.contains("1.5b"));
        QCOMPARE(run({u"medium"_s}).status, 2);
    }

    void aTransferThatWasGivenUpGoesOnWithTheNextRun() {
        m_server->enqueue(announce());
        m_server->enqueue(part(0, 100'000));
        m_server->enqueue(Script().reset());
        const Outcome first = run();
        QCOMPARE(first.status, 1);
        QVERIFY2(first.said.contains(u"the transfer broke off"), qPrintable(first.said));
        QCOMPARE(model(), QByteArray("unreadable"));
        QCOMPARE(leftovers().size(), 1);

        m_server->enqueue(announce());
        m_server->enqueue(part(100'000));
        const Outcome second = run();
        QVERIFY2(second.status == 0, qPrintable(second.said));
        QVERIFY(model() == m_weights);
        QCOMPARE(range(4), QByteArray("bytes=100000-"));
        QCOMPARE(leftovers(), QStringList());
    }

    void aRedirectIsFollowed() {
        m_server->enqueue(announce());
        m_server->enqueue(Script().head(302, {"Location: /elsewhere", "Content-Length: 0"}));
        m_server->enqueue(part(0));
        QCOMPARE(run().status, 0);
        QVERIFY(model() == m_weights);
        QCOMPARE(m_server->request(2).target, QByteArray("/elsewhere"));
    }

    void whatFailsLeavesNoModelAndIsToldInOneLine_data() {
        QTest::addColumn<QString>("before"); // in the shell
        QTest::addColumn<Script>("answer");
        QTest::addColumn<int>("requests");
        QTest::addColumn<int>("kept"); // parts to go on with
        QTest::addColumn<QString>("told");
        const Script whole = part(0);
        QTest::newRow("a wrong checksum")
            << u"export TELLWICK_TEST_MODEL_CHECKSUM=0a;"_s << whole << 2 << 0
            << u"is not the on-device model (wrong checksum)"_s;
        QTest::newRow("too short") << QString() << Script::reply(200, m_weights.left(1'000)) << 3
                                   << 1 << u"the transfer broke off"_s;
        QTest::newRow("too long") << QString() << Script::reply(200, m_weights + "more") << 2 << 0
                                  << u"another file under that name"_s;
        QTest::newRow("no such file")
            << QString() << Script::reply(404, "{}") << 2 << 0
            << u"The on-device model could not be fetched: its server does not have the file."_s;
        QTest::newRow("no room") << u"export TELLWICK_TEST_MODEL_SIZE=4000000000000000;"_s << whole
                                 << 1 << 0 << u"There is no room for it"_s;
        // The limit makes each write beyond it fail, as a full disk does.
        QTest::newRow("a full disk")
            << u"ulimit -f 100; trap '' XFSZ;"_s << whole << 2 << 1 << u"the disk is full"_s;
        for (const char* base : {"http://192.0.2.1:80", "http://127.0.0.1.example:80",
                                 "https://127.0.0.1:1", "http://127.0.0.1:1/path", "file:///etc"})
            QTest::newRow(base) << u"export TELLWICK_TEST_MODEL_BASE=%1;"_s.arg(
                                       QLatin1StringView(base))
                                << whole << 0 << 0 << u"is not a loopback address"_s;
    }
    void whatFailsLeavesNoModelAndIsToldInOneLine() {
        QFETCH(QString, before);
        QFETCH(Script, answer);
        QFETCH(QString, told);
        m_server->setFallback(answer);
        const Outcome outcome = run({}, before);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.lines().constLast().contains(told), qPrintable(outcome.said));
        QCOMPARE(model(), QByteArray("unreadable"));
        QTEST(int(leftovers().size()), "kept");
        QTEST(m_server->requestCount(), "requests");
    }

    void withoutANetworkOneLineSaysSoWithinTenSeconds_data() {
        QTest::addColumn<bool>("isSilent");
        QTest::newRow("nobody listens") << false;
        QTest::newRow("nothing comes back") << true;
    }
    void withoutANetworkOneLineSaysSoWithinTenSeconds() {
        QFETCH(bool, isSilent);
        // A listener that takes no connection stands for a network that swallows everything: once
        // its queue is full, a connection attempt gets no answer at all.
        const platform::UniqueFd listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        QCOMPARE(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        socklen_t size = sizeof address;
        getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size);
        std::array<platform::UniqueFd, 3> queued;
        if (isSilent) {
            QCOMPARE(listen(listener.get(), 0), 0);
            for (platform::UniqueFd& visitor : queued) {
                visitor = platform::UniqueFd(
                    socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
                (void)::connect(visitor.get(), reinterpret_cast<sockaddr*>(&address),
                                sizeof address);
            }
        }
        m_environment.insert(u"TELLWICK_TEST_MODEL_BASE"_s,
                             u"http://127.0.0.1:%1"_s.arg(ntohs(address.sin_port)));
        QElapsedTimer timer;
        timer.start();
        const Outcome outcome = run();
        QVERIFY(timer.elapsed() < 10'000);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.said,
                 u"The on-device model could not be fetched: its server cannot be reached. With a "
                 u"network, run scripts/get-model to try again.\n"_s);
    }

    void ctrlCStopsAndTheNextRunGoesOn() {
        m_server->enqueue(announce());
        m_server->enqueue(part(0, 100'000).hold());
        QProcess process;
        start(process);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 2, 20'000);
        const auto partSize = [this] {
            return QFileInfo(m_models + u'/' + leftovers().value(0, u"none"_s)).size();
        };
        QTRY_VERIFY_WITH_TIMEOUT(partSize() > 0, 20'000);
        kill(-static_cast<pid_t>(process.processId()), SIGINT);
        const Outcome stopped = finish(process);
        QCOMPARE(stopped.status, 130);
        QVERIFY2(stopped.said.contains(u"scripts/get-model goes on where this stopped"),
                 qPrintable(stopped.said));
        QCOMPARE(model(), QByteArray("unreadable"));

        const qint64 kept = partSize();
        QVERIFY(kept > 0);
        m_server->enqueue(announce());
        m_server->enqueue(part(kept));
        QCOMPARE(run().status, 0);
        QVERIFY(model() == m_weights);
        QCOMPARE(range(3), "bytes=" + QByteArray::number(kept) + '-');
    }

    void twoAtOnceDoNotMix() {
        m_server->enqueue(announce());
        m_server->enqueue(part(0, 100'000).gate().send(m_weights.mid(100'000)));
        QProcess process;
        start(process);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 2, 20'000);
        const Outcome second = run();
        QCOMPARE(second.status, 1);
        QVERIFY2(second.said.startsWith(u"Another scripts/get-model"), qPrintable(second.said));
        m_server->release(1);
        QCOMPARE(finish(process).status, 0);
        QVERIFY(model() == m_weights);
    }

    void aModelThatIsThereIsLeftAlone_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("isLink");
        QTest::newRow("the user's") << u"data"_s << false;
        QTest::newRow("the system's") << u"system"_s << false;
        QTest::newRow("a link") << u"data"_s << true;
    }
    void aModelThatIsThereIsLeftAlone() {
        QFETCH(QString, folder);
        QFETCH(bool, isLink);
        const QString models = m_folder->filePath(folder + u"/tellwick/models"_s);
        const QString file = models + (isLink ? u"/elsewhere"_s : u"/on-device.gguf"_s);
        writeBytes(file, "weights");
        if (isLink)
            QVERIFY(QFile::link(file, models + u"/on-device.gguf"_s));
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.said, QString());
        QCOMPARE(m_server->requestCount(), 0);
    }

private:
    struct Outcome {
        int status;
        QString said;
        QStringList lines() const { return said.split(u'\n', Qt::SkipEmptyParts); }
    };

    void start(QProcess& process, const QStringList& arguments = {}, const QString& prefix = {}) {
        process.setProcessEnvironment(m_environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        // A process group of its own, so that a Ctrl-C can reach the script and its children.
        process.setChildProcessModifier([] { setpgid(0, 0); });
        const QString script = QStringLiteral(SCRIPTS_FOLDER) + u"/get-model"_s;
        process.start(u"bash"_s,
                      QStringList{u"-c"_s, prefix + u"exec \"$@\""_s, u"-"_s, script} + arguments);
    }

    Outcome finish(QProcess& process) {
        if (!process.waitForFinished(60'000))
            return {-1, u"did not end"_s};
        return {process.exitCode(), QString::fromUtf8(process.readAll())};
    }

    Outcome run(const QStringList& arguments = {}, const QString& prefix = {}) {
        QProcess process;
        start(process, arguments, prefix);
        return finish(process);
    }

    /// The answer to a request for all from `from` on; it may break off at `to`.
    Script part(qsizetype from, qsizetype to = -1) const {
        const qsizetype size = m_weights.size();
        QByteArrayList head{"Content-Length: " + QByteArray::number(size - from)};
        if (from > 0)
            head.append(
                u"Content-Range: bytes %1-%2/%3"_s.arg(from).arg(size - 1).arg(size).toLatin1());
        return Script()
            .head(from > 0 ? 206 : 200, head)
            .send(m_weights.mid(from, to < 0 ? -1 : to - from));
    }

    Script announce() const { return Script().head(200, {"Content-Length: 0"}); }
    QByteArray model() const { return bytesOf(m_models + u"/on-device.gguf"_s); }
    /// What is in the models' folder besides the model and the lock.
    QStringList leftovers() const {
        QStringList names =
            QDir(m_models).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        names.removeAll(u".lock"_s);
        names.removeAll(u"on-device.gguf"_s);
        return names;
    }

    QByteArray range(int request) const { return m_server->request(request).header("Range"); }

    QByteArray m_weights;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_models;
    std::unique_ptr<ScriptedServer> m_server;
    QProcessEnvironment m_environment;
};

TELLWICK_TEST(GetModelTests, EventLoop)
#include "GetModelTests.moc"
