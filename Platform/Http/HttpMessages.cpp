// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpMessages.h"

namespace platform {

QByteArray HttpHead::header(QByteArrayView name) const {
    for (const auto& [field, value] : headers)
        if (name.compare(field, Qt::CaseInsensitive) == 0)
            return value;
    return {};
}

} // namespace platform
