// SPDX-License-Identifier: MIT
#include "Platform/Json/Json.h"
#include "Platform/LanguageModel/LlamaServer/ChatCompletion.h"
#include "tests/support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace platform;
using namespace Qt::StringLiterals;
using Kind = LlamaServerError::Kind;

class ChatCompletionTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aRequestHoldsTheWholeConversationInOrder() {
        const QByteArray body = chatRequestBody(
            u"Be kind."_s,
            {{u"one"_s, TextSnapshot(u"first")}, {u"two"_s, TextSnapshot(u"second")}}, u"three"_s,
            {});
        const QJsonObject request = QJsonDocument::fromJson(body).object();
        QStringList messages;
        for (const auto& value : request[u"messages"].toArray())
            messages.append(value[u"role"].toString() + u": "_s + value[u"content"].toString());
        QCOMPARE(messages,
                 (QStringList{u"system: Be kind."_s, u"user: one"_s, u"assistant: first"_s,
                              u"user: two"_s, u"assistant: second"_s, u"user: three"_s}));
        QCOMPARE(request[u"stream"].toBool(), true);
        QCOMPARE(request[u"cache_prompt"].toBool(), true);
    }

    void whatWasSaidAlreadyStandsBehindThePrompt() {
        const QJsonObject request =
            QJsonDocument::fromJson(chatRequestBody({}, {}, u"one"_s, {}, u"firs"_s)).object();
        const QJsonArray messages = request[u"messages"].toArray();
        QCOMPARE(messages.size(), 2);
        QCOMPARE(messages[1][u"role"].toString(), u"assistant"_s);
        QCOMPARE(messages[1][u"content"].toString(), u"firs"_s);
    }

    void unsetOptionsAreNotSent() {
        const QJsonObject request =
            QJsonDocument::fromJson(chatRequestBody(QString(), {}, u"one"_s, {})).object();
        QCOMPARE(request.keys(), (QStringList{u"cache_prompt"_s, u"messages"_s,
                                              u"return_progress"_s, u"stream"_s}));
        QCOMPARE(request[u"messages"].toArray().size(), 1);
    }

    void setOptionsAreSent() {
        GenerationOptions options;
        options.sampling = GenerationOptions::Sampling::Greedy;
        options.temperature = 0.5;
        options.maximumResponseTokens = 7;
        const QJsonObject request =
            QJsonDocument::fromJson(chatRequestBody(QString(), {}, u"one"_s, options)).object();
        QCOMPARE(request[u"top_k"].toInt(), 1);
        QCOMPARE(request[u"temperature"].toDouble(), 0.5);
        QCOMPARE(request[u"max_tokens"].toInt(), 7);
    }

    void eachLineIsReadForWhatItTells_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("content");
        QTest::addColumn<bool>("isComplete");
        const auto line = [](const char* name, const QByteArray& bytes, const QString& content = {},
                             bool isComplete = false) {
            QTest::newRow(name) << bytes << content << isComplete;
        };
        const auto choice = [&](const char* name, const QByteArray& members,
                                const QString& content = {}, bool isComplete = false) {
            line(name, "data: {\"choices\":[{" + members + "}]}", content, isComplete);
        };
        choice("a part of the reply", R"("finish_reason":null,"delta":{"content":" fox"})",
               u" fox"_s);
        choice("content null", R"("delta":{"role":"assistant","content":null})");
        choice("no content", R"("finish_reason":"stop","delta":{})", {}, true);
        choice("content with the end", R"("finish_reason":"length","delta":{"content":"!"})",
               u"!"_s, true);
        choice("thoughts are not the reply", R"("delta":{"reasoning_content":"hmm"})");
        choice("a byte order mark first", "\"delta\":{\"content\":\"\xEF\xBB\xBFx\"}",
               u"\uFEFFx"_s);
        choice("escapes", R"("delta":{"content":"\u2028\ud83e\udd8a\n"})", u"\u2028\U0001F98A\n"_s);
        choice("what cannot be held in another key",
               R"("x":1e999,"logprobs":"\ud800","delta":{"content":"a"})", u"a"_s);
        line("no blank after the colon", R"(data:{"choices":[{"delta":{"content":"a"}}]})", u"a"_s);
        line("no choices", R"(data: {"choices":[]})");
        line("the end mark", "data: [DONE]");
        line("keep-alive", ": ping");
        line("empty", "");
        line("another field", "event: message");
    }
    void eachLineIsReadForWhatItTells() {
        QFETCH(QByteArray, line);
        const ChatEvent event = readChatEvent(line);
        QTEST(event.content, "content");
        QTEST(event.isComplete, "isComplete");
        QVERIFY(!event.failure);
    }

    void theEndOfTheContextIsTold() {
        const auto event = [](const QByteArray& reason) {
            return readChatEvent(R"(data: {"choices":[{"finish_reason":)" + reason + "}]}");
        };
        QVERIFY(event(R"("length")").isCutOff);
        QVERIFY(!event(R"("stop")").isCutOff);
        QVERIFY(!event("null").isCutOff);
    }

    void theLengthOfTheRequestIsTold() {
        QCOMPARE(readChatEvent(R"(data: {"prompt_progress":{"total":7,"processed":0}})")
                     .requestTokens.value_or(0),
                 7);
        QVERIFY(!readChatEvent(R"(data: {"choices":[]})").requestTokens);
    }

    void aLineThatDoesNotReadIsAnError_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("cut off") << QByteArray("data: {");
        QTest::newRow("not JSON") << QByteArray("data: hello");
        QTest::newRow("nothing") << QByteArray("data:");
        QTest::newRow("no object") << QByteArray("data: []");
        QTest::newRow("not UTF-8") << QByteArray("data: {\"choices\":[],\"x\":\"\xFF\"}");
        QTest::newRow("choices a text") << QByteArray(R"(data: {"choices":"a"})");
        QTest::newRow("content a number")
            << QByteArray(R"(data: {"choices":[{"delta":{"content":1}}]})");
        QTest::newRow("content half of a pair")
            << QByteArray(R"(data: {"choices":[{"delta":{"content":"\ud800"}}]})");
    }
    void aLineThatDoesNotReadIsAnError() {
        QFETCH(QByteArray, line);
        QVERIFY_THROWS_EXCEPTION(JsonReadingError, readChatEvent(line));
    }

    void errorsAreTold_data() {
        QTest::addColumn<QByteArray>("error");
        QTest::addColumn<Kind>("kind");
        QTest::newRow("context, by its type")
            << QByteArray(R"({"code":400,"message":"too much","type":"exceed_context_size_error"})")
            << Kind::PromptTooLong;
        QTest::newRow("context, by its message")
            << QByteArray(
                   R"({"code":500,"message":"Context size has been exceeded.","type":"server_error"})")
            << Kind::PromptTooLong;
        QTest::newRow("anything else")
            << QByteArray(R"({"code":500,"message":"Compute error.","type":"server_error"})")
            << Kind::NoAnswer;
        QTest::newRow("not an object") << QByteArray(R"("no")") << Kind::NoAnswer;
    }
    void errorsAreTold() {
        QFETCH(QByteArray, error);
        QFETCH(Kind, kind);
        const QByteArray body = "{\"error\":" + error + '}';
        QVERIFY(readChatEvent("data: " + body).failure->kind == kind);
        QVERIFY(readChatFailure(body).kind == kind);
    }

    void aContextThatIsTooSmallTellsTheSizes() {
        const ChatFailure failure = readChatFailure(
            R"({"error":{"type":"exceed_context_size_error","n_prompt_tokens":2019,"n_ctx":768}})");
        QCOMPARE(failure.tokens, 2'019);
        QCOMPARE(failure.contextSize, 768);
    }

    void anErrorBodyIsReadOrStandsForAnUnknownFailure() {
        QVERIFY(readChatFailure("<html></html>").kind == Kind::NoAnswer);
        QVERIFY(readChatFailure(QByteArray()).kind == Kind::NoAnswer);
    }
};

TELLWICK_TEST(ChatCompletionTests, EventLoop)
#include "ChatCompletionTests.moc"
