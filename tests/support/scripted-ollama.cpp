// SPDX-License-Identifier: MIT
// A stand-in for the local model server, to try the window by hand and to picture it:
//     scripted-ollama [--port 11434] [--rate 40] [--models 3] [--latency 300] [--hold 12]
//                     [--reply FILE]…
// It lists a few models and answers every chat with a Markdown text, word by word, at the given
// number of tokens a second (0: as fast as it can be sent); with several texts, each turn of a
// conversation gets the next. It can hold a reply back after some words. Each answered request is a
// line on its standard output.
#include "tests/support/ScriptedServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using tests::RecordedRequest;
using tests::Script;

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
    quint16 port = 0;
    int wordsPerSecond = 0;
    int models = 0;
    int latency = 0; ///< milliseconds
    int hold = 0;    ///< words after which a reply stands still; negative: none does
    QStringList replies{};
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
        models.append(QJsonObject{{u"name"_s, name + suffix}, {u"size"_s, size}});
    }
    return compact({{u"models"_s, models}});
}

QByteArray chatLine(const QString& content, bool done) {
    return compact({{u"message"_s, QJsonObject{{u"content"_s, content}}}, {u"done"_s, done}}) +
           '\n';
}

/// The text in the pieces a model would send: each word with the blanks before it.
QStringList words(const QString& text) {
    static const QRegularExpression word(u"\\s*\\S+|\\s+$"_s);
    QStringList pieces;
    for (const auto& match : word.globalMatch(text))
        pieces.append(match.captured());
    return pieces;
}

Script chat(const RecordedRequest& asked, const Settings& settings) {
    const auto request = QJsonDocument::fromJson(asked.body).object();
    if (request.value(u"model"_s).toString().isEmpty() || !request.value(u"messages"_s).isArray())
        return Script::reply(400, R"({"error":"missing request body"})");
    Script script;
    script.pause(std::chrono::milliseconds(settings.latency));
    script.head(200, {"Content-Type: application/x-ndjson"});
    // The question on its own, after the system prompt and two messages for each turn before it.
    const qsizetype turn = (request.value(u"messages"_s).toArray().size() - 1) / 2;
    int sent = 0;
    for (const QString& word : words(settings.replies[turn % settings.replies.size()])) {
        if (sent++ == settings.hold)
            return script.call([] { say("holding"); }).hold();
        script.send(chatLine(word, false));
        if (settings.wordsPerSecond > 0)
            script.pause(std::chrono::milliseconds(1000 / settings.wordsPerSecond));
    }
    return script.send(chatLine(QString(), true)).call([] { say("answered"); });
}

Script answer(const RecordedRequest& request, const Settings& settings) {
    if (request.target == "/api/tags")
        return Script::reply(200, listing(settings.models)).call([] { say("listed"); });
    if (request.target == "/api/chat" && request.method == "POST")
        return chat(request, settings);
    return Script::reply(404, R"({"error":"not found"})");
}

bool readSettings(Settings& settings) {
    QCommandLineParser parser;
    parser.addHelpOption();
    const auto number = [](const char* name, const char* description, int standard) {
        return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                                  u"number"_s, QString::number(standard));
    };
    parser.addOptions({number("port", "Port on 127.0.0.1.", 11434),
                       number("rate", "Words (tokens) a second.", 40),
                       number("models", "Models listed.", 3),
                       number("latency", "Milliseconds before a reply.", 300),
                       number("hold", "Words before a reply stands still.", -1),
                       {u"reply"_s, u"Text of a reply."_s, u"file"_s}});
    parser.process(*QCoreApplication::instance());
    settings = {.port = parser.value(u"port"_s).toUShort(),
                .wordsPerSecond = parser.value(u"rate"_s).toInt(),
                .models = parser.value(u"models"_s).toInt(),
                .latency = parser.value(u"latency"_s).toInt(),
                .hold = parser.value(u"hold"_s).toInt()};
    for (const QString& name : parser.values(u"reply"_s)) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "Cannot read %s.\n", qPrintable(name));
            return false;
        }
        settings.replies.append(QString::fromUtf8(file.readAll()));
    }
    if (settings.replies.isEmpty())
        settings.replies.append(cannedReply);
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

    tests::ScriptedServer server;
    server.setAnswer([&](const RecordedRequest& request) { return answer(request, settings); });
    if (!server.listen(settings.port)) {
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
