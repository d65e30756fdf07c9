// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UniqueFd.h"
#include "Setup/ModelDownload.h"
#include "Setup/SetupError.h"
#include "tests/Setup/SetupFixture.h"
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>

#include <sys/resource.h>
#include <sys/socket.h>

#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <netinet/in.h>

using namespace setup;
using namespace tests;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(Script)

namespace {

platform::Task<bool> done(platform::Task<void> task) {
    co_await task;
    co_return true;
}

const auto failed = u"The on-device model could not be fetched: "_s;
const auto unreachable = failed + u"its server cannot be reached. With a network, try again."_s;
const auto brokenOff = failed + u"the transfer broke off. To go on with it, try again."_s;
const auto otherFile = failed + u"its server has another file under that name."_s;

} // namespace

class ModelDownloadTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_fixture = std::make_unique<SetupFixture>();
        m_reports.clear();
        qputenv("http_proxy", "http://127.0.0.1:9"); // nobody listens
    }
    void cleanup() { qunsetenv("http_proxy"); }

    void aWholeFileGetsItsName_data() {
        QTest::addColumn<QList<Script>>("answers");
        QTest::addColumn<QByteArrayList>("ranges");
        const SetupFixture fixture;
        const Script whole = fixture.part(0);
        QTest::newRow("in one go") << QList{whole} << QByteArrayList{""};
        QTest::newRow("slowly") << QList{Script()
                                             .head(200, {"Content-Length: 300000"})
                                             .send(fixture.weights.left(1'000))
                                             .pause(5ms)
                                             .send(fixture.weights.mid(1'000, 1'000))
                                             .pause(5ms)
                                             .send(fixture.weights.mid(2'000))}
                                << QByteArrayList{""};
        QTest::newRow("of a length that is not told")
            << QList{Script().head(200).send(fixture.weights)} << QByteArrayList{""};
    }
    void aWholeFileGetsItsName() {
        QFETCH(QList<Script>, answers);
        QFETCH(QByteArrayList, ranges);
        for (const Script& answer : answers)
            m_fixture->server.enqueue(answer);
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->leftovers(), QStringList());
        QVERIFY(m_fixture->server.requestCount() >= ranges.size());
        for (int i = 0; i < ranges.size(); ++i)
            QCOMPARE(m_fixture->range(i), ranges.at(i));
        QCOMPARE(m_reports.constLast(), std::pair(ModelPhase::Checking, m_fixture->offer.size));
    }

    void whatIsCutOffAtEveryTenthIsGoneOnWith() {
        m_fixture->cutOffAfter(30'000);
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QVERIFY(m_fixture->server.requestCount() >= 10);
        // The toolkit may ask once more by itself, so not each request has one.
        const QByteArray last = m_fixture->range(m_fixture->server.requestCount() - 1);
        QVERIFY2(last.startsWith("bytes="), last.constData());
    }

    void whatAnEarlierOneLeftIsGoneOnWith() {
        writeBytes(m_fixture->partPath(), m_fixture->weights.left(100'000));
        m_fixture->server.enqueue(m_fixture->part(100'000));
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->range(0), QByteArray("bytes=100000-"));
        QCOMPARE(m_reports.constFirst(), std::pair(ModelPhase::Fetching, qint64(100'000)));
    }

    void whatIsAllThereIsOnlyChecked() {
        writeBytes(m_fixture->partPath(), m_fixture->weights);
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->server.requestCount(), 0);
    }

    void whatIsLargerThanTheModelBeginsAnew() {
        writeBytes(m_fixture->partPath(), m_fixture->weights + "more");
        m_fixture->server.enqueue(m_fixture->part(0));
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->range(0), QByteArray());
    }

    void theDesktopsProxyIsAskedForWhatLiesElsewhere() {
        qputenv("http_proxy", "http://127.0.0.1:" + QByteArray::number(m_fixture->server.port()));
        m_fixture->offer.address = QUrl(u"http://models.example/small.gguf"_s);
        m_fixture->server.enqueue(m_fixture->part(0));
        QCOMPARE(fetch(), QString());
        QCOMPARE(m_fixture->server.request(0).target,
                 QByteArray("http://models.example/small.gguf"));
    }

    void redirectsAreFollowed() {
        writeBytes(m_fixture->partPath(), m_fixture->weights.left(100'000));
        for (const char* place : {"/b", "/c", "/d"})
            m_fixture->server.enqueue(Script().head(
                302, {QByteArray("Location: ") + place, "Content-Length: 0", "Connection: close"}));
        m_fixture->server.enqueue(m_fixture->part(100'000));
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->server.request(3).target, QByteArray("/d"));
        QCOMPARE(m_fixture->range(3), QByteArray("bytes=100000-"));
    }

    void aServerThatCannotGoOnInTheMiddleBeginsAnew() {
        writeBytes(m_fixture->partPath(), QByteArray(100'000, 'x'));
        m_fixture->server.enqueue(m_fixture->part(0));
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->range(0), QByteArray("bytes=100000-"));
        QCOMPARE(m_fixture->server.requestCount(), 1);
    }

    void whatFailsLeavesNoModelAndIsToldInASentence_data() {
        QTest::addColumn<Script>("answer");
        QTest::addColumn<qsizetype>("before"); // bytes that are there already
        QTest::addColumn<QString>("told");
        QTest::addColumn<qsizetype>("kept"); // bytes to go on with
        const SetupFixture fixture;
        const auto row = [](const char* name, const Script& answer, const QString& told,
                            qsizetype before = 0, qsizetype kept = 0) {
            QTest::newRow(name) << answer << before << told << kept;
        };
        const auto redirect = [](const QByteArray& to) {
            return Script().head(302,
                                 {"Location: " + to, "Content-Length: 0", "Connection: close"});
        };
        QByteArray wrong = fixture.weights;
        wrong[7] = 'x';
        row("a wrong file", Script::reply(200, wrong),
            u"What was fetched is not the on-device model (wrong checksum) and has been deleted. "
            "Try again."_s);
        row("a shorter file", Script::reply(200, fixture.weights.left(1'000)), otherFile);
        row("a longer file", Script::reply(200, fixture.weights + "more"), otherFile);
        row("a longer file of a length that is not told",
            Script().head(200).send(fixture.weights + "more"), otherFile);
        row("another place of it", fixture.part(100'000), otherFile, 50'000, 50'000);
        row("the rest of another file",
            Script()
                .head(206, {"Content-Range: bytes 50000-59999/60000", "Content-Length: 10000"})
                .send(QByteArray(10'000, 'x')),
            otherFile, 50'000, 50'000);
        row("nothing from there on", Script::reply(416, "{}"), otherFile, 50'000, 50'000);
        row("no such file", Script::reply(404, "{}"),
            failed + u"its server does not have the file."_s);
        row("no such file, in the middle", Script::reply(404, "{}"),
            failed + u"its server does not have the file."_s, 50'000, 50'000);
        row("refused", Script::reply(403, "{}"),
            failed + u"its server refuses to send the file."_s);
        row("trouble", Script::reply(500, "{}"),
            failed + u"its server cannot send the file now (status 500). Try again later."_s);
        row("broken off at once", Script().reset(), brokenOff, 50'000, 50'000);
        const auto astray = failed + u"its server sends on to an address that is not secure."_s;
        row("sent to another host", redirect("http://192.0.2.1/small.gguf"), astray);
        row("sent to a file", redirect("file:///etc/passwd"), astray);
        row("sent round and round", redirect("/small.gguf"),
            failed + u"its server does not have the file."_s);
    }
    void whatFailsLeavesNoModelAndIsToldInASentence() {
        QFETCH(Script, answer);
        QFETCH(qsizetype, before);
        QFETCH(QString, told);
        QFETCH(qsizetype, kept);
        if (before > 0)
            writeBytes(m_fixture->partPath(), m_fixture->weights.left(before));
        m_fixture->server.setFallback(answer);
        QCOMPARE(fetch(), told);
        QCOMPARE(m_fixture->model(), QByteArray("unreadable"));
        QCOMPARE(m_fixture->leftovers().size(), kept > 0 ? 1 : 0);
        if (kept > 0)
            QVERIFY(bytesOf(m_fixture->partPath()) == m_fixture->weights.left(kept));
    }

    void withoutRoomNothingIsAsked() {
        m_fixture->offer.size = 4'000'000'000'000'000;
        const QString told = fetch();
        QVERIFY2(told.startsWith(u"There is no room for the on-device model: "), qPrintable(told));
        QCOMPARE(m_fixture->server.requestCount(), 0);
    }

    void onAFullDiskWhatThereIsIsKept() {
        // The limit makes each write beyond it fail, as a full disk does.
        signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{100'000, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        m_fixture->server.setFallback(m_fixture->part(0));
        const QString told = fetch();
        setrlimit(RLIMIT_FSIZE, &before);
        QCOMPARE(told, failed + u"the disk is full. Make room and try again."_s);
        QCOMPARE(m_fixture->server.requestCount(), 1);
        QVERIFY(bytesOf(m_fixture->partPath()) == m_fixture->weights.left(100'000));
    }

    void aFolderThatCannotBeMadeIsTold() {
        writeBytes(m_fixture->in(u"data"_s), "a file");
        QCOMPARE(fetch(),
                 u"The on-device model cannot be kept: the folder %1 cannot be written."_s.arg(
                     m_fixture->models));
    }

    void withoutANetworkASentenceSaysSo_data() {
        QTest::addColumn<bool>("isSilent");
        QTest::newRow("nobody listens") << false;
        QTest::newRow("nothing comes back") << true;
    }
    void withoutANetworkASentenceSaysSo() {
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
        m_fixture->offer.address.setPort(ntohs(address.sin_port));
        // Without the limit for connecting it would wait for the test's watchdog.
        QCOMPARE(fetch({.connecting = 300ms, .silence = 1h}), unreachable);
    }

    void aServerThatFallsSilentCountsAsGone_data() {
        QTest::addColumn<bool>("hasSaidSomething");
        QTest::newRow("before its answer") << false;
        QTest::newRow("in the middle") << true;
    }
    void aServerThatFallsSilentCountsAsGone() {
        QFETCH(bool, hasSaidSomething);
        if (hasSaidSomething)
            m_fixture->server.enqueue(m_fixture->part(0, 100'000).hold());
        m_fixture->server.setFallback(Script().hold());
        QCOMPARE(fetch({.connecting = 20s, .silence = 300ms}), unreachable);
        // What has brought something is tried once more, from there.
        QCOMPARE(m_fixture->server.requestCount(), hasSaidSomething ? 2 : 1);
        QCOMPARE(m_fixture->leftovers().size(), hasSaidSomething ? 1 : 0);
    }

    void whatIsEndedInTheMiddleIsKept() {
        m_fixture->server.enqueue(m_fixture->part(0, 100'000).hold());
        platform::MainExecutor executor;
        {
            ModelDownload download(folder());
            platform::TaskScope scope(executor);
            qint64 received = 0;
            (void)startTask(scope,
                            done(download.fetch(m_fixture->offer,
                                                [&](ModelPhase, qint64 now) { received = now; })));
            QTRY_COMPARE_WITH_TIMEOUT(received, 100'000, 20'000);
        }
        QTRY_VERIFY_WITH_TIMEOUT(m_fixture->server.clientClosed(0), 20'000);
        m_fixture->server.enqueue(m_fixture->part(100'000));
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(m_fixture->range(1), QByteArray("bytes=100000-"));
    }

    void twoAtOnceDoNotMix() {
        m_fixture->server.enqueue(
            m_fixture->part(0, 100'000).gate().send(m_fixture->weights.mid(100'000)));
        platform::MainExecutor executor;
        ModelDownload download(folder());
        platform::TaskScope scope(executor);
        const auto first =
            startTask(scope, done(download.fetch(m_fixture->offer, [](ModelPhase, qint64) {})));
        QTRY_COMPARE_WITH_TIMEOUT(m_fixture->server.gatesReached(0), 1, 20'000);
        QCOMPARE(fetch(), u"Another set-up is already fetching the on-device model."_s);
        m_fixture->server.release(0);
        QTRY_VERIFY_WITH_TIMEOUT(first->hasEnded(), 20'000);
        QCOMPARE(first->errorText(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
    }

    void aLinkIsReplacedAndNotWhatItLeadsTo() {
        const QString own = m_fixture->in(u"own.gguf"_s);
        writeBytes(own, "own");
        QDir().mkpath(m_fixture->models);
        QVERIFY(QFile::link(own, m_fixture->models + u"/on-device.gguf"_s));
        m_fixture->server.enqueue(m_fixture->part(0));
        QCOMPARE(fetch(), QString());
        QVERIFY(m_fixture->model() == m_fixture->weights);
        QCOMPARE(bytesOf(own), QByteArray("own"));
    }

private:
    ModelFolder folder() const { return ModelFolder(m_fixture->directories()); }

    /// Fetches the model; gives what is told where that fails.
    QString fetch(const ModelDownload::Limits& limits = {.connecting = 20s, .silence = 20s}) {
        platform::MainExecutor executor;
        ModelDownload download(folder(), limits);
        return runTask(executor, done(download.fetch(m_fixture->offer,
                                                     [this](ModelPhase phase, qint64 received) {
                                                         m_reports.append({phase, received});
                                                     })))
            .errorText();
    }

    std::unique_ptr<SetupFixture> m_fixture;
    QList<std::pair<ModelPhase, qint64>> m_reports;
};

TELLWICK_TEST(ModelDownloadTests, EventLoop)
#include "ModelDownloadTests.moc"
