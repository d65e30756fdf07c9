// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaWire.h"
#include "tests/Tellwick/Backends/OllamaFixture.h"
#include "tests/support/TestMain.h"

#include <QJsonArray>
#include <QLocale>

#include <array>
#include <clocale>
#include <ctime>

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tellwick;
using tests::chatLine;
using tests::OllamaFixture;
using tests::Script;
using Role = ChatMessage::Role;

namespace {

ChatMessage message(Role role, QStringView content) {
    return {role, TextSnapshot(content)};
}

std::chrono::nanoseconds processorTimeOfThisThread() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

class OllamaBackendTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void theDescriptorComesFromTheEntry() {
        const OllamaBackend backend({u"llama3:8b"_s, 4661224676}, *m->network);
        QCOMPARE(backend.info().id(), u"ollama-llama3:8b"_s);
        QCOMPARE(backend.info().name(), u"llama3:8b"_s);
        QCOMPARE(backend.info().source(), ModelSource::ollama);
        QCOMPARE(backend.info().detail, u"4.7 GB \u00B7 Ollama"_s);
        QVERIFY(backend.isAvailable());
        QCOMPARE(m->server.requestCount(), 0);
    }

    void theSizeIsInDecimalGigabytes_data() {
        QTest::addColumn<qint64>("size");
        for (const qint64 size :
             {qint64(0), qint64(1), qint64(49'999'999), qint64(50'000'000), qint64(250'000'000),
              qint64(350'000'000), qint64(750'000'000), qint64(949'999'999), qint64(950'000'000),
              qint64(1'000'000'000), qint64(1'073'741'824), qint64(4'661'224'676),
              qint64(404'000'000'000), qint64(-1'500'000'000), std::numeric_limits<qint64>::max(),
              std::numeric_limits<qint64>::min()})
            QTest::addRow("%lld", size) << size;
    }

    void theSizeIsInDecimalGigabytes() {
        QFETCH(qint64, size);
        // The C library's own rounding is the measure; the tests run in a locale with a full stop.
        std::array<char, 64> text;
        std::snprintf(text.data(), text.size(), "%.1f GB · Ollama",
                      static_cast<double>(size) / 1'000'000'000);
        const OllamaBackend backend({u"m"_s, size}, *m->network);
        QCOMPARE(backend.info().detail, QString::fromUtf8(text.data()));
    }

    void theSizeHasAFullStopInEveryLocale() {
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        // Where the C library has such a locale, it is tried as well.
        const std::string numbers = std::setlocale(LC_NUMERIC, nullptr);
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
        const OllamaBackend backend({u"m"_s, 1'234'567'000'000}, *m->network);
        std::setlocale(LC_NUMERIC, numbers.c_str());
        QLocale::setDefault(before);
        QCOMPARE(backend.info().detail, u"1234.6 GB · Ollama"_s);
    }

    void theAddressIsTheLoopbackPort() {
        QCOMPARE(OllamaBackend::baseURL().port(), OllamaFixture::port);
        QVERIFY(!OllamaBackend::baseURL().isUnixSocket());
    }

    void theIdleLimitsAreAMinuteAndTwo() {
        QCOMPARE(OllamaBackend::listingIdleTimeout, std::chrono::seconds(60));
        QCOMPARE(OllamaBackend::idleTimeout, std::chrono::seconds(120));
    }

    void aRequestCarriesTheWholeConversation_data() {
        QTest::addColumn<QString>("systemPrompt");
        QTest::addColumn<QStringList>("history"); // of the user and the model in turn
        QTest::addColumn<QString>("prompt");
        QTest::newRow("nothing but the prompt") << QString() << QStringList() << u"Hi"_s;
        QTest::newRow("a history") << u"Be brief."_s << QStringList{u"a"_s, u"b"_s} << u"c"_s;
        QTest::newRow("empty texts") << QString() << QStringList{QString(), QString()} << QString();
        QTest::newRow("texts of all kinds")
            << u"  \"x\"\n\n\\ "_s
            << QStringList{u"日本 🙂"_s, u"a\r\nb\u2028c\t"_s, QString(QChar(0))} << u" y "_s;
    }

    void aRequestCarriesTheWholeConversation() {
        QFETCH(QString, systemPrompt);
        QFETCH(QStringList, history);
        QFETCH(QString, prompt);
        m->server.enqueue(Script::streamed(chatLine(u"ok"_s, true)));
        QList<ChatMessage> messages;
        QStringList expected = {u"system: "_s + systemPrompt};
        for (qsizetype i = 0; i < history.size(); ++i) {
            const bool isUser = i % 2 == 0;
            messages.append(message(isUser ? Role::user : Role::assistant, history[i]));
            expected.append((isUser ? u"user: "_s : u"assistant: "_s) + history[i]);
        }
        expected.append(u"user: "_s + prompt);
        OllamaBackend asked = m->backend();
        m->whole(m->watchReply(asked.streamResponse(prompt, messages, systemPrompt)));
        const QJsonObject document = m->sentDocument();
        QStringList sent;
        for (const QJsonValue& value : document[u"messages"].toArray()) {
            QCOMPARE(value.toObject().size(), 2);
            sent.append(value[u"role"].toString() + u": "_s + value[u"content"].toString());
        }
        QCOMPARE(sent, expected);
        QCOMPARE(document[u"model"].toString(), u"llama3:8b"_s);
        QCOMPARE(document[u"stream"], QJsonValue(true));
        QCOMPARE(document.size(), 3);
    }

    void aRequestIsAPostOfJsonWithNoHeaderBesides() {
        m->askAndWait(Script::streamed(chatLine(u"ok"_s, true)));
        const auto request = m->server.request();
        QCOMPARE(request.head,
                 "POST /api/chat HTTP/1.1\r\nHost: 127.0.0.1:11434\r\nConnection: close\r\n"
                 "Content-Type: application/json\r\nContent-Length: " +
                     QByteArray::number(request.body.size()) + "\r\n\r\n");
        QCOMPARE(request.body, R"({"model":"llama3:8b","messages":[{"role":"system","content":""},)"
                               R"({"role":"user","content":"Hi"}],"stream":true})");
    }

    void resetChangesNothing() {
        m->server.setFallback(Script::streamed(chatLine(u"ok"_s, true)));
        OllamaBackend asked = m->backend();
        for (int i = 0; i < 2; ++i) {
            m->whole(m->watchReply(asked.streamResponse(
                u"c"_s, {message(Role::user, u"a"), message(Role::assistant, u"b")}, u"s"_s)));
            asked.reset();
        }
        QCOMPARE(m->server.request(1).body, m->server.request(0).body);
        QCOMPARE(m->sentDocument(1)[u"messages"].toArray().size(), 4);
    }

    void theRequestHoldsTheConversationAsItWasWhenAsked() {
        m->server.enqueue(Script::streamed(chatLine(u"ok"_s, true)));
        OllamaBackend asked = m->backend();
        QList<ChatMessage> history = {message(Role::user, u"before")};
        const auto reply = m->watchReply(asked.streamResponse(u"Hi"_s, history, QString()));
        history[0].content = TextSnapshot(u"after");
        history.append(message(Role::assistant, u"more"));
        QTRY_VERIFY(reply->hasEnded);
        QCOMPARE(m->sentDocument()[u"messages"].toArray().size(), 3);
        QCOMPARE(m->sentDocument()[u"messages"][1][u"content"].toString(), u"before"_s);
    }

    void discoverListsTheModels() {
        m->server.enqueue(Script::reply(
            200,
            R"({"models":[{"name":"b","size":5},{"name":"hf.co/x/y z🙂:Q4","size":4661224676},)"
            R"({"name":"b","size":6}]})"));
        const auto models = m->discover();
        QCOMPARE(models, (QList<OllamaModelEntry>{
                             {u"b"_s, 5}, {u"hf.co/x/y z🙂:Q4"_s, 4661224676}, {u"b"_s, 6}}));
    }

    void discoverDecodesOnTheNetworkThread() {
        // Much to decode and little to hand over. The processor time of this thread alone is looked
        // at, which the load of the machine does not change.
        QJsonArray models;
        for (int i = 0; i < 2000; ++i)
            models.append(QJsonObject{{u"name"_s, u"model-%1"_s.arg(i)},
                                      {u"size"_s, qint64(5'000'000'000) + i},
                                      {u"digest"_s, QString(2'000, u'f')}});
        const QByteArray listing = QJsonDocument(QJsonObject{{u"models"_s, models}}).toJson();
        auto start = processorTimeOfThisThread();
        QCOMPARE(OllamaTagsResponse::fromJson(listing).models.size(), 2000);
        const auto decoding = processorTimeOfThisThread() - start;

        m->server.enqueue(Script::reply(200, listing));
        start = processorTimeOfThisThread();
        const auto found = m->discover();
        const auto spent = processorTimeOfThisThread() - start;
        QCOMPARE(found.size(), 2000);
        QCOMPARE(found.last(), (OllamaModelEntry{u"model-1999"_s, 5'000'001'999}));
        QVERIFY2(spent < decoding / 3,
                 qPrintable(u"%1 ns of %2"_s.arg(spent.count()).arg(decoding.count())));
    }

    void discoverGivesNothing_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        const QByteArray good = R"({"models":[{"name":"a","size":1}]})";
        QTest::newRow("no models") << 200 << QByteArray(R"({"models":[]})");
        QTest::newRow("not JSON") << 200 << QByteArray("Ollama is running");
        QTest::newRow("nothing") << 200 << QByteArray();
        QTest::newRow("an entry that does not read")
            << 200 << QByteArray(R"({"models":[{"name":"a","size":1},{"name":"b"}]})");
        QTest::newRow("201") << 201 << good;
        QTest::newRow("301") << 301 << good;
        QTest::newRow("404") << 404 << good;
        QTest::newRow("500") << 500 << good;
        QTest::newRow("not HTTP") << 0 << QByteArray("hello there, nothing here is HTTP\r\n\r\n");
        QTest::newRow("cut short") << 0 << "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + good;
    }

    void discoverGivesNothing() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        m->server.enqueue(status == 0 ? Script().send(body) : Script::reply(status, body));
        QVERIFY(m->discover().isEmpty());
        QCOMPARE(m->server.requestCount(), 1);
    }

    void discoverGivesUpOnASilentServer_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("before the head") << QByteArray();
        QTest::newRow("in the body") << QByteArray("HTTP/1.1 200 OK\r\n\r\n{\"models\":[]");
    }

    void discoverGivesUpOnASilentServer() {
        QFETCH(QByteArray, bytes);
        m->server.enqueue(Script().send(bytes).hold());
        QVERIFY(m->discover(std::chrono::milliseconds(50)).isEmpty());
        QTRY_VERIFY(m->server.clientClosed());
    }

    void withoutAServerNothingIsDiscoveredAndBackendsStayAvailable() {
        const OllamaBackend listed = m->backend();
        m->server.stop();
        QVERIFY(m->discover().isEmpty());
        QVERIFY(listed.isAvailable());
    }

    void discoverMakesAPlainGet() {
        m->server.enqueue(Script::reply(200, R"({"models":[]})"));
        m->discover();
        QCOMPARE(
            m->server.request().head,
            QByteArray(
                "GET /api/tags HTTP/1.1\r\nHost: 127.0.0.1:11434\r\nConnection: close\r\n\r\n"));
    }

private:
    std::optional<OllamaFixture> m;
};

TELLWICK_TEST(OllamaBackendTests, EventLoop)
#include "OllamaBackendTests.moc"
