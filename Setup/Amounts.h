// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <chrono>

namespace setup {

/// A size as "1.1 GB", or "45 MB" below that.
QString sizeText(qint64 bytes);

/// A time that is left, as "2 hours left", "5 minutes left" or "20 seconds left".
QString timeLeftText(std::chrono::seconds time);

/// How far something is, in one line: "45 %, 1.1 GB of 2.5 GB, 12 MB/s, 2 minutes left".
///
/// @param rate in bytes a second; 0 while that is not known.
QString progressText(qint64 received, qint64 size, qint64 rate);

} // namespace setup
