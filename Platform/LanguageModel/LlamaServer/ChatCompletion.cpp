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
ChatFailure readFailure(const Json& document) {
    ChatFailure failure;
    try {
        const Json error = document["error"];
        const auto type = error.find("type");
        const auto text = error.find("message");
        if ((type && type->text() == u"exceed_context_size_error") ||
            (text && text->text().contains(u"context size", Qt::CaseInsensitive)))
            failure.kind = LlamaServerError::Kind::PromptTooLong;
        const auto number = [&error](const char* key) {
            const auto value = error.find(key);
            return value ? value->integer() : 0;
        };
        failure.tokens = number("n_prompt_tokens");
        failure.contextSize = number("n_ctx");
    } catch (const JsonReadingError&) {
        // It is an error all the same.
    }
    return failure;
}

void readChoice(const Json& choice, ChatEvent& event) {
    const auto reason = choice.find("finish_reason");
    event.isComplete = reason.has_value();
    event.isCutOff = reason && reason->text() == u"length";
    const auto delta = choice.find("delta");
    if (const auto content = delta ? delta->find("content") : std::nullopt)
        event.content = content->text();
}

} // namespace

QByteArray chatRequestBody(const QString& instructions, const QList<AnsweredTurn>& turns,
                           const QString& prompt, const GenerationOptions& options,
                           const QString& said) {
    Object messages = Object::array();
    if (!instructions.isEmpty())
        messages.push_back(message("system", instructions));
    for (const AnsweredTurn& turn : turns) {
        messages.push_back(message("user", turn.prompt));
        messages.push_back(message("assistant", turn.reply.toString()));
    }
    messages.push_back(message("user", prompt));
    if (!said.isEmpty())
        messages.push_back(message("assistant", said));

    Object body = {{"messages", std::move(messages)},
                   {"stream", true},
                   {"return_progress", true},
                   {"cache_prompt", true}};
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
        event.failure = readFailure(data);
        return event;
    }
    if (const auto progress = data.find("prompt_progress"))
        event.requestTokens = (*progress)["total"].integer();
    const auto choices = data.find("choices");
    // The last event of some engines has an empty list.
    for (const Json& choice : choices ? choices->elements() : QList<Json>())
        readChoice(choice, event);
    return event;
}

ChatFailure readChatFailure(const QByteArray& body) {
    try {
        return readFailure(Json::read(body));
    } catch (const JsonReadingError&) {
        return {};
    }
}

} // namespace platform
