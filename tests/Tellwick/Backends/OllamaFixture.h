// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"
#include "Tellwick/Backends/OllamaBackend.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TaskRunner.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <memory>

namespace tests {

/// What a consumer has seen of a reply.
struct SeenReply {
    QStringList texts;
    bool hasEnded = false;
    std::exception_ptr error;

    QString errorText() const { return error ? platform::localizedDescription(error) : QString(); }

    template <class Error>
    bool failedWith() const {
        try {
            if (error)
                std::rethrow_exception(error);
        } catch (const Error&) {
            return true;
        } catch (...) {
        }
        return false;
    }
};

inline platform::Task<void> consume(tellwick::ReplyStream stream,
                                    std::shared_ptr<SeenReply> reply) {
    try {
        while (const auto text = co_await stream.next())
            reply->texts.append(text->toString());
    } catch (...) {
        reply->error = std::current_exception();
    }
    reply->hasEnded = true;
}

/// One line of a reply as the server sends it.
inline QByteArray chatLine(const QString& content, bool done = false) {
    using namespace Qt::StringLiterals;
    const QJsonObject object{
        {u"model"_s, u"m"_s},
        {u"message"_s, QJsonObject{{u"role"_s, u"assistant"_s}, {u"content"_s, content}}},
        {u"done"_s, done}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

/// A scripted server where the backend looks for it, and what a backend needs to run.
class OllamaFixture {
public:
    static constexpr quint16 port = 11434;

    ~OllamaFixture() {
        server.reset();
        network.reset();
        scope.reset();
    }

    /// Why the server could not be put up; empty when it could.
    QString start() {
        if (server->listen(port))
            return {};
        return QStringLiteral("Port 11434 cannot be used (%1). Run the tests where no model "
                              "server runs.")
            .arg(server->errorString());
    }

    tellwick::OllamaBackend backend() const {
        return tellwick::OllamaBackend({QStringLiteral("llama3:8b"), 4661224676}, *network);
    }

    /// Starts a reply to "Hi" and its consumer.
    std::shared_ptr<SeenReply> ask(tellwick::OllamaBackend& backend) {
        return watch(backend.streamResponse(QStringLiteral("Hi"), {}, QString()));
    }
    std::shared_ptr<SeenReply> watch(tellwick::ReplyStream stream) {
        const auto reply = std::make_shared<SeenReply>();
        consumer = scope->start(consume(std::move(stream), reply));
        return reply;
    }
    /// The whole reply to "Hi" that this script makes.
    std::shared_ptr<SeenReply> askAndWait(const Script& script) {
        server->enqueue(script);
        tellwick::OllamaBackend asked = backend();
        const auto reply = ask(asked);
        if (!QTest::qWaitFor([&] { return reply->hasEnded; }, 30'000))
            qFatal("the reply has not ended within its limit");
        return reply;
    }
    /// The document that a request carried.
    QJsonObject sentDocument(int request = 0) const {
        return QJsonDocument::fromJson(server->request(request).body).object();
    }

    platform::MainExecutor main;
    std::unique_ptr<platform::TaskScope> scope = std::make_unique<platform::TaskScope>(main);
    std::unique_ptr<platform::NetworkThread> network = std::make_unique<platform::NetworkThread>();
    std::unique_ptr<ScriptedServer> server = std::make_unique<ScriptedServer>();
    platform::TaskHandle consumer; // of the reply watched last
};

} // namespace tests
