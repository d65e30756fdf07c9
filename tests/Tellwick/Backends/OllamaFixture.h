// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Backends/OllamaBackend.h"
#include "tests/support/HttpFixture.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tests {

/// What a consumer has seen of a reply.
struct SeenReply : Seen<platform::TextSnapshot> {
    QStringList texts() const {
        QStringList all;
        for (const platform::TextSnapshot& element : elements)
            all.append(element.toString());
        return all;
    }
};

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
class OllamaFixture : public HttpFixture {
public:
    static constexpr quint16 port = 11434;

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
        return watchReply(backend.streamResponse(QStringLiteral("Hi"), {}, QString()));
    }
    std::shared_ptr<SeenReply> watchReply(tellwick::ReplyStream stream) {
        const auto reply = std::make_shared<SeenReply>();
        task = scope->start(consume<platform::TextSnapshot>(std::move(stream), reply));
        return reply;
    }
    /// The whole reply to "Hi" that this script makes.
    std::shared_ptr<SeenReply> askAndWait(const Script& script) {
        server->enqueue(script);
        tellwick::OllamaBackend asked = backend();
        const auto reply = ask(asked);
        whole<platform::TextSnapshot>(reply);
        return reply;
    }
    QList<tellwick::OllamaModelEntry>
    discover(std::chrono::milliseconds idleTimeout = tellwick::OllamaBackend::listingIdleTimeout) {
        return *runTask(main, tellwick::OllamaBackend::discover(*network, idleTimeout)).value;
    }
    /// The document that a request carried.
    QJsonObject sentDocument(int request = 0) const {
        return QJsonDocument::fromJson(server->request(request).body).object();
    }
};

} // namespace tests
