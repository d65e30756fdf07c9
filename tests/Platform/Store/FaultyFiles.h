// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

/// While it lives, every change that SQLite makes to a file (write, truncate, sync, delete) asks
/// first: the function is given the number of the change, from 1, and returns SQLITE_OK to let it
/// happen or the error to report in its place. A sync does nothing else. One at a time in a
/// process.
class FaultyFiles {
public:
    explicit FaultyFiles(std::function<int(int)> beforeChange);
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;
    ~FaultyFiles();

    /// How many changes there have been.
    int changes() const { return m_changes; }

    int ask() { return m_beforeChange(++m_changes); }

private:
    std::function<int(int)> m_beforeChange;
    int m_changes = 0;
};
