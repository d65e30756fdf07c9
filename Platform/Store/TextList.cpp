// SPDX-License-Identifier: MIT
#include "Platform/Store/TextList.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace platform {

QByteArray textListToJson(const QStringList& list) {
    QByteArray json =
        QJsonDocument(QJsonArray::fromStringList(list)).toJson(QJsonDocument::Compact);
    // Qt's reader takes U+FEFF at the beginning of a text for a byte order mark and drops it,
    // unless it is escaped. These bytes occur only inside texts.
    json.replace("\xEF\xBB\xBF", "\\ufeff");
    return json;
}

std::optional<QStringList> textListFromJson(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return std::nullopt;
    const QJsonArray array = document.array();
    if (!std::all_of(array.begin(), array.end(),
                     [](const auto& value) { return value.isString(); }))
        return std::nullopt;
    QStringList list;
    list.reserve(array.size());
    for (const auto& value : array)
        list.append(value.toString());
    return list;
}

} // namespace platform
