// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

namespace platform {

/// Where the rows of a column stand: their heights and, from these, their tops.
///
/// Setting a height costs nothing; the next question about a top adds up the heights from the first
/// changed row on, so a column that grows at its end answers at once.
class RowHeights {
public:
    /// A column with so much room above its first and below its last row, and between two.
    RowHeights(int padding, int spacing)
        : m_padding(padding)
        , m_spacing(spacing) {}

    std::size_t count() const { return m_heights.size(); }

    /// Replaces all heights; those of an unchanged beginning keep their tops.
    void assign(std::vector<int> heights);

    int height(std::size_t row) const { return m_heights[row]; }
    void setHeight(std::size_t row, int height);

    int top(std::size_t row) const;
    int bottom(std::size_t row) const { return top(row) + m_heights[row]; }
    /// The height of the whole column.
    int total() const;

    /// The first row whose bottom lies below `y`, or the number of rows.
    std::size_t firstBelow(int y) const;

private:
    void addUp() const;

    int m_padding;
    int m_spacing;
    std::vector<int> m_heights;
    mutable std::vector<int> m_tops;
    mutable std::size_t m_known = 0; // tops before this row are right
};

} // namespace platform
