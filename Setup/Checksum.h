// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"

#include <QByteArray>

namespace setup {

/// Whether an open file's content has that SHA-256 (64 hexadecimal digits in lower case). If so, it
/// is safely on the disk when the task ends. The work is done on a thread of its own; a task that
/// goes waits a moment for it to stop.
platform::Task<bool> isWhole(int descriptor, QByteArray sha256);

} // namespace setup
