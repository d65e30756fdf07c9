// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpError.h"
#include "Platform/Json/JsonVisitor.h"
#include "Tellwick/Backends/OllamaBackend.h"
#include "Tellwick/Backends/OllamaError.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TaskRunner.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <clocale>

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tellwick;
using tests::runTask;
using tests::Script;
using tests::ScriptedServer;
using tests::startTask;
using Role = ChatMessage::Role;

namespace {

constexpr quint16 port = 11434;

/// What a consumer has seen of a reply.
struct Reply {
    QStringList texts;
    bool hasEnded = false;
    std::exception_ptr error;

    QString errorText() const { return error ? localizedDescription(error) : QString(); }
};

Task<void> consume(ReplyStream stream, std::shared_ptr<Reply> reply) {
    try {
        while (const auto text = co_await stream.next())
            reply->texts.append(text->toString());
    } catch (...) {
        reply->error = std::current_exception();
    }
    reply->hasEnded = true;
}

template <class Error>
bool isError(const std::exception_ptr& error) {
    try {
        if (error)
            std::rethrow_exception(error);
    } catch (const Error&) {
        return true;
    } catch (...) {
    }
    return false;
}

QByteArray line(const QString& content, bool done = false) {
    const QJsonObject object{
        {u"model"_s, u"m"_s},
        {u"message"_s, QJsonObject{{u"role"_s, u"assistant"_s}, {u"content"_s, content}}},
        {u"done"_s, done}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

ChatMessage message(Role role, QStringView content) {
    return {role, Text(content)};
}

/// The value of a line like "VmRSS:  123 kB" in the process's status, in bytes.
qint64 residentMemory() {
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& row : file.readAll().split('\n')) {
        if (row.startsWith("VmRSS:"))
            return row.mid(6).simplified().split(' ').value(0).toLongLong() * 1024;
    }
    return -1;
}

} // namespace

class OllamaBackendTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theDescriptorComesFromTheEntry();
    void theSizeIsInDecimalGigabytes_data();
    void theSizeIsInDecimalGigabytes();
    void theSizeHasAFullStopInEveryLocale();
    void theAddressIsTheLoopbackPort();

    void aRequestCarriesTheWholeConversation_data();
    void aRequestCarriesTheWholeConversation();
    void aRequestIsAPostOfJson();
    void resetChangesNothing();
    void theRequestHoldsTheConversationAsItWasWhenAsked();

    void everyLineYieldsTheTextSoFar();
    void aReplyEnds_data();
    void aReplyEnds();
    void linesAreShownAsTheyCome();
    void aStatusOtherThan200EndsTheStream_data();
    void aStatusOtherThan200EndsTheStream();
    void aRedirectContactsNobodyElse();
    void aBodyOfAnotherStatusIsNotWaitedFor();
    void aStoppedServerShowsAsAnErrorOfTheTransport();
    void aResetMidLineKeepsTheTextBefore();
    void silenceEndsTheReplyAsATimeout();
    void theIdleLimitIsTwoMinutes();
    void proxiesOfTheEnvironmentAreNotUsed();

    void aConsumerThatStopsEarlyLeavesTheRequestRunningToItsDoneLine();
    void aReplyOutlivesItsBackend();
    void repliesRunAtTheSameTime();
    void aHundredThousandLinesThatNobodyReadsCostMemoryInProportion();
    void endingTheNetworkThreadEndsRepliesAtOnce();

    void discoverListsTheModels();
    void discoverListsTwoThousandModels();
    void discoverGivesNothing_data();
    void discoverGivesNothing();
    void withoutAServerNothingIsDiscoveredAndBackendsStayAvailable();
    void discoverMakesAPlainGet();

private:
    OllamaBackend backend(const QString& name = u"llama3:8b"_s) {
        return OllamaBackend({name, 4661224676}, *m_network);
    }
    /// Starts a reply to "Hi" and its consumer.
    std::shared_ptr<Reply> ask(OllamaBackend& backend) {
        const auto reply = std::make_shared<Reply>();
        m_scope->start(consume(backend.streamResponse(u"Hi"_s, {}, QString()), reply));
        return reply;
    }
    std::shared_ptr<Reply> askAndWait(const Script& script) {
        m_server->enqueue(script);
        OllamaBackend asked = backend();
        const auto reply = ask(asked);
        if (!QTest::qWaitFor([&] { return reply->hasEnded; }, 30'000))
            qFatal("the reply has not ended within its limit");
        return reply;
    }
    QJsonObject sentDocument(int request = 0) {
        return QJsonDocument::fromJson(m_server->request(request).body).object();
    }

    // What ends first stands last.
    std::unique_ptr<MainExecutor> m_main;
    std::unique_ptr<TaskScope> m_scope;
    std::unique_ptr<NetworkThread> m_network;
    std::unique_ptr<ScriptedServer> m_server;
};

void OllamaBackendTests::init() {
    m_main = std::make_unique<MainExecutor>();
    m_scope = std::make_unique<TaskScope>(*m_main);
    m_network = std::make_unique<NetworkThread>();
    m_server = std::make_unique<ScriptedServer>();
    QVERIFY2(m_server->listen(port),
             qPrintable(
                 u"Port 11434 cannot be used (%1). Run the tests where no model server runs."_s.arg(
                     m_server->errorString())));
}

void OllamaBackendTests::cleanup() {
    m_server.reset();
    m_network.reset();
    m_scope.reset();
    m_main.reset();
}

void OllamaBackendTests::theDescriptorComesFromTheEntry() {
    const OllamaBackend backend({u"llama3:8b"_s, 4661224676}, *m_network);
    QCOMPARE(backend.info().id(), u"ollama-llama3:8b"_s);
    QCOMPARE(backend.info().name(), u"llama3:8b"_s);
    QCOMPARE(backend.info().source(), ModelSource::ollama);
    QCOMPARE(backend.info().detail, u"4.7 GB \u00B7 Ollama"_s);
    QVERIFY(backend.isAvailable());
    QCOMPARE(m_server->requestCount(), 0);
}

void OllamaBackendTests::theSizeIsInDecimalGigabytes_data() {
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("text");
    const QList<std::pair<qint64, QString>> rows = {
        {0, u"0.0 GB"_s},
        {1, u"0.0 GB"_s},
        {49'999'999, u"0.0 GB"_s},
        {50'000'000, u"0.1 GB"_s},
        {250'000'000, u"0.2 GB"_s},
        {350'000'000, u"0.3 GB"_s},
        {750'000'000, u"0.8 GB"_s},
        {949'999'999, u"0.9 GB"_s},
        {950'000'000, u"0.9 GB"_s},
        {1'000'000'000, u"1.0 GB"_s},
        {1'073'741'824, u"1.1 GB"_s},
        {4'661'224'676, u"4.7 GB"_s},
        {404'000'000'000, u"404.0 GB"_s},
        {1'234'567'000'000, u"1234.6 GB"_s},
        {-1'500'000'000, u"-1.5 GB"_s},
        {std::numeric_limits<qint64>::max(), u"9223372036.9 GB"_s},
        {std::numeric_limits<qint64>::min(), u"-9223372036.9 GB"_s}};
    for (const auto& [size, text] : rows)
        QTest::addRow("%lld", size) << size << text;
}

void OllamaBackendTests::theSizeIsInDecimalGigabytes() {
    QFETCH(qint64, size);
    QFETCH(QString, text);
    // The C library's own rounding is the measure; the tests run in a locale with a full stop.
    std::array<char, 64> formatted;
    std::snprintf(formatted.data(), formatted.size(), "%.1f GB",
                  static_cast<double>(size) / 1'000'000'000);
    QCOMPARE(text, QString::fromLatin1(formatted.data()));
    const OllamaBackend backend({u"m"_s, size}, *m_network);
    QCOMPARE(backend.info().detail, text + u" · Ollama"_s);
}

void OllamaBackendTests::theSizeHasAFullStopInEveryLocale() {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    // Where the C library has such a locale, it is tried as well.
    const std::string numbers = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const OllamaBackend backend({u"m"_s, 1'234'567'000'000}, *m_network);
    std::setlocale(LC_NUMERIC, numbers.c_str());
    QLocale::setDefault(before);
    QCOMPARE(backend.info().detail, u"1234.6 GB · Ollama"_s);
}

void OllamaBackendTests::theAddressIsTheLoopbackPort() {
    QCOMPARE(OllamaBackend::baseURL().port(), port);
    QVERIFY(!OllamaBackend::baseURL().isUnixSocket());
    QCOMPARE(OllamaBackend::baseURL().host(), QByteArray("127.0.0.1:11434"));
}

void OllamaBackendTests::aRequestCarriesTheWholeConversation_data() {
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

void OllamaBackendTests::aRequestCarriesTheWholeConversation() {
    QFETCH(QString, systemPrompt);
    QFETCH(QStringList, history);
    QFETCH(QString, prompt);
    m_server->enqueue(Script::streamed(line(u"ok"_s, true)));
    QList<ChatMessage> messages;
    QStringList expected = {u"system: "_s + systemPrompt};
    for (qsizetype i = 0; i < history.size(); ++i) {
        const bool isUser = i % 2 == 0;
        messages.append(message(isUser ? Role::user : Role::assistant, history[i]));
        expected.append((isUser ? u"user: "_s : u"assistant: "_s) + history[i]);
    }
    expected.append(u"user: "_s + prompt);
    OllamaBackend asked = backend();
    const auto reply = std::make_shared<Reply>();
    m_scope->start(consume(asked.streamResponse(prompt, messages, systemPrompt), reply));
    QTRY_VERIFY(reply->hasEnded);
    const QJsonObject document = sentDocument();
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

void OllamaBackendTests::aRequestIsAPostOfJson() {
    askAndWait(Script::streamed(line(u"ok"_s, true)));
    const auto request = m_server->request();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, QByteArray("/api/chat"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(request.header("Host"), QByteArray("127.0.0.1:11434"));
    QCOMPARE(request.header("Content-Length"), QByteArray::number(request.body.size()));
    QCOMPARE(request.body, R"({"model":"llama3:8b","messages":[{"role":"system","content":""},)"
                           R"({"role":"user","content":"Hi"}],"stream":true})");
}

void OllamaBackendTests::resetChangesNothing() {
    m_server->setFallback(Script::streamed(line(u"ok"_s, true)));
    OllamaBackend asked = backend();
    for (int i = 0; i < 2; ++i) {
        const auto reply = std::make_shared<Reply>();
        m_scope->start(consume(
            asked.streamResponse(
                u"c"_s, {message(Role::user, u"a"), message(Role::assistant, u"b")}, u"s"_s),
            reply));
        QTRY_VERIFY(reply->hasEnded);
        asked.reset();
    }
    QCOMPARE(m_server->request(1).body, m_server->request(0).body);
    QCOMPARE(sentDocument(1)[u"messages"].toArray().size(), 4);
}

void OllamaBackendTests::theRequestHoldsTheConversationAsItWasWhenAsked() {
    m_server->enqueue(Script::streamed(line(u"ok"_s, true)));
    OllamaBackend asked = backend();
    QList<ChatMessage> history = {message(Role::user, u"before")};
    const auto reply = std::make_shared<Reply>();
    m_scope->start(consume(asked.streamResponse(u"Hi"_s, history, QString()), reply));
    history[0].content = Text(u"after");
    history.append(message(Role::assistant, u"more"));
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(sentDocument()[u"messages"].toArray().size(), 3);
    QCOMPARE(sentDocument()[u"messages"][1][u"content"].toString(), u"before"_s);
}

void OllamaBackendTests::everyLineYieldsTheTextSoFar() {
    const auto reply =
        askAndWait(Script::streamed(line(u"Hel"_s) + line(u"lo"_s) + line(QString(), true)));
    QCOMPARE(reply->texts, (QStringList{u"Hel"_s, u"Hello"_s, u"Hello"_s}));
    QVERIFY(!reply->error);
}

void OllamaBackendTests::aReplyEnds_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<bool>("isReadingError");
    const auto row = [](const char* name, QByteArray body, QStringList texts, bool fails = false) {
        QTest::newRow(name) << body << texts << fails;
    };
    const QByteArray a = line(u"a"_s);
    row("without a done line", a + line(u"b"_s), {u"a"_s, u"ab"_s});
    row("without anything", "", {});
    row("with empty lines between", a + "\n\r\n\r" + line(u"b"_s, true), {u"a"_s, u"ab"_s});
    row("with a done line without a line end", a + line(u"b"_s, true).chopped(1),
        {u"a"_s, u"ab"_s});
    row("at the done line", line(u"a"_s, true) + line(u"b"_s) + "rubbish\n", {u"a"_s});
    row("with CR LF", line(u"a"_s).replace("\n", "\r\n") + line(u"b"_s, true).replace("\n", "\r\n"),
        {u"a"_s, u"ab"_s});
    row("with CR", line(u"a"_s).replace("\n", "\r") + line(u"b"_s, true).replace("\n", "\r"),
        {u"a"_s, u"ab"_s});
    row("with an error line", a + "{\"error\":\"out of memory\"}\n" + line(u"b"_s, true), {u"a"_s},
        true);
    row("with rubbish", a + "oops\n" + line(u"b"_s, true), {u"a"_s}, true);
    row("with a line of blanks", a + "  \n" + line(u"b"_s, true), {u"a"_s}, true);
    row("with a line cut off", a + R"({"message":{"content":"b")", {u"a"_s}, true);
    row("with invalid UTF-8", a + "{\"message\":{\"content\":\"\xFF\"},\"done\":false}\n", {u"a"_s},
        true);
    row("with HTML", "<html>\n</html>\n", {}, true);
    row("with a thinking model's lines",
        R"({"message":{"role":"assistant","content":"","thinking":"hm"},"done":false})"
        "\n" +
            line(u"b"_s, true),
        {QString(), u"b"_s});
    row("with NUL and U+2028", line(u"x"_s + QChar(0) + u"y\u2028z"_s, true),
        {u"x"_s + QChar(0) + u"y\u2028z"_s});
    row("with a line of 8 MB", line(QString(8'000'000, u'x'), true), {QString(8'000'000, u'x')});
    row("nested deep", R"({"message":)" + QByteArray(1'000'000, '[') + "\n", {}, true);
}

void OllamaBackendTests::aReplyEnds() {
    QFETCH(QByteArray, body);
    const auto reply = askAndWait(Script::streamed(body));
    QTEST(reply->texts, "texts");
    QTEST(isError<JsonReadingError>(reply->error), "isReadingError");
    QTEST(static_cast<bool>(reply->error), "isReadingError");
}

void OllamaBackendTests::linesAreShownAsTheyCome() {
    const QByteArray second = line(u"é🙂"_s, true);
    const qsizetype cut = second.indexOf("\xF0\x9F") + 2; // in the middle of a character
    m_server->enqueue(Script()
                          .head(200, {"Transfer-Encoding: chunked"})
                          .chunk(line(u"a"_s))
                          .gate()
                          .chunk(second.first(cut))
                          .gate()
                          .chunk(second.sliced(cut))
                          .chunk({}));
    OllamaBackend asked = backend();
    const auto reply = ask(asked);
    QTRY_COMPARE(reply->texts, QStringList{u"a"_s});
    m_server->release();
    m_server->release();
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts, (QStringList{u"a"_s, u"aé🙂"_s}));
}

void OllamaBackendTests::aStatusOtherThan200EndsTheStream_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("201") << 201 << line(u"a"_s, true);
    QTest::newRow("204") << 204 << QByteArray();
    QTest::newRow("301") << 301 << QByteArray("moved");
    QTest::newRow("404 with JSON") << 404 << QByteArray(R"({"error":"model 'x' not found"})");
    QTest::newRow("500 with HTML") << 500 << QByteArray("<html>oops</html>");
    QTest::newRow("503") << 503 << QByteArray("busy");
}

void OllamaBackendTests::aStatusOtherThan200EndsTheStream() {
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    const auto reply =
        askAndWait(status == 204 ? Script().head(204) : Script::reply(status, body, "text/html"));
    QVERIFY(reply->texts.isEmpty());
    QVERIFY(isError<OllamaError>(reply->error));
    QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (%1)."_s.arg(status));
}

void OllamaBackendTests::aRedirectContactsNobodyElse() {
    ScriptedServer other;
    QVERIFY(other.listen());
    const auto reply = askAndWait(Script().head(
        301, {"Location: http://127.0.0.1:" + QByteArray::number(other.port()) + "/api/chat",
              "Content-Length: 0"}));
    QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (301)."_s);
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(other.requestCount(), 0);
}

void OllamaBackendTests::aBodyOfAnotherStatusIsNotWaitedFor() {
    const auto reply = askAndWait(Script().head(500, {"Content-Length: 100"}).hold());
    QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (500)."_s);
    QTRY_VERIFY(m_server->clientClosed());
}

void OllamaBackendTests::aStoppedServerShowsAsAnErrorOfTheTransport() {
    m_server->stop();
    OllamaBackend asked = backend();
    QVERIFY(asked.isAvailable());
    const auto reply = ask(asked);
    QTRY_VERIFY(reply->hasEnded);
    QVERIFY(isError<HttpError>(reply->error));
    QCOMPARE(reply->errorText(), u"Could not connect to the server."_s);
    QVERIFY(reply->texts.isEmpty());
}

void OllamaBackendTests::aResetMidLineKeepsTheTextBefore() {
    m_server->enqueue(Script().head(200).send(line(u"a"_s) + R"({"message":{"con)").gate().reset());
    OllamaBackend asked = backend();
    const auto reply = ask(asked);
    QTRY_COMPARE(reply->texts, QStringList{u"a"_s});
    m_server->release();
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts, QStringList{u"a"_s});
    QCOMPARE(reply->errorText(), u"The connection to the server was lost."_s);
}

void OllamaBackendTests::silenceEndsTheReplyAsATimeout() {
    m_server->enqueue(Script().head(200).send(line(u"a"_s)).hold());
    OllamaBackend asked({u"m"_s, 1}, *m_network, std::chrono::milliseconds(100));
    const auto reply = ask(asked);
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts, QStringList{u"a"_s});
    QCOMPARE(reply->errorText(), u"The request timed out."_s);
}

void OllamaBackendTests::theIdleLimitIsTwoMinutes() {
    QCOMPARE(OllamaBackend::idleTimeout, std::chrono::seconds(120));
}

void OllamaBackendTests::proxiesOfTheEnvironmentAreNotUsed() {
    ScriptedServer proxy;
    QVERIFY(proxy.listen());
    const QByteArray address = "http://127.0.0.1:" + QByteArray::number(proxy.port());
    const QByteArrayList names = {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"};
    for (const QByteArray& name : names)
        qputenv(name, address);
    const auto reply = askAndWait(Script::streamed(line(u"direct"_s, true)));
    m_server->enqueue(Script::reply(200, R"({"models":[{"name":"a","size":1}]})"));
    const auto models = runTask(*m_main, OllamaBackend::discover(*m_network));
    for (const QByteArray& name : names)
        qunsetenv(name);
    QCOMPARE(reply->texts, QStringList{u"direct"_s});
    QCOMPARE(models.value->size(), 1);
    QCOMPARE(proxy.requestCount(), 0);
}

void OllamaBackendTests::aConsumerThatStopsEarlyLeavesTheRequestRunningToItsDoneLine() {
    m_server->enqueue(Script()
                          .head(200)
                          .send(line(u"a"_s))
                          .gate()
                          .send(line(u"b"_s))
                          .gate()
                          .send(line(u"c"_s, true))
                          .hold());
    OllamaBackend asked = backend();
    const auto reply = std::make_shared<Reply>();
    TaskHandle consumer =
        m_scope->start(consume(asked.streamResponse(u"Hi"_s, {}, QString()), reply));
    QTRY_COMPARE(reply->texts, QStringList{u"a"_s});
    consumer.cancel();
    QTRY_VERIFY(reply->hasEnded);
    QVERIFY(!reply->error);
    m_server->release();
    QVERIFY(!m_server->clientClosed());
    // Only the done line makes the client close; the script holds the connection open.
    m_server->release();
    QTRY_VERIFY(m_server->clientClosed());
    QCOMPARE(reply->texts, QStringList{u"a"_s});
}

void OllamaBackendTests::aReplyOutlivesItsBackend() {
    m_server->enqueue(Script().head(200).send(line(u"a"_s)).gate().send(line(u"b"_s, true)));
    auto asked = std::make_unique<OllamaBackend>(OllamaModelEntry{u"m"_s, 1}, *m_network);
    const auto reply = ask(*asked);
    QTRY_COMPARE(reply->texts, QStringList{u"a"_s});
    asked.reset();
    m_server->release();
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts, (QStringList{u"a"_s, u"ab"_s}));
}

void OllamaBackendTests::repliesRunAtTheSameTime() {
    m_server->enqueue(Script().head(200).send(line(u"1"_s)).gate().send(line(u"!"_s, true)));
    m_server->enqueue(Script().head(200).send(line(u"2"_s)).gate().send(line(u"?"_s, true)));
    OllamaBackend asked = backend();
    const auto first = ask(asked);
    QTRY_COMPARE(first->texts, QStringList{u"1"_s});
    const auto second = ask(asked);
    QTRY_COMPARE(second->texts, QStringList{u"2"_s});
    m_server->release(1);
    QTRY_VERIFY(second->hasEnded);
    QVERIFY(!first->hasEnded);
    m_server->release(0);
    QTRY_VERIFY(first->hasEnded);
    QCOMPARE(first->texts, (QStringList{u"1"_s, u"1!"_s}));
    QCOMPARE(second->texts, (QStringList{u"2"_s, u"2?"_s}));
}

void OllamaBackendTests::aHundredThousandLinesThatNobodyReadsCostMemoryInProportion() {
    constexpr int lines = 100'000;
    // The script's end is seen by the server when the client closes after the done line.
    m_server->enqueue(Script()
                          .head(200)
                          .send(line(u"0123456789"_s).repeated(lines))
                          .send(line(QString(), true))
                          .hold());
    const qint64 before = residentMemory();
    QVERIFY(before > 0);
    OllamaBackend asked = backend();
    auto stream = asked.streamResponse(u"Hi"_s, {}, QString());
    QTRY_VERIFY_WITH_TIMEOUT(m_server->isFinished(), 60'000);
    // A copy a snapshot would be 100 GB.
    QVERIFY2(residentMemory() - before < 200'000'000, "the queue of snapshots holds copies");

    const auto reply = std::make_shared<Reply>();
    struct Count {
        int elements = 0;
        Text last;
    };
    const auto count = std::make_shared<Count>();
    constexpr auto drain = [](ReplyStream all, std::shared_ptr<Count> seen) -> Task<int> {
        while (const auto text = co_await all.next()) {
            ++seen->elements;
            seen->last = *text;
        }
        co_return seen->elements;
    };
    QCOMPARE(runTask(*m_main, drain(std::move(stream), count)).value, lines + 1);
    QCOMPARE(count->last.size(), lines * 10);
}

void OllamaBackendTests::endingTheNetworkThreadEndsRepliesAtOnce() {
    m_server->setFallback(Script().head(200).send(line(u"a"_s)).hold());
    OllamaBackend asked = backend();
    const auto reply = ask(asked);
    { const auto abandoned = asked.streamResponse(u"Hi"_s, {}, QString()); }
    QTRY_COMPARE(reply->texts, QStringList{u"a"_s});
    QTRY_COMPARE(m_server->requestCount(), 2);
    QElapsedTimer timer;
    timer.start();
    m_network.reset();
    QVERIFY2(timer.elapsed() < 1000, "ending the network thread waits for a reply");
    QTRY_VERIFY(m_server->clientClosed(0) && m_server->clientClosed(1));
}

void OllamaBackendTests::discoverListsTheModels() {
    m_server->enqueue(Script::reply(
        200, R"({"models":[{"name":"b","size":5},{"name":"hf.co/x/y z🙂:Q4","size":4661224676},)"
             R"({"name":"b","size":6}]})"));
    const auto models = runTask(*m_main, OllamaBackend::discover(*m_network));
    QCOMPARE(models.value, (QList<OllamaModelEntry>{
                               {u"b"_s, 5}, {u"hf.co/x/y z🙂:Q4"_s, 4661224676}, {u"b"_s, 6}}));
}

void OllamaBackendTests::discoverListsTwoThousandModels() {
    QJsonArray models;
    for (int i = 0; i < 2000; ++i)
        models.append(QJsonObject{{u"name"_s, u"model-%1"_s.arg(i)},
                                  {u"size"_s, qint64(5'000'000'000) + i},
                                  {u"details"_s, QJsonObject{{u"families"_s, QJsonArray{u"x"_s}}}},
                                  {u"digest"_s, QString(64, u'f')}});
    m_server->enqueue(
        Script::reply(200, QJsonDocument(QJsonObject{{u"models"_s, models}}).toJson()));
    const auto found = runTask(*m_main, OllamaBackend::discover(*m_network));
    QCOMPARE(found.value->size(), 2000);
    QCOMPARE(found.value->last(), (OllamaModelEntry{u"model-1999"_s, 5'000'001'999}));
}

void OllamaBackendTests::discoverGivesNothing_data() {
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

void OllamaBackendTests::discoverGivesNothing() {
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server->enqueue(status == 0 ? Script().send(body) : Script::reply(status, body));
    const auto models = runTask(*m_main, OllamaBackend::discover(*m_network));
    QVERIFY(models.value);
    QVERIFY(models.value->isEmpty());
    QCOMPARE(m_server->requestCount(), 1);
}

void OllamaBackendTests::withoutAServerNothingIsDiscoveredAndBackendsStayAvailable() {
    const OllamaBackend listed = backend();
    m_server->stop();
    const auto models = runTask(*m_main, OllamaBackend::discover(*m_network));
    QVERIFY(models.value);
    QVERIFY(models.value->isEmpty());
    QVERIFY(listed.isAvailable());
}

void OllamaBackendTests::discoverMakesAPlainGet() {
    m_server->enqueue(Script::reply(200, R"({"models":[]})"));
    runTask(*m_main, OllamaBackend::discover(*m_network));
    QCOMPARE(
        m_server->request().head,
        QByteArray("GET /api/tags HTTP/1.1\r\nHost: 127.0.0.1:11434\r\nConnection: close\r\n\r\n"));
}

QTEST_GUILESS_MAIN(OllamaBackendTests)
#include "OllamaBackendTests.moc"
