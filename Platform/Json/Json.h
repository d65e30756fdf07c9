// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <string_view>

namespace platform {

/// A JSON document that does not read: not JSON, or not of the expected shape.
class JsonReadingError final : public LocalizedError {
public:
    QString errorDescription() const override {
        return QStringLiteral(
            "The data could not be read because it is not in the expected format.");
    }
};

/// One value of a document that has been read; copies are the same value, and each keeps the
/// document.
///
/// What is asked of a value must be there and of the asked type, or a JsonReadingError is thrown.
/// Values that nobody asks for may hold anything that JSON allows.
class Json {
public:
    /// Reads exactly one document, in UTF-8. Of a key that comes twice the last one counts.
    static Json read(QByteArrayView document);

    /// The object's member of that key, which is not null.
    Json operator[](std::string_view key) const;

    /// The object's member of that key; none where it is absent or null.
    std::optional<Json> find(std::string_view key) const;

    /// The elements of the array, in order.
    QList<Json> elements() const;

    /// The text as it stands there, a byte order mark at its start included.
    QString text() const;

    /// The number, which has neither fraction nor exponent and fits 64 bits with sign.
    qint64 integer() const;

    bool boolean() const;

private:
    explicit Json(std::shared_ptr<const void> value)
        : m_value(std::move(value)) {}

    std::shared_ptr<const void> m_value; // of the library's type, which stays out of this header
};

} // namespace platform
