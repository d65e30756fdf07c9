// SPDX-License-Identifier: MIT
// A stand-in for the local model server, to try the window by hand and to picture it:
//     scripted-ollama [--port 11434] [--rate 40] [--models 3] [--latency 300] [--hold 12]
//                     [--reply FILE]…
// It lists a few models and answers every chat with a Markdown text, word by word, at the given
// number of tokens a second (0: as fast as it can be sent); with several texts, each turn of a
// conversation gets the next. It can hold a reply back after some words. Each answered request is a
// line on its standard output.
#include "tests/support/LoopbackServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using tests::LoopbackConnection;
using tests::LoopbackServer;

namespace {

const QString cannedReply =
    u"Of course. Here is the short version, in *three* steps:\n\n"
    "1. Open the file with `open(path)` and read it **line by line**.\n"
    "2. Keep only the lines that are not empty.\n"
    "3. Write them out again, in the *same* order.\n\n"
    "A line that holds nothing but blanks counts as empty, so `line.strip()` is a good test. "
    "More about text files is in the "
    "[manual](https://docs.python.org/3/tutorial/inputoutput.html).\n\n"
    "Tell me if you would rather keep **one** empty line between paragraphs: that is a small change. 🙂"_s;

struct Settings {
    quint16 port = 11434;
    int wordsPerSecond = 40;
    int models = 3;
    int latency = 300;
    int hold = -1; ///< words after which a reply stands still; negative: none does
    QStringList replies{cannedReply};
};

/// One line for whoever watches.
void say(const char* line) {
    std::puts(line);
    std::fflush(stdout);
}

QByteArray compact(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray listing(int count) {
    const QList<QPair<QString, qint64>> known = {{u"llama3.2:3b"_s, 2019393189},
                                                 {u"qwen2.5:7b-instruct"_s, 4683087332},
                                                 {u"mistral-nemo:12b"_s, 7071713232}};
    QJsonArray models;
    for (int i = 0; i < count; ++i) {
        const auto& [name, size] = known[i % known.size()];
        const QString suffix = i < known.size() ? QString() : u"-%1"_s.arg(i);
        models.append(QJsonObject{{u"name"_s, name + suffix},
                                  {u"model"_s, name + suffix},
                                  {u"modified_at"_s, u"2024-11-05T09:30:00Z"_s},
                                  {u"size"_s, size}});
    }
    return compact({{u"models"_s, models}});
}

QByteArray chatLine(const QString& model, const QString& content, bool done) {
    return compact(
               {{u"model"_s, model},
                {u"created_at"_s, u"2024-11-05T09:30:00Z"_s},
                {u"message"_s, QJsonObject{{u"role"_s, u"assistant"_s}, {u"content"_s, content}}},
                {u"done"_s, done}}) +
           '\n';
}

/// The text in the pieces a model would send: each word with the blanks before it.
QStringList words(const QString& text) {
    QStringList pieces;
    qsizetype start = 0;
    for (qsizetype i = 1; i <= text.size(); ++i) {
        if (i == text.size() || (text[i].isSpace() && !text[i - 1].isSpace())) {
            pieces.append(text.sliced(start, i - start));
            start = i;
        }
    }
    return pieces;
}

bool sendChunk(LoopbackConnection& connection, QByteArrayView bytes) {
    QByteArray framed = QByteArray::number(bytes.size(), 16) + "\r\n";
    framed.append(bytes);
    return connection.send(framed + "\r\n");
}

void answer(LoopbackConnection& connection, int status, const QByteArray& body) {
    connection.send("HTTP/1.1 " + QByteArray::number(status) +
                    " \r\nContent-Type: application/json\r\nContent-Length: " +
                    QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
}

void chat(LoopbackConnection& connection, const Settings& settings) {
    const auto request = QJsonDocument::fromJson(connection.request().body).object();
    const QString model = request.value(u"model"_s).toString();
    if (model.isEmpty() || !request.value(u"messages"_s).isArray()) {
        answer(connection, 400, R"({"error":"missing request body"})");
        return;
    }
    if (!connection.pause(std::chrono::milliseconds(settings.latency)))
        return;
    connection.send("HTTP/1.1 200 OK\r\nContent-Type: application/x-ndjson\r\n"
                    "Transfer-Encoding: chunked\r\n\r\n");
    // The question on its own, after the system prompt and two messages for each turn before it.
    const qsizetype turn = (request.value(u"messages"_s).toArray().size() - 1) / 2;
    int sent = 0;
    for (const QString& word : words(settings.replies[turn % settings.replies.size()])) {
        if (sent++ == settings.hold) {
            say("holding");
            connection.holdUntilGone();
            return;
        }
        if (!sendChunk(connection, chatLine(model, word, false)))
            return;
        if (settings.wordsPerSecond > 0 &&
            !connection.pause(std::chrono::milliseconds(1000 / settings.wordsPerSecond)))
            return;
    }
    if (sendChunk(connection, chatLine(model, QString(), true)) && sendChunk(connection, {}))
        say("answered");
}

void serve(LoopbackConnection& connection, const Settings& settings) {
    if (connection.request().target == "/api/tags") {
        answer(connection, 200, listing(settings.models));
        say("listed");
    } else if (connection.request().target == "/api/chat" &&
               connection.request().method == "POST") {
        chat(connection, settings);
    } else {
        answer(connection, 404, R"({"error":"not found"})");
    }
}

bool readSettings(Settings& settings) {
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption port(u"port"_s, u"Port on 127.0.0.1."_s, u"number"_s, u"11434"_s);
    const QCommandLineOption rate(u"rate"_s, u"Words (tokens) a second."_s, u"number"_s, u"40"_s);
    const QCommandLineOption models(u"models"_s, u"Models listed."_s, u"number"_s, u"3"_s);
    const QCommandLineOption latency(u"latency"_s, u"Wait before a reply."_s, u"ms"_s, u"300"_s);
    const QCommandLineOption hold(u"hold"_s, u"Words before a reply stands still."_s, u"number"_s,
                                  u"-1"_s);
    const QCommandLineOption reply(u"reply"_s, u"TextSnapshot of a reply."_s, u"file"_s);
    parser.addOptions({port, rate, models, latency, hold, reply});
    parser.process(*QCoreApplication::instance());
    settings.port = parser.value(port).toUShort();
    settings.wordsPerSecond = parser.value(rate).toInt();
    settings.models = parser.value(models).toInt();
    settings.latency = parser.value(latency).toInt();
    settings.hold = parser.value(hold).toInt();
    if (parser.isSet(reply))
        settings.replies.clear();
    for (const QString& name : parser.values(reply)) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "Cannot read %s.\n", qPrintable(name));
            return false;
        }
        settings.replies.append(QString::fromUtf8(file.readAll()));
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    Settings settings;
    if (!readSettings(settings))
        return 2;

    // Blocked before the server's threads start, so that they inherit it and main alone takes it.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    LoopbackServer server;
    const auto handler = [&settings](LoopbackConnection& connection) {
        serve(connection, settings);
    };
    if (!server.listenOnPort(settings.port, handler)) {
        std::fprintf(stderr, "Cannot listen on 127.0.0.1:%d: %s\n", settings.port,
                     qPrintable(server.errorString()));
        return 1;
    }
    std::printf("listening on 127.0.0.1:%d\n", server.port());
    std::fflush(stdout);
    int signalNumber = 0;
    sigwait(&ending, &signalNumber);
    return 0;
}
