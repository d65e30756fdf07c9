// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <exception>

namespace platform {

/// Why a store could not be read or written. Never shown to users.
///
/// Whatever the reason, what was saved before is still there, and what was not saved is still
/// pending in its context.
class StoreError final : public std::exception {
public:
    enum class Reason {
        Unreachable,  ///< The file or its folder cannot be opened, made or written.
        Busy,         ///< Another program kept the store locked for too long.
        Full,         ///< There is no room left.
        NotAStore,    ///< The file is no database, is damaged, or lies no longer where it was.
        LaterVersion, ///< A later version of the program has written the store.
        Foreign,      ///< A database, but not with the tables of this program.
        Malformed,    ///< A record holds something that cannot be read.
    };

    StoreError(Reason reason, QByteArray detail)
        : m_reason(reason)
        , m_detail(std::move(detail)) {}

    Reason reason() const { return m_reason; }
    const char* what() const noexcept override { return m_detail.constData(); }

private:
    Reason m_reason;
    QByteArray m_detail;
};

} // namespace platform
