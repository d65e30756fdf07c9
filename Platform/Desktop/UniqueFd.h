// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace platform {

/// A file descriptor that is closed with its owner.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int file)
        : m_file(file) {}
    UniqueFd(UniqueFd&& other) noexcept
        : m_file(std::exchange(other.m_file, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(m_file, other.m_file);
        return *this;
    }
    ~UniqueFd() {
        if (m_file >= 0)
            close(m_file);
    }

    explicit operator bool() const { return m_file >= 0; }
    int get() const { return m_file; }

private:
    int m_file = -1;
};

} // namespace platform
