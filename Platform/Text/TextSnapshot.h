// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>

namespace platform {

/// An immutable text in UTF-16 that is cheap to copy, also while it grows elsewhere.
///
/// A reply arrives as thousands of texts, each the whole reply so far. They all share one buffer
/// that a TextBuilder appends to, and differ in length only. They may be read on any thread, also
/// while the builder goes on.
class TextSnapshot {
public:
    /// The empty text.
    TextSnapshot() = default;
    /// A text of its own with a copy of these characters.
    explicit TextSnapshot(QStringView characters);

    /// The characters. Valid as long as this text or a copy of it.
    QStringView view() const { return {m_characters.get(), m_size}; }
    /// A string of its own with the same characters. Costs a copy.
    QString toString() const { return view().toString(); }

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

    /// Whether this text begins with the whole of `earlier`. Costs nothing when both come from the
    /// same buffer, as successive snapshots of a growing text nearly always do; else a comparison.
    bool continues(const TextSnapshot& earlier) const;

    friend bool operator==(const TextSnapshot& a, const TextSnapshot& b) {
        return a.m_size == b.m_size && a.continues(b);
    }

private:
    friend class TextBuilder;
    TextSnapshot(std::shared_ptr<const char16_t[]> characters, qsizetype size)
        : m_characters(std::move(characters))
        , m_size(size) {}

    // Those below the size never change; those above belong to the builder that fills the buffer.
    std::shared_ptr<const char16_t[]> m_characters;
    qsizetype m_size = 0;
};

/// Builds a text by appending, and hands out what it has so far at any moment. It never changes
/// characters that it has handed out. One thread at a time.
class TextBuilder {
public:
    /// Adds characters at the end. Amortised cost: their number.
    void append(QStringView characters);

    /// The whole text so far, at no cost.
    TextSnapshot text() const { return {m_characters, m_size}; }

private:
    std::shared_ptr<char16_t[]> m_characters;
    qsizetype m_capacity = 0;
    qsizetype m_size = 0;
};

} // namespace platform
