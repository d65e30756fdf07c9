// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/RowHeights.h"

#include <algorithm>

namespace platform {

void RowHeights::assign(std::vector<int> heights) {
    const auto common = std::min(heights.size(), m_heights.size());
    const auto differing = std::mismatch(
        heights.begin(), heights.begin() + static_cast<std::ptrdiff_t>(common), m_heights.begin());
    // The top of the first differing row still holds.
    const auto unchanged = static_cast<std::size_t>(differing.first - heights.begin());
    m_known = std::min(m_known, unchanged);
    m_heights = std::move(heights);
}

void RowHeights::setHeight(std::size_t row, int height) {
    if (m_heights[row] == height)
        return;
    m_heights[row] = height;
    m_known = std::min(m_known, row + 1);
}

void RowHeights::addUp() const {
    m_tops.resize(m_heights.size());
    for (; m_known < m_tops.size(); ++m_known)
        m_tops[m_known] =
            m_known == 0 ? m_padding : m_tops[m_known - 1] + m_heights[m_known - 1] + m_spacing;
}

int RowHeights::top(std::size_t row) const {
    addUp();
    return m_tops[row];
}

int RowHeights::total() const {
    return m_heights.empty() ? 2 * m_padding : bottom(m_heights.size() - 1) + m_padding;
}

std::size_t RowHeights::firstBelow(int y) const {
    addUp();
    auto row = static_cast<std::size_t>(std::upper_bound(m_tops.begin(), m_tops.end(), y) -
                                        m_tops.begin());
    if (row > 0 && bottom(row - 1) > y)
        --row;
    return row;
}

} // namespace platform
