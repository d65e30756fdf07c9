// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/ChatCompletion.h"

#include "Platform/Json/Json.h"

#include <nlohmann/json.hpp>

namespace platform {

namespace {

using Object = nlohmann::ordered_json;

Object message(const char* role, const QString& content) {
    return {{"role", role}, {"content", content.toStdString()}};
}

/// What the "error" of a document tells; one that says nothing known is no answer.
LlamaServerError::Kind failureKind(const Json& document) {
    try {
        const Json error = document["error"];
        const auto type = error.find("type");
        const auto text = error.find("message");
        if ((type && type->text() == u"exceed_context_size_error") ||
            (text && text->text().contains(u"context size", Qt::CaseInsensitive)))
            return LlamaServerError::Kind::ConversationTooLong;
    } catch (const JsonReadingError&) {
        // It is an error all the same.
    }
    return LlamaServerError::Kind::NoAnswer;
}

void readChoice(const Json& choice, ChatEvent& event) {
    event.isComplete = choice.find("finish_reason").has_value();
    const auto delta = choice.find("delta");
    if (const auto content = delta ? delta->find("content") : std::nullopt)
        event.content = content->text();
}

} // namespace

QByteArray chatRequestBody(const QString& instructions, const QList<AnsweredTurn>& turns,
                           const QString& prompt, const GenerationOptions& options) {
    Object messages = Object::array();
    if (!instructions.isEmpty())
        messages.push_back(message("system", instructions));
    for (const AnsweredTurn& turn : turns) {
        messages.push_back(message("user", turn.prompt));
        messages.push_back(message("assistant", turn.reply.toString()));
    }
    messages.push_back(message("user", prompt));

    Object body = {{"messages", std::move(messages)}, {"stream", true}, {"cache_prompt", true}};
    if (options.sampling == GenerationOptions::Sampling::Greedy)
        body["top_k"] = 1;
    if (options.temperature)
        body["temperature"] = *options.temperature;
    if (options.maximumResponseTokens)
        body["max_tokens"] = *options.maximumResponseTokens;
    return QByteArray::fromStdString(body.dump());
}

ChatEvent readChatEvent(const QByteArray& line) {
    constexpr QByteArrayView field = "data:";
    ChatEvent event;
    if (!line.startsWith(field))
        return event;
    const QByteArrayView value = QByteArrayView(line).sliced(field.size()).trimmed();
    if (value == "[DONE]")
        return event;
    const Json data = Json::read(value);
    if (data.find("error")) {
        event.failure = failureKind(data);
        return event;
    }
    const auto choices = data.find("choices");
    // The last event of some engines has an empty list.
    for (const Json& choice : choices ? choices->elements() : QList<Json>())
        readChoice(choice, event);
    return event;
}

LlamaServerError::Kind readChatFailure(const QByteArray& body) {
    try {
        return failureKind(Json::read(body));
    } catch (const JsonReadingError&) {
        return LlamaServerError::Kind::NoAnswer;
    }
}

} // namespace platform
