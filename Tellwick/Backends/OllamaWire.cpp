// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaWire.h"

#include "Platform/Json/Json.h"

#include <nlohmann/json.hpp>

namespace tellwick {

using platform::Json;

OllamaChatRequest::OllamaChatRequest(QString model, QList<OllamaMessage> messages)
    : m_model(std::move(model))
    , m_messages(std::move(messages)) {}

QByteArray OllamaChatRequest::toJson() const {
    using Object = nlohmann::ordered_json;
    Object messages = Object::array();
    for (const OllamaMessage& message : m_messages)
        messages.push_back(
            {{"role", message.role.toStdString()}, {"content", message.content.toStdString()}});
    const Object request = {
        {"model", m_model.toStdString()}, {"messages", std::move(messages)}, {"stream", true}};
    return QByteArray::fromStdString(request.dump());
}

OllamaChatChunk OllamaChatChunk::fromJson(QByteArrayView line) {
    const Json chunk = Json::read(line);
    return {{chunk["message"]["content"].text()}, chunk["done"].boolean()};
}

OllamaTagsResponse OllamaTagsResponse::fromJson(QByteArrayView document) {
    OllamaTagsResponse response;
    for (const Json& entry : Json::read(document)["models"].elements())
        response.models.append({entry["name"].text(), entry["size"].integer()});
    return response;
}

} // namespace tellwick
