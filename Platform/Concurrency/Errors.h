// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <exception>

namespace platform {

/// An error that carries a sentence for the user. Everything thrown out of a task that may end up
/// on the screen derives from it.
class LocalizedError : public std::exception {
public:
    /// The sentence to show, complete with its full stop.
    virtual QString errorDescription() const = 0;
};

/// Thrown where work ends because somebody cancelled it. Never shown to the user.
class CancellationError final : public std::exception {};

/// The user-facing description of any error: `errorDescription()` of a LocalizedError, else the
/// text of the std::exception, else a general sentence.
QString localizedDescription(const std::exception_ptr& error);

} // namespace platform
