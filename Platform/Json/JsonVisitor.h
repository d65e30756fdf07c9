// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

#include <QByteArrayView>
#include <QString>

#include <array>
#include <string>
#include <string_view>

namespace platform {

/// A JSON document that does not read: not JSON, or not of the expected shape.
class JsonReadingError final : public LocalizedError {
public:
    QString errorDescription() const override;
};

/// Where in a document a value stands: the keys that lead to it, from the outermost object inwards.
/// Only the first few levels are kept, deeper ones are counted.
class JsonPath {
public:
    static constexpr int keptLevels = 4;

    /// The number of objects and arrays that the value stands in; 0 for the document itself.
    int depth() const { return m_depth; }

    /// Whether the value stands exactly there. An element of an array has the empty key.
    template <class... Keys>
    bool is(const Keys&... keys) const {
        static_assert(sizeof...(Keys) <= keptLevels);
        if (m_depth != sizeof...(Keys))
            return false;
        [[maybe_unused]] size_t level = 0;
        return ((m_levels[level++] == std::string_view(keys)) && ...);
    }

private:
    friend class JsonPathBuilder;
    std::array<std::string, keptLevels> m_levels;
    int m_depth = 0;
};

/// One value of a document. An object or array tells its kind only; its contents follow.
struct JsonValue {
    enum class Kind {
        Null,
        Boolean,
        Integer, ///< a number without fraction and exponent that fits 64 bits with sign
        Number,  ///< any other number
        Text,
        Object,
        Array,
    };
    Kind kind = Kind::Null;
    bool boolean = false;
    qint64 integer = 0;
    std::string_view text; ///< UTF-8, valid; lasts as long as the call it is handed to
};

/// Receives the values of a document one by one, without a tree of it in memory: however deep a
/// document is nested, or however long what is of no interest, it costs neither stack nor memory.
class JsonVisitor {
public:
    virtual ~JsonVisitor();

    /// Called for each value, in the order of the document.
    virtual void visit(const JsonPath& path, const JsonValue& value) = 0;

    /// Called at the end of each object, with the path of the object itself.
    virtual void endObject(const JsonPath& path) { Q_UNUSED(path); }
};

/// Reads exactly one document, in UTF-8. Throws JsonReadingError when it is not JSON, as the first
/// fault is met; what has been visited until then is worth nothing. Lets exceptions of the visitor
/// through.
void visitJson(QByteArrayView document, JsonVisitor& visitor);

} // namespace platform
