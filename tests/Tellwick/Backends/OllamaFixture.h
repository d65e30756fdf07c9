// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Backends/OllamaBackend.h"
#include "tests/support/HttpFixture.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tests {

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

    OllamaFixture()
        : HttpFixture(port) {}

    tellwick::OllamaBackend backend() {
        return tellwick::OllamaBackend({QStringLiteral("llama3:8b"), 4661224676}, *network);
    }

    /// Asks for a reply to "Hi". The backend has gone before it comes: a reply does not need it.
    tellwick::ReplyStream stream() {
        return backend().streamResponse(QStringLiteral("Hi"), {}, QString());
    }
    /// The same with its consumer.
    std::shared_ptr<SeenReply> ask() { return watchReply(stream()); }
    std::shared_ptr<SeenReply> watchReply(tellwick::ReplyStream stream) {
        const auto reply = std::make_shared<SeenReply>();
        task = scope.start(consume<platform::TextSnapshot>(std::move(stream), reply));
        return reply;
    }
    /// The whole reply to "Hi" that this script makes.
    std::shared_ptr<SeenReply> askAndWait(const Script& script) {
        server.enqueue(script);
        return whole(ask());
    }
    QList<tellwick::OllamaModelEntry>
    discover(std::chrono::milliseconds idleTimeout = tellwick::OllamaBackend::listingIdleTimeout) {
        return *runTask(main, tellwick::OllamaBackend::discover(*network, idleTimeout)).value;
    }
    /// The document that a request carried.
    QJsonObject sentDocument(int request = 0) const {
        return QJsonDocument::fromJson(server.request(request).body).object();
    }
};

} // namespace tests
