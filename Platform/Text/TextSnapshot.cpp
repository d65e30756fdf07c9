// SPDX-License-Identifier: MIT
#include "Platform/Text/TextSnapshot.h"

#include <algorithm>

namespace platform {

/// Room for characters. Those below the length of any text that shares the buffer never change;
/// those above belong to the one builder that fills it.
struct TextSnapshot::Buffer {
    explicit Buffer(qsizetype size)
        : characters(new char16_t[static_cast<std::size_t>(size)])
        , capacity(size) {}

    const std::unique_ptr<char16_t[]> characters;
    const qsizetype capacity;
};

TextSnapshot::TextSnapshot(QStringView characters) {
    TextBuilder builder;
    builder.append(characters);
    *this = builder.text();
}

TextSnapshot::TextSnapshot(std::shared_ptr<const Buffer> buffer, qsizetype size)
    : m_buffer(std::move(buffer))
    , m_size(size) {}

QStringView TextSnapshot::view() const {
    return m_buffer ? QStringView(m_buffer->characters.get(), m_size) : QStringView();
}

bool TextSnapshot::continues(const TextSnapshot& earlier) const {
    if (m_size < earlier.m_size)
        return false;
    return m_buffer == earlier.m_buffer || view().first(earlier.m_size) == earlier.view();
}

void TextBuilder::append(QStringView characters) {
    if (characters.isEmpty())
        return;
    reserve(m_size + characters.size());
    std::copy(characters.utf16(), characters.utf16() + characters.size(),
              m_buffer->characters.get() + m_size);
    m_size += characters.size();
}

TextSnapshot TextBuilder::text() const {
    return m_size == 0 ? TextSnapshot() : TextSnapshot(m_buffer, m_size);
}

void TextBuilder::reserve(qsizetype size) {
    if (m_buffer && size <= m_buffer->capacity)
        return;
    // Doubling keeps the buffers that older texts still hold no larger, together, than the newest.
    // The first is as large as asked for: most texts never grow.
    const auto larger = std::make_shared<TextSnapshot::Buffer>(
        m_buffer ? std::max(size, 2 * m_buffer->capacity) : size);
    if (m_buffer)
        std::copy_n(m_buffer->characters.get(), m_size, larger->characters.get());
    m_buffer = larger;
}

} // namespace platform
