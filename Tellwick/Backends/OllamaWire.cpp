// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaWire.h"

#include "Platform/Json/JsonVisitor.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace tellwick {

using platform::JsonPath;
using platform::JsonReadingError;
using platform::JsonValue;

namespace {

QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The value, or none when it is of another type.
std::optional<QString> asText(const JsonValue& value) {
    if (value.kind != JsonValue::Kind::Text)
        return std::nullopt;
    return fromUtf8(value.text);
}

std::optional<bool> asBoolean(const JsonValue& value) {
    if (value.kind != JsonValue::Kind::Boolean)
        return std::nullopt;
    return value.boolean;
}

std::optional<qint64> asInteger(const JsonValue& value) {
    if (value.kind != JsonValue::Kind::Integer)
        return std::nullopt;
    return value.integer;
}

class ChunkVisitor final : public platform::JsonVisitor {
public:
    void visit(const JsonPath& path, const JsonValue& value) override {
        if (path.is("message"))
            m_content.reset();
        else if (path.is("message", "content"))
            m_content = asText(value);
        else if (path.is("done"))
            m_done = asBoolean(value);
    }

    OllamaChatChunk chunk() const {
        if (!m_content || !m_done)
            throw JsonReadingError();
        return {{*m_content}, *m_done};
    }

private:
    std::optional<QString> m_content;
    std::optional<bool> m_done;
};

class TagsVisitor final : public platform::JsonVisitor {
public:
    void visit(const JsonPath& path, const JsonValue& value) override {
        if (path.is("models"))
            startModels(value);
        else if (path.is("models", ""))
            startEntry(value);
        else if (path.is("models", "", "name"))
            m_name = asText(value);
        else if (path.is("models", "", "size"))
            m_size = asInteger(value);
    }

    void endObject(const JsonPath& path) override {
        if (!path.is("models", ""))
            return;
        if (m_name && m_size)
            m_models.append({*m_name, *m_size});
        else
            m_isValid = false;
    }

    QList<OllamaModelEntry> models() const {
        if (!m_isValid)
            throw JsonReadingError();
        return m_models;
    }

private:
    void startModels(const JsonValue& value) {
        m_models.clear();
        m_isValid = value.kind == JsonValue::Kind::Array;
    }
    void startEntry(const JsonValue& value) {
        m_name.reset();
        m_size.reset();
        if (value.kind != JsonValue::Kind::Object)
            m_isValid = false;
    }

    bool m_isValid = false; // until there is a list
    QList<OllamaModelEntry> m_models;
    std::optional<QString> m_name;
    std::optional<qint64> m_size;
};

} // namespace

OllamaChatRequest::OllamaChatRequest(QString model, QList<OllamaMessage> messages)
    : m_model(std::move(model))
    , m_messages(std::move(messages)) {}

QByteArray OllamaChatRequest::toJson() const {
    using Json = nlohmann::ordered_json;
    Json messages = Json::array();
    for (const OllamaMessage& message : m_messages)
        messages.push_back(
            {{"role", message.role.toStdString()}, {"content", message.content.toStdString()}});
    const Json request = {
        {"model", m_model.toStdString()}, {"messages", std::move(messages)}, {"stream", true}};
    return QByteArray::fromStdString(request.dump());
}

OllamaChatChunk OllamaChatChunk::fromJson(QByteArrayView line) {
    ChunkVisitor visitor;
    platform::visitJson(line, visitor);
    return visitor.chunk();
}

OllamaTagsResponse OllamaTagsResponse::fromJson(QByteArrayView document) {
    TagsVisitor visitor;
    platform::visitJson(document, visitor);
    return {visitor.models()};
}

} // namespace tellwick
