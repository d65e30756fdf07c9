// SPDX-License-Identifier: MIT
#include "Platform/Text/TextSnapshot.h"

#include <algorithm>

namespace platform {

TextSnapshot::TextSnapshot(QStringView characters) {
    TextBuilder builder;
    builder.append(characters);
    *this = builder.text();
}

bool TextSnapshot::continues(const TextSnapshot& earlier) const {
    if (m_size < earlier.m_size)
        return false;
    return m_characters == earlier.m_characters || view().first(earlier.m_size) == earlier.view();
}

void TextBuilder::append(QStringView characters) {
    if (characters.isEmpty())
        return;
    const qsizetype size = m_size + characters.size();
    if (size > m_capacity) {
        // Doubling keeps the buffers that older texts still hold no larger, together, than the
        // newest. The first is as large as asked for: most texts never grow.
        m_capacity = std::max(size, 2 * m_capacity);
        std::shared_ptr<char16_t[]> larger(new char16_t[static_cast<std::size_t>(m_capacity)]);
        std::copy_n(m_characters.get(), m_size, larger.get());
        m_characters = std::move(larger);
    }
    std::copy(characters.utf16(), characters.utf16() + characters.size(),
              m_characters.get() + m_size);
    m_size = size;
}

} // namespace platform
