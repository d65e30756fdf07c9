// SPDX-License-Identifier: MIT
#include "Platform/Json/JsonVisitor.h"

#include <nlohmann/json.hpp>

#include <cstring>
#include <limits>
#include <vector>

namespace platform {

QString JsonReadingError::errorDescription() const {
    return QStringLiteral("The data could not be read because it is not in the expected format.");
}

JsonVisitor::~JsonVisitor() = default;

class JsonPathBuilder {
public:
    const JsonPath& path() const { return m_path; }

    void enter() {
        if (m_path.m_depth < JsonPath::keptLevels)
            key().clear();
        ++m_path.m_depth;
    }
    void leave() { --m_path.m_depth; }
    void setKey(const std::string& name) {
        if (m_path.m_depth > 0 && m_path.m_depth <= JsonPath::keptLevels)
            m_path.m_levels[static_cast<size_t>(m_path.m_depth) - 1] = name;
    }

private:
    std::string& key() { return m_path.m_levels[static_cast<size_t>(m_path.m_depth)]; }

    JsonPath m_path;
};

namespace {

using Json = nlohmann::json;

class Events final : public nlohmann::json_sax<Json> {
public:
    explicit Events(JsonVisitor& visitor)
        : m_visitor(visitor) {}

    bool null() override { return visit({}); }
    bool boolean(bool value) override {
        return visit({.kind = JsonValue::Kind::Boolean, .boolean = value, .text = {}});
    }
    bool number_integer(Json::number_integer_t value) override {
        return visit({.kind = JsonValue::Kind::Integer, .integer = value, .text = {}});
    }
    bool number_unsigned(Json::number_unsigned_t value) override {
        if (value > static_cast<quint64>(std::numeric_limits<qint64>::max()))
            return visit({.kind = JsonValue::Kind::Number, .text = {}});
        return number_integer(static_cast<qint64>(value));
    }
    bool number_float(Json::number_float_t, const Json::string_t&) override {
        return visit({.kind = JsonValue::Kind::Number, .text = {}});
    }
    bool string(Json::string_t& value) override {
        return visit({.kind = JsonValue::Kind::Text, .text = value});
    }
    bool binary(Json::binary_t&) override { return false; }
    bool start_object(std::size_t) override { return enter(JsonValue::Kind::Object); }
    bool start_array(std::size_t) override { return enter(JsonValue::Kind::Array); }
    bool key(Json::string_t& name) override {
        m_path.setKey(name);
        return true;
    }
    bool end_object() override {
        m_path.leave();
        m_visitor.endObject(m_path.path());
        return true;
    }
    bool end_array() override {
        m_path.leave();
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

private:
    bool visit(const JsonValue& value) {
        m_visitor.visit(m_path.path(), value);
        return true;
    }
    bool enter(JsonValue::Kind kind) {
        visit({.kind = kind, .text = {}});
        m_path.enter();
        return true;
    }

    JsonVisitor& m_visitor;
    JsonPathBuilder m_path;
};

} // namespace

void visitJson(QByteArrayView document, JsonVisitor& visitor) {
    // The parser takes a NUL byte for the end of its input and would not look at what follows it.
    const bool hasNul = document.contains('\0');
    Events events(visitor);
    if (hasNul || !Json::sax_parse(document.begin(), document.end(), &events))
        throw JsonReadingError();
}

} // namespace platform
