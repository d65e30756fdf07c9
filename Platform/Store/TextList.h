// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace platform {

/// The list as a JSON array of texts, in UTF-8. Every list comes back exactly as it was: order,
/// duplicates, empty texts, NUL, and surrogates without a partner, too.
QByteArray textListToJson(const QStringList& list);

/// Reads such an array; none when it is anything else.
std::optional<QStringList> textListFromJson(const QByteArray& json);

} // namespace platform
