// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>

namespace platform {

/// A point in time, in UTC, fine enough to order events that follow each other within a
/// millisecond.
using Instant = std::chrono::sys_time<std::chrono::microseconds>;

/// The present time by the system's clock.
Instant currentInstant();

/// `now`, or the next instant after `previous` where the clock has not passed that.
Instant laterThan(Instant previous, Instant now);

/// The instant as ISO 8601 text, "2026-02-03T04:05:06.123456Z": of a fixed length, so that texts
/// sort as their instants do. Years outside 0 to 9999 are drawn to the nearest end.
QByteArray toIsoText(Instant instant);

/// Reads such a text, also with a blank in place of the T, with 0 to 9 digits of a fraction (what
/// is finer than microseconds is cut off) and without the Z. None for anything else.
std::optional<Instant> instantFromIsoText(QByteArrayView text);

} // namespace platform
