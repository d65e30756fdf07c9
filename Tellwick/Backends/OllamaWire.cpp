// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaWire.h"

#include "Platform/Json/Json.h"

#include <nlohmann/json.hpp>

namespace tellwick {

using platform::Json;

QByteArray OllamaChatRequest::toJson() const {
    using Object = nlohmann::ordered_json;
    Object list = Object::array();
    for (const OllamaMessage& message : messages)
        list.push_back(
            {{"role", message.role.toStdString()}, {"content", message.content.toStdString()}});
    const Object request = {
        {"model", model.toStdString()}, {"messages", std::move(list)}, {"stream", true}};
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
