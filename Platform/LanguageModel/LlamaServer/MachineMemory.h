// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <optional>

namespace platform {

/// A machine's memory, in bytes.
struct MachineMemory {
    quint64 total = 0;     ///< what is built in
    quint64 available = 0; ///< what a program can still get without any other having to give way

    /// This machine's, at the moment of the call.
    static MachineMemory now();
};

/// The room for one conversation, in tokens, with which a model of that size (in bytes) fits what
/// is available; none where not even the smallest does.
std::optional<int> contextSizeFor(quint64 modelSize, const MachineMemory& memory);

} // namespace platform
