// SPDX-License-Identifier: MIT
#include "Platform/Json/Json.h"

#include <QStringDecoder>

#include <nlohmann/json.hpp>

#include <limits>
#include <string>

namespace platform {

namespace {

using Value = nlohmann::json;
using Kind = Value::value_t;

constexpr std::string_view digits = "0123456789";
constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";

const Value& valueOf(const std::shared_ptr<const void>& held) {
    return *static_cast<const Value*>(held.get());
}

void require(bool isAsExpected) {
    if (!isAsExpected)
        throw JsonReadingError();
}

/// The length of the text or number at the start of the rest of a document; of anything else 1.
size_t tokenLength(std::string_view rest) {
    if (rest.front() == '"') {
        for (size_t at = 1; at < rest.size(); ++at) {
            if (rest[at] == '"')
                return at + 1;
            at += rest[at] == '\\' ? 1 : 0;
        }
        return rest.size();
    }
    return std::clamp<size_t>(rest.find_first_not_of("0123456789+-.eE"), 1, rest.size());
}

bool isSurrogate(std::string_view escape) {
    return escape.size() == 6 && (escape.starts_with("\\ud") || escape.starts_with("\\uD")) &&
           std::string_view("89abcdefABCDEF").find(escape[3]) != escape.npos &&
           escape.find_first_not_of(hexDigits, 3) == escape.npos;
}

/// The token with its numbers cut to two digits and its surrogates replaced: a token of the same
/// grammar that the library does not refuse.
std::string tamed(std::string_view token) {
    std::string result;
    size_t digitsInRow = 0;
    for (size_t at = 0; at < token.size(); ++at) {
        if (token.front() != '"') {
            digitsInRow = digits.find(token[at]) != digits.npos ? digitsInRow + 1 : 0;
            if (digitsInRow <= 2)
                result += token[at];
        } else if (isSurrogate(token.substr(at, 6))) {
            result += "\\ufffd";
            at += 5;
        } else {
            const size_t length = token[at] == '\\' ? 2 : 1;
            result += token.substr(at, length);
            at += length - 1;
        }
    }
    return result;
}

/// JSON allows two things that the library refuses: a number past a double's range, and half of a
/// surrogate pair as an escape. In their place stands a fraction here, which nobody asks for, so
/// that the document reads and only who asks for such a value finds it unreadable.
std::string withoutRefusedTokens(std::string_view document) {
    std::string result;
    while (!document.empty()) {
        const std::string_view token = document.substr(0, tokenLength(document));
        document.remove_prefix(token.size());
        const std::string replacement = token.size() == 1 ? std::string(token) : tamed(token);
        const bool isRefused =
            replacement != token && !Value::accept(token) && Value::accept(replacement);
        const size_t next = document.find_first_not_of(" \t\r\n");
        const bool isKey = next != document.npos && document[next] == ':';
        result += !isRefused ? token : isKey ? std::string_view(replacement) : "0.5";
    }
    return result;
}

} // namespace

Json Json::read(QByteArrayView document) {
    // The parser takes a NUL byte for the end of its input and would not look at what follows it.
    require(!document.contains('\0'));
    const std::string_view bytes(document.data(), static_cast<size_t>(document.size()));
    auto value = std::make_shared<Value>(Value::parse(bytes, nullptr, false));
    if (value->is_discarded()) {
        const std::string readable = withoutRefusedTokens(bytes);
        if (readable != bytes)
            *value = Value::parse(readable, nullptr, false);
    }
    require(!value->is_discarded());
    return Json(std::move(value));
}

Json Json::operator[](std::string_view key) const {
    const auto member = find(key);
    require(member.has_value());
    return *member;
}

std::optional<Json> Json::find(std::string_view key) const {
    const Value& object = valueOf(m_value);
    require(object.is_object());
    const auto member = object.find(key);
    if (member == object.end() || member->is_null())
        return std::nullopt;
    return Json(std::shared_ptr<const void>(m_value, &*member));
}

QList<Json> Json::elements() const {
    const Value& array = valueOf(m_value);
    require(array.is_array());
    QList<Json> all;
    all.reserve(static_cast<qsizetype>(array.size()));
    for (const Value& element : array)
        all.append(Json(std::shared_ptr<const void>(m_value, &element)));
    return all;
}

QString Json::text() const {
    const Value& value = valueOf(m_value);
    require(value.is_string());
    const auto& bytes = value.get_ref<const std::string&>();
    // QString::fromUtf8() would drop a byte order mark.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

qint64 Json::integer() const {
    const Value& value = valueOf(m_value);
    require(value.is_number_integer());
    constexpr auto maximum = static_cast<quint64>(std::numeric_limits<qint64>::max());
    require(!value.is_number_unsigned() || value.get<quint64>() <= maximum);
    return value.get<qint64>();
}

bool Json::boolean() const {
    const Value& value = valueOf(m_value);
    require(value.is_boolean());
    return value.get<bool>();
}

} // namespace platform
