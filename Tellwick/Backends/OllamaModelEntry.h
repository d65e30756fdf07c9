// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace tellwick {

/// One model of the local server's list.
struct OllamaModelEntry {
    QString name;    ///< as the server lists it
    qint64 size = 0; ///< in bytes

    friend bool operator==(const OllamaModelEntry&, const OllamaModelEntry&) = default;
};

} // namespace tellwick
