// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/ChatCompletion.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

QJsonObject message(QStringView role, const QString& content) {
    return {{u"role"_s, role.toString()}, {u"content"_s, content}};
}

LlamaServerError::Kind failureKind(const QJsonObject& error) {
    const QString type = error.value(u"type"_s).toString();
    const QString text = error.value(u"message"_s).toString();
    if (type == u"exceed_context_size_error" || text.contains(u"context size", Qt::CaseInsensitive))
        return LlamaServerError::Kind::ConversationTooLong;
    return LlamaServerError::Kind::NoAnswer;
}

TurnTimings readTimings(const QJsonObject& timings) {
    return {.cachedTokens = timings.value(u"cache_n"_s).toInt(),
            .readTokens = timings.value(u"prompt_n"_s).toInt(),
            .writtenTokens = timings.value(u"predicted_n"_s).toInt(),
            .readMilliseconds = timings.value(u"prompt_ms"_s).toDouble(),
            .writtenMilliseconds = timings.value(u"predicted_ms"_s).toDouble()};
}

} // namespace

QByteArray chatRequestBody(const QString& instructions, const QList<AnsweredTurn>& turns,
                           const QString& prompt, const GenerationOptions& options) {
    QJsonArray messages;
    if (!instructions.isEmpty())
        messages.append(message(u"system", instructions));
    for (const AnsweredTurn& turn : turns) {
        messages.append(message(u"user", turn.prompt));
        messages.append(message(u"assistant", turn.reply.toString()));
    }
    messages.append(message(u"user", prompt));

    QJsonObject body{{u"messages"_s, messages}, {u"stream"_s, true}, {u"cache_prompt"_s, true}};
    if (options.sampling == GenerationOptions::Sampling::Greedy)
        body.insert(u"top_k"_s, 1);
    if (options.temperature)
        body.insert(u"temperature"_s, *options.temperature);
    if (options.maximumResponseTokens)
        body.insert(u"max_tokens"_s, *options.maximumResponseTokens);
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

ChatEvent readChatEvent(const QByteArray& line) {
    constexpr QByteArrayView field = "data:";
    ChatEvent event;
    if (!line.startsWith(field))
        return event;
    const QJsonObject data = QJsonDocument::fromJson(line.mid(field.size())).object();
    if (data.contains(u"error"_s)) {
        event.failure = failureKind(data.value(u"error"_s).toObject());
        return event;
    }
    const QJsonObject choice = data.value(u"choices"_s).toArray().at(0).toObject();
    event.content = choice.value(u"delta"_s).toObject().value(u"content"_s).toString();
    event.isComplete = choice.value(u"finish_reason"_s).isString();
    if (data.contains(u"timings"_s))
        event.timings = readTimings(data.value(u"timings"_s).toObject());
    return event;
}

LlamaServerError::Kind readChatFailure(const QByteArray& body) {
    return failureKind(QJsonDocument::fromJson(body).object().value(u"error"_s).toObject());
}

} // namespace platform
